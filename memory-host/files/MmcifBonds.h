// The rows of a _struct_conn category of mmCIF, and the bonds that they list.
#pragma once

#include "Fields.h"
#include "ListedBonds.h"

#include <array>

namespace memory_host::mmcif {

/// The columns in use: the kind of the bond, and for each partner the columns listed here.
enum BondColumn : std::uint8_t {
    PartnerAuthChain,
    PartnerAuthNumber,
    PartnerAuthResidue,
    PartnerAuthAtom,
    PartnerLabelChain,
    PartnerLabelNumber,
    PartnerLabelResidue,
    PartnerLabelAtom,
    PartnerAlternative,
    PartnerInsertion,
    PartnerSymmetry,
    PartnerColumnCount,
    BondType = 2 * PartnerColumnCount,
    BondColumnCount,
    NoBondColumn = BondColumnCount
};

/// The values of a row as they are written; empty for missing columns.
using BondRow = std::array<std::string_view, BondColumnCount + 1>;

inline bool isBondTag(std::string_view tag) {
    return startsWith(tag, "_struct_conn.");
}
/// The column of a tag for which isBondTag() holds.
BondColumn bondColumnOf(std::string_view tag);
/// Whether a row lists a disulfide, covalent or metal bond that is not one to a symmetry copy, by
/// its kind and the symmetry operators of both atoms.
bool isBond(std::string_view type, std::string_view symmetry, std::string_view other);
/// Adds the bond of a row if isBond() holds.
void addBond(const BondRow& row, std::size_t line, ListedBonds& bonds);

} // namespace memory_host::mmcif
