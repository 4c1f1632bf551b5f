#include "PdbRelisting.h"

#include "PdbBonds.h"
#include "PdbColumns.h"
#include "PdbRows.h"

#include <algorithm>

namespace memory_host::pdb {

Relisting::Numbers Relisting::numbersOf(std::string_view firstRow, std::string_view secondRow) {
    return std::minmax({serialOf(firstRow), serialOf(secondRow)});
}

void Relisting::take(const SavedModel& model, const SavedBond& bond, std::string_view firstRow,
                     std::string_view secondRow) {
    m_bonds.insert({&bond, {&model, {firstRow, secondRow}}});
    m_wanted.insert(numbersOf(firstRow, secondRow));
}

void Relisting::see(std::string_view conect) {
    if (m_wanted.empty()) // mostly
        return;
    const Serial first = packedSerial(field(conect, 7, 11));
    for (const std::size_t column : {12, 17, 22, 27})
        if (const Numbers numbers =
                std::minmax({first, packedSerial(field(conect, column, column + 4))});
            m_wanted.contains(numbers))
            m_connected.insert(numbers);
}

std::unordered_set<Serial> Relisting::sharedNumbers(const SavedModel& model,
                                                    const std::vector<std::string_view>& rows) {
    std::unordered_set<Serial> seen;
    std::unordered_set<Serial> shared;
    for (const SavedAtom& atom : model.atoms)
        if (atom.row != SavedAtom::newRow)
            if (const Serial serial = serialOf(rows[atom.row]); !seen.insert(serial).second)
                shared.insert(serial);
    return shared;
}

Relisting::Bonds Relisting::bonds(const std::vector<const SavedBond*>& unlisted,
                                  const std::vector<std::string_view>& rows) const {
    Bonds bonds;
    const SavedModel* model = nullptr;
    std::unordered_set<Serial> shared; // of the model
    for (const SavedBond* bond : unlisted) {
        const Taken& taken = m_bonds.at(bond);
        if (taken.model != model) {
            model = taken.model;
            shared = sharedNumbers(*model, rows);
        }
        const Numbers numbers = numbersOf(taken.rows[0], taken.rows[1]);
        if (numbers.first == noSerial || numbers.second == noSerial)
            ++bonds.nameless;
        else if (shared.contains(numbers.first) || shared.contains(numbers.second))
            ++bonds.ambiguous;
        else if (!m_connected.contains(numbers))
            bonds.numbers.emplace_back(columns(taken.rows[0], 7, 11),
                                       columns(taken.rows[1], 7, 11));
    }
    return bonds;
}

} // namespace memory_host::pdb
