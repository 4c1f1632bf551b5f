// Listed bonds whose atoms get other alternative locations, or further ones beside them.
#pragma once

#include "SavedTables.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace memory_host {

/// Whether atoms are near enough for a bond that a file lists.
bool isInReach(const SavedAtom& a, const SavedAtom& b);
/// Whether atoms with these letters, 0 for none, are in different alternative locations.
bool areApart(char a, char b);

/// Sets of each listed bond whether it is relettered, and how many bonds it would be joined by.
/// `letters` are those that the atoms get; `there` are all bonds of the model, and `again` those
/// that are found by distance when it is read, both ascending.
void markRelettered(SavedModel& model, const std::vector<char>& letters,
                    const std::vector<std::pair<std::uint32_t, std::uint32_t>>& there,
                    const std::vector<std::pair<std::uint32_t, std::uint32_t>>& again);

} // namespace memory_host
