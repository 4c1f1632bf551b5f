#include "MmcifLostBonds.h"

#include "LostBonds.h"
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
    LostBonds::Names namesOf(std::uint32_t row) const {
        LostBonds::Names names;
        for (const bool byLabel : {false, true}) {
            const Name name(m_values.at(row), byLabel);
            names.push_back(atomKey(name, name.letter));
            if (!name.letter.empty())
                names.push_back(atomKey(name, {}));
        }
        return names;
    }

private:
    std::unordered_map<std::uint32_t, PartValues> m_values;
};

std::vector<std::uint32_t> rowsOf(const std::vector<LostBond>& lost,
                                  const std::vector<RowBond>& kept) {
    std::vector<std::uint32_t> rows;
    const auto add = [&rows](const auto& bond) {
        rows.push_back(bond.first);
        rows.push_back(bond.second);
    };
    std::ranges::for_each(lost, add);
    std::ranges::for_each(kept, add);
    return rows;
}

} // namespace

void dropLostBonds(std::string_view text, const cif::Category& atoms,
                   const cif::Category& connections, const std::vector<LostBond>& lost,
                   const std::vector<RowBond>& kept, RowFate& fate) {
    const std::optional<Naming> naming = namingOf(connections);
    if (lost.empty() || !naming)
        return;
    const NamedAtoms named(text, atoms, rowsOf(lost, kept));
    LostBonds bonds;
    for (const LostBond& bond : lost)
        bonds.lose(named.namesOf(bond.first), named.namesOf(bond.second), bond.isFoundAgain);
    for (const auto& [first, second] : kept)
        bonds.keep(named.namesOf(first), named.namesOf(second));
    bonds.settle();
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
        const LostBonds::Fate found = bonds.of(keys[0], keys[1]);
        fate.sharedBonds += found.comingBack;
        if (!found.isKept)
            fate.drop(row, connections.rowCount);
    }
}

} // namespace memory_host::mmcif
