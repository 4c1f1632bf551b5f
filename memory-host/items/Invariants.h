// The invariants of the data space, which must hold after every change: all counted anew.
#pragma once

#include "HostExport.h"

#include <string>
#include <vector>

namespace memory_host {

/// Recounts everything below the space (counters, positions among siblings, parents, members,
/// bonds) and returns a line for each thing that does not hold; empty when all is well.
HOST_EXPORT std::vector<std::string> checkInvariants();

} // namespace memory_host
