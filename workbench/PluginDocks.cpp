#include "PluginDocks.h"

#include <QAction>
#include <QDockWidget>
#include <QMainWindow>
#include <QScopedValueRollback>
#include <QStatusBar>

#include <algorithm>
#include <utility>

namespace workbench {

namespace {

constexpr QStringView dockPrefix = u"plug-in "; // of the names of docks

/// Gives its window the size that the window asked for, until the user decides otherwise.
class PluginDock : public QDockWidget {
public:
    PluginDock(const QString& title, QWidget* parent, QSize usual)
        : QDockWidget(title, parent), m_usual(usual) {}
    QSize sizeHint() const override { return m_usual; }

private:
    QSize m_usual;
};

} // namespace

PluginDocks::PluginDocks(QMainWindow& window) : m_window(window) {
    memory_host::setWindowPlaces(this);
}

PluginDocks::~PluginDocks() {
    memory_host::setWindowPlaces(nullptr);
    for (const Place& place : std::exchange(m_places, {})) {
        if (!place.window)
            continue;
        disconnect(place.window, nullptr, this, nullptr);
        place.window->hide();
        place.window->setParent(nullptr, Qt::Window);
    }
}

bool PluginDocks::isMiddle(const QDockWidget& dock) {
    const QString name = dock.objectName();
    return name.startsWith(dockPrefix) && areaOf(name.sliced(dockPrefix.size())) == Area::Middle;
}

PluginDocks::Area PluginDocks::areaOf(const QString& plugin) {
    const QString type = plugin.section(u'/', 0, 0);
    return type == u"Edit" ? Area::Left : type == u"Display" ? Area::Middle : Area::Right;
}

PluginDocks::Place* PluginDocks::find(const BaseWindow& window) {
    const auto found =
        std::find_if(m_places.begin(), m_places.end(),
                     [&window](const Place& place) { return place.window == &window; });
    return found == m_places.end() ? nullptr : &*found;
}

QList<QDockWidget*> PluginDocks::docks() const {
    QList<QDockWidget*> all;
    for (const Place& place : m_places)
        all << place.dock;
    return all;
}

void PluginDocks::aboutToShow(BaseWindow& window, const QString& plugin) {
    if (m_isPlacing)
        return;
    const QScopedValueRollback placing(m_isPlacing, true);
    const Place* place = find(window);
    if (!place) {
        // A dialog of a plug-in, or a part of its window, stays where the plug-in has put it.
        if (plugin.isEmpty() || window.parentWidget())
            return;
        make(window, plugin);
        if (m_isStarting)
            return;
        place = find(window);
    }
    place->dock->show();
    place->dock->raise();
}

void PluginDocks::wasHidden(BaseWindow& window) {
    if (const Place* const place = find(window); place && !m_isPlacing)
        place->dock->hide();
}

void PluginDocks::make(BaseWindow& window, const QString& plugin) {
    auto* const dock = new PluginDock(window.windowTitle(), &m_window, window.size());
    dock->setObjectName(dockPrefix.toString() + plugin);
    // As a window within a window, so that its keys are its own: they act while it has the focus.
    window.setParent(dock, Qt::SubWindow);
    dock->setWidget(&window);
    // It would change the size of the main window, from somewhere within.
    for (auto* const bar : window.findChildren<QStatusBar*>(QString(), Qt::FindDirectChildrenOnly))
        bar->setSizeGripEnabled(false);
    m_places.push_back({&window, dock, plugin});
    m_titles[plugin] = window.windowTitle();
    connect(&window, &QWidget::windowTitleChanged, dock,
            [this, dock, plugin](const QString& title) {
                dock->setWindowTitle(title);
                m_titles[plugin] = title;
            });
    connect(&window, &QObject::destroyed, this, [this, dock] { forget(dock); });
    // What was closed by itself has to be shown again with its dock.
    connect(dock, &QDockWidget::visibilityChanged, this, [this, dock](bool visible) {
        for (const Place& place : m_places)
            if (place.dock == dock && visible && place.window && place.window->isHidden())
                place.window->show();
    });
    if (!m_window.restoreDockWidget(dock))
        put(m_places.back());
    emit changed();
}

void PluginDocks::put(const Place& place) {
    const Area area = areaOf(place.plugin);
    if (area == Area::Right) {
        m_window.addDockWidget(Qt::RightDockWidgetArea, place.dock);
        return;
    }
    m_window.addDockWidget(Qt::LeftDockWidgetArea, place.dock, Qt::Horizontal);
    if (area == Area::Middle)
        return;
    // What belongs into the middle may have come first: it goes to the right of this one.
    QDockWidget* left = place.dock;
    for (const Place& other : m_places) {
        if (areaOf(other.plugin) != Area::Middle || other.dock->isFloating() ||
            m_window.dockWidgetArea(other.dock) != Qt::LeftDockWidgetArea)
            continue;
        m_window.splitDockWidget(left, other.dock, Qt::Horizontal);
        left = other.dock;
    }
}

void PluginDocks::arrange() {
    for (const Place& place : m_places) {
        place.dock->setFloating(false);
        put(place);
        place.dock->show();
    }
}

void PluginDocks::forget(QDockWidget* dock) {
    std::erase_if(m_places, [dock](const Place& place) { return place.dock == dock; });
    dock->deleteLater();
    emit changed();
}

} // namespace workbench
