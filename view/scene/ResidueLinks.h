// Which residues follow each other in a polymer.
#pragma once

#include "Contents.h"

namespace view {

/// Marks the residues that are linked to the one before them, and those of polymers: amino acids
/// and nucleotides of one chain whose bond is not too long, or, in a trace, whose alpha carbons or
/// phosphorus atoms are near enough.
void linkResidues(Contents& contents);

} // namespace view
