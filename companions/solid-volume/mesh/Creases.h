// The sharp edges of a union of balls: triangles that reach from one ball to another are divided
// where the balls meet.
#pragma once

#include "Mesh.h"

#include <span>

namespace solid {

/// Divides the triangles between vertices of different balls along the circles in which the balls
/// meet, and where three meet in a point there. The mesh is of the union of these balls, whose
/// vertices are on the balls nearest to them; what was closed stays closed, and the area stays.
void divideAtCreases(Mesh& mesh, std::span<const Ball> balls);

} // namespace solid
