#include "Plugin.h"

#include "LibraryFile.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <QScopedValueRollback>
#include <QWidget>

#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <memory>
#include <typeinfo>

namespace {

int running = 0; ///< entry points that have not returned

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

/// Runs an entry point; returns a description of the exception that it threw, or an empty string.
template <class Call> std::string attempt(Call call) {
    const QScopedValueRollback inside(running, running + 1);
    try {
        call();
        return {};
    } catch (const std::exception& e) {
        return "threw " + exceptionClass() + ": " + e.what();
    } catch (...) {
        return "threw " + exceptionClass();
    }
}

/// RAII: if the process ends while a plug-in is loaded, the log names the plug-in. The system's
/// loader ends the process on an exception from a library's static objects.
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

int memory_host::runningEntryPoints() {
    return running;
}

Plugin::Plugin(const QString& type, const QString& name, const QString& file)
    : m_label("Plug-in " + type.toStdString() + "/" + name.toStdString()), m_library(file) {
    // Resolves all symbols at once: a missing one is an error here, and does not end the process in
    // the middle of a command.
    m_library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
}

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

bool Plugin::run(const std::string& what, const std::function<void(PluginResult*)>& call) const {
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
    // A plug-in that throws here counts as done, or the program would never end.
    bool done = true;
    const std::string failure = attempt([&] { done = m_entryPoints.isDone(); });
    // The question comes again and again, but the same failure is logged once.
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
        // Widgets given to deleteLater() are deleted now, before the plug-in's code is unloaded.
        if (widget)
            QCoreApplication::sendPostedEvents(widget, QEvent::DeferredDelete);
    }
    m_needed = !failure.empty();
}

const void* Plugin::code() const {
    const memory_host::EntryPoints& all = m_entryPoints;
    for (const auto entry :
         {reinterpret_cast<const void*>(all.cleanup), reinterpret_cast<const void*>(all.command),
          reinterpret_cast<const void*>(all.commandC), reinterpret_cast<const void*>(all.execute0),
          reinterpret_cast<const void*>(all.isDone)})
        if (entry)
            return entry;
    return nullptr;
}

bool Plugin::defines(const QWidget& widget) const {
    return code() && memory_host::isOfLibrary(widget, code());
}

std::string Plugin::leftBehind() const {
    // Without any entry point there is no address in the library to search by.
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
