// Attaching items to their parents and detaching them, counters included.
#pragma once

#include "HostItem.h"

namespace memory_host {

/// Makes a detached item the last child of `parent`, counters included.
void attachTo(Compound* child, Holder& parent);
/// Takes an item out of its parent, counters included.
void detach(Compound* child);

} // namespace memory_host
