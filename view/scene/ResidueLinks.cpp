#include "ResidueLinks.h"

#include "render/Camera.h"

#include <algorithm>
#include <cstddef>

namespace view {

namespace {

// By which atoms the residues of one kind are linked.
struct LinkKind {
    Role leaving;  ///< of the bond's atom in the residue before
    Role entering; ///< and in the residue after
    Role trace;
    float longestTrace; ///< Å from residue to residue
};
// The bond is 1.3 to 1.6 Å long; alpha carbons are 3.8 Å apart, and phosphorus atoms at most 7.5 Å.
// The limits leave room for poor models, and none for a missing residue.
constexpr float longestBond = 2.5F;
constexpr LinkKind peptide = {Role::C, Role::N, Role::CA, 4.6F};
constexpr LinkKind phosphodiester = {Role::O3Sugar, Role::P, Role::P, 8.0F};

bool areWithin(const Point& a, const Point& b, float distance) {
    float squares = 0;
    for (std::size_t i = 0; i != 3; ++i)
        squares += (a[i] - b[i]) * (a[i] - b[i]);
    return squares <= distance * distance;
}

class Linking {
public:
    explicit Linking(Contents& contents) : m_contents(contents) {}

    void run() {
        for (std::size_t i = 1; i < m_contents.residues.size(); ++i) {
            const LinkKind* const kind = kindOfLink(i);
            if (kind && areNear(*kind, i - 1, i))
                linkToPrevious(i);
        }
        for (const Segment& bond : m_contents.bonds) {
            takeBond(bond.from, bond.to);
            takeBond(bond.to, bond.from);
        }
    }

private:
    // How a residue may be linked to the one before it; null for those that may not.
    const LinkKind* kindOfLink(std::size_t residue) const {
        const ResidueEntry& before = m_contents.residues[residue - 1];
        const ResidueEntry& after = m_contents.residues[residue];
        if (before.chain != after.chain || before.kind != after.kind)
            return nullptr;
        return after.kind == ResidueKind::AminoAcid    ? &peptide
               : after.kind == ResidueKind::Nucleotide ? &phosphodiester
                                                       : nullptr;
    }

    void linkToPrevious(std::size_t residue) {
        m_contents.residues[residue - 1].isPolymer = true;
        m_contents.residues[residue].isPolymer = true;
        m_contents.residues[residue].isLinkedToPrevious = true;
    }

    // The position of an atom of that role in a residue; null without any.
    const Point* find(std::size_t residue, Role role) const {
        for (std::uint32_t i = m_contents.residues[residue].firstAtom;
             i != m_contents.atomEnd(residue); ++i)
            if (m_contents.roles[i] == role && isPlace(m_contents.positions[i]))
                return &m_contents.positions[i];
        return nullptr;
    }

    bool areNear(const LinkKind& kind, std::size_t before, std::size_t after) const {
        const Point* const leaving = find(before, kind.leaving);
        const Point* const entering = find(after, kind.entering);
        if (leaving && entering)
            return areWithin(*leaving, *entering, longestBond);
        const Point* const one = find(before, kind.trace);
        const Point* const next = find(after, kind.trace);
        return one && next && areWithin(*one, *next, kind.longestTrace);
    }

    void takeBond(std::uint32_t leaving, std::uint32_t entering) {
        const Role from = m_contents.roles[leaving];
        const Role to = m_contents.roles[entering];
        const auto isOf = [&](const LinkKind& kind) {
            return from == kind.leaving && to == kind.entering;
        };
        if (!isOf(peptide) && !isOf(phosphodiester))
            return;
        const std::size_t residue = residueOf(entering);
        if (residue == 0 || m_contents.residues[residue].isLinkedToPrevious ||
            leaving >= m_contents.residues[residue].firstAtom ||
            leaving < m_contents.residues[residue - 1].firstAtom)
            return;
        const LinkKind* const kind = kindOfLink(residue);
        if (kind && isOf(*kind))
            linkToPrevious(residue);
    }

    // Bonds mostly come in the order of the residues.
    std::size_t residueOf(std::uint32_t atom) {
        const std::vector<ResidueEntry>& residues = m_contents.residues;
        for (const std::size_t near : {m_residue, m_residue + 1})
            if (near < residues.size() && residues[near].firstAtom <= atom &&
                atom < m_contents.atomEnd(near))
                return m_residue = near;
        const auto next = std::upper_bound(residues.begin(), residues.end(), atom,
                                           [](std::uint32_t value, const ResidueEntry& residue) {
                                               return value < residue.firstAtom;
                                           });
        return m_residue = static_cast<std::size_t>(next - residues.begin()) - 1;
    }

    Contents& m_contents;
    std::size_t m_residue = 0; ///< that was asked for last
};

} // namespace

void linkResidues(Contents& contents) {
    Linking(contents).run();
}

} // namespace view
