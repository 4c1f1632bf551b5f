#include "TableBuilder.h"

#include "ResidueKinds.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace memory_host {

namespace {

constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
// No chemical residue comes near.
constexpr std::uint32_t manyAtoms = 10000;

bool isSameResidue(const AtomRow& a, const AtomRow& b) {
    return a.number == b.number && a.residue == b.residue && a.insertion == b.insertion &&
           a.chain == b.chain && a.segment == b.segment;
}

// Sorts `entries` by `keyOf`, whose values lie below `count`, and keeps the order of equal ones.
template <class Entry, class KeyOf>
void sortStable(std::vector<Entry>& entries, std::size_t count, KeyOf keyOf) {
    if (std::ranges::is_sorted(entries, {}, keyOf))
        return;
    std::vector<std::uint32_t> starts(count + 1, 0);
    for (const Entry& entry : entries)
        ++starts[keyOf(entry)];
    std::uint32_t sum = 0;
    for (std::uint32_t& start : starts)
        sum += std::exchange(start, sum);
    std::vector<Entry> sorted(entries.size());
    for (const Entry& entry : entries)
        sorted[starts[keyOf(entry)]++] = entry;
    entries.swap(sorted);
}

// Brings residues together by chain, and atoms by residue.
void sortTable(ModelTable& table) {
    std::vector<std::uint32_t> order(table.residues.size());
    std::iota(order.begin(), order.end(), 0U);
    sortStable(order, table.chains.size(),
               [&](std::uint32_t residue) { return table.residues[residue].chain; });
    std::vector<ResidueEntry> residues;
    std::vector<std::uint32_t> newPlaces(order.size());
    residues.reserve(order.size());
    for (const std::uint32_t old : order) {
        newPlaces[old] = static_cast<std::uint32_t>(residues.size());
        residues.push_back(table.residues[old]);
    }
    table.residues.swap(residues);
    for (AtomEntry& atom : table.atoms)
        atom.residue = newPlaces[atom.residue];
    sortStable(table.atoms, table.residues.size(),
               [](const AtomEntry& atom) { return atom.residue; });
    for (std::uint32_t i = static_cast<std::uint32_t>(table.atoms.size()); i-- != 0;)
        table.residues[table.atoms[i].residue].firstAtom = i;
}

std::size_t findBondsOf(ModelTable& table, std::uint32_t alternatives) {
    std::vector<BondAtom> atoms(table.atoms.size());
    for (std::size_t i = 0; i != atoms.size(); ++i) {
        const AtomEntry& atom = table.atoms[i];
        atoms[i] = {atom.position, covalentRadius(atom.element), atom.alternative,
                    isHydrogen(atom.element), atom.hasPosition};
    }
    Bonds bonds = findBonds(atoms, alternatives);
    table.bonds = std::move(bonds.pairs);
    return bonds.crowded;
}

} // namespace

const std::string& shownName(std::uint32_t number, const NamePool& names) {
    static const std::string nameless("_");
    const std::string& text = names.text(number);
    return text.empty() ? nameless : text;
}

std::string residueLabel(const ResidueEntry& residue, const NamePool& names) {
    std::string label = shownName(residue.allNames, names);
    if (residue.number != 0)
        label += ' ' + names.text(residue.number);
    return label;
}

void TableBuilder::startModel(std::string_view number, bool reopen) {
    if (reopen) {
        if (const auto found = m_byNumber.find(std::string(number)); found != m_byNumber.end()) {
            m_model = m_models[found->second].get();
            return;
        }
        m_byNumber.emplace(number, m_models.size());
    } else if (m_model) {
        m_model->chains = {};
        m_model->residues = {};
        m_model->seenAtoms = {};
    }
    if (!m_model || modelHasAtoms() || reopen)
        m_model = m_models.emplace_back(std::make_unique<Model>()).get();
    m_model->table.number = number;
}

std::uint16_t TableBuilder::alternativeNumber(std::string_view letter) {
    if (letter.empty())
        return 0;
    const auto next = static_cast<std::uint16_t>(m_alternatives.size() + 1);
    if (next == std::numeric_limits<std::uint16_t>::max())
        m_report.refuse(0, "has more than 65534 alternative locations",
                        "accepted are up to as many different ones");
    return m_alternatives.emplace(letter, next).first->second;
}

ResidueKey TableBuilder::keyOf(const AtomRow& row) {
    NamePool& names = *m_structure.names;
    ResidueKey key;
    const auto chain = m_model->chains.emplace(names.number(row.chain), m_model->chains.size());
    if (chain.second)
        m_model->table.chains.push_back(chain.first->first);
    key.chain = chain.first->second;
    key.number = row.insertion.empty()
                     ? names.number(row.number)
                     : names.number(std::string(row.number).append(row.insertion));
    key.segment = names.number(row.segment);
    key.name = names.number(row.residue);
    key.part = m_model->part;
    return key;
}

std::uint32_t TableBuilder::newResidue(const ResidueKey& key) {
    Model& model = *m_model;
    const auto residue = static_cast<std::uint32_t>(model.table.residues.size());
    ResidueEntry entry;
    entry.chain = key.chain;
    entry.number = key.number;
    entry.firstAtom = static_cast<std::uint32_t>(model.table.atoms.size());
    entry.name = entry.allNames = key.name;
    model.table.residues.push_back(entry);
    model.isWatched.push_back(key.number == 0 && isWater(m_structure.names->text(key.name)));
    model.hasAlternatives.push_back(false);
    model.residues[key] = residue;
    return residue;
}

