#include "LibraryFile.h"
#include "Logger.h"
#include "PluginFolder.h"
#include "PluginManager.h"
#include "PluginResult.h"

#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QLibrary>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QVersionNumber>

#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <map>
#include <memory>
#include <typeinfo>
#include <utility>

namespace {

struct EntryPoints {
    void (*command)(const char* name, void* data, PluginResult* result) = nullptr;
    void (*commandC)(const char* name, const void* data, PluginResult* result) = nullptr;
    void (*execute0)(PluginResult* result) = nullptr;
    bool (*isDone)() = nullptr;
    void (*cleanup)() = nullptr;
};

struct Plugins {
    std::map<std::pair<QString, QString>, std::unique_ptr<Plugin>> loaded; ///< by type and name
    const PluginCall* call = nullptr;
    int running = 0; ///< entry points that have not returned
    bool unloading = false;
};

Plugins& plugins() {
    // Never destroyed: static objects of plug-ins may still send commands while the process ends.
    static auto* const all = new Plugins;
    return *all;
}

/// The class of the exception that is being handled.
std::string exceptionClass() {
    const std::type_info* const type = abi::__cxa_current_exception_type();
    if (!type)
        return "an exception";
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), std::free);
    return name ? name.get() : type->name();
}

/// Runs an entry point; returns what came out of it when it did not return, else nothing.
template <class Call> std::string attempt(Call call) {
    const QScopedValueRollback running(plugins().running, plugins().running + 1);
    try {
        call();
        return {};
    } catch (const std::exception& e) {
        return "threw " + exceptionClass() + ": " + e.what();
    } catch (...) {
        return "threw " + exceptionClass();
    }
}

/// Says, while it lives, whose fault it is when the process ends: the system's loader lets no
/// exception out of a library's static objects pass.
class WhileLoading {
public:
    explicit WhileLoading(const std::string& plugin)
        : m_plugin(s_plugin, &plugin), m_before(std::set_terminate(tell)) {}
    ~WhileLoading() { std::set_terminate(m_before); }
    WhileLoading(const WhileLoading&) = delete;
    WhileLoading& operator=(const WhileLoading&) = delete;

private:
    [[noreturn]] static void tell() {
        const std::string failure =
            std::current_exception() ? attempt([] { throw; }) : "ended the program";
        Logger::Write(*s_plugin + " cannot be loaded: one of its static objects " + failure +
                      "; the program cannot go on");
        std::abort();
    }

    static inline const std::string* s_plugin = nullptr;
    QScopedValueRollback<const std::string*> m_plugin;
    std::terminate_handler m_before;
};

} // namespace

class Plugin {
public:
    Plugin(const QString& type, const QString& name, const QString& file)
        : m_label("Plug-in " + type.toStdString() + "/" + name.toStdString()), m_library(file) {
        // All symbols at once: one that is missing is an error here, not the end of the process in
        // the middle of a command.
        m_library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    }

    QString file() const { return m_library.fileName(); }
    const EntryPoints& entryPoints() const { return m_entryPoints; }

    /// Returns whether it is loaded and has all entry points; what it lacks is in the log.
    bool load();

    /// Runs `call(&result)`; returns whether it ended without an exception and with success. What
    /// went wrong is in the log, as a failure of `what`.
    template <class Call> bool run(const std::string& what, Call call) const;

    bool isDone();

    /// Calls Cleanup.
    void cleanUp();
    /// A plug-in that threw in Cleanup or left a widget or a subscriber behind stays in memory: its
    /// code is still needed.
    void unload();

    /// Logs one line about the plug-in.
    void report(const std::string& text) const { Logger::Write(nameInLog() + ' ' + text); }

private:
    template <class Function>
    void resolve(Function& function, const char* symbol, std::string& missing);
    /// A place in the library; null when it has no entry point at all.
    const void* code() const;
    /// What of the library is still in use, in words; empty when nothing is.
    std::string leftBehind() const;
    /// Type, name and file.
    std::string nameInLog() const { return m_label + " (" + file().toStdString() + ')'; }

    std::string m_label;
    QLibrary m_library;
    EntryPoints m_entryPoints;
    std::string m_isDoneFailure;
    bool m_needed = false;
};

template <class Function>
void Plugin::resolve(Function& function, const char* symbol, std::string& missing) {
    function = reinterpret_cast<Function>(m_library.resolve(symbol));
    if (!function)
        missing += std::string(missing.empty() ? "" : ", ") + symbol;
}

