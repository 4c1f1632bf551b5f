#include "Application.h"

#include "LegibleHints.h"
#include "Logger.h"
#include "StartMessages.h"
#include "services/PluginFolder.h"

#include <QEvent>
#include <QWidget>

#include <exception>
#include <string>

namespace workbench {

Application::Application(int& count, char** arguments) : QApplication(count, arguments) {
    setApplicationName(QStringLiteral("structure-editor"));
    setApplicationVersion(QStringLiteral(WORKBENCH_VERSION));
    makeHintsLegible();
    // The plug-ins decide when the program ends: an open help window does not keep it running.
    setQuitOnLastWindowClosed(false);
}

Application::~Application() = default;

std::unique_ptr<Application> Application::start(int& count, char** arguments) {
    const StartMessages messages;
    return std::unique_ptr<Application>(new Application(count, arguments));
}

// Plug-ins are asked only when it matters: their answers may cost something, or throw.
bool Application::isDone() const {
    return (!m_mainWindow || !m_mainWindow->isVisible()) && memory_host::allPluginsDone();
}

int Application::runUntilDone() {
    m_running = true;
    if (isDone())
        return 0;
    return exec();
}

bool Application::notify(QObject* receiver, QEvent* event) {
    // Receiver and event may be destroyed once the event is handled.
    const QEvent::Type type = event->type();
    const char* receiverClass = receiver->metaObject()->className();
    const bool windowHides = type == QEvent::Hide && m_running && receiver->isWidgetType() &&
                             static_cast<QWidget*>(receiver)->isWindow();

    bool handled = false;
    std::string failure;
    try {
        handled = QApplication::notify(receiver, event);
    } catch (const std::exception& exception) {
        failure = exception.what();
    } catch (...) {
        failure = "an unknown exception";
    }
    if (!failure.empty()) {
        Logger::Write("error: an event of type " + std::to_string(type) + " to " + receiverClass +
                      " failed: " + failure);
    }

    // A plug-in that shows nothing any more is done. The question is queued, so that it comes after
    // the window has finished closing.
    if (windowHides) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (isDone())
                    quit();
            },
            Qt::QueuedConnection);
    }
    return handled;
}

} // namespace workbench
