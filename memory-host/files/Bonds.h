// Which atoms are bonded, by their distances: a neighbour search over cells.
#pragma once

#include "HostExport.h"

#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace memory_host {

/// The role of an atom in the rules of findBonds().
enum class BondKind : std::uint8_t {
    Other,
    Hydrogen,
    Metal,
    Ligand,   ///< nitrogen, oxygen or sulfur, which hold metals
    Framework ///< carbon or phosphorus, near a metal only because a ligand holds the metal
};

struct BondAtom {
    std::array<float, 3> position{}; ///< Å
    float radius = 0.0F;             ///< covalent radius in Å
    std::uint16_t alternative = 0;   ///< 0: shared by all alternative locations
    BondKind kind = BondKind::Other;
    bool hasPosition : 1 = false;
    bool isHeld : 1 = false; ///< a metal that the file says is held by nitrogen, oxygen or sulfur
};

/// Indices of two bonded atoms, the lower one first.
using BondPair = std::pair<std::uint32_t, std::uint32_t>;

/// Two atoms are bonded when their distance is at most the sum of their covalent radii and this
/// tolerance, in Å. Radii of B. Cordero et al., Dalton Trans. 2008, 2832; tolerance of E. C. Meng
/// and R. A. Lewis, J. Comput. Chem. 1991, 12, 891.
constexpr double bondTolerance = 0.4;
/// Atoms closer than this, in Å, are duplicates of one atom and not bonded.
constexpr double shortestBond = 0.4;
/// Beyond this coordinate, in Å, a float cannot resolve the length of a bond.
constexpr float farthestBond = 1.0e6F;
/// An atom may have this many others within the distance of a bond for each set of atoms that can
/// stand in one place: one, and one more for each alternative location.
constexpr std::uint32_t mostNeighbours = 24;
/// Likewise for the atoms in a cube whose edge is the length of a bond.
constexpr std::uint32_t mostInCell = 128;
/// At most so many alternative locations count for mostNeighbours, and for mostInCell.
constexpr std::uint32_t mostAlternatives = 64;
constexpr std::uint32_t mostAlternativesInCell = 8;

struct Bonds {
    std::vector<BondPair> pairs; ///< in ascending order
    /// Number of atoms that are packed more densely than matter: their bonds cannot be told, and
    /// they have none.
    std::size_t crowded = 0;
    /// Number of atoms with a position beyond farthestBond, which have no bonds.
    std::size_t distant = 0;
    /// Number of distances computed, which is the cost of the search.
    std::size_t compared = 0;
};

/// Finds the bonds between `atoms`, in time and memory linear in their number whatever the
/// coordinates are. There are none
/// - between two hydrogens, or between atoms of different alternative locations;
/// - with atoms that have no position or lie beyond farthestBond;
/// - from a metal to carbon or phosphorus when a nitrogen, oxygen or sulfur atom that may be there
///   together with both (by its alternative location) is nearer to the metal, or when the metal is
///   held: in a file that tells its ligands, a carbon that is still nearer was placed badly;
/// - with crowded atoms: those with more than mostNeighbours * (1 + `alternatives`) others within
///   the distance of a bond, and those in heaps, of more than mostInCell * (1 + `alternatives`) in
///   a cell of the search, which count neither as others nor as nearer.
HOST_EXPORT Bonds findBonds(std::span<const BondAtom> atoms, std::uint32_t alternatives);

} // namespace memory_host
