#include "Application.h"

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
    // Whether the program ends is the plug-ins' to say: a help window does not hold it open.
    setQuitOnLastWindowClosed(false);
}

Application::~Application() = default;

std::unique_ptr<Application> Application::start(int& count, char** arguments) {
    const StartMessages messages;
    return std::unique_ptr<Application>(new Application(count, arguments));
}

int Application::runUntilDone() {
    m_running = true;
    if (memory_host::allPluginsDone())
        return 0;
    return exec();
}

bool Application::notify(QObject* receiver, QEvent* event) {
    // Either may be gone after the event.
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

    // A plug-in that shows nothing any more is done. It is asked when its window has finished
    // closing, not in the middle of it.
    if (windowHides) {
        QMetaObject::invokeMethod(
            this,
            [] {
                if (memory_host::allPluginsDone())
                    quit();
            },
            Qt::QueuedConnection);
    }
    return handled;
}

} // namespace workbench
