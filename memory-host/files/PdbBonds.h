// The records of the PDB format that list bonds: CONECT, SSBOND and LINK.
#pragma once

#include "ListedBonds.h"
#include "PdbColumns.h"

namespace memory_host::pdb {

/// A serial number as its text: compared as written, because programs continue differently beyond
/// 99999. noSerial for text that is no serial number, as "*****".
Serial packedSerial(std::string_view text);

/// The serial number of an ATOM or HETATM record.
Serial serialOf(std::string_view line);

/// Adds the bonds of a CONECT record; passes by any other.
void readConnections(std::string_view line, std::size_t number, ListedBonds& bonds);

/// Whether a line is an SSBOND or LINK record, which refer to atoms by name.
bool isLink(std::string_view line);
/// Whether the atoms of such a record are in the same copy of the structure.
bool areInOneCopy(std::string_view line);
/// Adds the bond of such a record. `columns` must have read the atoms before. A bond to a symmetry
/// copy is ignored.
void readLink(std::string_view line, std::size_t number, ResidueColumns& columns,
              ListedBonds& bonds);

} // namespace memory_host::pdb
