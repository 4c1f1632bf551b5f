// What the makers of surfaces hand out: triangles in plain arrays. Nothing here knows items.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace solid {

/// Å.
using Point = std::array<float, 3>;
/// Three indices of vertices, counterclockwise when seen from outside.
using Triangle = std::array<std::uint32_t, 3>;

struct Mesh {
    std::vector<Point> vertices;
    std::vector<Point> normals; ///< unit vectors, one a vertex, pointing outwards
    std::vector<Triangle> triangles;
    /// The ball next to each vertex, by its index; none for a mesh that was not made of balls.
    std::vector<std::uint32_t> nearest;
    double area = 0; ///< Å²
};

/// An atom, say, or where a probe's centre cannot be.
struct Ball {
    Point centre;
    float radius; ///< Å
};

} // namespace solid
