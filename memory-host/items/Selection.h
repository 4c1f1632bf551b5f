// Selecting items, and counting what that changes.
#pragma once

#include "HostItem.h"

#include <cstdint>
#include <span>

namespace memory_host {

/// Counts the changes after which some item may answer IsSelected() or HasSelected() differently:
/// changed marks, and items that come or go. Those that change places are counted, too, so that who
/// walks over items learns of all that moves them, also without a guard.
inline std::uint64_t selectionChanges = 0;

/// Sets the mark of an item and of all that it holds.
void setSelected(HostItem& item, bool on);
/// Sets the marks of atoms; what is above those that follow one another in a composite is counted
/// once.
void selectAtoms(std::span<Compound* const> atoms, bool on);
/// Sets the marks of what these records of items hold, each either wholly selected or not at all.
void selectEach(std::span<void* const> records, bool on);

} // namespace memory_host
