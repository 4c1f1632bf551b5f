// Which of its alternative models a residue shows.
#pragma once

#include "Compound.h"
#include "HostExport.h"

namespace TAVIK {

/// The number of the active model of a residue, from 1; 0 for a residue without models, for any
/// other item, and for null. Atoms of the residue that have this number or 0 are those that can be
/// shown.
HOST_EXPORT unsigned int GetActiveModel(const Compound* residue);

} // namespace TAVIK
