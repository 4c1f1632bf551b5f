#include "MmcifListedBonds.h"

#include "BondReferences.h"
#include "MmcifBonds.h"
#include "MmcifName.h"

#include <algorithm>
#include <array>
#include <optional>
#include <unordered_map>

namespace memory_host::mmcif {

namespace {

// Tells whether rows of connections list bonds.
class BondRows {
public:
    explicit BondRows(const cif::Category& connections)
        : m_columns{connections.column("conn_type_id"), connections.column("ptnr1_symmetry"),
                    connections.column("ptnr2_symmetry")} {}

    bool listBonds(const cif::Rows& row) const {
        std::array<std::string_view, 3> values;
        for (std::size_t i = 0; i != values.size(); ++i)
            if (m_columns[i] < row.places().size())
                values[i] = contentOf(row[m_columns[i]]);
        return isBond(values[0], values[1], values[2]);
    }

private:
    std::array<std::size_t, 3> m_columns;
};

std::string atomKey(const Name& name, std::string_view letter) {
    std::string key;
    siteKey(key, name);
    appendPart(key, name.atom);
    appendPart(key, letter);
    return key;
}

// What rows of atoms say of those that take part in bonds.
class NamedAtoms {
public:
    NamedAtoms(std::string_view text, const cif::Category& atoms, std::vector<std::uint32_t> rows) {
        std::ranges::sort(rows);
        const PartColumns columns = atomColumns(atoms);
        auto wanted = rows.begin();
        cif::Rows lines(text, atoms);
        for (std::uint32_t row = 0; wanted != rows.end() && lines.next(); ++row) {
            if (*wanted == row)
                m_values.emplace(row, valuesOf(lines, columns));
            while (wanted != rows.end() && *wanted == row)
                ++wanted;
        }
    }

    // A row may name the one atom by the author's ids, and the other, which has no number of the
    // author's, by its label; with or without their letters.
    BondReferences::Atom referenceTo(const BondAtom& atom) const {
        BondReferences::Atom reference{{}, std::string(atom.letter)};
        for (const bool byLabel : {false, true}) {
            const Name name(m_values.at(atom.row), byLabel);
            reference.names.push_back(atomKey(name, name.letter));
            if (!name.letter.empty())
                reference.names.push_back(atomKey(name, {}));
        }
        return reference;
    }

private:
    std::unordered_map<std::uint32_t, PartValues> m_values;
};

std::vector<std::uint32_t> rowsOf(const std::vector<RowBond>& lost,
                                  const std::vector<RowBond>& kept) {
    std::vector<std::uint32_t> rows;
    for (const std::vector<RowBond>* bonds : {&lost, &kept})
        for (const RowBond& bond : *bonds) {
            rows.push_back(bond.first.row);
            rows.push_back(bond.second.row);
        }
    return rows;
}

BondReferences referencesTo(const std::vector<RowBond>& lost, const std::vector<RowBond>& kept,
                            const NamedAtoms& named) {
    BondReferences references;
    for (const RowBond& bond : lost)
        references.lose(named.referenceTo(bond.first), named.referenceTo(bond.second),
                        bond.isFoundAgain);
    for (const RowBond& bond : kept)
        if (bond.isRelettered())
            references.reletter(named.referenceTo(bond.first), named.referenceTo(bond.second),
                                *bond.left);
    for (const RowBond& bond : kept)
        references.keep(named.referenceTo(bond.first), named.referenceTo(bond.second));
    references.settle();
    return references;
}

using Letters = std::array<std::string_view, 2>;

// Gives a row what becomes of it, if it is left. Returns the letters that it has then.
Letters update(std::size_t row, const std::array<PartColumns, 2>& partners,
               const BondReferences::Fate& found, std::size_t columns, Letters letters,
               RowFate& fate) {
    bool isPlaceMissing = false;
    for (std::size_t i = 0; i != partners.size(); ++i)
        isPlaceMissing = isPlaceMissing || (partners[i][PartLetter] == columns &&
                                            !found.letters[i].value_or(std::string()).empty());
    fate.comingBack += isPlaceMissing ? found.comingBack : found.comingBackToo;
    fate.joined += isPlaceMissing ? found.joined : found.joinedToo;
    for (std::size_t i = 0; i != partners.size(); ++i)
        if (found.letters[i] && partners[i][PartLetter] != columns) {
            letters[i] = *found.letters[i];
            fate.updates.push_back(
                {row,
                 {partners[i][PartLetter], letters[i].empty() ? "?" : cif::written(letters[i])}});
        }
    return letters;
}

void countUnlisted(const BondReferences& references, RowFate& fate) {
    for (const SavedBond* bond : references.unlisted()) {
        const bool isAmbiguous = bond->isAmbiguous || bond->needsLetter[0] || bond->needsLetter[1];
        ++(isAmbiguous ? fate.ambiguous : fate.unlisted);
    }
}

} // namespace

void updateBonds(std::string_view text, const cif::Category& atoms,
                 const cif::Category& connections, const std::vector<RowBond>& lost,
                 const std::vector<RowBond>& kept, RowFate& fate) {
    const std::optional<Naming> naming = namingOf(connections);
    if (!naming || (lost.empty() && std::ranges::none_of(kept, &RowBond::isRelettered)))
        return;
    const NamedAtoms named(text, atoms, rowsOf(lost, kept));
    BondReferences references = referencesTo(lost, kept, named);
    const std::array<PartColumns, 2> partners{naming->partners[0], naming->partners[1]};
    const BondRows bondRows(connections);
    cif::Rows rows(text, connections);
    for (std::size_t row = 0; rows.next(); ++row) {
        if (!bondRows.listBonds(rows))
            continue;
        std::array<std::string, 2> keys;
        Letters letters;
        for (std::size_t i = 0; i != keys.size(); ++i) {
            const PartValues values = valuesOf(rows, partners[i]);
            const Name name(values, isByLabel(values));
            letters[i] = name.letter;
            keys[i] = atomKey(name, name.letter);
        }
        BondReferences::Fate found = references.of(keys[0], keys[1]);
        for (std::size_t i = 0; i != letters.size(); ++i)
            if (found.letters[i] == letters[i])
                found.letters[i].reset();
        if (!found.isKept)
            fate.drop(row, connections.rowCount);
        else if (!fate.drops(row))
            references.list(
                keys[0], keys[1],
                update(row, partners, found, connections.columns.size(), letters, fate));
    }
    countUnlisted(references, fate);
}

} // namespace memory_host::mmcif
