// The widths of docks while their window changes its size.
#pragma once

#include <QMainWindow>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <vector>

class QDockWidget;

namespace workbench {

/// Docks at the sides keep their widths, and the one in the middle has what is left. In a window
/// without room for that they share it as the toolkit does; once there is room again, all have the
/// widths from before.
class DockWidths : public QObject {
    Q_OBJECT
public:
    /// What the middle has at least when the sides keep their widths, in pixels.
    static constexpr int leastMiddle = 100;

    explicit DockWidths(QMainWindow& window);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Kept {
        QPointer<QDockWidget> dock;
        int left;  ///< pixels; docks below each other have the same
        int width; ///< pixels
    };

    /// Remembers the widths, unless there is no room for those from before.
    void keep();
    /// Gives the docks the widths from before, if there is room.
    void restore();
    bool hasRoom() const;
    /// The one in the middle; null while it is not seen.
    const Kept* middle() const;
    /// What the middle has when all others have their widths, pixels.
    int middleWidth(const Kept& middle) const;

    QMainWindow& m_window;
    std::vector<Kept> m_kept; ///< those that could be seen
    int m_keptIn = 0;         ///< width of the window then
    int m_width = 0;          ///< of the window as the docks were laid out last
    QTimer m_changed;         ///< once the docks rest after the user moved something
};

} // namespace workbench
