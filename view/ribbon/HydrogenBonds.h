// Hydrogen bonds between the backbones of amino acids, by their electrostatic energy (Kabsch and
// Sander, Biopolymers 22, 2577, 1983).
#pragma once

#include "render/Scene.h"

#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace view {

/// The position of an atom that is not there.
inline constexpr Point missingAtom = {std::numeric_limits<float>::quiet_NaN(),
                                      std::numeric_limits<float>::quiet_NaN(),
                                      std::numeric_limits<float>::quiet_NaN()};

/// An amino acid as its backbone atoms, of one conformer. Å; an atom whose position is not finite
/// is not there.
struct BackboneResidue {
    Point n = missingAtom;
    Point ca = missingAtom;
    Point c = missingAtom;
    Point o = missingAtom;
    bool isProline = false; ///< has no hydrogen at N
    bool isLinkedToPrevious = false;
};

/// The energy of a bond N-H...O=C in kcal/mol, from the positions of its four atoms in Å: partial
/// charges of 0.42 and 0.20 electrons, no cut-off. Atoms closer than 0.5 Å to each other, which is
/// no place for an atom, get the lowest energy that a bond is given, -9.9 kcal/mol.
double hydrogenBondEnergy(const Point& n, const Point& h, const Point& o, const Point& c);

/// The number of the stretch without chain breaks that each residue is in, rising along the
/// residues. The chain breaks before a residue that is not linked to the one before, and around a
/// residue that lacks one of its four atoms.
std::vector<std::uint32_t> chainSegments(std::span<const BackboneResidue> residues);

inline constexpr std::uint32_t noResidue = std::numeric_limits<std::uint32_t>::max();

/// The residues whose C=O the N-H of one residue is bonded to, the strongest bond first; noResidue
/// where there is no second one, or none.
using Acceptors = std::array<std::uint32_t, 2>;

/// For each residue the acceptors of its two strongest bonds below -0.5 kcal/mol. `segments` is
/// what chainSegments() says. The hydrogen is 1 Å from N, in the opposite direction of the previous
/// C=O; the first residue of a segment, and proline, donate no bond.
///
/// Bonds are searched between residues whose CA are less than 9 Å apart, in a grid: the time grows
/// with the number of residues. Where more than 64 CA crowd in 10 x 10 x 10 Å, far more than in
/// any protein, the residues there get no bonds.
std::vector<Acceptors> hydrogenBonds(std::span<const BackboneResidue> residues,
                                     std::span<const std::uint32_t> segments);

} // namespace view
