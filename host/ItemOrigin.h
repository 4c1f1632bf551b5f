// Where an item came from.
#pragma once

#include "Compound.h"

#include <QString>

namespace TAVIK {

/// The absolute path of the file that a top-level item was read from; empty for every other item,
/// and for null. It is what the file was called then: there may be another file by now, or none.
HOST_EXPORT QString OriginOf(const Compound* item);

} // namespace TAVIK
