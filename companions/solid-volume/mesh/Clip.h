// Part of a mesh: where a number at its vertices is large enough.
#pragma once

#include "Mesh.h"

#include <span>
#include <vector>

namespace solid {

/// What is left of a mesh, vertex by vertex.
struct Clipped {
    std::vector<Triangle> triangles;
    /// Each vertex is on the edge between two of the mesh, at `part` of the way from the first to
    /// the second; a vertex of the mesh itself is the same one twice.
    struct Vertex {
        std::uint32_t from;
        std::uint32_t to;
        float part;
    };
    std::vector<Vertex> vertices;
};

/// The part of `triangles` where `values`, one a vertex and linear in between, is at least `limit`.
/// Triangles that share an edge share the vertex on it, too. NaN is below any limit.
Clipped clip(std::span<const Triangle> triangles, std::span<const float> values, float limit);

} // namespace solid
