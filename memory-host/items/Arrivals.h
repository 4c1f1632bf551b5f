// In which order the top-level items came into the space. Below the top level, the order is that of
// the identifiers; a top-level item may have been made long before it was attached.
#pragma once

#include "HostItem.h"

#include <cstdint>
#include <span>

namespace memory_host {

/// Keeps that an item comes now, behind all others. Throws std::bad_alloc.
void noteArrival(const HostItem& item);
/// Brings the top-level items into this order, of which `order` has each once; all of them arrived
/// before.
void rearrange(Holder& space, std::span<Compound* const> order);
/// Called before an item is freed.
void forgetArrival(const HostItem& item) noexcept;

/// What orders the children of a composite: smaller numbers stand before larger ones.
std::uint32_t orderIn(const HostItem& holder, const HostItem& child);

} // namespace memory_host
