// Balls of a crowd that add nothing to the union of the others. Such crowds are no molecules, but
// there are files that have them, and many models of one molecule come near; what looks at all that
// are near each ball would never end.
#pragma once

#include "Mesh.h"
#include "Polygonizer.h"

#include <span>
#include <vector>

namespace solid {

/// The balls; where many are within one another's reach, those that are surely within the union of
/// the others have the radius 0. What is left has the same union. The same on any number of
/// threads.
std::vector<Ball> withoutCrowd(std::span<const Ball> balls, const ForEach& forEach);

} // namespace solid
