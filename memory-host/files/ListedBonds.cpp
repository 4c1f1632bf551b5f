#include "ListedBonds.h"

#include <algorithm>

namespace memory_host {

namespace {

// More residue names than the alternative locations of one residue usually have.
constexpr int mostResidueNames = 8;

// Of a residue without label ids: no bond asks for it.
constexpr std::uint64_t noPlace = std::numeric_limits<std::uint64_t>::max();

std::uint64_t placeOf(std::uint32_t chain, std::uint32_t number) {
    return std::uint64_t{chain} << 32 | number;
}

bool isInReach(const AtomEntry& a, const AtomEntry& b) {
    double squared = 0.0;
    for (const std::size_t axis : {0, 1, 2}) {
        const double step =
            static_cast<double>(a.position[axis]) - static_cast<double>(b.position[axis]);
        squared += step * step;
    }
    return a.hasPosition && b.hasPosition && squared <= longestListedBond * longestListedBond;
}

} // namespace

void ListedBonds::leaveOut(std::size_t line) {
    if (m_leftOut.count++ == 0 || line < m_leftOut.line)
        m_leftOut.line = line;
}

std::uint32_t ListedBonds::partnerOf(Serial serial) {
    const auto [found, isNew] =
        m_bySerial.emplace(serial, static_cast<std::uint32_t>(m_partners.size()));
    if (isNew)
        m_partners.emplace_back();
    return found->second;
}

std::uint32_t ListedBonds::partnerOf(const ListedAtom& atom) {
    const std::uint32_t number =
        atom.insertion.empty() ? m_names.number(atom.number)
                               : m_names.number(std::string(atom.number).append(atom.insertion));
    Residues& residues = atom.byLabel ? m_labelled : m_residues;
    const auto [residue, isNewResidue] =
        residues.emplace(placeOf(m_names.number(atom.chain), number), m_residueCount);
    m_residueCount += isNewResidue ? 1 : 0;

    const std::uint32_t residueName = m_names.number(atom.residue);
    const auto added = static_cast<std::uint32_t>(m_partners.size());
    const auto [found, isNew] = m_byName.emplace(
        Key{residue->second, m_names.number(atom.name), m_names.number(atom.alternative)}, added);
    if (!isNew) {
        std::uint32_t last = none;
        int names = 0;
        for (std::uint32_t at = found->second; at != none; at = m_partners[at].next) {
            if (m_partners[at].residueName == residueName)
                return at;
            last = at;
            ++names;
        }
        if (names == mostResidueNames)
            return none;
        m_partners[last].next = added;
    }
    m_partners.emplace_back().residueName = residueName;
    return added;
}

void ListedBonds::addBond(std::uint32_t a, std::uint32_t b, std::size_t line) {
    if (a == none || b == none || a == b)
        leaveOut(line);
    else
        m_bonds.push_back({std::min(a, b), std::max(a, b), line});
}

void ListedBonds::add(Serial a, Serial b, std::size_t line) {
    if (a == noSerial || b == noSerial) {
        leaveOut(line);
        return;
    }
    const std::uint32_t first = partnerOf(a);
    addBond(first, partnerOf(b), line);
}

void ListedBonds::add(const ListedAtom& a, const ListedAtom& b, std::size_t line) {
    const std::uint32_t first = partnerOf(a);
    addBond(first, partnerOf(b), line);
}

// Sorts the bonds by partner and removes duplicates.
void ListedBonds::prepare() {
    m_isPrepared = true;
    std::ranges::stable_sort(m_bonds, {},
                             [](const Bond& bond) { return std::pair(bond.a, bond.b); });
    m_bonds.erase(
        std::unique(m_bonds.begin(), m_bonds.end(),
                    [](const Bond& x, const Bond& y) { return x.a == y.a && x.b == y.b; }),
        m_bonds.end());
    std::vector<std::uint32_t> counts(m_partners.size(), 0);
    std::erase_if(m_bonds, [&](const Bond& bond) {
        const bool isTooMany = std::max(++counts[bond.a], ++counts[bond.b]) > mostListedBonds;
        if (isTooMany)
            leaveOut(bond.line);
        return isTooMany;
    });
    for (std::uint32_t i = static_cast<std::uint32_t>(m_bonds.size()); i-- != 0;)
        m_partners[m_bonds[i].a].firstBond = i;
}

void ListedBonds::take(const ListedBondsModel& model, std::uint32_t partner, std::uint32_t atom) {
    Partner& taker = m_partners[partner];
    if (taker.model != m_model) {
        taker.model = m_model;
        taker.firstAtom = none;
        taker.atomCount = 0;
        taker.isAmbiguous = false;
        m_found.push_back(partner);
    }
    // Several atoms are one atom in different alternative locations, or ambiguous.
    const std::vector<AtomEntry>& atoms = model.table.atoms;
    taker.isAmbiguous = taker.isAmbiguous || ++taker.atomCount > mostAlternatives;
    for (std::uint32_t at = taker.firstAtom; at != none && !taker.isAmbiguous;
         at = m_atoms[at].next)
        taker.isAmbiguous = atoms[m_atoms[at].atom].residue != atoms[atom].residue ||
                            atoms[m_atoms[at].atom].alternative == atoms[atom].alternative;
    if (taker.isAmbiguous)
        return;
    m_atoms.push_back({atom, taker.firstAtom});
    taker.firstAtom = static_cast<std::uint32_t>(m_atoms.size() - 1);
}

void ListedBonds::findByName(const ListedBondsModel& model, std::uint32_t wanted,
                             std::uint32_t atom) {
    const AtomEntry& entry = model.table.atoms[atom];
    const ResidueEntry& residue = model.table.residues[entry.residue];
    const std::uint32_t letter = model.letters[entry.alternative];
    const auto look = [&](std::uint32_t wantedLetter) {
        const auto found = m_byName.find({wanted, entry.name, wantedLetter});
        if (found == m_byName.end())
            return;
        for (std::uint32_t at = found->second; at != none; at = m_partners[at].next) {
            const std::uint32_t name = m_partners[at].residueName;
            // In a residue with several names, the atom's name and letter are enough.
            if (name == 0 || name == residue.name || residue.name != residue.allNames)
                take(model, at, atom);
        }
    };
    look(0);
    if (letter != 0)
        look(letter);
}

void ListedBonds::findAtoms(const ListedBondsModel& model) {
    const ModelTable& table = model.table;
    if (!m_bySerial.empty()) {
        for (std::uint32_t i = 0; i != model.serials.size(); ++i)
            if (model.serials[i] != noSerial)
                if (const auto found = m_bySerial.find(model.serials[i]); found != m_bySerial.end())
                    take(model, found->second, i);
    }
    const auto findByNames = [&](const Residues& residues, auto placeOfResidue) {
        if (residues.empty())
            return;
        std::vector<std::uint32_t> wanted(table.residues.size(), none);
        for (std::size_t i = 0; i != wanted.size(); ++i)
            if (const auto found = residues.find(placeOfResidue(i)); found != residues.end())
                wanted[i] = found->second;
        for (std::uint32_t i = 0; i != table.atoms.size(); ++i)
            if (wanted[table.atoms[i].residue] != none)
                findByName(model, wanted[table.atoms[i].residue], i);
    };
    findByNames(m_residues, [&](std::size_t i) {
        return placeOf(table.chains[table.residues[i].chain], table.residues[i].number);
    });
    findByNames(m_labelled, [&](std::size_t i) {
        const ResidueEntry& residue = table.residues[i];
        return residue.labelChain == 0 ? noPlace : placeOf(residue.labelChain, residue.labelNumber);
    });
}

bool ListedBonds::join(const ModelTable& table, const Bond& bond,
                       std::vector<BondPair>& pairs) const {
    const Partner& first = m_partners[bond.a];
    const Partner& second = m_partners[bond.b];
    if (second.model != m_model || first.isAmbiguous || second.isAmbiguous)
        return false;
    const std::size_t before = pairs.size();
    for (std::uint32_t a = first.firstAtom; a != none; a = m_atoms[a].next) {
        for (std::uint32_t b = second.firstAtom; b != none; b = m_atoms[b].next) {
            const std::uint32_t i = m_atoms[a].atom;
            const std::uint32_t k = m_atoms[b].atom;
            const AtomEntry& x = table.atoms[i];
            const AtomEntry& y = table.atoms[k];
            const bool areApart =
                x.alternative != y.alternative && x.alternative != 0 && y.alternative != 0;
            if (i != k && !areApart && isInReach(x, y))
                pairs.push_back(std::minmax(i, k));
        }
    }
    return pairs.size() != before;
}

std::vector<BondPair> ListedBonds::inModel(const ListedBondsModel& model) {
    if (!m_isPrepared)
        prepare();
    std::vector<BondPair> pairs;
    if (m_bonds.empty())
        return pairs;
    ++m_model;
    m_atoms.clear();
    m_found.clear();
    findAtoms(model);
    for (const std::uint32_t partner : m_found)
        for (std::size_t i = m_partners[partner].firstBond;
             i < m_bonds.size() && m_bonds[i].a == partner; ++i)
            if (join(model.table, m_bonds[i], pairs))
                m_bonds[i].isUsed = true;
    std::ranges::sort(pairs);
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    return pairs;
}

ListedBonds::LeftOut ListedBonds::leftOut() const {
    LeftOut all = m_leftOut;
    for (const Bond& bond : m_bonds)
        if (!bond.isUsed && (all.count++ == 0 || bond.line < all.line))
            all.line = bond.line;
    return all;
}

} // namespace memory_host
