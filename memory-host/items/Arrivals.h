// In which order the top-level items came into the space. Below the top level, the order is that of
// the identifiers; a top-level item may have been made long before it was attached.
#pragma once

#include "HostItem.h"

#include <cstdint>
#include <vector>

namespace memory_host {

/// Keeps that an item comes now, behind all others. Throws std::bad_alloc.
void noteArrival(const HostItem& item);
/// The top-level items in their order.
struct TopLevel {
    Compound* item;
    std::uint32_t arrival;
    Name name;
};
using Arrangement = std::vector<TopLevel>;
/// As it is. Throws std::bad_alloc.
Arrangement arrangementOf(Holder& space);
/// Gives the top-level items another order and other names; the arrivals say the order. `other`
/// has each item once, and is how it was before afterwards.
void swapArrangement(Holder& space, Arrangement& other) noexcept;
/// The same, recorded, for an order that the arrivals do not say yet. Throws std::bad_alloc.
void rearrange(Holder& space, Arrangement other);
/// Called before an item is freed.
void forgetArrival(const HostItem& item) noexcept;

/// What orders the children of a composite: smaller numbers stand before larger ones.
std::uint32_t orderIn(const HostItem& holder, const HostItem& child);

} // namespace memory_host
