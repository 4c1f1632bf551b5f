// Bonds that were made or destroyed, in files that do not list them.
#pragma once

#include "SavedTables.h"

#include <cstddef>
#include <string>
#include <vector>

namespace memory_host {

/// Whether a bond was made, and is not found by the distance of its atoms when a file is read.
bool isToBeListed(const SavedModel& model, const SavedBond& bond,
                  const std::vector<std::string>& names);
/// How many of the bonds that were made in a model are not found by the distance of their atoms
/// when a file is read, and so are lost unless the file lists them.
std::size_t countBondsToList(const SavedModel& model, const std::vector<std::string>& names);
/// How many bonds that were destroyed come back, as they are found by the distance of their atoms
/// when a file is read.
std::size_t countBondsComingBack(const SavedModel& model, const std::vector<std::string>& names);

} // namespace memory_host
