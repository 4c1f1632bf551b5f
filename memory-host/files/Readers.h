// The readers of the file formats: from bytes to plain tables. They touch no data space,
// and free the bytes as soon as they have what they need.
#pragma once

#include "AtomTable.h"
#include "FileBytes.h"
#include "items/Building.h"

namespace memory_host {

/// Whether the bytes start as a CCP4/MRC map does.
bool looksLikeMap(std::string_view bytes);
/// Whether the text starts as a CIF does: with a data block, a loop or a category's tag.
bool looksLikeMmcif(std::string_view text);

/// Reads the coordinates of a PDB file: one entry, called `stem` if it has no identifier. A model
/// ends with ENDMDL or END, and what follows is another one. A few lines that have not the columns
/// of the format are atoms without a position; more of them are refused.
StructureTable readPdb(Bytes bytes, const std::string& stem, FileReport& report);
/// The same for the rows of a PQR file; see PqrRow.h for which files are.
StructureTable readPqr(Bytes bytes, const std::string& stem, FileReport& report);
/// Reads the _atom_site categories of an mmCIF file: an entry for each data block that has one.
std::vector<StructureTable> readMmcif(Bytes bytes, const std::string& stem, FileReport& report);
/// Reads a CCP4/MRC map in the extent that the file stores, of any axis order, cell and byte order.
GridRecord readMap(Bytes bytes, FileReport& report);

} // namespace memory_host
