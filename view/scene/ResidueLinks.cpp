#include "ResidueLinks.h"

#include "render/Camera.h"

#include <algorithm>
#include <cstddef>
#include <vector>

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
            else if (kind)
                awaitBonds(i, kind->entering);
        }
        if (m_isAwaited.empty())
            return;
        for (const Segment& bond : m_contents.bonds) {
            if (m_isAwaited[bond.to])
                takeBond(bond.from, bond.to);
            if (m_isAwaited[bond.from])
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

    // Few residues are not near the one before them: of a million bonds few are looked at.
    void awaitBonds(std::size_t residue, Role entering) {
        m_isAwaited.resize(m_contents.atomCount());
        for (std::uint32_t i = m_contents.residues[residue].firstAtom;
             i != m_contents.atomEnd(residue); ++i)
            if (m_contents.roles[i] == entering)
                m_isAwaited[i] = true;
    }

    // A bond to an atom that is awaited.
    void takeBond(std::uint32_t leaving, std::uint32_t entering) {
        const std::size_t residue = residueOf(entering);
        if (leaving < m_contents.residues[residue].firstAtom &&
            leaving >= m_contents.residues[residue - 1].firstAtom &&
            m_contents.roles[leaving] == kindOfLink(residue)->leaving)
            linkToPrevious(residue);
    }

    std::size_t residueOf(std::uint32_t atom) const {
        const auto next =
            std::upper_bound(m_contents.residues.begin(), m_contents.residues.end(), atom,
                             [](std::uint32_t value, const ResidueEntry& residue) {
                                 return value < residue.firstAtom;
                             });
        return static_cast<std::size_t>(next - m_contents.residues.begin()) - 1;
    }

    Contents& m_contents;
    std::vector<bool> m_isAwaited; ///< atoms of which a bond may link their residue; or empty
};

} // namespace

void linkResidues(Contents& contents) {
    Linking(contents).run();
}

} // namespace view
