// Writing structures as PDB files, from the items and what the file of another format says.
#pragma once

#include "HostExport.h"
#include "SaveReport.h"
#include "SavedTables.h"

namespace memory_host {

/// The whole file. Atoms are numbered anew; serial numbers beyond 99,999 and residue numbers beyond
/// 9,999 are in hybrid-36. Chains have up to two letters, in columns 21 and 22. Refuses with one
/// line what does not fit the columns.
HOST_EXPORT std::string writePdb(const SavedContent& content, SaveReport& report);

} // namespace memory_host
