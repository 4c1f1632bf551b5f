// Where the in-memory host's services find their files, and who hears its log.
#pragma once

#include "HostExport.h"

#include <QString>

#include <functional>
#include <string>

namespace memory_host {

/// The folder with colour maps (*.cm) and the sub-folder help/ (*.md).
HOST_EXPORT void setDataFolder(const QString& folder);
HOST_EXPORT QString dataFolder();
/// The INI file that Config reads; it need not exist.
HOST_EXPORT void setSettingsFile(const QString& file);
/// The INI file with the settings that the other one does not hold.
HOST_EXPORT void setDefaultSettingsFile(const QString& file);
/// The file that the log is appended to, beside standard error; empty for none.
HOST_EXPORT void setLogFile(const QString& file);

/// Hears each line of the log instead of standard error; an empty one gives it back. Returns the
/// one before.
using LogSink = std::function<void(const std::string& line)>;
HOST_EXPORT LogSink setLogSink(LogSink sink);

} // namespace memory_host
