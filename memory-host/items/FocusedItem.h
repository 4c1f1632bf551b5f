// The item in focus, when items are destroyed.
#pragma once

#include "HostItem.h"

#include <vector>

namespace memory_host {

/// RAII: an item is about to be destroyed. When the guard is made, the focus is moved away from it,
/// from all that it holds, and from the bonds of its atoms; while the guard lives, none of these
/// gets it.
class FocusKeptAway {
public:
    explicit FocusKeptAway(const Compound* item) noexcept;
    ~FocusKeptAway();
    FocusKeptAway(const FocusKeptAway&) = delete;
    FocusKeptAway& operator=(const FocusKeptAway&) = delete;

    /// Whether an item goes with this destruction or one that it is in.
    bool covers(const Compound& item) const;

private:
    const HostItem& m_item;
    const FocusKeptAway* m_outer; ///< of the destruction that this one is in
};

/// Appends the observers of the focus to `listeners`, as in Subscribers.h.
void addFocusObservers(std::vector<const void*>& listeners);

} // namespace memory_host
