#include "Program.h"

#include <QDeadlineTimer>

namespace end_to_end {

namespace {
constexpr int patience = 120'000; // ms; a sanitized build on a busy machine is slow

QStringList lines(const QByteArray& bytes) {
    return QString::fromUtf8(bytes).split(u'\n', Qt::SkipEmptyParts);
}
} // namespace

Program::Program(const QString& path)
    : m_path(path), m_environment(QProcessEnvironment::systemEnvironment()) {
    set("QT_QPA_PLATFORM", "offscreen");
    set("HOME", home());
    set("XDG_CONFIG_HOME", home() + "/config");
    set("XDG_STATE_HOME", home() + "/state");
    set("XDG_CACHE_HOME", home() + "/cache");
    set("XDG_RUNTIME_DIR", home());
    set("LC_ALL", "C.UTF-8");
}

Program::~Program() {
    m_process.kill();
    m_process.waitForFinished();
}

void Program::set(const QString& variable, const QString& value) {
    if (value.isNull())
        m_environment.remove(variable);
    else
        m_environment.insert(variable, value);
}

void Program::start(const QStringList& arguments) {
    m_errors.clear();
    m_process.setProcessEnvironment(m_environment);
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.start(m_path, arguments);
    if (!m_process.waitForStarted())
        qFatal("%s does not start: %s", qPrintable(m_path), qPrintable(m_process.errorString()));
}

bool Program::waitForError(const QString& text) {
    const QDeadlineTimer deadline(patience);
    m_process.setReadChannel(QProcess::StandardError);
    while (true) {
        // First this, as it may take in more of the text.
        const bool running = isRunning();
        m_errors += m_process.readAllStandardError();
        if (!errorLines().filter(text).isEmpty())
            return true;
        if (!running || deadline.hasExpired())
            return false;
        m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime()));
    }
}

bool Program::waitUntilStarted() {
    return waitForError("Execution successful");
}

bool Program::isRunning() {
    // Looks whether it has ended meanwhile.
    return m_process.state() == QProcess::Running && !m_process.waitForFinished(0);
}

Ended Program::finish() {
    Ended ended;
    if (isRunning() && !m_process.waitForFinished(patience)) {
        m_process.kill();
        m_process.waitForFinished();
        ended.errors << "(did not end by itself)";
    }
    m_errors += m_process.readAllStandardError();
    ended.normally = m_process.exitStatus() == QProcess::NormalExit;
    ended.status = m_process.exitCode();
    ended.output = lines(m_process.readAllStandardOutput());
    ended.errors += errorLines();
    return ended;
}

Ended Program::run(const QStringList& arguments) {
    start(arguments);
    return finish();
}

QStringList Program::errorLines() const {
    QStringList all = lines(m_errors);
    // The offscreen platform says what it cannot do with each window.
    all.removeIf(
        [](const QString& line) { return line.startsWith("This plugin does not support"); });
    return all;
}

} // namespace end_to_end
