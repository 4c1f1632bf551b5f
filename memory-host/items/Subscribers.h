// The subscribers and observers of the data space, and what is done with their exceptions.
#pragma once

#include "HostExport.h"

#include <cstddef>
#include <vector>

namespace memory_host {

/// How many subscribers and observers there are now.
HOST_EXPORT std::size_t subscriberCount();
/// The address of each subscriber's or observer's base class part, where its vtable pointer is.
std::vector<const void*> listeners();

inline constexpr const char* changeFailed = "a subscriber failed to take in a change: ";

/// Logs the exception in flight, out of a handler; the line begins with `failed`.
void logHandlerFailure(const char* failed) noexcept;

/// Calls a handler of a subscriber or observer; an exception out of it is only logged.
template <class Handler>
void callHandler(Handler handler, const char* failed = changeFailed) noexcept {
    try {
        handler();
    } catch (...) {
        logHandlerFailure(failed);
    }
}

} // namespace memory_host
