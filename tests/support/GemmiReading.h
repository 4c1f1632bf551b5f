// Files as gemmi's own readers see them, for tests and benchmarks that compare with them. The
// readers take long to compile: they are compiled once, here.
#pragma once

#include <gemmi/cifdoc.hpp>
#include <gemmi/model.hpp>

#include <string>

namespace gemmi_reading {

/// The structure in a PDB file or, by its ending .cif, mmCIF file, which may be gzipped (.gz).
/// Throws what gemmi throws.
gemmi::Structure readStructure(const std::string& path);

/// The document that a text in CIF is. Throws what gemmi throws.
gemmi::cif::Document readDocument(const std::string& text);

} // namespace gemmi_reading
