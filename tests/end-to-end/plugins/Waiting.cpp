// A plug-in that runs an event loop when it is started, until the file that the environment names
// in WAITS_FOR is there.
#include "HostExport.h"
#include "Logger.h"
#include "PluginResult.h"

#include <QEventLoop>
#include <QFile>
#include <QTimer>

extern "C" HOST_EXPORT void Command(const char*, void*, PluginResult*) {}
extern "C" HOST_EXPORT void CommandC(const char*, const void*, PluginResult*) {}
extern "C" HOST_EXPORT void Execute0(PluginResult*) {
    QEventLoop loop;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&loop] {
        if (QFile::exists(qEnvironmentVariable("WAITS_FOR")))
            loop.quit();
    });
    look.start(10);
    Logger::Write("waiting");
    loop.exec();
}
extern "C" HOST_EXPORT bool IsDone() {
    return true;
}
extern "C" HOST_EXPORT void Cleanup() {}
