// Which atoms are bonded, by their distances: a neighbour search over cells.
#pragma once

#include "HostExport.h"

#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace memory_host {

/// What an atom is to the rules of findBonds().
enum class BondKind : std::uint8_t {
    Other,
    Hydrogen,
    Metal,
    Ligand,   ///< nitrogen, oxygen or sulfur, which hold metals
    Framework ///< carbon or phosphorus, which are near a metal because of what holds it
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
/// Atoms closer than this, in Å, are the same atom seen twice, not bonded ones.
constexpr double shortestBond = 0.4;
/// Beyond this coordinate, in Å, a float no longer resolves lengths of bonds.
constexpr float farthestBond = 1.0e6F;
/// An atom may have this many others within the distance of a bond for each set of atoms that can
/// stand in one place: one, and one more for each alternative location.
constexpr std::uint32_t mostNeighbours = 24;
/// Likewise for the atoms in a cube whose edge is the length of a bond.
constexpr std::uint32_t mostInCell = 128;
/// No more alternative locations than this count for the one limit, and the other.
constexpr std::uint32_t mostAlternatives = 64;
constexpr std::uint32_t mostAlternativesInCell = 8;

struct Bonds {
    std::vector<BondPair> pairs; ///< in ascending order
    /// Number of atoms that are packed closer than matter is, so that nothing tells their bonds:
    /// they have none.
    std::size_t crowded = 0;
    /// How often the places of two atoms were compared: what the search costs.
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
