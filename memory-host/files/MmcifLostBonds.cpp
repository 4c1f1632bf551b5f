#include "MmcifLostBonds.h"

#include "MmcifBonds.h"
#include "MmcifName.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace memory_host::mmcif {

namespace {

using Keys = std::unordered_set<std::string>;

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

// The same in both orders.
std::string bondKey(const std::string& a, const std::string& b) {
    return std::min(a, b) + std::max(a, b);
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

    // The keys of those of these bonds that are none of the others, whatever model they are in.
    Keys keysOfOnly(std::vector<RowBond> bonds, const std::vector<RowBond>& others) const {
        Keys known;
        for (const RowBond& bond : others)
            known.insert(letteredKey(bond));
        std::erase_if(bonds,
                      [&](const RowBond& bond) { return known.contains(letteredKey(bond)); });
        return keysOf(bonds);
    }

    // The keys by which a row may list these bonds.
    Keys keysOf(const std::vector<RowBond>& bonds) const {
        Keys keys;
        for (const RowBond& bond : bonds) {
            const auto others = keysOf(bond.second);
            for (const std::string& key : keysOf(bond.first))
                for (const std::string& other : others)
                    keys.insert(bondKey(key, other));
        }
        return keys;
    }

private:
    std::string letteredKey(const RowBond& bond) const {
        return bondKey(keysOf(bond.first).front(), keysOf(bond.second).front());
    }

    // A row may name the one atom by the author's ids, and the other, which has no number of the
    // author's, by its label; with or without their letters.
    std::array<std::string, 4> keysOf(std::uint32_t row) const {
        const Name author(m_values.at(row), false);
        const Name label(m_values.at(row), true);
        return {atomKey(author, author.letter), atomKey(author, {}), atomKey(label, label.letter),
                atomKey(label, {})};
    }

    std::unordered_map<std::uint32_t, PartValues> m_values;
};

std::vector<std::uint32_t> rowsOf(const std::vector<RowBond>& lost,
                                  const std::vector<RowBond>& kept) {
    std::vector<std::uint32_t> rows;
    for (const std::vector<RowBond>* bonds : {&lost, &kept})
        for (const auto& [first, second] : *bonds) {
            rows.push_back(first);
            rows.push_back(second);
        }
    return rows;
}

} // namespace

void dropLostBonds(std::string_view text, const cif::Category& atoms,
                   const cif::Category& connections, const std::vector<RowBond>& lost,
                   const std::vector<RowBond>& kept, RowFate& fate) {
    const std::optional<Naming> naming = namingOf(connections);
    if (lost.empty() || !naming)
        return;
    const NamedAtoms named(text, atoms, rowsOf(lost, kept));
    const Keys lostKeys = named.keysOf(lost);
    const Keys keptKeys = named.keysOf(kept);
    const Keys otherKeys = named.keysOfOnly(lost, kept);
    const BondRows bondRows(connections);
    cif::Rows rows(text, connections);
    for (std::size_t row = 0; rows.next(); ++row) {
        if (!bondRows.listBonds(rows))
            continue;
        std::array<std::string, 2> keys;
        for (std::size_t i = 0; i != keys.size(); ++i) {
            const PartValues values = valuesOf(rows, naming->partners[i]);
            const Name name(values, isByLabel(values));
            keys[i] = atomKey(name, name.letter);
        }
        const std::string key = bondKey(keys[0], keys[1]);
        if (!lostKeys.contains(key))
            continue;
        if (!keptKeys.contains(key))
            fate.drop(row, connections.rowCount);
        else
            fate.sharedBonds += otherKeys.contains(key) ? 1 : 0;
    }
}

} // namespace memory_host::mmcif
