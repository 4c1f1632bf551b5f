// Bonds that a PDB file lists by names which do not tell their atoms any more: CONECT records list
// them instead, by numbers.
#pragma once

#include "AtomTable.h"
#include "SavedTables.h"

#include <array>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace memory_host::pdb {

class Relisting {
public:
    /// Takes a bond that is left, of which SavedBond::isRelettered holds, and the rows of its
    /// atoms. All of it outlives this.
    void take(const SavedModel& model, const SavedBond& bond, std::string_view firstRow,
              std::string_view secondRow);
    /// Takes a CONECT record that stays, behind all bonds.
    void see(std::string_view conect);

    struct Bonds {
        std::vector<std::pair<std::string, std::string>> numbers; ///< as CONECT records have them
        std::size_t nameless = 0;  ///< of atoms without a number that fits
        std::size_t ambiguous = 0; ///< of atoms whose number is that of another, too
    };
    /// What becomes of those bonds that no record lists by names. `rows` are those of the file.
    Bonds bonds(const std::vector<const SavedBond*>& unlisted,
                const std::vector<std::string_view>& rows) const;

private:
    using Numbers = std::pair<Serial, Serial>; ///< the lower one first
    struct Taken {
        const SavedModel* model;
        std::array<std::string_view, 2> rows;
    };
    static Numbers numbersOf(std::string_view firstRow, std::string_view secondRow);
    static std::unordered_set<Serial> sharedNumbers(const SavedModel& model,
                                                    const std::vector<std::string_view>& rows);

    std::unordered_map<const SavedBond*, Taken> m_bonds;
    std::set<Numbers> m_wanted;
    std::set<Numbers> m_connected; ///< those of them that CONECT records list
};

} // namespace memory_host::pdb
