// Who is listening to the data space, and what becomes of an exception that one lets out.
#pragma once

#include "HostExport.h"

#include <cstddef>
#include <vector>

namespace memory_host {

/// How many subscribers there are now, and observers of destructions.
HOST_EXPORT std::size_t subscriberCount();
/// Each of them, by the address of its interface: there the table of its virtual functions is
/// found.
std::vector<const void*> listeners();

/// Logs the exception in flight, out of a handler.
void logHandlerFailure() noexcept;

/// Calls a handler of others: an exception out of it goes no further than to the log.
template <class Handler> void callHandler(Handler handler) noexcept {
    try {
        handler();
    } catch (...) {
        logHandlerFailure();
    }
}

} // namespace memory_host
