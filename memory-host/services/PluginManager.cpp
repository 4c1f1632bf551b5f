#include "PluginManager.h"

#include "LoadedPlugins.h"

using namespace memory_host;

void PluginManager::Command(const std::string& type, const std::string& name,
                            const std::string& sender, const std::string& command,
                            const std::string& argument, void* data) {
    sendWritable({type, name, sender, command, argument, data, nullptr, nullptr});
}

void PluginManager::Command(const std::string& type, const std::string& name,
                            const std::string& sender, const std::string& command,
                            const std::string& argument, const void* data) {
    sendReadOnly({type, name, sender, command, argument, nullptr, data, nullptr});
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
