// Selecting items, and counting what that changes.
#pragma once

#include "HostItem.h"

#include <cstdint>

namespace memory_host {

/// Counts the changes after which some item may answer IsSelected() or HasSelected() differently:
/// changed marks, and items that are attached or detached.
inline std::uint64_t selectionChanges = 0;

/// Sets the mark of an item and of all that it holds.
void setSelected(HostItem& item, bool on);

} // namespace memory_host
