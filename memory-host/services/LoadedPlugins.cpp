#include "LoadedPlugins.h"

#include <QScopedValueRollback>

namespace memory_host {

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

} // namespace

LoadedPlugins& loadedPlugins() {
    // Never destroyed: static objects of plug-ins may still send commands while the process ends.
    static auto* const all = new LoadedPlugins;
    return *all;
}

Plugin* findOrReport(const QString& type, const QString& name, const std::string& what) {
    auto& loaded = loadedPlugins().byName;
    const auto found = loaded.find({type, name});
    if (found != loaded.end())
        return found->second.get();
    Logger::Write("Plug-in " + type.toStdString() + "/" + name.toStdString() + " is not loaded (" +
                  what + ")");
    return nullptr;
}

bool sendWritable(const PluginCall& call) {
    return send(call, [&](const EntryPoints& entry, const char* command, PluginResult* result) {
        entry.command(command, call.data, result);
    });
}

bool sendReadOnly(const PluginCall& call) {
    return send(call, [&](const EntryPoints& entry, const char* command, PluginResult* result) {
        entry.commandC(command, call.constData, result);
    });
}

QString pluginOf(const QWidget& widget) {
    for (const auto& [name, plugin] : loadedPlugins().byName)
        if (plugin->defines(widget))
            return name.first + u'/' + name.second;
    return {};
}

} // namespace memory_host
