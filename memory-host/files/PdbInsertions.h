// Where in a PDB file the rows of new atoms go.
#pragma once

#include "SavedTables.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace memory_host::pdb {

/// The new atoms of a residue.
struct Insertion {
    enum class Where {
        AfterRow,   ///< behind a row and what belongs to it
        AfterChain, ///< behind the last row of a model and the end of its chain
        BeforeRow   ///< right before a row
    };

    std::uint32_t rows = 0; ///< how many rows of the file's atoms come before
    Where where = Where::AfterRow;
    std::uint32_t model = 0; ///< in the structure
    std::uint32_t residue = 0;
    /// The row of another atom: of the residue itself, or of its chain; or SavedAtom::newRow.
    std::uint32_t like = SavedAtom::newRow;
    bool isResidueNew = false;
};

/// The insertions of all models, in the order of the file.
std::vector<Insertion> insertionsOf(const SavedStructure& structure);

} // namespace memory_host::pdb
