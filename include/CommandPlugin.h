// The frame of a plug-in without a window: its entry points, made of a table of commands. A plug-in
// includes this file in one source file and writes one line there:
//
//     COMMAND_PLUGIN({"Hide", &hide}, {"Count", &count})
//
// or, where it keeps what must be gone before the library is unloaded,
//
//     COMMAND_PLUGIN_WITH_CLEANUP(&forgetAll, {"Hide", &hide}, {"Count", &count})
#pragma once

#include "Checks.h"
#include "PluginResult.h"

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

#define COMMAND_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))

// Private to each library: two plug-ins in one process must never share a table.
namespace {

/// The commands of a plug-in. A function that takes writable data is called through the entry point
/// `Command` only; one that takes read-only data, through `CommandC` as well.
class CommandPlugin {
public:
    using Action = void (*)(void* data, PluginResult* result);
    using CAction = void (*)(const void* data, PluginResult* result);

    struct Entry {
        Entry(const char* itsName, Action function) : name(itsName), action(function) {}
        Entry(const char* itsName, CAction function) : name(itsName), cAction(function) {}

        std::string name;
        Action action = nullptr; ///< one of the two is null
        CAction cAction = nullptr;
    };

    /// A null function, an empty name, or one that is there twice warns, and is left out.
    CommandPlugin(std::initializer_list<Entry> entries) {
        for (const Entry& entry : entries)
            add(entry);
    }

    /// Runs the command `name` on writable data.
    void Command(const char* name, void* data, PluginResult* result) const {
        const Entry* const entry = find("Command", name, result);
        if (entry && entry->action)
            entry->action(data, result);
        else if (entry)
            entry->cAction(data, result);
    }
    /// The same for read-only data. A command that needs writable data fails.
    void CommandC(const char* name, const void* data, PluginResult* result) const {
        const Entry* const entry = find("CommandC", name, result);
        if (entry && entry->cAction) {
            entry->cAction(data, result);
        } else if (entry) {
            result->SetResultCode(PluginResult::Failure);
            result->SetResultText("CommandC '" + entry->name + "' needs writable data");
        }
    }

private:
    static constexpr const char* source = "../../include/CommandPlugin";

    void add(const Entry& entry) {
        const bool hasFunction = entry.action || entry.cAction;
        checkThat(hasFunction, "entry.action || entry.cAction", source, __LINE__);
        checkThat(!entry.name.empty(), "! entry.name.empty()", source, __LINE__);
        const bool isNew = !known(entry.name);
        checkThat(isNew, "! known(entry.name)", source, __LINE__);
        if (hasFunction && !entry.name.empty() && isNew)
            m_entries.push_back(entry);
    }

    const Entry* known(const std::string& name) const {
        const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                        [&name](const Entry& entry) { return entry.name == name; });
        return found == m_entries.end() ? nullptr : &*found;
    }

    // The entry of a command; null, and an answer that says so, if there is none.
    const Entry* find(const std::string& entryPoint, const char* name, PluginResult* result) const {
        checkPtr(name, source, __LINE__);
        const std::string wanted(name ? name : "");
        const Entry* const entry = known(wanted);
        if (!entry) {
            result->SetResultCode(PluginResult::NotRecognized);
            result->SetResultText(entryPoint + " '" + wanted + "' not recognized");
        }
        return entry;
    }

    std::vector<Entry> m_entries;
};

} // namespace

/// Defines the five entry points of a plug-in with the given commands, each a name and a function
/// in braces. It has no default action, and is always done. `cleanup`, a function without
/// arguments, is called by the entry point Cleanup: observers, timers and windows that commands
/// have left must not outlive it.
#define COMMAND_PLUGIN_WITH_CLEANUP(cleanup, ...)                                                  \
    namespace {                                                                                    \
    const CommandPlugin& commandPlugin() {                                                         \
        static const CommandPlugin commands{__VA_ARGS__};                                          \
        return commands;                                                                           \
    }                                                                                              \
    }                                                                                              \
    COMMAND_PLUGIN_EXPORT void Command(const char* name, void* data, PluginResult* result) {       \
        commandPlugin().Command(name, data, result);                                               \
    }                                                                                              \
    COMMAND_PLUGIN_EXPORT void CommandC(const char* name, const void* data,                        \
                                        PluginResult* result) {                                    \
        commandPlugin().CommandC(name, data, result);                                              \
    }                                                                                              \
    COMMAND_PLUGIN_EXPORT void Execute0(PluginResult*) {}                                          \
    COMMAND_PLUGIN_EXPORT bool IsDone() {                                                          \
        return true;                                                                               \
    }                                                                                              \
    COMMAND_PLUGIN_EXPORT void Cleanup() {                                                         \
        (cleanup)();                                                                               \
    }

/// The same for a plug-in that keeps nothing.
#define COMMAND_PLUGIN(...) COMMAND_PLUGIN_WITH_CLEANUP([] {}, __VA_ARGS__)
