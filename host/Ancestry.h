// What an item hangs in.
#pragma once

#include "Compound.h"

namespace TAVIK {

/// The composite that holds `item`; null for the space, for an item outside of it that hangs in
/// nothing, and for null.
HOST_EXPORT Compound* GetParent(const Compound* item);

} // namespace TAVIK
