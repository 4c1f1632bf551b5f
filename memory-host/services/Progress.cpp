#include "Progress.h"

#include "Logger.h"
#include "ProgressWindow.h"
#include "items/SpaceLock.h"

#include <QEventLoop>
#include <QScopedValueRollback>
#include <QTimer>

#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace memory_host {

namespace {

// What the work said last.
class LastReport final : public ProgressReporter {
public:
    void report(const QString& stage, double fraction) override {
        const std::lock_guard lock(m_mutex);
        m_stage = stage;
        m_fraction = fraction;
    }
    void showIn(ProgressWindow& window) const {
        QString stage;
        double fraction = 0.0;
        {
            const std::lock_guard lock(m_mutex);
            stage = m_stage;
            fraction = m_fraction;
        }
        window.setStage(stage, fraction);
    }

private:
    mutable std::mutex m_mutex;
    QString m_stage;
    double m_fraction = -1.0;
};

// One run of a work, from its start to its end.
class Running {
public:
    Running(const QString& title, const Progress::Work& work) : m_window(title) {
        m_window.setTitleLine(title);
        m_window.setStaysUntilDone();
        QObject::connect(&m_window, &ProgressWindow::cancelled, &m_loop,
                         [this] { m_thread.request_stop(); });
        m_thread = std::jthread([this, &work](std::stop_token stop) {
            try {
                work(m_report, std::move(stop));
            } catch (...) {
                m_failure = std::current_exception();
            }
            QMetaObject::invokeMethod(
                &m_loop,
                [this] {
                    m_isDone = true;
                    m_loop.quit();
                },
                Qt::QueuedConnection);
        });
    }

    // Whether the work came to its end without being cancelled.
    bool wait() {
        // Other windows get no input before this one blocks them, but later.
        QTimer::singleShot(ProgressWindow::showAfter, &m_loop, &QEventLoop::quit);
        m_loop.exec(QEventLoop::ExcludeUserInputEvents);
        if (!m_isDone) {
            m_window.show();
            QTimer refresh;
            QObject::connect(&refresh, &QTimer::timeout, &m_loop, [this] {
                if (!m_window.wasCancelled())
                    m_report.showIn(m_window);
            });
            refresh.start(ProgressWindow::repaintEvery);
            m_loop.exec();
        }
        // Where the program is about to end, the loop ends before the work does.
        const bool isWhole = m_isDone && !m_window.wasCancelled();
        m_thread.request_stop();
        m_thread.join();
        if (isWhole && m_failure)
            std::rethrow_exception(m_failure);
        return isWhole;
    }

private:
    const SpaceLock m_lock;
    QEventLoop m_loop;
    ProgressWindow m_window;
    LastReport m_report;
    std::exception_ptr m_failure;
    bool m_isDone = false;
    std::jthread m_thread; // last: it ends before what it uses
};

} // namespace

} // namespace memory_host

ProgressReporter::~ProgressReporter() = default;

bool Progress::Run(const QString& title, const Work& work) {
    static bool isRunning = false;
    if (isRunning) {
        Logger::Write("\"" + title.toStdString() + "\" is refused: another work is in progress");
        return false;
    }
    const QScopedValueRollback running(isRunning, true);
    return memory_host::Running(title, work).wait();
}
