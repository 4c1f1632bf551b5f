#include "BuildStructure.h"

#include "DataMaker.h"
#include "items/Building.h"

#include <algorithm>

namespace memory_host {

namespace {

using TAVIK::Compound;
using TAVIK::DataMaker;

class ModelBuilder {
public:
    ModelBuilder(ModelTable&& model, const StructureTable& structure, BuildScratch& scratch,
                 EntrySource& source, ProgressCounter& progress)
        : m_model(std::move(model)), m_names(*structure.names), m_source(source),
          m_progress(progress), m_groups(m_model, m_names, scratch.facts),
          m_atoms(m_model.atoms.size()), m_found(m_model.listedBonds),
          m_conformers(scratch.conformers) {
        m_conformers.resize(structure.alternatives + 1);
        m_source.atoms.reserve(m_model.atoms.size());
        m_source.bonds.reserve(m_model.listedBonds);
        m_source.foundBonds =
            static_cast<std::uint32_t>(m_model.bonds.size() - m_model.listedBonds);
    }

    DetachedItem build(const std::string& name) {
        DetachedItem entry(makeDetached(name, "Composite"));
        std::size_t residue = 0;
        for (std::uint32_t chain = 0; chain != m_model.chains.size(); ++chain)
            residue = buildChain(*entry, chain, residue);
        buildBondsBetweenChains(*entry);
        forgetConformers();
        return entry;
    }

private:
    std::size_t buildChain(Compound& entry, std::uint32_t chain, std::size_t residue);
    void buildResidue(Compound& groups, std::size_t residue);
    void buildAtom(Compound& parent, std::uint32_t atom);
    void forgetConformers();
    void numberConformers(std::size_t residue);
    void buildBonds(Compound& bonds, std::uint32_t endAtom);
    void buildBonds(Compound& bonds, std::uint32_t endAtom, std::size_t& next, std::size_t end,
                    std::vector<BondPair>& betweenChains);
    void buildBondsBetweenChains(Compound& entry);
    void addBondOf(Compound& bonds, const BondPair& pair) {
        const Compound* bond = addBond(&bonds, m_atoms[pair.first], m_atoms[pair.second]);
        m_source.lastBond = bond->GetId();
        m_progress.step();
    }
    void addListedBond(Compound& bonds, const BondPair& pair) {
        addBondOf(bonds, pair);
        m_source.bonds.push_back(
            {m_source.lastBond, m_model.atoms[pair.first].row, m_model.atoms[pair.second].row});
    }

