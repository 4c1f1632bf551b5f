// The rows of PQR files: the words of an atom's record in PDB up to its coordinates, and then its
// partial charge and radius, with blanks between them instead of fixed columns.
#pragma once

#include "AtomTable.h"

#include <array>
#include <string_view>

namespace memory_host::pqr {

/// The fields of a row as they are written.
struct Row {
    std::string_view serial;
    std::string_view name;
    std::string_view residue;
    std::string_view chain; ///< may be empty
    std::string_view number;
    std::string_view insertion; ///< may be empty
    std::array<std::string_view, 3> position;
    std::string_view charge;
    std::string_view radius;
};

/// Takes a line apart that begins as a record of an atom. Says whether it is a row of PQR in its
/// form; the words in the places of numbers need be none.
bool split(std::string_view line, Row& row);
/// Whether all the numbers of such a row are some.
bool areNumbers(const Row& row);
/// The element of an atom, which a PQR file tells by its names alone.
Element elementOf(const Row& row, std::string_view line);

/// Whether a text has more rows of PQR than records of PDB. Rows that could be both are PQR by the
/// file's ending (`isNamedSo`), unless no charge in a larger molecule is negative, as no
/// occupancies are. By another ending, rows whose charges mostly are 1 are PDB's, with
/// occupancies.
bool isText(std::string_view text, bool isNamedSo);

} // namespace memory_host::pqr
