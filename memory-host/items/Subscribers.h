// The subscribers and observers of the data space, and what is done with their exceptions.
#pragma once

#include "HostExport.h"

#include <cstddef>
#include <vector>

namespace memory_host {

/// How many subscribers there are now, and observers of destructions.
HOST_EXPORT std::size_t subscriberCount();
/// The address of each subscriber's or observer's base class part, where its vtable pointer is.
std::vector<const void*> listeners();

/// Logs the exception in flight, out of a handler.
void logHandlerFailure() noexcept;

/// Calls a handler of a subscriber or observer; an exception out of it is only logged.
template <class Handler> void callHandler(Handler handler) noexcept {
    try {
        handler();
    } catch (...) {
        logHandlerFailure();
    }
}

} // namespace memory_host
