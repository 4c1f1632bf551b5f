// The bonds that an mmCIF file lists, when they or the locations of their atoms have changed.
#pragma once

#include "CifText.h"
#include "MmcifReferences.h"
#include "SavedTables.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace memory_host::mmcif {

/// An atom of a data block that takes part in a bond.
struct BondAtom {
    std::uint32_t row;
    std::string_view letter; ///< of the alternative location that it has now, or empty
};

/// A bond that the file lists.
struct RowBond {
    BondAtom first;
    BondAtom second;
    bool isFoundAgain = false;       ///< as in LostBond
    const SavedBond* left = nullptr; ///< null: it is gone

    bool isRelettered() const { return left && left->isRelettered; }
};

/// Drops the rows of _struct_conn that list `lost` bonds, whose atoms are still there, and none of
/// those that are `kept`. A row without letters lists the bonds of all alternative locations, and
/// one without a model of all models. Where bonds are lost or relettered, rows get the letters of
/// the bonds that are left, if these have one each; else the bonds that are read besides are
/// counted, and those that are not read any more.
void updateBonds(std::string_view text, const cif::Category& atoms,
                 const cif::Category& connections, const std::vector<RowBond>& lost,
                 const std::vector<RowBond>& kept, RowFate& fate);

} // namespace memory_host::mmcif
