// Freeing items, and notifying observers before.
#pragma once

#include "HostItem.h"

#include <vector>

namespace memory_host {

/// Tells the observers that this item is about to be destroyed, if it is in the data space.
void tellBeforeDestroying(Compound* item);
/// Frees a detached item and what it holds. The counters must not include them any more.
void freeItem(Compound* item);

/// Appends the observers of destructions, each by the address of its DestroyObserver part.
void addDestroyObservers(std::vector<const void*>& listeners);

} // namespace memory_host
