#include "TableBuilder.h"

#include "BondAtoms.h"
#include "FileLimits.h"
#include "ResidueKinds.h"
#include "Waters.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace memory_host {

namespace {

constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
// More than any chemical residue has.
constexpr std::uint32_t manyAtoms = 10000;
// Memory of the search for bonds, for each atom.
constexpr std::size_t bytesOfABondSearch = 140;
// Only so many residue names are shown for one position.
constexpr std::ptrdiff_t mostNames = 8;

bool isSameResidue(const AtomRow& a, const AtomRow& b) {
    return a.number == b.number && a.residue == b.residue && a.insertion == b.insertion &&
           a.chain == b.chain && a.segment == b.segment;
}

// The positions of `entries` after a stable counting sort by `key`, whose values are below `count`;
// empty if they are sorted already.
template <class Entry>
std::vector<std::uint32_t> sortedPlaces(const std::vector<Entry>& entries, std::size_t count,
                                        std::uint32_t Entry::*key) {
    if (std::ranges::is_sorted(entries, {}, key))
        return {};
    std::vector<std::uint32_t> starts(count + 1, 0);
    for (const Entry& entry : entries)
        ++starts[entry.*key];
    std::uint32_t sum = 0;
    for (std::uint32_t& start : starts)
        sum += std::exchange(start, sum);
    std::vector<std::uint32_t> places(entries.size());
    std::ranges::transform(entries, places.begin(),
                           [&](const Entry& entry) { return starts[entry.*key]++; });
    return places;
}

template <class Entry>
void moveTo(const std::vector<std::uint32_t>& places, std::vector<Entry>& entries) {
    std::vector<Entry> sorted(entries.size());
    for (std::size_t i = 0; i != entries.size(); ++i)
        sorted[places[i]] = entries[i];
    entries.swap(sorted);
}

// Brings residues together by chain, and atoms by residue.
void sortTable(ModelTable& table) {
    const auto residuePlaces =
        sortedPlaces(table.residues, table.chains.size(), &ResidueEntry::chain);
    if (!residuePlaces.empty()) {
        moveTo(residuePlaces, table.residues);
        for (AtomEntry& atom : table.atoms)
            atom.residue = residuePlaces[atom.residue];
    }
    const auto atomPlaces = sortedPlaces(table.atoms, table.residues.size(), &AtomEntry::residue);
    if (!atomPlaces.empty()) {
        moveTo(atomPlaces, table.atoms);
        if (!table.charges.empty())
            moveTo(atomPlaces, table.charges);
        for (BondPair& pair : table.bonds)
            pair = std::minmax({atomPlaces[pair.first], atomPlaces[pair.second]});
        std::ranges::sort(table.bonds);
    }
    for (std::uint32_t i = static_cast<std::uint32_t>(table.atoms.size()); i-- != 0;)
        table.residues[table.atoms[i].residue].firstAtom = i;
}

// Adds the bonds by distance to those that are listed; the result has the counts alone.
Bonds findBondsOf(ModelTable& table, const FileNames& names, std::uint32_t alternatives) {
    std::vector<BondAtom> atoms(table.atoms.size());
    const BondAtoms make;
    for (std::size_t i = 0; i != atoms.size(); ++i) {
        const AtomEntry& atom = table.atoms[i];
        atoms[i] = make.of(atom.element, atom.position, atom.hasPosition, atom.alternative);
    }
    for (std::size_t i = 0; i != table.residues.size(); ++i)
        if (names.text(table.residues[i].name) == membraneMarker)
            for (std::uint32_t k = table.residues[i].firstAtom; k != table.atomEnd(i); ++k)
                atoms[k].hasPosition = false;
    for (const auto& [first, second] : table.bonds)
        BondAtoms::join(atoms[first], atoms[second]);
    Bonds found = findBonds(atoms, alternatives);
    table.listedBonds = table.bonds.size();
    if (table.listedBonds == 0) {
        table.bonds = std::move(found.pairs);
    } else {
        const std::vector<BondPair> listed = table.bonds;
        table.bonds.reserve(listed.size() + found.pairs.size());
        std::ranges::set_difference(found.pairs, listed, std::back_inserter(table.bonds));
    }
    return found;
}

} // namespace

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
    FileNames& names = *m_structure.names;
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
    model.isWatched.push_back(key.number == 0 && TAVIK::isWater(m_structure.names->text(key.name)));
    model.hasAlternatives.push_back(false);
    model.residues[key] = residue;
    return residue;
}

// The residue with this identity, or the one at its position that takes a further name; or none.
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
    addName(residue, key.name);
    model.residues.emplace(key, residue);
    return residue;
}

