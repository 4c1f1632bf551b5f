// Which triangles of meshes may be seen, and drawing them into a tile.
#pragma once

#include "FourTriangles.h"
#include "FrontToBack.h"
#include "Tile.h"
#include "Workers.h"

#include <array>
#include <cstddef>
#include <vector>

namespace view {

/// Finds the meshes of triangles, fastest when they are asked for in about ascending order.
class MeshFinder {
public:
    MeshFinder() = default;
    explicit MeshFinder(const Frame& frame) : m_frame(&frame) {}
    const PlacedMesh& meshOf(Number triangle) {
        if (!m_mesh || triangle < m_mesh->start || triangle >= m_end) {
            m_mesh = &m_frame->meshOf(triangle);
            m_end = m_mesh->start + static_cast<Number>(m_mesh->triangles->size());
        }
        return *m_mesh;
    }
    /// The corners of a triangle: x, y, z, and something else.
    std::array<Floats, 3> cornersOf(Number triangle) {
        const PlacedMesh& mesh = meshOf(triangle);
        const auto& [a, b, c] = (*mesh.triangles)[static_cast<std::size_t>(triangle - mesh.start)];
        const Place* const vertices = m_frame->vertices.data() + mesh.firstVertex;
        return {load(&vertices[a].x), load(&vertices[b].x), load(&vertices[c].x)};
    }

private:
    const Frame* m_frame = nullptr;
    const PlacedMesh* m_mesh = nullptr; ///< of the last one
    Number m_end = 0;                   ///< of its triangles
};

/// The triangles of a picture that may be seen, of opaque or of see-through meshes. Keeps its
/// memory from one picture to the next.
class SeenTriangles {
public:
    /// Leaves out what has no place, what lies beyond the picture, behind or in front of what is
    /// drawn, or between the samples, and what faces away in a closed body. Widens the frame's
    /// depth range by all that lies between the planes. Returns false after a stop request.
    bool find(Frame& frame, Workers& workers, bool areSeeThrough);

    std::size_t size() const { return m_numbers.size(); }
    /// In ascending order.
    Number operator[](std::size_t index) const { return m_numbers[index]; }

private:
    struct Part {
        std::size_t mesh;  ///< of the frame
        std::size_t begin; ///< the first triangle
        std::size_t end;
        std::vector<Number> numbers;
        float nearZ;
        float farZ;
    };
    static void findPart(const Frame& frame, Part& part, bool areBacksHidden);

    std::vector<Part> m_parts;
    std::vector<char> m_areBacksHidden; ///< by mesh
    std::vector<Number> m_numbers;
};

/// Where seen triangles are; one object is to be asked for them in about ascending order.
class TriangleExtents {
public:
    TriangleExtents(const Frame& frame, const SeenTriangles& seen)
        : m_seen(&seen), m_meshes(frame) {}
    Extent operator()(std::size_t index);
    Extents four(const std::array<std::size_t, 4>& indices);

private:
    const SeenTriangles* m_seen;
    MeshFinder m_meshes;
};

/// Keeps its memory from one tile to the next.
class TrianglePainter {
public:
    void draw(Tile& tile, const Frame& frame, const SeenTriangles& seen, const Bins& triangles,
              std::size_t tileIndex);

private:
    std::vector<PlacedTriangle> m_triangles;
    FrontToBack m_order;
};

} // namespace view