// The residue of this identity, or the one at its position that takes another name in; or none.
std::uint32_t TableBuilder::knownResidue(const ResidueKey& key, std::uint16_t alternative) {
    Model& model = *m_model;
    if (const auto found = model.residues.find(key); found != model.residues.end())
        return found->second;
    if (alternative == 0 || key.number == 0)
        return none;
    std::uint32_t residue = model.current;
    if (model.table.atoms.empty() || model.lastKey.position() != key.position()) {
        const auto found = model.residues.find(key.position());
        if (found == model.residues.end())
            return none;
        residue = found->second;
    }
    NamePool& names = *m_structure.names;
    ResidueEntry& entry = model.table.residues[residue];
    entry.allNames = names.number(names.written(entry.allNames) + ',' + names.written(key.name));
    model.residues.emplace(key, residue);
    return residue;
}

void TableBuilder::watch(std::uint32_t residue) {
    Model& model = *m_model;
    const std::vector<AtomEntry>& atoms = model.table.atoms;
    model.isWatched[residue] = true;
    for (std::size_t i = model.table.residues[residue].firstAtom;
         i < atoms.size() && atoms[i].residue == residue; ++i)
        model.seenAtoms.insert({residue, atoms[i].name, atoms[i].alternative});
}

std::uint32_t TableBuilder::residueOf(const AtomRow& row, std::uint32_t name,
                                      std::uint16_t alternative) {
    Model& model = *m_model;
    const bool goesOn = !model.hasEnded && isSameResidue(row, model.last);
    if (goesOn && !model.isWatched[model.current])
        return model.current;
    model.hasEnded = false;
    const ResidueKey key = keyOf(row);
    std::uint32_t residue = key.number != 0 ? knownResidue(key, alternative)
                            : goesOn        ? model.current
                                            : none;
    if (residue == none) {
        residue = newResidue(key);
    } else if (residue != model.current && !model.isWatched[residue]) {
        watch(residue);
    }
    model.last = row;
    model.lastKey = key;
    if (model.isWatched[residue] && !model.seenAtoms.insert({residue, name, alternative}).second) {
        residue = newResidue(key);
        if (model.isWatched[residue])
            model.seenAtoms.insert({residue, name, alternative});
    }
    return residue;
}

void TableBuilder::endResidues() {
    if (!m_model || m_model->hasEnded)
        return;
    m_model->hasEnded = true;
    ++m_model->part;
}

void TableBuilder::add(const AtomRow& row) {
    if (!m_model)
        startModel({}, false);
    AtomEntry atom;
    atom.name = m_structure.names->number(row.name);
    atom.alternative = alternativeNumber(row.alternative);
    m_model->current = residueOf(row, atom.name, atom.alternative);
    atom.residue = m_model->current;
    if (atom.alternative != 0 && !m_model->hasAlternatives[atom.residue]) {
        // Another residue name may share the position from now on.
        m_model->hasAlternatives[atom.residue] = true;
        m_model->residues[m_model->lastKey.position()] = atom.residue;
    }
    atom.position = row.position;
    atom.temperature = row.temperature;
    atom.element = row.element;
    atom.hasPosition = row.hasPosition;
    m_model->table.atoms.push_back(atom);
    ++m_atomCount;
}

void TableBuilder::remarkOnNames() {
    const NamePool& names = *m_structure.names;
    if (!names.hasChanged())
        return;
    std::vector<std::size_t> uses(names.size());
    for (const ModelTable& model : m_structure.models) {
        for (const std::uint32_t chain : model.chains)
            ++uses[chain];
        for (const ResidueEntry& residue : model.residues) {
            ++uses[residue.allNames];
            ++uses[residue.number];
        }
        for (const AtomEntry& atom : model.atoms)
            ++uses[atom.name];
    }
    for (std::uint32_t name = 0; name != uses.size(); ++name)
        if (uses[name] != 0 && names.isChanged(name))
            m_report.remark(FileReport::Kind::Name, 0, [&] {
                return "the name " + inQuotes(names.written(name)) + " of " +
                       std::to_string(uses[name]) + (uses[name] == 1 ? " item" : " items") +
                       " became " + inQuotes(names.text(name)) +
                       "; accepted are Latin-1 characters but \"/\" and control characters";
            });
}

void TableBuilder::remarkOnResidues(const ModelTable& table) {
    const NamePool& names = *m_structure.names;
    for (std::size_t i = 0; i != table.residues.size(); ++i) {
        const ResidueEntry& residue = table.residues[i];
        const std::uint32_t count = table.atomEnd(i) - residue.firstAtom;
        if (count >= manyAtoms)
            m_report.remark(FileReport::Kind::Residue, 0, [&] {
                return "residue " + residueLabel(residue, names) + " of chain " +
                       shownName(table.chains[residue.chain], names) + " has " +
                       std::to_string(count) + " atoms";
            });
    }
}

StructureTable TableBuilder::finish(std::string name) {
    m_structure.name = std::move(name);
    m_structure.alternatives = static_cast<std::uint32_t>(m_alternatives.size());
    for (std::unique_ptr<Model>& model : m_models) {
        ModelTable table = std::move(model->table);
        model.reset();
        if (table.atoms.empty())
            continue;
        sortTable(table);
        remarkOnResidues(table);
        if (const std::size_t crowded = findBondsOf(table, m_structure.alternatives))
            m_report.remark(FileReport::Kind::Bonds, 0, [&] {
                return std::to_string(crowded) +
                       " atoms stand closer together than matter does, and have no bonds; accepted "
                       "are coordinates in Angstrom";
            });
        m_structure.models.push_back(std::move(table));
    }
    m_models.clear();
    m_model = nullptr;
    remarkOnNames();
    return std::move(m_structure);
}

} // namespace memory_host
