#include "Apart.h"

#include <QDataStream>
#include <QFile>
#include <QTemporaryDir>
#include <QThreadPool>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace random_use {

namespace {

// No session takes nearly as long, in whatever build.
constexpr unsigned int secondsOfSession = 120;

QDataStream& operator<<(QDataStream& stream, const std::string& text) {
    return stream << QByteArray::fromStdString(text);
}
QDataStream& operator>>(QDataStream& stream, std::string& text) {
    QByteArray bytes;
    stream >> bytes;
    text = bytes.toStdString();
    return stream;
}

QDataStream& operator<<(QDataStream& stream, const Step& step) {
    return stream << step.action << step.name << step.target << step.button << step.place
                  << step.key << step.modifiers << step.value << step.answer << step.text
                  << step.edit.kind << step.edit.target << step.edit.value << step.edit.name;
}
QDataStream& operator>>(QDataStream& stream, Step& step) {
    return stream >> step.action >> step.name >> step.target >> step.button >> step.place >>
           step.key >> step.modifiers >> step.value >> step.answer >> step.text >> step.edit.kind >>
           step.edit.target >> step.edit.value >> step.edit.name;
}

void becomeThePlayer(bool quiet) {
    alarm(secondsOfSession);
#ifndef __SANITIZE_ADDRESS__
    // The test library's handlers take their time to print where it was.
    for (const int number : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV})
        std::signal(number, SIG_DFL);
#endif
    if (quiet)
        dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
}

QStringList leaks() {
#ifdef __SANITIZE_ADDRESS__
    if (__lsan_do_recoverable_leak_check() != 0)
        return {QStringLiteral("memory is leaked")};
#endif
    return {};
}

QString howItEnded(int status) {
    return WIFSIGNALED(status)
               ? QStringLiteral("the program ended with signal %1, %2")
                     .arg(WTERMSIG(status))
                     .arg(QString::fromLocal8Bit(strsignal(WTERMSIG(status))))
               : QStringLiteral("the program ended with exit code %1").arg(WEXITSTATUS(status));
}

// Writes true and the step before each step, at the end false and what differed.
template <class Playing>
[[noreturn]] void playAndExit(int end, bool quiet, const Playing& playing) noexcept {
    becomeThePlayer(quiet);
    QFile pipe;
    (void)pipe.open(end, QIODevice::WriteOnly | QIODevice::Unbuffered);
    QDataStream records(&pipe);
    const Outcome outcome = playing([&](const Step& step) { records << true << step; });
    records << false << outcome.faults + leaks();
    _exit(0);
}

// Runs `playing(begin)` in a process of its own, which calls begin(step) before each step. Gives
// the outcome, and in `steps` those that have begun.
template <class Playing>
Outcome apart(bool quiet, std::vector<Step>& steps, const Playing& playing) {
    // What the first window loads is loaded once, and left to each of the processes.
    static const Outcome loaded =
        play({{Start::Empty, 1, false}, {{.action = Action::CommandC, .name = "Show"}}});
    (void)loaded;
    // A process that ends early leaves its files here; and names that one generator makes for all
    // of the processes run out where those before them left theirs.
    const QTemporaryDir folder;
    if (!folder.isValid())
        throw std::runtime_error("no folder for a session");
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe to the process of a session");
    std::fflush(nullptr);
    // Threads that have painted do not come along, and whoever waits for one waits for ever.
    QThreadPool::globalInstance()->waitForDone();
    const pid_t player = fork();
    if (player < 0)
        throw std::runtime_error("no process for a session");
    if (player == 0) {
        qputenv("TMPDIR", QFile::encodeName(folder.path()));
        playAndExit(ends[1], quiet, playing);
    }
    close(ends[1]);
    QFile pipe;
    (void)pipe.open(ends[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    QDataStream records(pipe.readAll());
    int status = 0;
    waitpid(player, &status, 0);

    steps.clear();
    for (bool begins = true; begins;) {
        records >> begins;
        Step step;
        if (begins)
            records >> step;
        if (records.status() != QDataStream::Ok)
            return {steps.size(), {howItEnded(status)}, true};
        if (begins)
            steps.push_back(step);
    }
    Outcome outcome;
    outcome.steps = steps.size();
    records >> outcome.faults;
    return outcome;
}

} // namespace

Outcome playApart(const Session& session) {
    std::vector<Step> begun;
    return apart(true, begun, [&](const Begin& begin) { return play(session, begin); });
}

Outcome playApart(Session& session, Theme theme, unsigned int seed, std::size_t count) {
    return apart(false, session.steps,
                 [&](const Begin& begin) { return play(session, theme, seed, count, begin); });
}

} // namespace random_use
