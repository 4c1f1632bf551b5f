// What of a file another format does not keep, as lines of a report.
#pragma once

#include "SourceFacts.h"

#include <string_view>

namespace memory_host {

/// Adds a line for each kind of record or category of the read file that the written text has
/// nothing of. `toMmcif` tells the format of `text`, which need not have its atoms.
void remarkOnLostKinds(const SourceFacts& facts, std::string_view text, bool toMmcif,
                       SaveReport& report);
/// "The partial charges and radii of 12 atoms are not kept"; nothing for a count of 0.
void remarkOnLost(std::size_t count, const std::string& what, const std::string& noun,
                  SaveReport& report);

/// Adds lines for what neither format keeps of items: partial charges, and bonds of further models,
/// as listed bonds are those of all models.
void remarkOnLostValues(const SavedStructure& structure, const std::vector<std::string>& names,
                        SaveReport& report);
/// Adds a line for those bonds of a model that reading the file does not find by distance.
void remarkOnAmbiguousBonds(const std::vector<SavedBond>& bonds, const SavedModel& model,
                            const std::vector<std::string>& names, SaveReport& report);
/// Likewise for bonds that a model does not have, and that are read from records of others.
void remarkOnJoinedBonds(const std::vector<SavedBond>& bonds, const SavedModel& model,
                         const std::vector<std::string>& names, SaveReport& report);

} // namespace memory_host
