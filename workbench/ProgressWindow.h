// Says what is being done while files are opened, once that has taken half a second.
#pragma once

#include <QDialog>
#include <QElapsedTimer>

class QProgressBar;

namespace workbench {

class ElidedLine;

class ProgressWindow : public QDialog {
    Q_OBJECT
public:
    ProgressWindow();
    ~ProgressWindow() override;

    /// The line above the bar. Both lines are plain text, and never widen the window.
    void setTitleLine(const QString& text);
    /// The line below the bar, and how far the work is (0 to 1; negative: not known). Repaints and
    /// handles a click on "Cancel", but only as often as a user can see.
    void setStage(const QString& text, double fraction);

    bool wasCancelled() const { return m_cancelled; }

public slots:
    /// Cancels; also what closing the window and Escape do.
    void reject() override;

private:
    ElidedLine* m_title;
    QProgressBar* m_bar;
    ElidedLine* m_stage;
    QElapsedTimer m_sinceRepaint;
    bool m_cancelled = false;
};

} // namespace workbench
