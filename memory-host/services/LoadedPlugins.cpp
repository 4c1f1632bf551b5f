#include "LoadedPlugins.h"

namespace memory_host {

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

QString pluginOf(const QWidget& widget) {
    for (const auto& [name, plugin] : loadedPlugins().byName)
        if (plugin->defines(widget))
            return name.first + u'/' + name.second;
    return {};
}

} // namespace memory_host
