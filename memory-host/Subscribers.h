// Who is listening to the data space: for tests that look for what is left behind.
#pragma once

#include "HostExport.h"

#include <cstddef>

namespace memory_host {

/// How many subscribers there are now.
HOST_EXPORT std::size_t subscriberCount();

} // namespace memory_host
