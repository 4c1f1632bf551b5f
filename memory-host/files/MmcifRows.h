// What becomes of the rows of atoms of an mmCIF file when its entries are saved.
#pragma once

#include "SavedTables.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace memory_host::mmcif {

/// An atom that the file does not have.
struct AddedAtom {
    std::uint32_t behind; ///< the row that it follows
    bool isInResidue;     ///< of that row; else the residue has no row
    const SavedAtom* atom;
    const SavedResidue* residue;
    const SavedModel* model;
    std::string letter; ///< of the alternative location, or empty
};

/// An atom of the file whose letter is another one now.
struct NewLetter {
    std::uint32_t row;
    std::string letter;
};

/// The atoms by rows, with the letters of their residues; see ResidueLetters.
class RowPlan {
public:
    /// `letters` are the file's, by row; `lastRows` the last row of each structure in the file.
    /// What it points to must outlive the plan.
    RowPlan(std::span<const SavedStructure> structures, std::span<const std::string_view> letters,
            std::span<const std::uint32_t> lastRows);

    /// The atom of each row; null where it is gone.
    const std::vector<const SavedAtom*>& atoms() const { return m_atoms; }
    const std::vector<AddedAtom>& added() const { return m_added; }        ///< ascending
    const std::vector<NewLetter>& newLetters() const { return m_letters; } ///< ascending
    /// The letter that the atom of a row has now; that of the file for one that is gone.
    std::string_view letterOf(std::uint32_t row) const {
        const auto found = std::ranges::lower_bound(m_letters, row, {}, &NewLetter::row);
        return found != m_letters.end() && found->row == row ? std::string_view(found->letter)
                                                             : m_fileLetters[row];
    }

private:
    void takeModel(const SavedModel& model, std::uint32_t lastRow);
    void takeResidue(const SavedModel& model, std::size_t residue);

    std::span<const std::string_view> m_fileLetters;
    std::vector<const SavedAtom*> m_atoms;
    std::vector<AddedAtom> m_added;
    std::vector<NewLetter> m_letters;
    std::uint32_t m_lastRow = 0; ///< of the atoms so far
};

} // namespace memory_host::mmcif
