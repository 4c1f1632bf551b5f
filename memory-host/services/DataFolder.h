// Where the host's own data files are.
#pragma once

#include "HostExport.h"

#include <QString>

namespace memory_host {

/// The folder with colour maps (*.cm) and the sub-folder help/ (*.md).
HOST_EXPORT void setDataFolder(const QString& folder);
HOST_EXPORT QString dataFolder();

} // namespace memory_host
