// Freeing items, and telling of it before.
#pragma once

#include "HostItem.h"

#include <vector>

namespace memory_host {

/// Tells those who keep pointers to items that this one, if it is in the data space, goes.
void tellBeforeDestroying(Compound* item);
/// Frees a detached item and what it holds. Nothing in it is counted any more.
void freeItem(Compound* item);

/// Appends the observers of destructions, each by the address of its interface.
void addDestroyObservers(std::vector<const void*>& listeners);

} // namespace memory_host
