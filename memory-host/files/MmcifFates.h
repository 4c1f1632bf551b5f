// What becomes of the rows of a data block of mmCIF when atoms and bonds of it are gone.
#pragma once

#include "MmcifListedBonds.h"
#include "MmcifReferences.h"

#include <string_view>
#include <vector>

namespace memory_host::mmcif {

/// What the items still have of a data block.
struct BlockChange {
    std::size_t atoms;         ///< category of the atoms
    std::vector<bool> isKept;  ///< whether an atom is still there, by row
    std::vector<RowBond> lost; ///< bonds that the file lists and that are gone, not so their atoms
    std::vector<RowBond> kept; ///< and those that are still there
};

/// Sets what becomes of the rows of the block's categories, but for those of the atoms. `fates` are
/// those of all categories of the file.
void findFates(std::string_view text, const cif::Contents& contents, const BlockChange& change,
               std::vector<RowFate>& fates);

} // namespace memory_host::mmcif
