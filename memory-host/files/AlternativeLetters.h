// The letters of alternative locations: those of the file, and new ones for models that were made.
#pragma once

#include "SavedTables.h"

#include <vector>

namespace memory_host {

/// The letter of each atom of a model; 0 for atoms that all alternative models share. Within a
/// residue, an alternative model has the letter that its atoms have in the file, or else the first
/// free one of A to Z, 0 to 9 and a to z. Returns the index of a residue that has more alternative
/// models than there are letters as `crowded`, or else the number of residues.
struct AlternativeLetters {
    std::vector<char> ofAtoms;
    std::size_t crowded = 0;
};
AlternativeLetters alternativeLetters(const SavedModel& model);

} // namespace memory_host
