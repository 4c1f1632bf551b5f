// Where an item came from.
#pragma once

#include "Compound.h"

#include <QString>

namespace TAVIK {

/// The absolute path of the file that a top-level item was read from; empty for every other item,
/// and for null. The path is as of then: the file may have been replaced or removed since.
HOST_EXPORT QString OriginOf(const Compound* item);

} // namespace TAVIK
