// The structures that the benchmarks work on: a real ribosome, and copies of it side by side.
#pragma once

#include "Compound.h"

#include <cstddef>
#include <string>

namespace benchmarks {

/// The path of the file `name` that the benchmarks make, in a folder of its own in `folder`, which
/// is created: what is made is not among what is fetched, which the tests read.
std::string madeFile(const std::string& folder, const std::string& name);

/// An mmCIF file with `copies` copies of the ribosome in `folder`, each moved along x and with
/// chain names of its own; written on first use, except for one copy, which is the original. With
/// 0 copies, the original's first 2,000 atoms.
std::string ribosomeFile(const std::string& folder, int copies);

/// Empties the data space.
void emptySpace();
/// The number of items at and below `item` that a tree shows a row for.
std::size_t rowCount(TAVIK::Compound* item);
/// The number of atoms below `item`.
std::size_t atomCount(TAVIK::Compound* item);

} // namespace benchmarks
