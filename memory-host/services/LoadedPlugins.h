// The plug-ins that are loaded now.
#pragma once

#include "Plugin.h"

#include <QString>
#include <QWidget>

#include <map>
#include <memory>
#include <string>
#include <utility>

namespace memory_host {

struct LoadedPlugins {
    std::map<std::pair<QString, QString>, std::unique_ptr<Plugin>> byName; ///< by type and name
    const PluginCall* call = nullptr; ///< the innermost call in progress
    bool unloading = false;
};

LoadedPlugins& loadedPlugins();

/// The loaded plug-in, or null and a line in the log that says what was not run.
Plugin* findOrReport(const QString& type, const QString& name, const std::string& what);

/// Sends a call's command through the entry point for writable, or for read-only, data. Returns
/// whether the plug-in is there and succeeded; what went wrong is in the log.
bool sendWritable(const PluginCall& call);
bool sendReadOnly(const PluginCall& call);

/// The loaded plug-in whose library defines the class of `widget`, as "type/name"; empty for none.
QString pluginOf(const QWidget& widget);

} // namespace memory_host
