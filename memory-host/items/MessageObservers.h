// The observers of messages, for the search for what a library has left behind.
#pragma once

#include <vector>

namespace memory_host {

/// Appends the observers to `listeners`, as in Subscribers.h.
void addMessageObservers(std::vector<const void*>& listeners);

} // namespace memory_host