bool Plugin::load() {
    const std::string problem = memory_host::libraryProblem(file());
    if (!problem.empty()) {
        report("cannot be loaded: " + problem);
        return false;
    }
    const bool isLoaded = [this] {
        const std::string name = nameInLog();
        const WhileLoading notice(name);
        return m_library.load();
    }();
    if (!isLoaded) {
        report("cannot be loaded: " + m_library.errorString().toStdString());
        return false;
    }
    std::string missing;
    resolve(m_entryPoints.command, "Command", missing);
    resolve(m_entryPoints.commandC, "CommandC", missing);
    resolve(m_entryPoints.execute0, "Execute0", missing);
    resolve(m_entryPoints.isDone, "IsDone", missing);
    resolve(m_entryPoints.cleanup, "Cleanup", missing);
    if (missing.empty())
        return true;
    report("cannot be used: it lacks the entry point " + missing);
    unload();
    return false;
}

template <class Call> bool Plugin::run(const std::string& what, Call call) const {
    PluginResult result;
    const std::string failure = attempt([&] { call(&result); });
    if (!failure.empty()) {
        report(failure + " (" + what + ")");
        return false;
    }
    if (result.GetResultCode() == PluginResult::Success)
        return true;
    const std::string& text = result.GetResultText();
    report("answered with code " + std::to_string(result.GetResultCode()) +
           (text.empty() ? "" : ": " + text) + " (" + what + ")");
    return false;
}

bool Plugin::isDone() {
    // One that cannot say is taken as done, or the program would never end.
    bool done = true;
    const std::string failure = attempt([&] { done = m_entryPoints.isDone(); });
    // It is asked again and again: the same failure is told once.
    if (!failure.empty() && failure != m_isDoneFailure)
        report(failure + " (IsDone)");
    m_isDoneFailure = failure;
    return done;
}

void Plugin::cleanUp() {
    const std::string failure = attempt([&] { m_entryPoints.cleanup(); });
    if (!failure.empty())
        report(failure + " (Cleanup)");
    for (const QPointer<QWidget>& widget : memory_host::widgetsOfLibrary(code())) {
        // deleteLater() is as good as delete, but later is too late.
        if (widget)
            QCoreApplication::sendPostedEvents(widget, QEvent::DeferredDelete);
    }
    m_needed = !failure.empty();
}

const void* Plugin::code() const {
    const EntryPoints& all = m_entryPoints;
    for (const auto entry :
         {reinterpret_cast<const void*>(all.cleanup), reinterpret_cast<const void*>(all.command),
          reinterpret_cast<const void*>(all.commandC), reinterpret_cast<const void*>(all.execute0),
          reinterpret_cast<const void*>(all.isDone)})
        if (entry)
            return entry;
    return nullptr;
}

std::string Plugin::leftBehind() const {
    // One that lacks an entry point was never used, but its static objects may have been busy.
    if (!code())
        return {};
    const auto widgets = memory_host::widgetsOfLibrary(code()).size();
    const auto subscribers = memory_host::subscribersOfLibrary(code());
    std::string left;
    if (widgets > 0)
        left = std::to_string(widgets) + " of its widgets";
    if (subscribers > 0)
        left += (left.empty() ? "" : " and ") + std::to_string(subscribers) + " of its subscribers";
    return left;
}

void Plugin::unload() {
    if (const std::string left = leftBehind(); !left.empty()) {
        report("stays in memory: after Cleanup " + left + " exist");
        m_needed = true;
    }
    if (!m_needed && !m_library.unload())
        report("cannot be unloaded: " + m_library.errorString().toStdString());
}

namespace {

struct PluginFile {
    QString path;
    QVersionNumber version; ///< null for a name without one
};

/// The plug-in files of a folder by the plug-ins' names. Of the versions of one plug-in, the file
/// without a version stands for all, else the newest; most often they are links to one file.
std::map<QString, PluginFile> pluginFiles(const QDir& folder) {
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(QStringLiteral("lib(.+?)\\.so((?:\\.\\d+)*)")));
    std::map<QString, PluginFile> files;
    for (const QFileInfo& info : folder.entryInfoList(QDir::Files)) {
        const QRegularExpressionMatch match = pattern.match(info.fileName());
        if (!match.hasMatch())
            continue;
        const PluginFile file{info.absoluteFilePath(),
                              QVersionNumber::fromString(match.captured(2).mid(1))};
        const auto [found, isNew] = files.try_emplace(match.captured(1), file);
        if (isNew)
            continue;
        PluginFile& other = found->second;
        const bool better =
            file.version.isNull() || (!other.version.isNull() && other.version < file.version);
        const PluginFile left = better ? std::exchange(other, file) : file;
        if (QFileInfo(left.path).canonicalFilePath() != QFileInfo(other.path).canonicalFilePath())
            Logger::Write("Plug-in file " + left.path.toStdString() + " is left out for " +
                          other.path.toStdString());
    }
    return files;
}

