// The item in focus, also when items are destroyed.
#pragma once

#include "Focus.h"
#include "HostItem.h"
#include "ObserverList.h"

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

/// Where the focus is, and who follows it.
struct FocusState {
    ObserverList<TAVIK::FocusObserver> observers;
    Compound* item = nullptr;
    unsigned int moves = 0;
    const FocusKeptAway* going = nullptr; ///< the innermost destruction
};

FocusState& focusState();

/// Moves the focus, and tells all observers but `by`.
void moveFocus(Compound* item, const TAVIK::FocusObserver* by, bool center) noexcept;

} // namespace memory_host
