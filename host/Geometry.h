// The geometry of items that have more than a position: a surface's mesh, a grid's values, the
// points of a line.
#pragma once

#include "Kinds.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace TAVIK {

/// What the values of a mesh are, and by which colours it shows them: for a key beside the picture.
struct ValueScale {
    std::string title; ///< what, and its unit, in UTF-8: "Potential (kT/e)"
    float lower = 0;   ///< the value that the first colour stands for
    float upper = 1;   ///< and the last one; more than `lower`
    /// Packed as Color packs them, at equal distances from lower to upper; at least two.
    std::vector<std::uint32_t> colors;

    bool operator==(const ValueScale&) const = default;
};

/// Triangles with normals, as renderers take them.
struct SurfaceMesh {
    std::vector<std::array<float, 3>> vertices; ///< Å
    std::vector<std::array<float, 3>> normals;  ///< unit vectors, one a vertex, pointing outwards
    /// Indices of vertices, counterclockwise when seen from outside.
    std::vector<std::array<std::uint32_t, 3>> triangles;
    /// Colours packed as Color packs them: one a vertex; or none. They are shown as long as the
    /// item has its default colour.
    std::vector<std::uint32_t> colors;
    /// A number a vertex, as a potential, in any unit; or none. NaN where there is none.
    std::vector<float> values;
    /// Of the values, if the colours show them.
    std::optional<ValueScale> scale;
    /// Å², where whoever made the mesh knows the area of what it stands for; the triangles only
    /// come near to that.
    std::optional<double> area;
    /// The identifiers of the atoms that the vertices are nearest to, one a vertex; or none. The
    /// atoms may have been destroyed.
    std::vector<unsigned int> atoms;

    bool operator==(const SurfaceMesh&) const = default;
};

/// The mesh of a surface, valid until the surface gets another one or is destroyed. Null for null,
/// and for a surface that was made without one.
HOST_EXPORT const SurfaceMesh* GetSurfaceMesh(const Surface* surface);
/// Replaces the whole mesh; the caller holds a good update guard. Returns whether it did: a null
/// surface or a malformed mesh is refused with a warning, and changes nothing. Malformed is a mesh
/// with an index out of range; with normals, colours, values or atoms for another number of
/// vertices; with a number that is not finite, but for values that are NaN; with a normal whose
/// length is off 1 by more than 0.01; with a scale of fewer than two colours or without
/// a range; or with an area that is negative or not finite.
HOST_EXPORT bool SetSurfaceMesh(Surface* surface, SurfaceMesh mesh);
/// Replaces the colours of a surface's mesh, one a vertex, or none; as they no longer show the
/// values, the scale goes. The caller holds a good update guard. Returns whether it did: a surface
/// without a mesh is refused with a warning, and so are colours for another number of vertices.
/// Throws std::bad_alloc when there is no memory to keep the present ones; they stay then.
HOST_EXPORT bool SetSurfaceColors(Surface* surface, std::vector<std::uint32_t> colors);
/// Whether a surface has its default colour, and so shows the colours of its mesh, where it has
/// any; false for null.
HOST_EXPORT bool HasDefaultColor(const Surface* surface);

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
