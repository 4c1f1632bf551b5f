#include "StartMessages.h"

#include <QString>
#include <QStringList>

#include <cstdio>
#include <unistd.h>

namespace workbench {

namespace {

QStringList held;

QString reason() {
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return QStringLiteral("DISPLAY is not set");
    if (held.join(u' ').contains(QStringLiteral("could not connect to display")))
        return QStringLiteral("cannot reach the display \"%1\"")
            .arg(qEnvironmentVariable("DISPLAY"));
    return held.isEmpty() ? QStringLiteral("Qt cannot start") : held.constFirst().simplified();
}

void hold(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type != QtFatalMsg) {
        if (type != QtDebugMsg && type != QtInfoMsg)
            held << text;
        return;
    }
    std::fprintf(stderr, "workbench: there is no display to open a window on: %s\n",
                 reason().toLocal8Bit().constData());
    // Qt would abort. Nothing is open yet that needs cleaning up.
    _exit(1);
}

} // namespace

StartMessages::StartMessages() : m_before(qInstallMessageHandler(hold)) {}

StartMessages::~StartMessages() {
    qInstallMessageHandler(m_before);
    held.clear();
}

} // namespace workbench
