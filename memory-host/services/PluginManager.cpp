#include "PluginManager.h"

#include "LoadedPlugins.h"

#include <QScopedValueRollback>

using namespace memory_host;

namespace {

/// Makes `call` the current one while `run(entryPoints, command, result)` calls the plug-in.
template <class Run> void send(const PluginCall& call, Run run) {
    const std::string what =
        call.command + (call.argument.empty() ? "" : " " + call.argument) + " from " + call.sender;
    const Plugin* const plugin =
        findOrReport(QString::fromLatin1(call.type), QString::fromLatin1(call.name), what);
    if (!plugin)
        return;
    const QScopedValueRollback current(loadedPlugins().call, &call);
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
    const auto& loaded = loadedPlugins().byName;
    const auto found = loaded.find({QString::fromLatin1(type), QString::fromLatin1(name)});
    return found == loaded.end() ? nullptr : found->second.get();
}

const PluginCall* PluginManager::CurrentCall() {
    return loadedPlugins().call;
}
