#include "Ribbons.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace view {

namespace {

// Whether there are several atoms of one role is said in `hasAlternatives`, if given.
AtomsByRole atomsByRole(const Contents& contents, const Marks& marks, std::size_t residue,
                        bool* hasAlternatives = nullptr) {
    AtomsByRole atoms;
    atoms.fill(noAtom);
    const std::uint32_t end = contents.atomEnd(residue);
    for (std::uint32_t i = contents.residues[residue].firstAtom; i != end; ++i) {
        const Role role = contents.roles[i];
        if (role == Role::None)
            continue;
        std::uint32_t& atom = atoms[static_cast<std::size_t>(role)];
        if (hasAlternatives && atom != noAtom)
            *hasAlternatives = true;
        if (atom == noAtom || (!marks.shown[atom] && marks.shown[i]))
            atom = i;
    }
    return atoms;
}

std::uint32_t atomOf(const AtomsByRole& atoms, Role role) {
    return atoms[static_cast<std::size_t>(role)];
}

std::uint32_t guideOf(const AtomsByRole& atoms, ResidueKind kind) {
    if (kind == ResidueKind::AminoAcid)
        return atomOf(atoms, Role::CA);
    const std::uint32_t phosphorus = atomOf(atoms, Role::P);
    return phosphorus != noAtom ? phosphorus : atomOf(atoms, Role::C4Sugar);
}

Point positionOf(const Contents& contents, std::uint32_t atom) {
    return atom == noAtom ? missingAtom : contents.positions[atom];
}

Point difference(const Point& a, const Point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

// Where the base of a nucleotide begins; C1' of the sugar, where there is none.
std::uint32_t baseOf(const AtomsByRole& atoms) {
    for (const Role role : {Role::N9Base, Role::N1Base, Role::N3Base})
        if (atomOf(atoms, role) != noAtom)
            return atomOf(atoms, role);
    return atomOf(atoms, Role::C1Sugar);
}

RibbonResidue ribbonResidue(const Contents& contents, std::size_t residue, const AtomsByRole& atoms,
                            SecondaryStructure structure) {
    RibbonResidue made;
    const ResidueEntry& entry = contents.residues[residue];
    const std::uint32_t guide = guideOf(atoms, entry.kind);
    const auto at = [&](Role role) { return positionOf(contents, atomOf(atoms, role)); };
    made.guide = positionOf(contents, guide);
    if (entry.kind == ResidueKind::Nucleotide) {
        made.kind = RibbonResidue::Kind::Nucleotide;
        made.direction = difference(positionOf(contents, baseOf(atoms)), made.guide);
    } else {
        made.structure = structure;
        made.direction = difference(at(Role::O), at(Role::C));
    }
    made.isLinkedToPrevious = entry.isLinkedToPrevious;
    if (guide != noAtom)
        made.id = idOf(guide);
    return made;
}

bool isSame(const Point& a, const Point& b) {
    return std::memcmp(a.data(), b.data(), sizeof(Point)) == 0; // NaN is the same as NaN
}

bool isSame(const RibbonResidue& a, const RibbonResidue& b) {
    return a.id == b.id && a.structure == b.structure && a.kind == b.kind &&
           a.isLinkedToPrevious == b.isLinkedToPrevious && isSame(a.guide, b.guide) &&
           isSame(a.direction, b.direction);
}

bool isSame(const std::vector<RibbonResidue>& a, const std::vector<RibbonResidue>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto& one, const auto& other) { return isSame(one, other); });
}

} // namespace

std::uint32_t guideOf(const Contents& contents, const Marks& marks, std::size_t residue) {
    return guideOf(atomsByRole(contents, marks, residue), contents.residues[residue].kind);
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
                                residue.isProline, residue.isLinkedToPrevious});
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
        if (m_contents != contents || m_isRibbon != styles.ribbon ||
            !hasSameAtoms(*contents, marks)) {
            if (!renew(contents, marks, styles, RibbonStyle::forResidues(count), stop))
                return nullptr;
        }
        close(marks);
        return &m_meshes;
    } catch (...) {
        // What is kept must be of one time; without memory it may not be.
        *this = Ribbons();
        throw;
    }
}

