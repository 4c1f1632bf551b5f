// The letters of alternative locations: those of the file, and new ones for models that were made.
#pragma once

#include "SaveReport.h"
#include "SavedTables.h"

#include <vector>

namespace memory_host {

/// The letter of each atom of a model; 0 for atoms that all alternative models share. Within a
/// residue, an alternative model has the letter that its atoms have in the file, or else the first
/// free one of A to Z, 0 to 9 and a to z. Refuses a residue that has more alternative models than
/// there are letters. `names` are those of the content.
std::vector<char> alternativeLetters(const SavedModel& model, const std::vector<std::string>& names,
                                     const SaveReport& report);

} // namespace memory_host
