// The CONECT records of a PDB file: bonds by serial numbers.
#pragma once

#include "AtomTable.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace memory_host::pdb {

/// Brings CONECT records up to date.
class Conect {
public:
    /// Takes the serial number of a row, and whether the row is kept; all of them come first.
    void see(std::string_view row, bool isKept);
    void loseBond(std::string_view firstRow, std::string_view secondRow);
    /// Takes a bond that is left, behind all that are gone: models share their serial numbers.
    void keepBond(std::string_view firstRow, std::string_view secondRow);
    /// To be called after the last row, and before update().
    void settle();

    bool hasChanges() const { return !m_gone.empty() || !m_lostBonds.empty(); }
    /// The record without the atoms that are gone and the bonds that are lost; empty when nothing
    /// is left of it.
    std::string update(std::string_view record) const;

    /// The records of made bonds, given by the texts of both serial numbers.
    static std::vector<std::string>
    recordsOf(std::vector<std::pair<std::string, std::string>> bonds);

private:
    bool isGone(Serial serial) const;
    static std::uint64_t pairOf(Serial a, Serial b) { return std::uint64_t{a} << 32 | b; }

    std::vector<Serial> m_gone; ///< sorted
    std::vector<Serial> m_kept;
    std::unordered_set<std::uint64_t> m_lostBonds; ///< both ways
};

} // namespace memory_host::pdb
