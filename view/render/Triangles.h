// Drawing the triangles of meshes into a tile.
#pragma once

#include "FrontToBack.h"
#include "Tile.h"

#include <array>
#include <cstddef>

namespace view {

/// Where a triangle is; nowhere when a corner is. Triangles are counted through all meshes.
Extent triangleExtent(const Frame& frame, std::size_t triangle);

void drawTriangles(Tile& tile, const Frame& frame, const Bins& triangles, std::size_t tileIndex,
                   FrontToBack& order);

/// The surface of a triangle at a place on the screen.
struct TrianglePoint {
    std::array<float, 3> normal; ///< unit vector: right, up, and towards the viewer (not below 0)
    Colour colour;
};
TrianglePoint trianglePoint(const Frame& frame, Number triangle, float x, float y);

} // namespace view
