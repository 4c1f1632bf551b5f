// Partial charges and radii of atoms, which some files give as input for electrostatics.
#pragma once

#include "Kinds.h"

namespace TAVIK {

/// Partial charge and radius of an atom: both are known, or neither.
struct PartialCharge {
    float charge = 0.0F; ///< in elementary charges
    float radius = 0.0F; ///< Å
    bool isKnown = false;
};

/// The partial charge and radius of an atom; unknown for null, and if no file gave them.
HOST_EXPORT PartialCharge GetPartialCharge(const Atom* atom);

} // namespace TAVIK
