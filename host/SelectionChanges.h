// How often the selection has changed: for those who keep a copy of it.
#pragma once

#include "HostExport.h"

#include <cstdint>

namespace TAVIK {

/// A number that has risen, before anyone can ask, when any item of the data space answers
/// IsSelected() or HasSelected() other than before, whoever made the change, and by whatever kind
/// of guard. It may rise without such a change, and never falls: while it stays the same, answers
/// that were written down stay true. Costs no more than reading a number.
HOST_EXPORT std::uint64_t SelectionChanges();

} // namespace TAVIK
