// The program that people start: opens files, loads the plug-ins, and starts the Structure Editor.
#include "Application.h"
#include "CommandLine.h"
#include "Logger.h"
#include "Opening.h"
#include "Places.h"
#include "StandardStreams.h"
#include "StopSignals.h"
#include "services/DataFolder.h"
#include "services/Log.h"
#include "services/PluginFolder.h"
#include "services/Settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <cstdio>
#include <string>

namespace {

constexpr const char* structureEditor = "Edit/Vuxo";

enum ExitStatus { Done = 0, NothingToShow = 1, NotWritten = 1, WrongUsage = 2 };

/// A line about the program itself rather than a file or a plug-in.
void report(const std::string& line) {
    Logger::Write("workbench: " + line);
}

QString folder(const std::optional<std::string>& asked, const QString& installed) {
    return asked ? QDir(QFile::decodeName(asked->c_str())).absolutePath() : installed;
}

/// Whether `path` is a folder; reports it if not.
bool isFolder(const std::string& kind, const QString& path) {
    const QFileInfo place(path);
    if (!place.isDir())
        report("the " + kind + " folder " + path.toStdString() +
               (place.exists() ? " is no folder" : " does not exist"));
    return place.isDir();
}

/// Sends the Structure Editor its default action and runs until all plug-ins are done.
int runPlugins(workbench::Application& application, const QString& plugins) {
    if (!isFolder("plug-in", plugins))
        return NothingToShow;
    const QString editor = QString::fromLatin1(structureEditor);
    if (!memory_host::loadPlugins(plugins).contains(editor)) {
        report(
            ("no Structure Editor (" + editor + ") could be loaded from " + plugins).toStdString());
        return NothingToShow;
    }
    const workbench::StopSignals stopSignals;
    // If it did not start, the reason is in the log, and so on standard error.
    return memory_host::startPlugin(editor) ? application.runUntilDone() : NothingToShow;
}

/// Has the view write a picture.
int writePicture(const workbench::CommandLine& line, const QString& plugins) {
    if (!isFolder("plug-in", plugins))
        return NothingToShow;
    memory_host::loadPlugins(plugins);
    return memory_host::commandPlugin("Display", "View3D", "workbench", "Picture",
                                      *line.picture + ' ' + line.size)
               ? Done
               : NotWritten;
}

int run(const workbench::CommandLine& line, char* program) {
    if (line.picture && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (line.verbose)
        memory_host::setLogLevel(memory_host::LogLevel::Debug);
    else
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    // The command line is the workbench's own; Qt's options can be given in the environment.
    int count = 1;
    char* arguments[] = {program, nullptr};
    const auto application = workbench::Application::start(count, arguments);

    const QString data = folder(line.data, workbench::installedDataFolder());
    if (line.data && !isFolder("data", data))
        return NothingToShow;
    memory_host::setDataFolder(data);
    memory_host::setSettingsFile(workbench::settingsFile());
    memory_host::setDefaultSettingsFile(data + QStringLiteral("/settings.ini"));
    memory_host::setLogFile(workbench::logFile());

    std::vector<std::string> files = line.files;
    if (files.empty()) {
        for (const QString& sample : workbench::samples(data))
            files.push_back(QFile::encodeName(sample).toStdString());
        if (files.empty()) {
            report("there is no sample in " + data.toStdString());
            return NothingToShow;
        }
    }
    workbench::Opening opening(Logger::Write);
    if (opening.open(files) == 0)
        return NothingToShow;

    const QString plugins = folder(line.plugins, workbench::installedPluginFolder());
    const int status =
        line.picture ? writePicture(line, plugins) : runPlugins(*application, plugins);
    memory_host::unloadPlugins();
    return status;
}

} // namespace

int main(int argc, char** argv) {
    workbench::secureStandardStreams();
    workbench::CommandLine line;
    const std::string wrong =
        workbench::readCommandLine(std::vector<std::string>(argv + 1, argv + argc), line);
    if (!wrong.empty()) {
        std::fprintf(stderr, "workbench: %s\n", wrong.c_str());
        return WrongUsage;
    }
    switch (line.task) {
    case workbench::CommandLine::Task::Help:
        return workbench::writeToStandardOutput(workbench::helpText()) ? Done : NotWritten;
    case workbench::CommandLine::Task::Version:
        return workbench::writeToStandardOutput("workbench " WORKBENCH_VERSION "\n") ? Done
                                                                                     : NotWritten;
    case workbench::CommandLine::Task::Run:
        break;
    }
    return run(line, argv[0]);
}
