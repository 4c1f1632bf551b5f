// A protein's side chain: its chi angles, and which atoms each of them turns. Knows no items.
#pragma once

#include "RotamerTable.h"

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace rotamer {

/// Å.
using Point = std::array<double, 3>;

/// The angle between the planes of a, b, c and of b, c, d in degrees, from -180 to 180, as IUPAC
/// defines its sign. NaN where three of them lie on a line.
double dihedral(const Point& a, const Point& b, const Point& c, const Point& d);

/// An atom of a residue.
struct ResidueAtom {
    std::string_view name; ///< as "CA"; valid as long as the side chain
    bool isHydrogen = false;
    Point position{};
};

/// The side chain of one residue in one conformation.
class SideChain {
public:
    /// Angles and what they turn are found by the standard atom names; a hydrogen turns with the
    /// nearest other atom. Residues of modified or protonated kinds count as what they are made of:
    /// MSE as MET, HIE as HIS. `residue` is a name without a number.
    SideChain(std::string_view residue, std::vector<ResidueAtom> atoms);

    /// Why the side chain cannot be turned, as "the atom CG is missing"; empty if it can.
    const std::string& fault() const { return m_fault; }
    /// The rotamers of the residue; empty where there is a fault.
    std::span<const Rotamer> rotamers() const { return m_rotamers; }

    /// How many chi angles there are.
    int angles() const { return m_angles; }
    /// Chi angle `chi`, counted from 1, in degrees.
    double angle(int chi) const;
    /// How far the angles are from those of `rotamer`: the largest difference of one of them, in
    /// degrees from 0 to 180. The two ends of a side chain that is symmetric there (ASP, GLU, PHE,
    /// TYR) count as the same.
    double deviation(const Rotamer& rotamer) const;
    /// Whether turning any angle moves an atom.
    bool isTurned(std::size_t atom) const { return m_levels[atom] > 0; }
    /// The positions of all atoms with the angles of `rotamer`. Bond lengths and angles stay.
    std::vector<Point> turned(const Rotamer& rotamer) const;

private:
    bool readType(std::string_view residue);
    bool findAxes(std::string_view residue);
    bool findLevels(std::string_view residue);
    std::size_t find(std::string_view name) const;

    std::vector<ResidueAtom> m_atoms;
    std::span<const Rotamer> m_rotamers;
    std::string m_fault;
    int m_angles = 0;
    bool m_isSymmetric = false;          ///< turning the last angle by half a turn changes nothing
    std::array<std::size_t, 7> m_axis{}; ///< N, CA, CB and on: chi i is of i - 1 to i + 2
    std::vector<int> m_levels;           ///< an atom turns with chi 1 to this one
};

} // namespace rotamer
