// The workbench's application object: starts where there may be no display, survives event handlers
// that throw, and ends when the plug-ins are done.
#pragma once

#include <QApplication>
#include <QPointer>
#include <QWidget>

#include <memory>

namespace workbench {

class Application : public QApplication {
    Q_OBJECT
public:
    /// Where no window can be opened, writes one line that says so to standard error and ends the
    /// process with status 1. `arguments` must outlive the application.
    static std::unique_ptr<Application> start(int& count, char** arguments);
    ~Application() override;

    /// The program runs as long as this window is shown, too.
    void setMainWindow(QWidget* window) { m_mainWindow = window; }
    /// Runs until all plug-ins are done, or quit() is called.
    int runUntilDone();

    /// An exception out of an event handler is logged, and the event counts as not handled.
    bool notify(QObject* receiver, QEvent* event) override;

private:
    Application(int& count, char** arguments);

    bool isDone() const;

    QPointer<QWidget> m_mainWindow;
    bool m_running = false;
};

} // namespace workbench
