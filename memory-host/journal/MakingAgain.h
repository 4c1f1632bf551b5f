// Making the items again that no file gives, and giving all items back how they were.
#pragma once

#include "RecoveredItems.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace memory_host {

/// Items that could not be brought back, by kind.
using LostItems = std::array<std::size_t, kindCount>;
/// "12 atoms, 1 surface"; empty if there are none.
std::string describe(const LostItems& lost);

// All of this is done below a guard.

/// Makes what can be made, and adds it to `items`; counts the others. Meshes and values of grids
/// stand in files in `folder`.
void makeAgain(const JournalContent& content, const std::string& folder, RecoveredItems& items,
               LostItems& lost);
/// Values of what files have with others; adds a line for each grid that keeps those of its file.
void changeAgain(const JournalContent& content, const std::string& folder,
                 const RecoveredItems& items, std::vector<std::string>& lines);
/// Selection, visibility, colours, active models, bounds of grids: last.
void lookAgain(const JournalContent& content, const RecoveredItems& items);

} // namespace memory_host
