// Surfaces of one level of what atoms have around them.
#pragma once

#include "ShownAtoms.h"
#include "mesh/Mesh.h"
#include "mesh/Polygonizer.h"

namespace solid {

/// Where the sum of one Gaussian function an atom is 1: an atom by itself has the surface of its
/// ball. See blob().
Mesh gaussianSurface(const EntryAtoms& atoms, double step, const ForEach& forEach);

/// e / Å³: 0.002 electrons a cubic bohr, by which R. F. W. Bader, M. T. Carroll, J. R. Cheeseman
/// and C. Chang, J. Am. Chem. Soc. 109 (1987) 7968-7979, draw the outer bound of a molecule.
inline constexpr double molecularDensity = 0.0135;

/// Where the electron density of the atoms, each by itself and at rest, is molecularDensity. The
/// scattering factors are those of International Tables for Crystallography, vol. C (1992), table
/// 6.1.1.4; an element that has none there counts as oxygen. What hydrogens would add that the
/// model does not have is not made up.
Mesh electronDensitySurface(const EntryAtoms& atoms, double step, const ForEach& forEach);

} // namespace solid
