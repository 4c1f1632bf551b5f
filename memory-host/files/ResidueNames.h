// Residues of several names, as "PRO,SER 22", in which alternative locations are different
// residues.
#pragma once

#include "SaveReport.h"
#include "SavedTables.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace memory_host {

/// Whether any residue has several names.
bool haveSeveralNames(const SavedStructure& structure, const std::vector<std::string>& names);

/// Adds a line for the residues that are read again by fewer names, as all atoms of the others are
/// gone. `nameInRow` tells the residue name in a row of the file's text.
void remarkOnLostNames(const SavedStructure& structure, const std::vector<std::string>& names,
                       const std::function<std::string_view(std::uint32_t row)>& nameInRow,
                       SaveReport& report);

} // namespace memory_host
