// The bonds that an mmCIF file lists and that were destroyed, while their atoms may still be there.
#pragma once

#include "CifText.h"
#include "MmcifReferences.h"
#include "SavedTables.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace memory_host::mmcif {

/// Two atoms of a data block, by their rows.
using RowBond = std::pair<std::uint32_t, std::uint32_t>;

/// Drops the rows of _struct_conn that list `lost` bonds (by rows of the block), and none of those
/// that are `kept`. A row without letters lists the bonds of all alternative locations, and one
/// without a model of all models. Counts the lost bonds of rows that stay for other locations.
void dropLostBonds(std::string_view text, const cif::Category& atoms,
                   const cif::Category& connections, const std::vector<LostBond>& lost,
                   const std::vector<RowBond>& kept, RowFate& fate);

} // namespace memory_host::mmcif
