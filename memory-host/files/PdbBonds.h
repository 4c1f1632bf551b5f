// The records of the PDB format that list bonds: CONECT, SSBOND and LINK.
#pragma once

#include "ListedBonds.h"
#include "PdbColumns.h"

namespace memory_host::pdb {

/// A serial number by its text, which is compared as it is written: beyond 99999 programs go on in
/// different ways. noSerial for what is none, as "*****".
Serial packedSerial(std::string_view text);

/// The serial number of an ATOM or HETATM record.
Serial serialOf(std::string_view line);

/// Adds the bonds of a CONECT record; passes by any other.
void readConnections(std::string_view line, std::size_t number, ListedBonds& bonds);

/// Whether a line is an SSBOND or LINK record, in which atoms are called by their names.
bool isLink(std::string_view line);
/// Adds the bond of such a record. `columns` have seen the atoms. A bond to a copy that symmetry
/// makes is none of this structure, and passed by.
void readLink(std::string_view line, std::size_t number, ResidueColumns& columns,
              ListedBonds& bonds);

} // namespace memory_host::pdb
