#include "MmcifLostBonds.h"

#include "MmcifName.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace memory_host::mmcif {

namespace {

using Keys = std::unordered_set<std::string>;

bool listsBond(std::string_view type) {
    return startsWith(type, "covale") || startsWith(type, "disulf") || startsWith(type, "metalc");
}

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

    // The keys by which a row may list these bonds.
    Keys keysOf(const std::vector<RowBond>& bonds) const {
        Keys keys;
        for (const RowBond& bond : bonds)
            for (const bool byLabel : {false, true})
                addKeys(Name(m_values.at(bond.first), byLabel),
                        Name(m_values.at(bond.second), byLabel), keys);
        return keys;
    }

private:
    static void addKeys(const Name& a, const Name& b, Keys& keys) {
        for (const std::string_view letter : {a.letter, std::string_view()})
            for (const std::string_view other : {b.letter, std::string_view()})
                keys.insert(bondKey(atomKey(a, letter), atomKey(b, other)));
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
    const std::size_t type = connections.column("conn_type_id");
    const std::optional<Naming> naming = namingOf(connections);
    if (lost.empty() || !naming || type == connections.columns.size())
        return;
    const NamedAtoms named(text, atoms, rowsOf(lost, kept));
    const Keys lostKeys = named.keysOf(lost);
    const Keys keptKeys = named.keysOf(kept);
    cif::Rows rows(text, connections);
    for (std::size_t row = 0; rows.next(); ++row) {
        if (!listsBond(contentOf(rows[type])))
            continue;
        std::array<std::string, 2> keys;
        for (std::size_t i = 0; i != keys.size(); ++i) {
            const PartValues values = valuesOf(rows, naming->partners[i]);
            const Name name(values, isByLabel(values));
            keys[i] = atomKey(name, name.letter);
        }
        const std::string key = bondKey(keys[0], keys[1]);
        if (lostKeys.contains(key) && !keptKeys.contains(key))
            fate.drop(row, connections.rowCount);
    }
}

} // namespace memory_host::mmcif