    ModelTable m_model;
    const FileNames& m_names;
    EntrySource& m_source;
    ProgressCounter& m_progress;
    AtomGroups m_groups;
    std::vector<Compound*> m_atoms; ///< by atom
    std::size_t m_listed = 0;       ///< index of the first listed bond that is in no chain yet
    std::size_t m_found;            ///< likewise of the bonds by distance
    std::vector<BondPair> m_listedBetweenChains;
    std::vector<BondPair> m_foundBetweenChains;
    /// The conformers of the current residue: their numbers by alternative location, and which
    /// alternative locations are in use.
    std::vector<unsigned int>& m_conformers;
    std::vector<std::uint16_t> m_used;
};

std::size_t ModelBuilder::buildChain(Compound& entry, std::uint32_t chain, std::size_t residue) {
    Compound* molecule =
        DataMaker::makeCore(&entry, shownName(m_model.chains[chain], m_names), "Molecule");
    Compound* groups = DataMaker::makeCore(molecule, "Groups", "Composite");
    while (residue != m_model.residues.size() && m_model.residues[residue].chain == chain)
        buildResidue(*groups, residue++);
    Compound* bonds = DataMaker::makeCore(molecule, "Bonds", "Composite");
    buildBonds(*bonds, residue == m_model.residues.size()
                           ? static_cast<std::uint32_t>(m_model.atoms.size())
                           : m_model.residues[residue].firstAtom);
    return residue;
}

void ModelBuilder::forgetConformers() {
    for (const std::uint16_t alternative : m_used)
        m_conformers[alternative] = 0;
    m_used.clear();
}

// Conformers are numbered from 1 in the order of the file, for each residue.
void ModelBuilder::numberConformers(std::size_t residue) {
    forgetConformers();
    for (std::uint32_t i = m_model.residues[residue].firstAtom; i != m_model.atomEnd(residue);
         ++i) {
        const std::uint16_t alternative = m_model.atoms[i].alternative;
        if (alternative == 0 || m_conformers[alternative] != 0)
            continue;
        m_used.push_back(alternative);
        m_conformers[alternative] = static_cast<unsigned int>(m_used.size());
    }
}

void ModelBuilder::buildAtom(Compound& parent, std::uint32_t atom) {
    const AtomEntry& entry = m_model.atoms[atom];
    TAVIK::AtomValues record;
    record.name = shownName(entry.name, m_names);
    record.type = elementSymbol(entry.element);
    record.position =
        TAVIK::Vertex(entry.position[0], entry.position[1], entry.position[2], entry.hasPosition);
    record.temperature = entry.temperature;
    record.model = m_conformers[entry.alternative];
    record.details = entry.details;
    if (!m_model.charges.empty())
        record.partial = m_model.charges[atom];
    m_atoms[atom] = addAtom(&parent, record);
    m_source.atoms.push_back({m_atoms[atom]->GetId(), entry.row});
    m_progress.step();
}

void ModelBuilder::buildResidue(Compound& groups, std::size_t residue) {
    const ResidueEntry& entry = m_model.residues[residue];
    Compound* item = DataMaker::makeCore(&groups, residueLabel(entry, m_names), "Residue");
    if (entry.labelChain != 0)
        setLabelIds(item, {m_names.text(entry.labelChain), m_names.text(entry.labelNumber)});
    numberConformers(residue);
    const std::uint32_t end = m_model.atomEnd(residue);
    const ResidueKind kind = m_groups.kindOf(residue);
    const auto names = groupNames(kind);
    if (names.empty()) {
        for (std::uint32_t i = entry.firstAtom; i != end; ++i)
            buildAtom(*item, i);
        return;
    }
    for (std::size_t group = 0; group != names.size(); ++group) {
        Compound* parent = nullptr;
        for (std::uint32_t i = entry.firstAtom; i != end; ++i) {
            if (m_groups.groupOf(i, kind) != group)
                continue;
            if (!parent)
                parent = DataMaker::makeCore(item, names[group], "Group");
            buildAtom(*parent, i);
        }
    }
}

// Listed bonds and found ones are ordered by their first atoms, and so by chain.
void ModelBuilder::buildBonds(Compound& bonds, std::uint32_t endAtom) {
    buildBonds(bonds, endAtom, m_listed, m_model.listedBonds, m_listedBetweenChains);
    buildBonds(bonds, endAtom, m_found, m_model.bonds.size(), m_foundBetweenChains);
}

void ModelBuilder::buildBonds(Compound& bonds, std::uint32_t endAtom, std::size_t& next,
                              std::size_t end, std::vector<BondPair>& betweenChains) {
    for (; next != end && m_model.bonds[next].first < endAtom; ++next) {
        const BondPair& pair = m_model.bonds[next];
        if (pair.second >= endAtom)
            betweenChains.push_back(pair);
        else if (&next == &m_listed)
            addListedBond(bonds, pair);
        else
            addBondOf(bonds, pair);
    }
}

void ModelBuilder::buildBondsBetweenChains(Compound& entry) {
    if (m_listedBetweenChains.empty() && m_foundBetweenChains.empty())
        return;
    Compound* bonds = DataMaker::makeCore(&entry, "Bonds", "Composite");
    for (const BondPair& pair : m_listedBetweenChains)
        addListedBond(*bonds, pair);
    for (const BondPair& pair : m_foundBetweenChains)
        addBondOf(*bonds, pair);
}

} // namespace

void Destroy::operator()(Compound* item) const {
    DataMaker::Destroy(item);
}

void ProgressCounter::tell() {
    // A bar of a few hundred steps is smooth.
    constexpr std::size_t fewest = 4096;
    m_next = m_done + std::max(fewest, m_whole / 256);
    if (m_progress)
        m_progress(m_stage,
                   std::min(1.0, static_cast<double>(m_done) /
                                     static_cast<double>(std::max<std::size_t>(m_whole, 1))));
}

std::size_t workOf(const ModelTable& model) {
    return model.atoms.size() + model.bonds.size();
}

std::size_t memoryOf(const ModelTable& model) {
    // Measured; a residue includes its groups and names, a chain its two composites.
    constexpr std::size_t atom = 154;
    constexpr std::size_t bond = 90;
    constexpr std::size_t residue = 250;
    constexpr std::size_t chain = 700;
    return model.atoms.size() * atom + model.bonds.size() * bond + model.residues.size() * residue +
           (model.chains.size() + 1) * chain;
}

DetachedItem buildModel(ModelTable model, const StructureTable& structure, const std::string& name,
                        EntrySource& source, BuildScratch& scratch, ProgressCounter& progress) {
    return ModelBuilder(std::move(model), structure, scratch, source, progress).build(name);
}

} // namespace memory_host
