// Which residues follow each other in a polymer.
#pragma once

#include "Contents.h"

namespace view {

/// Marks the residues that are linked to the one before them, and those of polymers. Secondary
/// structure, ribbons and quick pictures all go by these marks.
///
/// Amino acids, or nucleotides, that follow each other in one chain are linked
/// - by a bond of the data from C to N, or from O3' to P, whatever its length;
/// - else if these two atoms are at most 2.5 Å apart;
/// - where one of the two is not there, as in a trace, if their CA are at most 4.6 Å, or their P at
///   most 8 Å apart.
/// Of alternative atoms the first one with a position is measured: links are the same for all
/// alternatives.
void linkResidues(Contents& contents);

} // namespace view
