// Rows of atoms in PDB files as they are written: which columns differ from an atom, changing them
// alone, and new rows.
#pragma once

#include "SaveReport.h"
#include "SavedTables.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace memory_host::pdb {

/// An atom, and the letter of its alternative location or 0.
struct WrittenAtom {
    const SavedAtom& atom;
    char letter;
};

/// Whether the row says of the atom what it is.
bool isUnchanged(std::string_view row, const WrittenAtom& atom);
/// The row with the atom's values in the columns of those that differ. Refuses a number that does
/// not fit.
std::string changedRow(std::string_view row, const WrittenAtom& atom, const SaveReport& report);
/// A new row of the residue that `like`, another row or the beginning of one, stands in.
std::string newRow(std::string_view like, const WrittenAtom& atom, const SavedContent& content,
                   std::int32_t serial, bool areSerialsDecimal, const SaveReport& report);
/// A row up to column 27, for an atom of a residue that has none. The chain's columns are those of
/// `neighbour`, a row of the same chain, unless that is empty.
std::string rowBeginning(const SavedModel& model, const SavedResidue& residue,
                         std::string_view neighbour, const SavedContent& content,
                         const SaveReport& report);

/// A serial number in five columns: from 100,000 on in the hybrid-36 encoding, or, if they are all
/// decimal, in more columns.
std::string serialText(std::int32_t serial, bool areDecimal);
/// Writes a text into columns, counted from 1, to the right; the row grows with blanks.
void putRight(std::string& row, std::size_t first, std::size_t last, std::string_view text);

/// The line for atoms whose numbers have more digits than the columns; nothing for a count of 0.
void remarkOnRounded(std::size_t atoms, SaveReport& report);

} // namespace memory_host::pdb