// Adds a name to those of a residue; of very many only the first are shown.
void TableBuilder::addName(std::uint32_t residue, std::uint32_t name) {
    FileNames& names = *m_structure.names;
    ResidueEntry& entry = m_model->table.residues[residue];
    const std::string& before = names.written(entry.allNames);
    const auto count = 1 + std::ranges::count(before, ',');
    if (count > mostNames)
        return;
    entry.allNames = names.number(before + ',' + (count < mostNames ? names.written(name) : "..."));
    if (count == mostNames)
        m_report.remark(FileReport::Kind::Residue, 0, [&] {
            return "residue " + residueLabel(entry, names) + " of chain " +
                   shownName(m_model->table.chains[entry.chain], names) + " has more than " +
                   std::to_string(mostNames) + " names";
        });
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

void TableBuilder::keepIds(const AtomRow& row) {
    Model& model = *m_model;
    if (row.serial != noSerial) {
        model.serials.resize(model.table.atoms.size(), noSerial);
        model.serials.push_back(row.serial);
    }
    // Only the first atom of a residue is read: all have the same ids.
    ResidueEntry& residue = model.table.residues[model.current];
    if (residue.labelChain == 0 && !row.labelChain.empty()) {
        FileNames& names = *m_structure.names;
        residue.labelChain = names.number(row.labelChain);
        residue.labelNumber = names.number(row.labelNumber);
    }
}

// Checks, at each doubling, whether the table may grow to twice its size.
void TableBuilder::checkRoom() {
    constexpr std::size_t first = std::size_t{1} << 16;
    constexpr std::size_t bytesOfAnAtom = 2 * (sizeof(AtomEntry) + sizeof(Serial));
    const std::size_t most = fileLimits().atoms;
    if (m_atomsBefore + m_atomCount >= most)
        m_report.refuse(0, "has more than " + std::to_string(most) + " atoms",
                        "accepted are files of up to as many");
    requireMemory(m_report, m_atomCount * bytesOfAnAtom);
    m_nextCheck = std::min(std::max(first, 2 * m_atomCount), most - m_atomsBefore);
}

void TableBuilder::add(const AtomRow& row) {
    if (m_atomCount == m_nextCheck)
        checkRoom();
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
    atom.details = row.details;
    atom.row = static_cast<std::uint32_t>(m_atomsBefore + m_atomCount);
    if (!row.alternative.empty())
        atom.details.alternative = row.alternative.front();
    keepIds(row);
    ModelTable& table = m_model->table;
    if (row.partial.isKnown || !table.charges.empty()) {
        table.charges.resize(table.atoms.size());
        table.charges.push_back(row.partial);
    }
    table.atoms.push_back(atom);
    ++m_atomCount;
}

void TableBuilder::remarkOnNames() {
    const FileNames& names = *m_structure.names;
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
    const FileNames& names = *m_structure.names;
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

// The names of the alternative locations' letters.
std::vector<std::uint32_t> TableBuilder::letters() {
    std::vector<std::uint32_t> names(m_alternatives.size() + 1, 0);
    for (const auto& [letter, number] : m_alternatives)
        names[number] = m_structure.names->number(letter);
    return names;
}

void TableBuilder::remarkOnBonds(const Bonds& bonds) {
    if (bonds.crowded != 0)
        m_report.remark(FileReport::Kind::Bonds, 0, [&] {
            return std::to_string(bonds.crowded) +
                   " atoms stand closer together than matter does, and have no bonds; accepted "
                   "are coordinates in Angstrom";
        });
    if (bonds.distant != 0)
        m_report.remark(FileReport::Kind::Bonds, 0, [&] {
            return std::to_string(bonds.distant) +
                   (bonds.distant == 1 ? " atom has" : " atoms have") +
                   " coordinates beyond 1,000,000 Angstrom, no bonds, and may not be seen; "
                   "accepted "
                   "are smaller coordinates";
        });
}

void TableBuilder::remarkOnListedBonds() {
    const ListedBonds::LeftOut leftOut = m_listedBonds.leftOut();
    if (leftOut.count != 0)
        m_report.remark(FileReport::Kind::ListedBonds, leftOut.line, [&] {
            const bool isOne = leftOut.count == 1;
            return (isOne ? std::string("a bond that is listed here was")
                          : std::to_string(leftOut.count) +
                                " bonds that are listed from here on were") +
                   " left out; accepted are bonds of two atoms of the file that can be told from "
                   "others and are at most 6 Angstrom apart";
        });
}

StructureTable TableBuilder::finish(std::string name) {
    m_structure.name = std::move(name);
    m_structure.alternatives = static_cast<std::uint32_t>(m_alternatives.size());
    const std::vector<std::uint32_t> alternativeLetters = letters();
    for (std::unique_ptr<Model>& model : m_models) {
        ModelTable table = std::move(model->table);
        if (!m_listedBonds.isEmpty())
            table.bonds = m_listedBonds.inModel({table, model->serials, alternativeLetters});
        model.reset();
        if (table.atoms.empty())
            continue;
        requireMemory(m_report, table.atoms.size() * bytesOfABondSearch);
        sortTable(table);
        remarkOnResidues(table);
        remarkOnBonds(findBondsOf(table, *m_structure.names, m_structure.alternatives));
        m_structure.models.push_back(std::move(table));
    }
    m_models.clear();
    m_model = nullptr;
    remarkOnListedBonds();
    remarkOnNames();
    return std::move(m_structure);
}

} // namespace memory_host
