// The records of the PDB format that list bonds: CONECT, SSBOND and LINK.
#pragma once

#include "ListedBonds.h"

namespace memory_host::pdb {

/// A serial number by its text, which is compared as it is written: beyond 99999 programs go on in
/// different ways. noSerial for what is none, as "*****".
Serial packedSerial(std::string_view text);

/// The serial number of an ATOM or HETATM record.
Serial serialOf(std::string_view line);

/// Adds the bonds that a record lists, if it is one that lists bonds. Those to copies that symmetry
/// makes are not bonds of this structure, and passed by.
void readBonds(std::string_view line, std::size_t number, ListedBonds& bonds);

} // namespace memory_host::pdb
