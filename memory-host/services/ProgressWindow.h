// Says what long work is doing, and lets the user cancel it.
#pragma once

#include "HostExport.h"

#include <QDialog>
#include <QElapsedTimer>

class QDialogButtonBox;
class QProgressBar;

namespace memory_host {

class ElidedLine;

/// A modal window that shows itself once the work has taken half a second.
class HOST_EXPORT ProgressWindow : public QDialog {
    Q_OBJECT
public:
    static constexpr int showAfter = 500;   ///< ms
    static constexpr int repaintEvery = 40; ///< ms

    explicit ProgressWindow(const QString& windowTitle);
    ~ProgressWindow() override;

    /// The line above the bar. Both lines are plain text, and never widen the window.
    void setTitleLine(const QString& text);
    /// The line below the bar, and how far the work is (0 to 1; negative: not known).
    void setStage(const QString& text, double fraction);
    /// For work on the GUI thread: repaints and handles a click on "Cancel", but only as often as a
    /// user can see.
    void handleEvents();
    /// Cancelling does not close the window, which says that the work is being cancelled instead.
    void setStaysUntilDone() { m_staysUntilDone = true; }

    bool wasCancelled() const { return m_cancelled; }

public slots:
    /// Cancels; also what closing the window and Escape do.
    void reject() override;

signals:
    void cancelled();

private:
    ElidedLine* m_title;
    QProgressBar* m_bar;
    ElidedLine* m_stage;
    QDialogButtonBox* m_buttons;
    QElapsedTimer m_sinceRepaint;
    bool m_cancelled = false;
    bool m_staysUntilDone = false;
};

} // namespace memory_host
