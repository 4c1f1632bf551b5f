// Reads what is to be saved of items into plain tables, on the GUI thread.
#pragma once

#include "SaveReport.h"
#include "SavedTables.h"

#include <span>

namespace memory_host {

/// The tables of top-level items. Remarks on what in the items no format keeps; refuses items that
/// hold no atoms and are no grids.
SavedContent readItems(std::span<TAVIK::Compound* const> items, const SaveOptions& options,
                       SaveReport& report);

} // namespace memory_host
