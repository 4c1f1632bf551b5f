// Items come to their place and leave it, with all that is counted there.
#pragma once

#include "HostItem.h"

namespace memory_host {

/// Makes a detached item the last child of `parent`, counters included.
void attachTo(Compound* child, Holder& parent);
/// Takes an item out of its parent, counters included.
void detach(Compound* child);

} // namespace memory_host
