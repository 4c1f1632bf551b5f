#include "PluginManager.h"

#include "LoadedPlugins.h"
#include "PluginFolder.h"

#include <QScopedValueRollback>

using namespace memory_host;

namespace {

/// Makes `call` the current one while `run(entryPoints, command, result)` calls the plug-in.
/// Returns whether it succeeded.
template <class Run> bool send(const PluginCall& call, Run run) {
    const std::string what =
        call.command + (call.argument.empty() ? "" : " " + call.argument) + " from " + call.sender;
    const Plugin* const plugin =
        findOrReport(QString::fromLatin1(call.type), QString::fromLatin1(call.name), what);
    if (!plugin)
        return false;
    const QScopedValueRollback current(loadedPlugins().call, &call);
    return plugin->run(what, [&](PluginResult* result) {
        run(plugin->entryPoints(), call.command.c_str(), result);
    });
}

bool sendWritable(const PluginCall& call) {
    return send(call, [&](const EntryPoints& entry, const char* command, PluginResult* result) {
        entry.command(command, call.data, result);
    });
}

} // namespace

bool memory_host::commandPlugin(const std::string& type, const std::string& name,
                                const std::string& sender, const std::string& command,
                                const std::string& argument) {
    return sendWritable({type, name, sender, command, argument, nullptr, nullptr, nullptr});
}

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
    const auto& loaded = loadedPlugins().byName;
    const auto found = loaded.find({QString::fromLatin1(type), QString::fromLatin1(name)});
    return found == loaded.end() ? nullptr : found->second.get();
}

const PluginCall* PluginManager::CurrentCall() {
    return loadedPlugins().call;
}
