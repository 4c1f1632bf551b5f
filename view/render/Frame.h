// What all steps towards one picture share: the scene, and where its points are on the screen.
#pragma once

#include "Camera.h"
#include "Lanes.h"
#include "Scene.h"
#include "Workers.h"

#include <array>
#include <cstdint>
#include <span>
#include <stop_token>
#include <vector>

namespace view {

/// A place on the screen, in samples: to the right and down from the upper left corner, and towards
/// the viewer from the camera's centre. A pixel has one sample, or 2 x 2. Sample (i, j) is taken at
/// (i + 0.5, j + 0.5).
struct Place {
    float x; ///< NaN, like the others, when the point cannot be drawn
    float y;
    float z;
};

/// Four of them.
struct Places {
    Floats x, y, z;
    Places(const Place& a, const Place& b, const Place& c, const Place& d)
        : x{a.x, b.x, c.x, d.x}, y{a.y, b.y, c.y, d.y}, z{a.z, b.z, c.z, d.z} {}
};

/// Every drawn thing has a number, counted through the balls, the two halves of each stick, those
/// of each line, the dots and the triangles of all meshes. Of things that are equally near, the one
/// with the smaller number is seen.
using Number = std::int32_t;
inline constexpr Number noNumber = 0x7FFFFFFF;

/// A mesh of the scene as finely as the picture shows it, and where its triangles and vertices are
/// among those of all meshes.
struct PlacedMesh {
    const Mesh* mesh;
    const std::vector<std::array<std::uint32_t, 3>>* triangles;
    const std::vector<Id>* ids; ///< one a triangle, or a single one
    std::size_t vertexCount;
    MeshLook look;
    Number start = 0; ///< the first triangle's number
    std::size_t firstVertex = 0;

    /// The id of a triangle by its index in this surface.
    Id id(std::size_t triangle) const { return (*ids)[ids->size() == 1 ? 0 : triangle]; }
};

struct Frame {
    const Scene* scene = nullptr;
    Camera camera;
    std::stop_token stop; ///< ends the picture
    int width = 0;        ///< samples
    int height = 0;       ///< samples
    float lineHalf = 1;   ///< half the width of a line, in samples
    float thinHalf = 1;   ///< likewise, of a thin one
    float dotHalf = 1;    ///< half the width of a dot, in samples

    // What follows is derived from the above.
    float scale = 1;       ///< samples an Å
    float front = 0;       ///< z of the planes that cut the scene, in samples
    float back = 0;        ///< likewise
    Number stickStart = 0; ///< the first stick's number
    Number lineStart = 0;
    Number dotStart = 0;
    Number triangleStart = 0;
    std::vector<Place> points; ///< of the scene's points
    std::vector<PlacedMesh> meshes;
    std::vector<Place> vertices; ///< of all meshes, and one more, so that each can be read as lanes
    /// z of the nearest and the farthest of what lies between the planes, in samples, whether or
    /// not the picture shows it.
    float nearZ = 0;
    float farZ = 0;

    /// Counts the things of the scene and places its points and vertices. Returns false after a
    /// stop request. Throws std::length_error for more things than there are numbers.
    bool project(Workers& workers);
    /// Where a point is; NaN when it is no place.
    Place place(const Point& point) const;
    /// Half the width of a line by its index, in samples.
    float halfOfLine(std::size_t line) const {
        return line < scene->firstThinLine ? lineHalf : thinHalf;
    }
    /// The mesh that has a triangle.
    const PlacedMesh& meshOf(Number triangle) const {
        std::size_t mesh = meshes.size() - 1;
        if (triangle < meshes[mesh].start)
            mesh = earlierMeshOf(triangle);
        return meshes[mesh];
    }

private:
    /// Likewise, for a triangle that is not in the last mesh.
    std::size_t earlierMeshOf(Number triangle) const;
    bool placeAll(std::span<const Point> from, Place* to, Workers& workers) const;
};

} // namespace view
