// Writing structures as mmCIF files, from the items and what the file of another format says.
#pragma once

#include "HostExport.h"
#include "SaveReport.h"
#include "SavedTables.h"

namespace memory_host {

/// The whole file, a data block for each structure. Atoms are numbered anew. Numbers have as many
/// digits as tell them from others in single precision.
HOST_EXPORT std::string writeMmcif(const SavedContent& content, SaveReport& report);

} // namespace memory_host
