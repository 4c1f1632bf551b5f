// Loading plug-ins. A plug-in's file is <folder>/<type>/lib<name>.so, or with a version behind it
// (lib<name>.so.0): its place says its type and name before it is loaded. Of several versions the
// file without one is taken, else the newest.
#pragma once

#include "HostExport.h"

#include <QString>
#include <QStringList>

#include <string>

namespace memory_host {

/// Loads every plug-in of `folder`, in order of type and name. One that cannot be loaded or lacks
/// an entry point is an error in the log with its file's name, and the others go on. Returns the
/// loaded ones as "type/name".
HOST_EXPORT QStringList loadPlugins(const QString& folder);
/// Sends a loaded plug-in its default action. Returns whether it answered without an error; what
/// went wrong is in the log.
HOST_EXPORT bool startPlugin(const QString& typeAndName);
/// PluginManager::Command() without data. Returns whether the plug-in is there and succeeded; what
/// went wrong is in the log.
HOST_EXPORT bool commandPlugin(const std::string& type, const std::string& name,
                               const std::string& sender, const std::string& command,
                               const std::string& argument);
/// Whether every loaded plug-in reports that it is done; one that throws counts as done.
HOST_EXPORT bool allPluginsDone();
/// Tells every plug-in to clean up, and unloads them; meanwhile none can be called. One that leaves
/// a widget or a subscriber behind or throws is forgotten, but its code stays in memory. While an
/// entry point of any plug-in is running, this only writes a line to the log.
HOST_EXPORT void unloadPlugins();

} // namespace memory_host
