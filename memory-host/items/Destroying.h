// Freeing items, and notifying observers before.
#pragma once

#include "Holder.h"

#include <cstddef>
#include <vector>

namespace memory_host {

/// Tells the observers that this item is about to be destroyed, if it is in the data space.
void tellBeforeDestroying(Compound* item);
/// Frees a detached item and what it holds. The counters must not include them any more.
void freeItem(Compound* item);
/// Frees what a detached composite holds, `most` items of it, and subtracts their number from that;
/// whether it is empty now. It must be freed in the end, and not be used in between.
bool freeChildren(Holder& holder, std::size_t& most);

/// Appends the observers of destructions, each by the address of its DestroyObserver part.
void addDestroyObservers(std::vector<const void*>& listeners);

} // namespace memory_host
