// What the renderer draws, as plain arrays. It knows no items: an id says what a pixel shows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace view {

/// Å.
using Point = std::array<float, 3>;
/// 0xAARRGGBB; the alpha is not read.
using Colour = std::uint32_t;
/// Chosen by who makes the scene; pixels that show nothing have `noId`.
using Id = std::uint32_t;
inline constexpr Id noId = 0;

/// Indices of two points.
struct Segment {
    std::uint32_t from;
    std::uint32_t to;
};

/// A sphere around a point.
struct Ball {
    std::uint32_t point;
    float radius; ///< Å
};

/// The surface of a mesh again with fewer triangles, for pictures in which it is small.
struct CoarserSurface {
    float error = 0;             ///< Å; about how far it is from the mesh's own at most
    std::size_t vertexCount = 0; ///< it has the first so many vertices of the mesh
    std::vector<std::array<std::uint32_t, 3>> triangles;
    std::vector<Id> ids; ///< as in the mesh
};

/// Triangles, shaded by the normals of their vertices and seen from both sides.
struct Mesh {
    std::vector<Point> vertices;
    std::vector<Point> normals;  ///< unit vectors, one a vertex
    std::vector<Colour> colours; ///< one a vertex, a single one, or none: then those of the ids
    std::vector<std::array<std::uint32_t, 3>> triangles; ///< indices of vertices
    std::vector<Id> ids;                                 ///< one a triangle, or a single one
    /// Whether the triangles enclose bodies, with their corners counter-clockwise seen from
    /// outside: what faces away from the viewer is then hidden, unless a body is cut open.
    bool isClosed = false;
    std::vector<CoarserSurface> coarser; ///< ever coarser ones
};

/// How a mesh is shown.
struct MeshLook {
    /// What is behind it is seen through it; of several such surfaces behind each other the nearest
    /// one alone is seen.
    bool isSeeThrough = false;
    bool hasIdColours = false; ///< in the colours of its ids, also where it has its own
};

/// Everything that is drawn. Indices are in range, which who makes the scene sees to. Coordinates
/// may be anything: what is not finite, or too far away to be seen, is left out.
struct Scene {
    /// The first points, which others may have as well; none if null.
    std::shared_ptr<const std::vector<Point>> sharedPoints;
    std::vector<Point> points;   ///< those that follow
    std::vector<Colour> colours; ///< one a point
    std::vector<Id> ids;         ///< one a point

    std::vector<Ball> balls;
    /// Cylinders with round ends; each half has the colour and the id of its end.
    std::vector<Segment> sticks;
    float stickRadius = 0.25F; ///< Å
    /// Lines of constant width on the screen, in halves like sticks.
    std::vector<Segment> lines;
    /// The first line that is half as wide as others, like all that follow.
    std::size_t firstThinLine = std::numeric_limits<std::size_t>::max();
    /// Points drawn as dots of constant size on the screen: indices.
    std::vector<std::uint32_t> dots;
    std::vector<std::shared_ptr<const Mesh>> meshes;
    std::vector<MeshLook> meshLooks; ///< by mesh; those beyond its end look as MeshLook() says
    /// By id, from 1 on: the colours of the triangles of meshes that have none, or show those of
    /// their ids, and whether (not 0) a triangle is drawn; all are, if null. So what was coloured
    /// or hidden needs no other mesh.
    std::shared_ptr<const std::vector<Colour>> idColours;
    std::shared_ptr<const std::vector<std::uint8_t>> idShown;

    std::size_t sharedCount() const { return sharedPoints ? sharedPoints->size() : 0; }
    std::size_t pointCount() const { return sharedCount() + points.size(); }
    MeshLook meshLook(std::size_t mesh) const {
        return mesh < meshLooks.size() ? meshLooks[mesh] : MeshLook();
    }
    bool isShown(Id id) const { return !idShown || id == noId || (*idShown)[id - 1] != 0; }
    const Point& point(std::size_t index) const {
        return index < sharedCount() ? (*sharedPoints)[index] : points[index - sharedCount()];
    }
};

} // namespace view
