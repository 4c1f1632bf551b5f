// The program that people start: opens files, loads the plug-ins, and starts them.
#include "Application.h"
#include "CommandLine.h"
#include "CrashJournal.h"
#include "Focus.h"
#include "ItemOrigin.h"
#include "Logger.h"
#include "MainWindow.h"
#include "OneInstance.h"
#include "Opening.h"
#include "Places.h"
#include "Recovery.h"
#include "Saving.h"
#include "Space.h"
#include "StandardStreams.h"
#include "StatusLine.h"
#include "StopSignals.h"
#include "files/Saving.h"
#include "history/Steps.h"
#include "services/DataFolder.h"
#include "services/Log.h"
#include "services/PluginFolder.h"
#include "services/Settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSet>

#include <cstdio>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace {

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

/// RAII: gathers the lines of the log that are written before the window is there to show them.
class EarlyLines {
public:
    EarlyLines() {
        memory_host::setLogListener([this](const std::string& line) {
            const std::lock_guard lock(m_mutex);
            m_lines.push_back(line);
        });
    }
    ~EarlyLines() { memory_host::setLogListener({}); }
    EarlyLines(const EarlyLines&) = delete;
    EarlyLines& operator=(const EarlyLines&) = delete;

    std::vector<std::string> take() {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_lines, {});
    }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

/// Gathers the files that other starts bring before the window is there to open them. Those that
/// nobody takes are reported: who brought them has ended.
class EarlyFiles {
public:
    explicit EarlyFiles(const workbench::OneInstance& instance) {
        m_connection = QObject::connect(&instance, &workbench::OneInstance::filesCame,
                                        [this](const QStringList& files) { m_files << files; });
    }
    ~EarlyFiles() {
        end();
        for (const QString& file : std::as_const(m_files))
            report(file.toStdString() + " is not opened: the program ends");
    }
    EarlyFiles(const EarlyFiles&) = delete;
    EarlyFiles& operator=(const EarlyFiles&) = delete;

    QStringList take() { return std::exchange(m_files, {}); }
    /// Gathers no more.
    void end() { QObject::disconnect(m_connection); }

private:
    QMetaObject::Connection m_connection;
    QStringList m_files;
};

/// Opens the files of the command line, and those that other starts bring meanwhile. Returns those
/// that could be opened.
QStringList openFiles(const std::vector<std::string>& files, EarlyFiles& early,
                      workbench::Opening& opening) {
    QStringList opened;
    std::vector<std::string> next = files;
    while (!next.empty()) {
        opening.open(next,
                     [&](std::size_t file) { opened << QFile::decodeName(next[file].c_str()); });
        next.clear();
        for (const QString& file : early.take())
            next.push_back(QFile::encodeName(file).toStdString());
    }
    return opened;
}

/// The windows are closed, or a signal ends the program. That asks nothing: what is not saved then
/// is for the next start.
void endJournal(workbench::CrashJournal& journal, bool isAnyOpen) {
    journal.end(isAnyOpen && !workbench::unsavedEntries().empty());
}

/// Starts the plug-ins, each with a window of its own, and runs until all are done.
int runInWindows(workbench::Application& application, const QStringList& plugins,
                 workbench::CrashJournal& journal) {
    const workbench::StopSignals stopSignals;
    for (const QString& plugin : plugins)
        memory_host::startPlugin(plugin);
    if (memory_host::allPluginsDone()) {
        report("no plug-in shows a window");
        return NothingToShow;
    }
    const int status = application.runUntilDone();
    endJournal(journal, !memory_host::allPluginsDone());
    return status;
}

/// The same in one window, which takes over what came early.
int runInOneWindow(workbench::Application& application, const QStringList& plugins,
                   workbench::OneInstance& instance, workbench::CrashJournal& journal,
                   const QString& recovered, const QStringList& opened, EarlyLines& lines,
                   EarlyFiles& files) {
    const workbench::StopSignals stopSignals;
    workbench::MainWindow window({plugins, memory_host::dataFolder(), workbench::memoryFile()});
    application.setMainWindow(&window);
    if (!window.startPlugins()) {
        report("no plug-in shows a window");
        memory_host::unloadPlugins();
        return NothingToShow;
    }
    QObject::connect(&window, &workbench::MainWindow::saved, &journal,
                     &workbench::CrashJournal::changed);
    window.rememberFiles(opened);
    window.status().say(recovered);
    for (const std::string& line : lines.take())
        window.showError(line);
    files.end();
    QObject::connect(&instance, &workbench::OneInstance::filesCame, &window,
                     [&window](const QStringList& more) {
                         window.present();
                         window.openFiles(more);
                     });
    // Plug-ins may have run an event loop when they started.
    if (const QStringList came = files.take(); !came.isEmpty())
        QMetaObject::invokeMethod(
            &window, [&window, came] { window.openFiles(came); }, Qt::QueuedConnection);
    // The first entry is shown, and not an empty tree.
    TAVIK::Space* const space = TAVIK::Space::instance();
    if (space->ChildBegin() != space->ChildEnd())
        TAVIK::Focus::set(*space->ChildBegin(), nullptr);
    window.show();
    const int status = application.runUntilDone();
    endJournal(journal, window.isVisible());
    // When the session ends the window is still open.
    if (window.isVisible())
        window.rememberWindow();
    // The plug-ins destroy their windows before the one around them goes.
    memory_host::unloadPlugins();
    return status;
}

