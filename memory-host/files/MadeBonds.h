// Bonds that were made, stretched or destroyed, in files that do not list them.
#pragma once

#include "SaveReport.h"
#include "SavedTables.h"

#include <string>
#include <utility>
#include <vector>

namespace memory_host {

/// The bonds that are found by the distance of their atoms when a model is read again, ascending.
std::vector<std::pair<std::uint32_t, std::uint32_t>>
bondsFoundAgain(const SavedModel& model, const std::vector<std::string>& names);

/// The names by which a file knows both atoms of a bond.
std::string namesOfBond(const SavedModel& model, std::pair<std::uint32_t, std::uint32_t> atoms,
                        const std::vector<std::string>& names);

/// Finds out what reading the file will make of the bonds of edited models: bonds that were made
/// know whether they are found again, and those that were found when the file was read, but are not
/// any more, join them. Remarks on bonds that come back although they were destroyed, and on those
/// that no file keeps, because their atoms are too far apart. `isTextKept`: records of bonds stay
/// as long as any model has the bond; else they are written by the first model.
void settleBonds(SavedContent& content, bool isTextKept, SaveReport& report);

/// Whether reading the file brings a bond back only if the file lists it, which it does not yet.
inline bool isToBeListed(const SavedBond& bond) {
    return !bond.isListed && !bond.isFoundAgain;
}

} // namespace memory_host