/// Loads one plug-in, unless there is one of that type and name.
bool loadPlugin(const QString& type, const QString& name, const QString& path) {
    auto plugin = std::make_unique<Plugin>(type, name, path);
    auto& loaded = plugins().loaded;
    if (const auto found = loaded.find({type, name}); found != loaded.end()) {
        if (found->second->file() != plugin->file())
            plugin->report("is left out: it is loaded from " + found->second->file().toStdString());
        return false;
    }
    if (!plugin->load())
        return false;
    loaded[{type, name}] = std::move(plugin);
    return true;
}

/// The loaded plug-in, or null and a line in the log that says what was not run.
Plugin* findOrReport(const QString& type, const QString& name, const std::string& what) {
    auto& loaded = plugins().loaded;
    const auto found = loaded.find({type, name});
    if (found != loaded.end())
        return found->second.get();
    Logger::Write("Plug-in " + type.toStdString() + "/" + name.toStdString() + " is not loaded (" +
                  what + ")");
    return nullptr;
}

/// Makes `call` the current one while `run(entryPoints, command, result)` calls the plug-in.
template <class Run> void send(const PluginCall& call, Run run) {
    const std::string what =
        call.command + (call.argument.empty() ? "" : " " + call.argument) + " from " + call.sender;
    const Plugin* const plugin =
        findOrReport(QString::fromLatin1(call.type), QString::fromLatin1(call.name), what);
    if (!plugin)
        return;
    const QScopedValueRollback current(plugins().call, &call);
    plugin->run(what, [&](PluginResult* result) {
        run(plugin->entryPoints(), call.command.c_str(), result);
    });
}

void sendWritable(const PluginCall& call) {
    send(call, [&](const EntryPoints& entry, const char* command, PluginResult* result) {
        entry.command(command, call.data, result);
    });
}

} // namespace

void PluginManager::Command(const std::string& type, const std::string& name,
                            const std::string& sender, const std::string& command,
                            const std::string& argument, void* data) {
    sendWritable({type, name, sender, command, argument, data, nullptr, nullptr});
}

void PluginManager::Command(const std::string& type, const std::string& name,
                            const std::string& sender, const std::string& command,
                            const std::string& argument, const void* data) {
    const PluginCall call{type, name, sender, command, argument, nullptr, data, nullptr};
    send(call, [&](const EntryPoints& entry, const char* text, PluginResult* result) {
        entry.commandC(text, data, result);
    });
}

void PluginManager::Execute(const std::string& type, const std::string& name,
                            const std::string& sender, const std::string& command, void* data,
                            void* more) {
    sendWritable({type, name, sender, command, {}, data, nullptr, more});
}

Plugin* PluginManager::FindPlugin(const std::string& type, const std::string& name) {
    const auto& loaded = plugins().loaded;
    const auto found = loaded.find({QString::fromLatin1(type), QString::fromLatin1(name)});
    return found == loaded.end() ? nullptr : found->second.get();
}

const PluginCall* PluginManager::CurrentCall() {
    return plugins().call;
}

namespace memory_host {

QStringList loadPlugins(const QString& folder) {
    QStringList names;
    const QDir root(QDir(folder).absolutePath());
    if (plugins().unloading) {
        Logger::Write("Plug-in folder " + root.path().toStdString() +
                      " is not loaded: plug-ins are being unloaded");
        return names;
    }
    if (folder.isEmpty() || !root.exists()) {
        Logger::Write("Plug-in folder " + folder.toStdString() + " does not exist");
        return names;
    }
    QStringList types = root.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    types.sort();
    for (const QString& type : types) {
        for (const auto& [name, file] : pluginFiles(QDir(root.filePath(type)))) {
            if (loadPlugin(type, name, file.path))
                names << type + u'/' + name;
        }
    }
    return names;
}

bool startPlugin(const QString& typeAndName) {
    const std::string what = "default action";
    const Plugin* const plugin =
        findOrReport(typeAndName.section(u'/', 0, 0), typeAndName.section(u'/', 1), what);
    return plugin &&
           plugin->run(what, [&](PluginResult* result) { plugin->entryPoints().execute0(result); });
}

bool allPluginsDone() {
    bool done = true;
    for (const auto& [name, plugin] : plugins().loaded)
        done = plugin->isDone() && done;
    return done;
}

void unloadPlugins() {
    Plugins& all = plugins();
    if (all.running > 0 || all.unloading) {
        Logger::Write("Plug-ins are not unloaded: one of them is running");
        return;
    }
    const QScopedValueRollback unloading(all.unloading, true);
    // From here on none is found: a command to one that has cleaned up would set it going again.
    const auto leaving = std::exchange(all.loaded, {});
    for (const auto& [name, plugin] : leaving)
        plugin->cleanUp();
    for (const auto& [name, plugin] : leaving)
        plugin->unload();
}

} // namespace memory_host
