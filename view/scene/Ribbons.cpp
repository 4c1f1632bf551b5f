#include "Ribbons.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace view {

namespace {

/// The atoms of one residue by role: of several the first one that is shown, else the first.
class Found {
public:
    Found(const Contents& contents, const Marks& marks, std::size_t residue) {
        m_atoms.fill(noAtom);
        const std::uint32_t end = contents.atomEnd(residue);
        for (std::uint32_t i = contents.residues[residue].firstAtom; i != end; ++i) {
            std::uint32_t& atom = m_atoms[static_cast<std::size_t>(contents.roles[i])];
            if (atom == noAtom || (!marks.shown[atom] && marks.shown[i]))
                atom = i;
        }
    }
    std::uint32_t operator[](Role role) const { return m_atoms[static_cast<std::size_t>(role)]; }
    std::uint32_t guide(ResidueKind kind) const {
        if (kind == ResidueKind::AminoAcid)
            return (*this)[Role::CA];
        return (*this)[Role::P] != noAtom ? (*this)[Role::P] : (*this)[Role::C4Sugar];
    }

private:
    std::array<std::uint32_t, std::size_t(Role::Base) + 1> m_atoms;
};

Point positionOf(const Contents& contents, std::uint32_t atom) {
    return atom == noAtom ? missingAtom : contents.positions[atom];
}

Point difference(const Point& a, const Point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

RibbonResidue ribbonResidue(const Contents& contents, const Marks& marks, std::size_t residue,
                            const Found& found, SecondaryStructure structure) {
    RibbonResidue made;
    const ResidueEntry& entry = contents.residues[residue];
    const std::uint32_t guide = found.guide(entry.kind);
    if (entry.kind == ResidueKind::Nucleotide) {
        made.kind = RibbonResidue::Kind::Nucleotide;
        const std::uint32_t base =
            found[Role::Base] != noAtom ? found[Role::Base] : found[Role::C1Sugar];
        made.direction = difference(positionOf(contents, base), positionOf(contents, guide));
    } else {
        made.structure = structure;
        made.direction =
            difference(positionOf(contents, found[Role::O]), positionOf(contents, found[Role::C]));
    }
    made.guide = positionOf(contents, guide);
    made.chain = entry.chain;
    made.isShown = guide != noAtom && marks.shown[guide];
    if (guide != noAtom) {
        made.colour = marks.colours[guide];
        made.id = idOf(guide);
    }
    return made;
}

bool isSame(const Point& a, const Point& b) {
    return std::memcmp(a.data(), b.data(), sizeof(Point)) == 0; // NaN is the same as NaN
}

bool isSame(const RibbonResidue& a, const RibbonResidue& b) {
    return a.id == b.id && a.colour == b.colour && a.isShown == b.isShown &&
           a.structure == b.structure && a.kind == b.kind && a.chain == b.chain &&
           isSame(a.guide, b.guide) && isSame(a.direction, b.direction);
}

bool isSame(const std::vector<RibbonResidue>& a, const std::vector<RibbonResidue>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto& one, const auto& other) { return isSame(one, other); });
}

} // namespace

std::uint32_t guideOf(const Contents& contents, const Marks& marks, std::size_t residue) {
    return Found(contents, marks, residue).guide(contents.residues[residue].kind);
}

// The entries are structures of their own, and may stand in one place as models of one molecule do.
bool Ribbons::assign(const Contents& contents, const std::vector<Backbone>& backbones,
                     const std::stop_token& stop) {
    m_structures.assign(contents.residues.size(), SecondaryStructure::Coil);
    std::vector<BackboneResidue> residues;
    std::vector<std::size_t> indices;
    for (std::size_t entry = 0; entry != contents.entries.size(); ++entry) {
        residues.clear();
        indices.clear();
        const std::uint32_t end = contents.residueEnd(entry);
        for (std::uint32_t i = contents.entries[entry].firstResidue; i != end; ++i) {
            const ResidueEntry& residue = contents.residues[i];
            if (!residue.isPolymer || residue.kind != ResidueKind::AminoAcid)
                continue;
            const Backbone& atoms = backbones[i];
            residues.push_back({positionOf(contents, atoms[0]), positionOf(contents, atoms[1]),
                                positionOf(contents, atoms[2]), positionOf(contents, atoms[3]),
                                residue.isProline, residue.chain});
            indices.push_back(i);
        }
        if (stop.stop_requested())
            return false;
        const std::vector<SecondaryStructure> found = secondaryStructure(residues);
        for (std::size_t i = 0; i != indices.size(); ++i)
            m_structures[indices[i]] = found[i];
    }
    return true;
}

const std::vector<std::shared_ptr<const Mesh>>*
Ribbons::meshes(const std::shared_ptr<const Contents>& contents, const Marks& marks,
                const Styles& styles, const std::stop_token& stop) {
    const auto count =
        static_cast<std::size_t>(std::count(styles.ribbon.begin(), styles.ribbon.end(), true));
    if (count == 0) {
        *this = Ribbons();
        return &m_meshes;
    }
    try {
        return renew(contents, marks, styles, RibbonStyle::forResidues(count), stop) ? &m_meshes
                                                                                     : nullptr;
    } catch (...) {
        // What is kept must be of one time; without memory it may not be.
        *this = Ribbons();
        throw;
    }
}

bool Ribbons::renew(const std::shared_ptr<const Contents>& contents, const Marks& marks,
                    const Styles& styles, const RibbonStyle& style, const std::stop_token& stop) {
    std::vector<Backbone> backbones(contents->residues.size());
    for (std::size_t i = 0; i != backbones.size(); ++i)
        if (contents->residues[i].isPolymer) {
            const Found found(*contents, marks, i);
            backbones[i] = {found[Role::N], found[Role::CA], found[Role::C], found[Role::O]};
        }
    const bool isNew = m_contents != contents;
    if (isNew || backbones != m_backbones) {
        m_contents = nullptr; // the structures are of no time until they are complete
        if (!assign(*contents, backbones, stop))
            return false;
        m_backbones = std::move(backbones);
        m_contents = contents;
    }
    if (isNew || style.subdivisions != m_style.subdivisions || style.corners != m_style.corners) {
        m_chains.clear();
        m_meshes.clear();
    }
    m_style = style;
    return makeMeshes(marks, styles, stop);
}

// Only of the chains that are not as before.
bool Ribbons::makeMeshes(const Marks& marks, const Styles& styles, const std::stop_token& stop) {
    const Contents& contents = *m_contents;
    std::vector<std::vector<RibbonResidue>> chains;
    std::uint32_t chain = 0;
    for (std::size_t i = 0; i != contents.residues.size(); ++i) {
        if (!styles.ribbon[i])
            continue;
        if (chains.empty() || contents.residues[i].chain != chain)
            chains.emplace_back();
        chain = contents.residues[i].chain;
        const Found found(contents, marks, i);
        chains.back().push_back(ribbonResidue(contents, marks, i, found, m_structures[i]));
    }
    m_chains.resize(chains.size());
    m_meshes.resize(chains.size());
    for (std::size_t i = 0; i != chains.size(); ++i) {
        if (m_meshes[i] && isSame(chains[i], m_chains[i]))
            continue;
        if (stop.stop_requested())
            return false;
        m_meshes[i] = nullptr;
        m_chains[i] = std::move(chains[i]);
        m_chains[i].shrink_to_fit();
        m_meshes[i] = std::make_shared<const Mesh>(makeRibbon(m_chains[i], m_style));
    }
    return true;
}

} // namespace view
