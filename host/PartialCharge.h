// The partial charges and radii that some files give atoms, as those that electrostatics starts
// from.
#pragma once

#include "Kinds.h"

namespace TAVIK {

/// What is known of an atom as a charged sphere; both numbers, or neither.
struct PartialCharge {
    float charge = 0.0F; ///< in elementary charges
    float radius = 0.0F; ///< Å
    bool isKnown = false;
};

/// The partial charge and radius of an atom; not known for null, and where no file gave them.
HOST_EXPORT PartialCharge GetPartialCharge(const Atom* atom);

} // namespace TAVIK
