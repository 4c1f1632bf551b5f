// The geometry of items that have more than a position: a surface's mesh, a grid's values, the
// points of a line.
#pragma once

#include "Kinds.h"

#include <array>
#include <cstdint>
#include <vector>

namespace TAVIK {

/// Triangles with normals, as renderers take them.
struct SurfaceMesh {
    std::vector<std::array<float, 3>> vertices; ///< Å
    std::vector<std::array<float, 3>> normals;  ///< unit vectors, one a vertex, pointing outwards
    /// Indices of vertices, counterclockwise when seen from outside.
    std::vector<std::array<std::uint32_t, 3>> triangles;
    /// Colours packed as Color packs them: one a vertex; or none, for a mesh in the item's colour.
    std::vector<std::uint32_t> colors;
    /// A number a vertex, as a potential, in any unit; or none.
    std::vector<float> values;

    bool operator==(const SurfaceMesh&) const = default;
};

/// The mesh of a surface, valid until the surface gets another one or is destroyed. Null for null,
/// and for a surface that was made without one.
HOST_EXPORT const SurfaceMesh* GetSurfaceMesh(const Surface* surface);
/// Replaces the whole mesh; the caller holds a good update guard. Returns whether it did: a null
/// surface or a malformed mesh is refused with a warning, and changes nothing. Malformed is a mesh
/// with an index out of range, with normals, colours or values for another number of vertices, with
/// a number that is not finite, or with a normal whose length is off 1 by more than 0.01.
HOST_EXPORT bool SetSurfaceMesh(Surface* surface, SurfaceMesh mesh);

/// Numbers on a regular grid, whose steps may be skewed.
struct GridValues {
    std::array<int, 3> points{};    ///< number of points along x, y, z; each at least 1
    std::array<double, 3> origin{}; ///< position of point (0, 0, 0) in Å
    /// Å from a point to its neighbour along each of the three axes: steps[axis] is a vector.
    std::array<std::array<double, 3>, 3> steps{};
    /// x fastest: points[0] * points[1] * points[2] of them, in any unit. NaN where there is none.
    std::vector<float> values;

    bool operator==(const GridValues&) const = default;
};

/// The values of a grid, valid until it is destroyed; null for null, and for a grid without any.
HOST_EXPORT const GridValues* GetGridValues(const Grid* grid);

/// The points of an item that DataMaker::makePolyLine made, valid until it is destroyed; null for
/// any other item, and for null.
HOST_EXPORT const std::vector<Vertex>* GetPolyLinePoints(const Compound* line);

} // namespace TAVIK
