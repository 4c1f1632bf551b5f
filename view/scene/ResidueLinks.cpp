#include "ResidueLinks.h"

#include <cstddef>

namespace view {

namespace {

bool areWithin(const Point& a, const Point& b, float distance) {
    float squares = 0;
    for (std::size_t i = 0; i != 3; ++i)
        squares += (a[i] - b[i]) * (a[i] - b[i]);
    return squares <= distance * distance; // false for NaN
}

class Linking {
public:
    explicit Linking(Contents& contents) : m_contents(contents) {}

    void run() {
        std::vector<ResidueEntry>& residues = m_contents.residues;
        for (std::size_t i = 1; i < residues.size(); ++i) {
            ResidueEntry& before = residues[i - 1];
            ResidueEntry& residue = residues[i];
            if (before.chain != residue.chain || before.kind != residue.kind ||
                (residue.kind != ResidueKind::AminoAcid &&
                 residue.kind != ResidueKind::Nucleotide) ||
                !areLinked(i - 1, i))
                continue;
            residue.isLinkedToPrevious = true;
            residue.isPolymer = true;
            before.isPolymer = true;
        }
    }

private:
    // An atom of that role in a residue; its first position where there are alternatives.
    const Point* find(std::size_t residue, Role role) const {
        for (std::uint32_t i = m_contents.residues[residue].firstAtom;
             i != m_contents.atomEnd(residue); ++i)
            if (m_contents.roles[i] == role)
                return &m_contents.positions[i];
        return nullptr;
    }
    bool areNear(std::size_t one, Role role, std::size_t other, Role otherRole,
                 float distance) const {
        const Point* const a = find(one, role);
        const Point* const b = find(other, otherRole);
        return a && b && areWithin(*a, *b, distance);
    }
    bool has(std::size_t residue, Role role) const { return find(residue, role) != nullptr; }

    // The bond between residues is 1.3 to 1.6 Å long; alpha carbons are 3.8 Å apart, and phosphorus
    // atoms at most 7.5 Å. The limits leave room for poor models, and none for a missing residue.
    bool areLinked(std::size_t one, std::size_t next) const {
        constexpr float bond = 2.5F;
        constexpr float alphaCarbons = 4.6F;
        constexpr float phosphates = 8.0F;
        const ResidueKind kind = m_contents.residues[one].kind;
        if (kind == ResidueKind::AminoAcid) {
            if (has(one, Role::C) && has(next, Role::N))
                return areNear(one, Role::C, next, Role::N, bond);
            return areNear(one, Role::CA, next, Role::CA, alphaCarbons);
        }
        if (has(one, Role::O3Sugar) && has(next, Role::P))
            return areNear(one, Role::O3Sugar, next, Role::P, bond);
        return areNear(one, Role::P, next, Role::P, phosphates);
    }

    Contents& m_contents;
};

} // namespace

void linkResidues(Contents& contents) {
    Linking(contents).run();
}

} // namespace view
