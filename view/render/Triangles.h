// Drawing the triangles of meshes into a tile.
#pragma once

#include "FrontToBack.h"
#include "Tile.h"

#include <array>
#include <cstddef>
#include <vector>

namespace view {

/// Where triangles are; nowhere when a corner is. They are counted through all meshes, and one
/// object is to be asked for them in about that order.
class TriangleExtents {
public:
    explicit TriangleExtents(const Frame& frame) : m_frame(&frame) {}
    Extent operator()(std::size_t triangle);

private:
    const Frame* m_frame;
    const PlacedMesh* m_mesh = nullptr; ///< of the last one
    Number m_end = 0;                   ///< of its triangles
};

/// Keeps its memory from one tile to the next.
class TrianglePainter {
public:
    void draw(Tile& tile, const Frame& frame, const Bins& triangles, std::size_t tileIndex);

private:
    struct Seen {
        std::array<Place, 3> corners;
        Number number;
    };
    static Seen seen(const Frame& frame, std::uint32_t triangle);
    static void drawOne(Tile& tile, const Frame& frame, const Seen& triangle);

    std::vector<Seen> m_triangles;
    FrontToBack m_order;
};

/// The surfaces of triangles at four places on the screen, which are in them.
struct TrianglePoints {
    Floats x, y, z; ///< unit vectors: right, up, and towards the viewer (z not below 0)
    Ints colour;
};
TrianglePoints trianglePoints(const Frame& frame, Ints triangles, Floats x, Floats y);

} // namespace view
