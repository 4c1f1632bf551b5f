// The secondary structure of proteins, assigned by the patterns of their hydrogen bonds (Kabsch and
// Sander, Biopolymers 22, 2577, 1983).
#pragma once

#include "HydrogenBonds.h"

#include <span>
#include <vector>

namespace view {

/// With the letters of the paper.
enum class SecondaryStructure : char {
    AlphaHelix = 'H', ///< 4-turn helix
    Helix3 = 'G',     ///< 3-turn (3-10) helix
    HelixPi = 'I',    ///< 5-turn helix
    Strand = 'E',     ///< in a ladder of at least two bridges
    Bridge = 'B',     ///< a bridge on its own
    Turn = 'T',       ///< within a hydrogen-bonded turn that makes no helix
    Bend = 'S',       ///< the CA five residues around turn by more than 70 degrees
    Coil = ' ',       ///< none of these
};

/// One for each residue. Where several patterns fit, the first one in the order H, E or B, G, I, T,
/// S decides, but that I goes before H: pi helices mostly are a turn in the middle of an alpha
/// helix, and in the order of the paper they go unseen (Cooley, Arp and Karplus, J. Mol. Biol. 404,
/// 232, 2010). A residue that lacks one of its four atoms is Coil. The residues are those of one
/// structure, in the order of their chains: whatever is near each other bonds. Takes time in
/// proportion to their number.
std::vector<SecondaryStructure> secondaryStructure(std::span<const BackboneResidue> residues);

} // namespace view
