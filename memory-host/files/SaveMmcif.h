// Saving entries that came from an mmCIF file into the file's own text.
#pragma once

#include "SaveReport.h"
#include "SavedTables.h"

#include <string>

namespace memory_host {

/// The text of an mmCIF file with what its entries hold now: byte for byte as it was, but for rows
/// of atoms that are gone, and what names them; values that are other ones; and new atoms, which
/// follow their residue. All structures are of the one file, and what is missing of it is gone.
std::string editMmcif(const SavedContent& content, SaveReport& report);

} // namespace memory_host
