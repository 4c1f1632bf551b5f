#include "SideChain.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace rotamer {

namespace {

constexpr auto none = static_cast<std::size_t>(-1);
constexpr double degree = std::numbers::pi / 180;

// Behind CB: the atoms that the angles are measured by, and the others with the angle that turns
// them last.
struct Branch {
    std::string_view name;
    int level = 0;
};
struct Type {
    std::string_view residue;
    std::array<std::string_view, 4> chain;
    std::array<Branch, 8> branches;
};

constexpr std::array<Type, 18> types = {{
    {"ARG", {"CG", "CD", "NE", "CZ"}, {{{"NH1", 4}, {"NH2", 4}}}},
    {"ASN", {"CG", "OD1"}, {{{"ND2", 2}}}},
    {"ASP", {"CG", "OD1"}, {{{"OD2", 2}}}},
    {"CYS", {"SG"}, {}},
    {"GLN", {"CG", "CD", "OE1"}, {{{"NE2", 3}}}},
    {"GLU", {"CG", "CD", "OE1"}, {{{"OE2", 3}}}},
    {"HIS", {"CG", "ND1"}, {{{"CD2", 2}, {"CE1", 2}, {"NE2", 2}}}},
    {"ILE", {"CG1", "CD1"}, {{{"CG2", 1}}}},
    {"LEU", {"CG", "CD1"}, {{{"CD2", 2}}}},
    {"LYS", {"CG", "CD", "CE", "NZ"}, {}},
    {"MET", {"CG", "SD", "CE"}, {}},
    {"MSE", {"CG", "SE", "CE"}, {}},
    {"PHE", {"CG", "CD1"}, {{{"CD2", 2}, {"CE1", 2}, {"CE2", 2}, {"CZ", 2}}}},
    {"SER", {"OG"}, {}},
    {"THR", {"OG1"}, {{{"CG2", 1}}}},
    {"TRP",
     {"CG", "CD1"},
     {{{"CD2", 2}, {"NE1", 2}, {"CE2", 2}, {"CE3", 2}, {"CZ2", 2}, {"CZ3", 2}, {"CH2", 2}}}},
    {"TYR", {"CG", "CD1"}, {{{"CD2", 2}, {"CE1", 2}, {"CE2", 2}, {"CZ", 2}, {"OH", 2}}}},
    {"VAL", {"CG1"}, {{{"CG2", 1}}}},
}};

constexpr std::array<std::string_view, 3> beforeChain = {"N", "CA", "CB"};
constexpr std::array<std::string_view, 3> backbone = {"C", "O", "OXT"};

// Whose last angle is between planes: half a turn swaps the names of equal atoms.
constexpr std::array<std::string_view, 4> symmetric = {"ASP", "GLU", "PHE", "TYR"};

// Names of the same side chain in other states of protonation.
constexpr std::array<std::pair<std::string_view, std::string_view>, 11> sameAs = {{
    {"ASH", "ASP"},
    {"CYM", "CYS"},
    {"GLH", "GLU"},
    {"HID", "HIS"},
    {"HIE", "HIS"},
    {"HIP", "HIS"},
    {"HSD", "HIS"},
    {"HSE", "HIS"},
    {"HSP", "HIS"},
    {"LYN", "LYS"},
    {"TYM", "TYR"},
}};

std::string_view commonName(std::string_view residue) {
    const auto* const found =
        std::ranges::find(sameAs, residue, &std::pair<std::string_view, std::string_view>::first);
    return found == sameAs.end() ? residue : found->second;
}

Point operator-(const Point& a, const Point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

double dot(const Point& a, const Point& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Point cross(const Point& a, const Point& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// Rodrigues' formula: `point` about the axis through `origin` along the unit vector `axis`.
Point rotated(const Point& point, const Point& origin, const Point& axis, double radians) {
    const Point arm = point - origin;
    const Point side = cross(axis, arm);
    const double along = dot(axis, arm) * (1 - std::cos(radians));
    Point result = origin;
    for (std::size_t i = 0; i != 3; ++i)
        result[i] += arm[i] * std::cos(radians) + side[i] * std::sin(radians) + axis[i] * along;
    return result;
}

} // namespace

double dihedral(const Point& a, const Point& b, const Point& c, const Point& d) {
    const Point axis = c - b;
    const Point first = cross(b - a, axis);
    const Point second = cross(axis, d - c);
    const double length = std::sqrt(dot(axis, axis));
    if (!(dot(first, first) > 0 && dot(second, second) > 0))
        return std::numeric_limits<double>::quiet_NaN();
    return std::atan2(dot(cross(first, second), axis) / length, dot(first, second)) / degree;
}

SideChain::SideChain(std::string_view residue, std::vector<ResidueAtom> atoms)
    : m_atoms(std::move(atoms)), m_levels(m_atoms.size(), 0) {
    const std::string_view name = commonName(residue);
    if (readType(name) && findAxes(name) && findLevels(name))
        m_rotamers = rotamersOf(name == "MSE" ? "MET" : name);
    m_isSymmetric = std::ranges::find(symmetric, name) != symmetric.end();
}

bool SideChain::readType(std::string_view residue) {
    if (std::ranges::find(types, residue, &Type::residue) != types.end())
        return true;
    if (residue == "ALA" || residue == "GLY")
        m_fault = "its side chain has no angle to turn";
    else if (residue == "PRO")
        m_fault = "its side chain is a ring, which has no angle to turn alone";
    else
        m_fault = "none are known for this kind of residue";
    return false;
}

std::size_t SideChain::find(std::string_view name) const {
    const auto found = std::ranges::find(m_atoms, name, &ResidueAtom::name);
    return found == m_atoms.end() ? none : static_cast<std::size_t>(found - m_atoms.begin());
}

bool SideChain::findAxes(std::string_view residue) {
    const Type& type = *std::ranges::find(types, residue, &Type::residue);
    const auto add = [this](std::size_t at, std::string_view name) {
        m_axis[at] = find(name);
        if (m_axis[at] == none && m_fault.empty())
            m_fault = "the atom " + std::string(name) + " is missing";
    };
    for (std::size_t i = 0; i != beforeChain.size(); ++i)
        add(i, beforeChain[i]);
    for (const std::string_view name : type.chain)
        if (!name.empty())
            add(beforeChain.size() + static_cast<std::size_t>(m_angles++), name);
    for (const Branch& branch : type.branches)
        if (!branch.name.empty() && find(branch.name) == none && m_fault.empty())
            m_fault = "the atom " + std::string(branch.name) + " is missing";
    for (int chi = 1; m_fault.empty() && chi <= m_angles; ++chi)
        if (std::isnan(angle(chi)))
            m_fault = "its atoms lie on a line, or on one another";
    return m_fault.empty();
}

bool SideChain::findLevels(std::string_view residue) {
    const Type& type = *std::ranges::find(types, residue, &Type::residue);
    // The level of what is bonded to an atom: turned by the angle about the bond to it, too.
    std::vector<int> beyond(m_atoms.size(), 0);
    for (std::size_t i = 0; i != m_atoms.size(); ++i) {
        if (m_atoms[i].isHydrogen)
            continue;
        const std::string_view name = m_atoms[i].name;
        const auto* const at = std::ranges::find(type.chain, name);
        const auto* const branch = std::ranges::find(type.branches, name, &Branch::name);
        if (at != type.chain.end()) {
            m_levels[i] = static_cast<int>(at - type.chain.begin()) + 1;
            beyond[i] = std::min(m_levels[i] + 1, m_angles);
        } else if (branch != type.branches.end()) {
            m_levels[i] = beyond[i] = branch->level;
        } else if (name == "CB") {
            beyond[i] = 1;
        } else if (std::ranges::find(beforeChain, name) == beforeChain.end() &&
                   std::ranges::find(backbone, name) == backbone.end()) {
            m_fault = "the atom " + std::string(name) + " is none of such a residue";
            return false;
        }
    }
    for (std::size_t i = 0; i != m_atoms.size(); ++i) {
        if (!m_atoms[i].isHydrogen)
            continue;
        double nearest = std::numeric_limits<double>::infinity();
        for (std::size_t j = 0; j != m_atoms.size(); ++j) {
            const Point apart = m_atoms[j].position - m_atoms[i].position;
            if (!m_atoms[j].isHydrogen && dot(apart, apart) < nearest) {
                nearest = dot(apart, apart);
                m_levels[i] = beyond[j];
            }
        }
    }
    return true;
}

double SideChain::angle(int chi) const {
    const auto at = static_cast<std::size_t>(chi);
    const auto position = [&](std::size_t i) { return m_atoms[m_axis[i]].position; };
    return dihedral(position(at - 1), position(at), position(at + 1), position(at + 2));
}

double SideChain::deviation(const Rotamer& rotamer) const {
    double most = 0;
    for (int chi = 1; chi <= m_angles; ++chi) {
        const double period = m_isSymmetric && chi == m_angles ? 180 : 360;
        const double apart = angle(chi) - rotamer.chi[static_cast<std::size_t>(chi) - 1];
        most = std::max(most, std::abs(std::remainder(apart, period)));
    }
    return most;
}

std::vector<Point> SideChain::turned(const Rotamer& rotamer) const {
    std::vector<Point> points(m_atoms.size());
    std::ranges::transform(m_atoms, points.begin(), &ResidueAtom::position);
    // From the last angle to the first: turning one leaves the angles before it alone, and those
    // behind it as they are.
    for (int chi = m_angles; chi > 0; --chi) {
        const auto at = static_cast<std::size_t>(chi);
        const Point& origin = points[m_axis[at]];
        Point axis = points[m_axis[at + 1]] - origin;
        const double length = std::sqrt(dot(axis, axis));
        for (double& part : axis)
            part /= length;
        const double radians = (rotamer.chi[at - 1] - angle(chi)) * degree;
        for (std::size_t i = 0; i != points.size(); ++i)
            if (m_levels[i] >= chi)
                points[i] = rotated(points[i], origin, axis, radians);
    }
    return points;
}

} // namespace rotamer
