// The bonds of an atom.
#pragma once

#include "Kinds.h"

#include <vector>

namespace TAVIK {

/// Appends the bonds of `atom` to `bonds`, in no particular order; an atom has few. A null atom has
/// none.
HOST_EXPORT void GetBonds(const Atom* atom, std::vector<Bond*>& bonds);

} // namespace TAVIK
