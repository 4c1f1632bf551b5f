// Showing and hiding items, and counting what that changes.
#pragma once

#include "HostItem.h"
#include "Sets.h"

#include <cstdint>
#include <span>

namespace memory_host {

/// Sets the mark of an item and of all that it holds.
void setVisible(HostItem& item, Compound* self, bool on);

/// Sets the marks of what these items hold, each either wholly marked or not at all.
void showEach(std::span<void* const> items, bool on);

/// Adds a change in the number of shown leaves to the counters of all composites above an item.
void countShown(const HostItem& item, std::int32_t change);

/// Marks a leaf as shown or not; returns the change in the number of shown leaves.
inline std::int32_t markShown(HostItem& leaf, bool shown) {
    if (leaf.has(HostItem::Shown) == shown)
        return 0;
    changeState(leaf, [&] { leaf.set(HostItem::Shown, shown); });
    return shown ? 1 : -1;
}

} // namespace memory_host
