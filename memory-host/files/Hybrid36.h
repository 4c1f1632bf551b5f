// Numbers wider than their columns, after R. W. Grosse-Kunstleve's hybrid-36 (cctbx): behind all
// nines come A000 to ZZZZ, and then a000 to zzzz, to the base 36.
#pragma once

#include "HostExport.h"

#include <cstdint>
#include <string>

namespace memory_host {

/// The number in `width` columns, right-justified; empty if there is no such text.
HOST_EXPORT std::string hybrid36(std::int64_t value, std::size_t width);

} // namespace memory_host
