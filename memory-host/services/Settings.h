// Where the settings files are.
#pragma once

#include "HostExport.h"

#include <QString>

namespace memory_host {

/// The INI file that Config reads; it need not exist.
HOST_EXPORT void setSettingsFile(const QString& file);
/// The INI file with the settings that the other one does not hold.
HOST_EXPORT void setDefaultSettingsFile(const QString& file);

} // namespace memory_host
