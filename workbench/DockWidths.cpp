#include "DockWidths.h"

#include "PluginDocks.h"

#include <QDockWidget>
#include <QEvent>
#include <QStyle>

#include <algorithm>
#include <set>
#include <utility>

namespace workbench {

namespace {

bool isSeen(const QDockWidget* dock) {
    return dock && dock->isVisible() && !dock->isFloating();
}

} // namespace

DockWidths::DockWidths(QMainWindow& window) : QObject(&window), m_window(window) {
    m_changed.setSingleShot(true);
    connect(&m_changed, &QTimer::timeout, this, &DockWidths::keep);
    window.installEventFilter(this);
}

bool DockWidths::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::ChildPolished:
        if (auto* const dock =
                qobject_cast<QDockWidget*>(static_cast<QChildEvent*>(event)->child()))
            dock->installEventFilter(this);
        break;
    case QEvent::Resize:
        if (watched == &m_window)
            restore();
        else if (m_width == m_window.width())
            m_changed.start(0);
        break;
    case QEvent::Show:
    case QEvent::Hide:
        if (watched != &m_window)
            m_changed.start(0);
        break;
    default:
        break;
    }
    return false;
}

const DockWidths::Kept* DockWidths::middle() const {
    const auto found = std::find_if(m_kept.begin(), m_kept.end(), [](const Kept& kept) {
        return isSeen(kept.dock) && PluginDocks::isMiddle(*kept.dock);
    });
    return found == m_kept.end() ? nullptr : &*found;
}

// The place of those that were closed meanwhile is free.
int DockWidths::middleWidth(const Kept& middle) const {
    int width = middle.width + m_window.width() - m_keptIn;
    const int edge = m_window.style()->pixelMetric(QStyle::PM_DockWidgetSeparatorExtent);
    std::set<int> taken;
    for (const Kept& kept : m_kept)
        if (isSeen(kept.dock))
            taken.insert(kept.left);
    for (const Kept& kept : m_kept)
        if (taken.insert(kept.left).second)
            width += kept.width + edge;
    return width;
}

bool DockWidths::hasRoom() const {
    const Kept* const kept = middle();
    return !kept || middleWidth(*kept) >= leastMiddle;
}

void DockWidths::keep() {
    if (!m_window.isVisible() || m_window.width() != m_width || !hasRoom())
        return;
    std::vector<Kept> kept;
    for (QDockWidget* const dock :
         m_window.findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (isSeen(dock))
            kept.push_back({dock, dock->x(), dock->width()});
    m_kept = std::move(kept);
    m_keptIn = m_window.width();
}

void DockWidths::restore() {
    m_width = m_window.width();
    const Kept* const middle = this->middle();
    if (!middle || !hasRoom())
        return;
    QList<QDockWidget*> docks;
    QList<int> widths;
    for (const Kept& kept : m_kept) {
        if (!isSeen(kept.dock))
            continue;
        docks << kept.dock;
        widths << (&kept == middle ? middleWidth(kept) : kept.width);
    }
    m_window.resizeDocks(docks, widths, Qt::Horizontal);
}

} // namespace workbench
