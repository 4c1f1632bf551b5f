#include "VirtualScreen.h"

#include <QColorSpace>
#include <QDeadlineTimer>
#include <QRegularExpression>
#include <QThread>

namespace end_to_end {

namespace {
constexpr int patience = 120'000; // ms
constexpr int lookAgainAfter = 20;

QString number(Qt::MouseButton button) {
    return button == Qt::LeftButton ? "1" : button == Qt::MiddleButton ? "2" : "3";
}

/// What moves the mouse to a place in a window.
QStringList move(qint64 window, QPoint to) {
    return {"mousemove", "--window", QString::number(window), QString::number(to.x()),
            QString::number(to.y())};
}
} // namespace

VirtualScreen::VirtualScreen() : m_environment(QProcessEnvironment::systemEnvironment()) {
    m_server.setStandardErrorFile(QProcess::nullDevice());
    // It takes a free number by itself, and prints it when it is ready. It does not start anew when
    // the last program has gone, as the next one would not reach it meanwhile.
    m_server.start("Xvfb", {"-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
                            "-noreset"});
    if (!m_server.waitForStarted() || !m_server.waitForReadyRead())
        qFatal("Xvfb does not start: %s", qPrintable(m_server.errorString()));
    m_name = ':' + QString::fromLatin1(m_server.readLine()).trimmed();
    m_environment.insert("DISPLAY", m_name);
}

VirtualScreen::~VirtualScreen() {
    m_server.terminate();
    m_server.waitForFinished();
}

void VirtualScreen::show(Program& program) const {
    program.set("QT_QPA_PLATFORM", "xcb");
    program.set("DISPLAY", m_name);
}

QByteArray VirtualScreen::runTool(const QString& tool, const QStringList& arguments) const {
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.start(tool, arguments);
    if (!process.waitForStarted())
        qFatal("%s does not start: %s", qPrintable(tool), qPrintable(process.errorString()));
    process.waitForFinished(patience);
    return process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

qint64 VirtualScreen::findWindow(const QString& title) const {
    const QString pattern = '^' + QRegularExpression::escape(title) + '$';
    // A window that goes away during the search makes the tool fail; the next search is another.
    const QByteArray found = runTool("xdotool", {"search", "--onlyvisible", "--name", pattern});
    return found.split('\n').constFirst().toLongLong();
}

int VirtualScreen::windowCount() const {
    return static_cast<int>(
        runTool("xdotool", {"search", "--onlyvisible", "--class", "."}).count('\n'));
}

qint64 VirtualScreen::waitForWindow(const QString& title, Program& program) const {
    const QDeadlineTimer deadline(patience);
    while (true) {
        if (const qint64 window = findWindow(title))
            return window;
        if (!program.isRunning() || deadline.hasExpired())
            return 0;
        QThread::msleep(lookAgainAfter);
    }
}

void VirtualScreen::click(qint64 window, QPoint position, Qt::MouseButton button) const {
    runTool("xdotool", move(window, position) + QStringList{"click", number(button)});
}

void VirtualScreen::drag(qint64 window, QPoint from, QPoint to, Qt::MouseButton button) const {
    constexpr int steps = 8;
    QStringList all = move(window, from) + QStringList{"mousedown", number(button)};
    for (int step = 1; step <= steps; ++step)
        all += move(window, from + (to - from) * step / steps);
    runTool("xdotool", all + QStringList{"mouseup", number(button)});
}

void VirtualScreen::focus(qint64 window) const {
    runTool("xdotool", {"windowfocus", "--sync", QString::number(window)});
}

void VirtualScreen::type(const QString& text) const {
    runTool("xdotool", {"type", "--delay", "5", text});
}

void VirtualScreen::key(const QString& key) const {
    runTool("xdotool", {"key", key});
}

void VirtualScreen::key(const QString& key, qint64 window) const {
    runTool("xdotool", {"key", "--window", QString::number(window), key});
}

void VirtualScreen::moveMouseAway() const {
    runTool("xdotool", {"mousemove", "1279", "1023"});
}

QImage VirtualScreen::picture(qint64 window) const {
    moveMouseAway();
    // A format that takes no time to write.
    const QByteArray bytes =
        runTool("import", {"-silent", "-window", QString::number(window), "-depth", "8", "ppm:-"});
    // In one format and without a colour space, so that pictures can be compared.
    QImage image = QImage::fromData(bytes).convertToFormat(QImage::Format_RGB32);
    image.setColorSpace({});
    return image;
}

} // namespace end_to_end
