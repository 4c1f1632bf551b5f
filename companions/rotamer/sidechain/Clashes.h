// Clashes of a side chain with what is around it. Knows no items.
#pragma once

#include "SideChain.h"

#include <cstddef>
#include <span>

namespace rotamer {

/// What an atom can be in a hydrogen bond.
enum class BondRole {
    None,
    Hydrogen, ///< bonded to nitrogen or oxygen
    Heavy     ///< nitrogen or oxygen: accepts hydrogens, and may hold some that no file names
};

/// An atom as a ball.
struct Ball {
    Point position{};  ///< Å
    double radius = 0; ///< van der Waals, Å
    BondRole role = BondRole::None;
};

/// How deep two balls may overlap without a clash, in Å: J. M. Word et al., J. Mol. Biol. 285
/// (1999) 1711-1733.
inline constexpr double clashOverlap = 0.4;
/// How much deeper a hydrogen and the atom that accepts it may, as there: a hydrogen bond.
inline constexpr double hydrogenAllowance = 0.6;
/// How much deeper two atoms may of which one can hold a hydrogen between them: oxygen and nitrogen
/// clash from 2.37 Å on, which is below the shortest hydrogen bonds.
inline constexpr double heavyAllowance = 0.3;

struct Clashes {
    std::size_t count = 0;                            ///< pairs of balls
    double worst = 0;                                 ///< the deepest overlap of these pairs, Å
    std::size_t atom = static_cast<std::size_t>(-1);  ///< of the side chain, in the worst pair
    std::size_t other = static_cast<std::size_t>(-1); ///< of the others, in the worst pair
};

/// The clashes of each of `atoms` with each of `others`. A ball with a coordinate that is not
/// finite has none.
Clashes findClashes(std::span<const Ball> atoms, std::span<const Ball> others);

} // namespace rotamer
