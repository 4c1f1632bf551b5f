// The atoms that surfaces are made of, read from the data in one go.
#pragma once

#include "mesh/Mesh.h"

#include <cstdint>
#include <string>
#include <vector>

namespace TAVIK {
class Compound;
}

namespace solid {

/// The shown atoms of one entry, with a position.
struct EntryAtoms {
    TAVIK::Compound* entry = nullptr; ///< valid until the data change
    std::string name;                 ///< the entry's
    std::vector<Ball> balls;
    std::vector<std::uint32_t> colors;  ///< one a ball, as Color packs them
    std::vector<unsigned int> atoms;    ///< the atoms' identifiers
    std::vector<std::uint8_t> elements; ///< their atomic numbers, 0 where unknown
    std::size_t united = 0;             ///< balls that stand for hydrogens, too
};

/// The shown atoms of the entries with atoms in which something is selected, or of all entries
/// where that is none, entry by entry; entries without shown atoms are left out. Waters only where
/// they are selected.
std::vector<EntryAtoms> readShownAtoms();

} // namespace solid
