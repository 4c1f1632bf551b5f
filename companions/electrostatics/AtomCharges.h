// The charges of atoms, read from the data in one go.
#pragma once

#include "Geometry.h"
#include "potential/Coulomb.h"

#include <cstddef>
#include <string>
#include <vector>

namespace electrostatics {

/// Charges, and where they come from.
///
/// A residue's atoms have the partial charges that the file gives them; else the formal charges
/// that it gives them. Where it gives none, the residue is as it mostly is at pH 7 (G. R. Grimsley,
/// J. M. Scholtz and C. N. Pace, Protein Sci. 18 (2009) 247-251):
/// - acids by their bonds: oxygens with no other neighbour share -1 at a carbon that has two of
///   them (ASP, GLU, the end of a chain with its OXT, acids of ligands), -1 at the phosphorus of a
///   diester that has two, -2 where it has more, and -1 and -2 at a sulfur that has three and four;
/// - LYS has 1 at NZ, unless it is bonded to another carbon; ARG shares 1 among NH1 and NH2, and
///   HIS among ND1 and NE2 where both have a hydrogen, or where it is called HIP or HSP;
/// - the first residue of a chain of amino acids has 1 at N, unless this is bonded to another
///   residue's C;
/// - monatomic ions by the names of their residues, as "MG" or "CL", and NH4.
/// All else has none; nor has water. Of alternative models the one that is shown counts.
struct AtomCharges {
    std::vector<Charge> charges; ///< those that are not 0
    std::size_t fromFile = 0;    ///< how many of them the file gives
    double total = 0;            ///< elementary charges
    /// The entry that the atoms are of; empty where they are all that are shown.
    std::string entry;
};

/// The charges of the entry that has atoms of a surface, shown or not; where the surface knows no
/// atoms, or they are gone, of all atoms that are shown.
AtomCharges readCharges(const TAVIK::SurfaceMesh& surface);

} // namespace electrostatics
