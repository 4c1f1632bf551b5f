// The places of plug-ins' windows in the main window: docks by the type of the plug-in.
#pragma once

#include "services/WindowPlaces.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <vector>

class QAction;
class QDockWidget;
class QMainWindow;

namespace workbench {

/// Takes in the windows of plug-ins while it exists: "Edit" on the left, "Display" in the middle,
/// all others on the right. A dock shows what its window shows: it goes when the window is closed,
/// and comes when it is shown. The windows stay those of their plug-ins.
class PluginDocks : public QObject, public memory_host::WindowPlaces {
    Q_OBJECT
public:
    explicit PluginDocks(QMainWindow& window);
    /// Lets the windows go, hidden and without a parent.
    ~PluginDocks() override;

    void aboutToShow(BaseWindow& window, const QString& plugin) override;
    void wasHidden(BaseWindow& window) override;

    /// The docks in the order in which they came.
    QList<QDockWidget*> docks() const;
    /// Whether a dock's usual place is in the middle.
    static bool isMiddle(const QDockWidget& dock);
    /// The title of a plug-in's window, also of one that is gone; empty where it never had one.
    QString title(const QString& plugin) const { return m_titles.value(plugin); }
    /// While true, a new dock is shown or not as it was when the window was remembered.
    void setStarting(bool on) { m_isStarting = on; }
    /// Puts every dock where it is without anything remembered, and shows it.
    void arrange();

signals:
    /// A dock has come or gone.
    void changed();

private:
    struct Place {
        QPointer<BaseWindow> window;
        QDockWidget* dock;
        QString plugin;
    };
    enum class Area { Left, Middle, Right };

    static Area areaOf(const QString& plugin);
    Place* find(const BaseWindow& window);
    void make(BaseWindow& window, const QString& plugin);
    void put(const Place& place);
    void forget(QDockWidget* dock);

    QMainWindow& m_window;
    std::vector<Place> m_places;
    QHash<QString, QString> m_titles; ///< by plug-in
    bool m_isStarting = false;
    bool m_isPlacing = false;
};

} // namespace workbench
