#include "StopSignals.h"

#include <QCoreApplication>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace workbench {

namespace {

// A signal handler may call only async-signal-safe functions: it writes a byte to a pipe that the
// event loop reads (self-pipe), and keeps errno for the code that it interrupts.
int ends[2] = {-1, -1};

void wake(int) {
    const int before = errno;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(ends[1], &byte, 1);
    errno = before;
}

} // namespace

StopSignals::StopSignals() {
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return; // the signals then end the process, as is the default
    m_notifier.emplace(ends[0], QSocketNotifier::Read);
    QObject::connect(&*m_notifier, &QSocketNotifier::activated, [] {
        char byte = 0;
        [[maybe_unused]] const ssize_t got = read(ends[0], &byte, 1);
        // Not quit(), which closes windows: there may be nobody to answer what they ask.
        QCoreApplication::exit();
    });
    struct sigaction action {};
    action.sa_handler = wake;
    // A second signal ends the process at once, should the event loop not answer.
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, &m_interrupt);
    sigaction(SIGTERM, &action, &m_terminate);
}

StopSignals::~StopSignals() {
    if (!m_notifier)
        return;
    sigaction(SIGINT, &m_interrupt, nullptr);
    sigaction(SIGTERM, &m_terminate, nullptr);
    m_notifier.reset();
    for (int& end : ends) {
        close(end);
        end = -1;
    }
}

} // namespace workbench
