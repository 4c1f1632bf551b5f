// Radii of atoms whose hydrogens the model does not have. Knows no items.
#pragma once

#include <string_view>

namespace solid {

/// The radius in Å of an atom together with the hydrogens at it, where the model has none, by the
/// name of its residue, as "MET" or "DA", and its own, as "CA". J. Tsai, R. Taylor, C. Chothia and
/// M. Gerstein, J. Mol. Biol. 290 (1999) 253-266; phosphorus and oxygen of nucleic acids as in
/// S. Mitternacht, F1000Research 5 (2016) 189. 0 for atoms of other residues.
float unitedAtomRadius(std::string_view residue, std::string_view atom);

/// Whether unitedAtomRadius() knows a residue: an amino acid, a cap of a chain, or a nucleotide.
bool hasUnitedAtoms(std::string_view residue);

} // namespace solid