bool Ribbons::renew(const std::shared_ptr<const Contents>& contents, const Marks& marks,
                    const Styles& styles, const RibbonStyle& style, const std::stop_token& stop) {
    m_isRibbon.clear(); // the chains are of no time until they are complete
    std::vector<Backbone> backbones(contents->residues.size());
    for (std::size_t i = 0; i != backbones.size(); ++i)
        if (contents->residues[i].isPolymer) {
            const AtomsByRole atoms = atomsByRole(*contents, marks, i);
            backbones[i] = {atomOf(atoms, Role::N), atomOf(atoms, Role::CA), atomOf(atoms, Role::C),
                            atomOf(atoms, Role::O)};
        }
    const bool isNew = m_contents != contents;
    if (isNew || backbones != m_backbones) {
        m_contents = nullptr; // likewise the structures
        if (!assign(*contents, backbones, stop))
            return false;
        m_backbones = std::move(backbones);
        m_contents = contents;
    }
    if (isNew || style.subdivisions != m_style.subdivisions || style.corners != m_style.corners) {
        m_chains.clear();
        m_ribbons.clear();
    }
    m_style = style;
    if (!makeRibbons(marks, styles, stop))
        return false;
    m_isRibbon = styles.ribbon;
    return true;
}

// Only of the chains that are not as before.
bool Ribbons::makeRibbons(const Marks& marks, const Styles& styles, const std::stop_token& stop) {
    const Contents& contents = *m_contents;
    std::vector<std::vector<RibbonResidue>> chains;
    std::uint32_t chain = 0;
    m_alternatives.clear();
    for (std::size_t i = 0; i != contents.residues.size(); ++i) {
        if (!styles.ribbon[i])
            continue;
        if (chains.empty() || contents.residues[i].chain != chain)
            chains.emplace_back();
        chain = contents.residues[i].chain;
        bool hasAlternatives = false;
        const AtomsByRole atoms = atomsByRole(contents, marks, i, &hasAlternatives);
        chains.back().push_back(ribbonResidue(contents, i, atoms, m_structures[i]));
        if (hasAlternatives)
            m_alternatives.push_back({static_cast<std::uint32_t>(i), atoms});
    }
    m_chains.resize(chains.size());
    m_ribbons.resize(chains.size());
    for (std::size_t i = 0; i != chains.size(); ++i) {
        if (m_ribbons[i] && isSame(chains[i], m_chains[i]))
            continue;
        if (stop.stop_requested())
            return false;
        m_ribbons[i] = nullptr;
        m_chains[i] = std::move(chains[i]);
        m_chains[i].shrink_to_fit();
        m_ribbons[i] = std::make_shared<const Ribbon>(makeRibbon(m_chains[i], m_style));
    }
    return true;
}

bool Ribbons::hasSameAtoms(const Contents& contents, const Marks& marks) const {
    return std::all_of(m_alternatives.begin(), m_alternatives.end(), [&](const auto& one) {
        return atomsByRole(contents, marks, one.residue) == one.atoms;
    });
}

// What is hidden is left out of the ribbons when they are drawn, and where they end then is closed.
void Ribbons::close(const Marks& marks) {
    auto caps = std::make_shared<Mesh>();
    m_meshes.clear();
    for (const std::shared_ptr<const Ribbon>& ribbon : m_ribbons) {
        if (ribbon->mesh.triangles.empty())
            continue;
        m_meshes.emplace_back(ribbon, &ribbon->mesh);
        addCaps(*ribbon, marks.shown, *caps);
    }
    if (!caps->triangles.empty())
        m_meshes.push_back(std::move(caps));
}

} // namespace view