/// Whether a program that is running has taken the files over.
bool handOver(const QString& socket, const std::vector<std::string>& files) {
    QStringList names;
    for (const std::string& file : files)
        names << QFile::decodeName(file.c_str());
    return workbench::OneInstance::canBeHandedOver(names) &&
           workbench::OneInstance::handOver(socket, names);
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

/// Saves all that was opened as one file, if it is all that was asked for.
int saveFiles(const workbench::CommandLine& line, bool areAllOpen) {
    if (!areAllOpen) {
        report(*line.save + " is not written: not every file could be opened");
        return NotWritten;
    }
    TAVIK::Space* const space = TAVIK::Space::instance();
    memory_host::SaveOptions options;
    options.onlyActiveModels = line.asShown;
    try {
        for (const std::string& loss :
             memory_host::saveFile({space->ChildBegin(), space->ChildEnd()}, *line.save, options))
            Logger::Write(loss);
        return Done;
    } catch (const memory_host::SaveError& error) {
        Logger::Write(error.what());
    } catch (const std::bad_alloc&) {
        report("there is not enough memory to write " + *line.save);
    }
    return NotWritten;
}

/// Without those that are open already, as somebody may start the program in the same way again.
std::vector<std::string> withoutOpen(std::vector<std::string> files) {
    TAVIK::Space* const space = TAVIK::Space::instance();
    QSet<QString> open;
    for (TAVIK::Compound** entry = space->ChildBegin(); entry != space->ChildEnd(); ++entry)
        open << QFileInfo(TAVIK::OriginOf(*entry)).canonicalFilePath();
    open.remove(QString());
    std::erase_if(files, [&open](const std::string& file) {
        return open.contains(QFileInfo(QFile::decodeName(file.c_str())).canonicalFilePath());
    });
    return files;
}

std::vector<std::string> samplesIn(const QString& data) {
    std::vector<std::string> files;
    for (const QString& sample : workbench::samples(data))
        files.push_back(QFile::encodeName(sample).toStdString());
    return files;
}

int run(const workbench::CommandLine& line, char* program) {
    const bool isWindowless = line.picture || line.save;
    if (isWindowless && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
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
    // Without a window, nobody takes anything back.
    if (isWindowless)
        memory_host::setHistoryBytes(0);
    else
        memory_host::readHistorySetting();

    // Other plug-ins, data or windows are another program.
    const bool isUsual =
        !line.isNew && !line.windows && !line.plugins && !line.data && !isWindowless;
    const QString socket = isUsual ? workbench::OneInstance::usualSocket() : QString();
    if (isUsual && handOver(socket, line.files))
        return Done;
    workbench::OneInstance instance(socket);
    EarlyFiles earlyFiles(instance);
    instance.listen();

    EarlyLines earlyLines;
    workbench::Opening opening(Logger::Write);
    const std::string journals = QFile::encodeName(workbench::journalFolder()).toStdString();
    workbench::CrashJournal journal(journals,
                                    isWindowless ? std::chrono::milliseconds(0)
                                                 : workbench::CrashJournal::intervalFromSettings());
    const QString recovered =
        isWindowless ? QString() : workbench::Recovery(nullptr, opening).run(journals, journal);
    std::vector<std::string> files = withoutOpen(line.files);
    const auto isAnythingOpen = [] { return TAVIK::Space::instance()->HasChildren(); };
    if (line.files.empty() && !isAnythingOpen()) {
        files = samplesIn(data);
        if (files.empty()) {
            report("there is no sample in " + data.toStdString());
            return NothingToShow;
        }
    }
    const QStringList opened = openFiles(files, earlyFiles, opening);
    if (opened.isEmpty() && !isAnythingOpen())
        return NothingToShow;
    if (line.save)
        return saveFiles(line, opened.size() == static_cast<qsizetype>(files.size()));

    const QString plugins = folder(line.plugins, workbench::installedPluginFolder());
    if (line.picture) {
        const int status = writePicture(line, plugins);
        memory_host::unloadPlugins();
        return status;
    }
    if (!isFolder("plug-in", plugins))
        return NothingToShow;
    const QStringList loaded = memory_host::loadPlugins(plugins);
    if (loaded.isEmpty()) {
        report("no plug-in could be loaded from " + plugins.toStdString());
        return NothingToShow;
    }
    if (!line.windows)
        return runInOneWindow(*application, loaded, instance, journal, recovered, opened,
                              earlyLines, earlyFiles);
    memory_host::setLogListener({}); // nobody will take the lines
    const int status = runInWindows(*application, loaded, journal);
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
