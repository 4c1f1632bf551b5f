// Listed bonds whose atoms get other alternative locations, or further ones beside them.
#pragma once

#include "SavedTables.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace memory_host {

/// Whether atoms are near enough for a bond that a file lists.
bool isInReach(const SavedAtom& a, const SavedAtom& b);
/// Whether atoms with these letters, 0 for none, are in different alternative locations.
bool areApart(char a, char b);

/// What a file says of a residue to name it.
std::string namesOf(const SavedModel& model, const SavedResidue& residue,
                    const std::vector<std::string>& names);

/// Bonds of a model.
struct KnownBonds {
    using Pairs = std::vector<std::pair<std::uint32_t, std::uint32_t>>;
    const Pairs& there; ///< ascending
    const Pairs& again; ///< those that are found by distance when it is read, ascending
    const Pairs& lost;  ///< those that it had
};
/// Sets of each listed bond whether it is relettered, what names do not tell, and how many bonds it
/// would be joined by. `letters` are those that the atoms get.
void markRelettered(SavedModel& model, const std::vector<std::string>& names,
                    const std::vector<char>& letters, const KnownBonds& known);

} // namespace memory_host
