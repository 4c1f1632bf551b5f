// What is written into the columns of a row of atoms of mmCIF: only what is other than it was.
#pragma once

#include "CifEdit.h"
#include "MmcifAtoms.h"
#include "MmcifRows.h"

#include <string>
#include <string_view>
#include <vector>

namespace memory_host::mmcif {

/// Makes the changes to rows of one category of atoms.
class RowText {
public:
    /// New atoms have ids from `nextId` on. Names are numbers of `names`.
    RowText(const cif::Category& category, const std::vector<std::string>& names,
            std::uint64_t nextId);

    /// Changes to the row of an atom that may have been moved or given other values.
    void change(const cif::Rows& row, const SavedAtom& atom, std::vector<cif::Change>& changes);
    void setLetter(std::string_view letter, std::vector<cif::Change>& changes);
    /// Changes to a copy of the row that a new atom follows.
    std::vector<cif::Change> added(const cif::Rows& row, const AddedAtom& added);
    /// How many atoms have said something so far for which the category has no column.
    std::size_t lostCount() const { return m_lostCount; }

private:
    std::string_view rawText(const cif::Rows& row, Column column) const {
        return m_columns[column] < row.places().size() ? row[m_columns[column]]
                                                       : std::string_view();
    }
    std::string_view text(const cif::Rows& row, Column column) const {
        return contentOf(rawText(row, column));
    }
    void set(Column column, std::string value, std::vector<cif::Change>& changes) const {
        if (m_columns[column] < m_columnCount)
            changes.push_back({m_columns[column], std::move(value)});
    }
    void setPosition(const cif::Rows& row, const SavedAtom& atom,
                     std::vector<cif::Change>& changes) const;
    void setResidue(const cif::Rows& row, const AddedAtom& added,
                    std::vector<cif::Change>& changes) const;
    bool lacks(Column column) const { return m_columns[column] == m_columnCount; }
    bool losesValues(const AddedAtom& added) const;
    const std::string& name(std::uint32_t number) const { return m_names[number]; }

    const std::vector<std::string>& m_names;
    std::size_t m_columnCount;
    std::array<std::size_t, ColumnCount> m_columns{}; ///< the count for those that are not there
    std::size_t m_entity;                             ///< column of the entity
    std::vector<std::size_t> m_ofPosition; ///< what depends on it: fractions, uncertainties
    std::vector<std::size_t> m_ofAtom; ///< what is the atom's alone: displacements, uncertainties
    std::uint64_t m_nextId;
    std::size_t m_lostCount = 0;
};

} // namespace memory_host::mmcif
