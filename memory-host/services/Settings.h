// Where the settings files are.
#pragma once

#include "HostExport.h"

#include <QString>

namespace memory_host {

/// The INI file that Config reads; it need not exist.
HOST_EXPORT void setSettingsFile(const QString& file);
/// The INI file with defaults, for settings that the other file does not hold.
HOST_EXPORT void setDefaultSettingsFile(const QString& file);

} // namespace memory_host
