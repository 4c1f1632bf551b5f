// A version number of the selection, for code that caches the selection.
#pragma once

#include "HostExport.h"

#include <cstdint>

namespace TAVIK {

/// A number that rises whenever any item of the data space answers IsSelected() or HasSelected()
/// differently than before, whoever made the change and whatever the kind of guard. It rises before
/// anyone can ask for the new answer, may rise without a change, and never falls: while it stays
/// the same, cached answers are valid. Costs as much as reading a number.
HOST_EXPORT std::uint64_t SelectionChanges();

} // namespace TAVIK
