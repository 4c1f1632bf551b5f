// The charges of residues whose file says nothing of them.
#pragma once

#include "Kinds.h"

#include <string_view>
#include <vector>

namespace electrostatics {

/// The charges of a residue's atoms as AtomCharges says, one an atom, in elementary charges.
/// `residue` is its name, as "ARG"; `isFirst` says that no amino acid comes before it in its chain.
std::vector<double> chargesAtPh7(std::string_view residue,
                                 const std::vector<const TAVIK::Atom*>& atoms, bool isFirst);

/// Whether these are atoms of an amino acid that is part of a chain, and no ligand.
bool isAminoAcid(const std::vector<const TAVIK::Atom*>& atoms);

} // namespace electrostatics
