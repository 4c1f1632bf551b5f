// The lines as which a mesh is drawn.
#pragma once

#include "render/Scene.h"

#include <cstdint>
#include <stop_token>
#include <vector>

namespace view {

/// Lines on a mesh.
struct MeshLines {
    std::vector<Point> points;
    std::vector<std::uint32_t> vertices; ///< one a point: a vertex of the mesh that is near it
    std::vector<Segment> lines;
};

/// Where a mesh meets planes across x, y and z. The planes are twice as far apart as the edges of
/// the triangles are long on average, so that there is room between the lines, and begin at 0, so
/// that meshes of one spacing fit each other. A closed mesh gives closed lines: the same point ends
/// each line and begins the next one. Of a piece that meets no plane these are the sides of its
/// triangles. Takes time and memory in proportion to the number of
/// triangles. Empty after a stop request.
MeshLines linesOf(const Mesh& mesh, const std::stop_token& stop = {});

} // namespace view
