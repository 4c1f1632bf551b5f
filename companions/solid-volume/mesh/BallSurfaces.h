// Surfaces around balls, from the balls to a mesh with its area.
#pragma once

#include "Mesh.h"
#include "Polygonizer.h"

#include <span>

namespace solid {

/// Around what no probe, a ball of `probe` (Å), can reach without overlapping a ball. The lattice
/// is of `step` (Å). Throws what ExcludedSolid() throws.
Mesh excludedSurface(std::span<const Ball> balls, double probe, double step,
                     const ForEach& forEach);

/// Around the union of the balls, each grown by `margin` (Å): the van der Waals surface of atoms
/// without a margin, the solvent-accessible one with a probe's radius. Divided where the balls
/// meet; the area is that of the balls. The lattice is of `step` (Å). Throws what BallUnion()
/// throws.
Mesh unionSurface(std::span<const Ball> balls, double margin, double step, const ForEach& forEach);

} // namespace solid
