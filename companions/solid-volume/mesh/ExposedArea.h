// The area of a union of balls, ball by ball.
#pragma once

#include "Mesh.h"
#include "Polygonizer.h"

#include <span>
#include <vector>

namespace solid {

/// The area of each ball, grown by `margin` (Å), outside of all others in Å²; 0 for one that is not
/// usable, or more than 1e6 Å from the first one.
///
/// Each end of a stretch of a lattice line within the union stands for the area that it projects
/// from; over lines in three directions, weighted with the squares of the normal's components,
/// which sum to 1, that is the step's square times the normal's component along the line. The error
/// falls with the step, and faster than that of the surface's triangles, because gaps between balls
/// count however narrow they are. The lattice is of `step` (Å), of a finer one for few balls, and
/// stands askew, so that balls in rows along the axes are no special case. The same on any number
/// of threads. Throws std::invalid_argument if the step is no number, or less than 0.1 Å.
std::vector<double> exposedAreas(std::span<const Ball> balls, double margin, double step,
                                 const ForEach& forEach);

} // namespace solid
