#include "Triangles.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace view {

namespace {

struct Triangle {
    const PlacedMesh* mesh;
    std::size_t index; ///< in the mesh
    std::array<Place, 3> corners;
};

Triangle triangleOf(const Frame& frame, std::size_t triangle) {
    const Number number = frame.triangleStart + static_cast<Number>(triangle);
    const PlacedMesh& mesh = frame.meshOf(number);
    const auto index = static_cast<std::size_t>(number - mesh.start);
    const Place* const vertices = frame.vertices.data() + mesh.firstVertex;
    const auto& [a, b, c] = mesh.mesh->triangles[index];
    return {&mesh, index, {vertices[a], vertices[b], vertices[c]}};
}

/// Whether the middle of a sample lies between two coordinates; for large ones, perhaps.
bool holdsSample(float from, float to) {
    constexpr float exact = 1 << 20;
    if (!(from > 0 && to < exact))
        return true;
    return static_cast<int>(from + 0.5F) < static_cast<int>(to + 0.5F) ||
           static_cast<float>(static_cast<int>(from)) + 0.5F == from;
}

double twiceArea(const std::array<Place, 3>& corners) {
    const auto& [a, b, c] = corners;
    return (double(b.x) - double(a.x)) * (double(c.y) - double(a.y)) -
           (double(b.y) - double(a.y)) * (double(c.x) - double(a.x));
}

/// One side of a triangle. Two triangles that share it calculate with the same numbers, so that no
/// sample falls between them.
class Edge {
public:
    /// `turn` is 1 when the third corner lies to the right of the way on the screen, else -1.
    Edge(const Place& from, const Place& to, float turn) {
        const bool isForward = from.x != to.x ? from.x < to.x : from.y < to.y;
        m_start = isForward ? from : to;
        const Place& end = isForward ? to : from;
        const float sign = isForward ? turn : -turn;
        m_dx = sign * (end.x - m_start.x);
        m_dy = sign * (end.y - m_start.y);
    }
    /// Not below 0 on the inner side of the edge.
    Floats inside(Floats x, float y) const {
        return all(m_dx * (y - m_start.y)) - all(m_dy) * (x - all(m_start.x));
    }

private:
    Place m_start;
    float m_dx;
    float m_dy;
};

Extent extentOf(const std::array<Place, 3>& corners) {
    const auto& [a, b, c] = corners;
    return {std::min(std::min(a.x, b.x), c.x), std::max(std::max(a.x, b.x), c.x),
            std::min(std::min(a.y, b.y), c.y), std::max(std::max(a.y, b.y), c.y),
            std::max(std::max(a.z, b.z), c.z), std::min(std::min(a.z, b.z), c.z)};
}

/// How fast the depth changes along x and y.
struct Slope {
    float x;
    float y;
};

Slope slopeOf(const std::array<Place, 3>& corners, double area) {
    const auto& [a, b, c] = corners;
    const double bz = double(b.z) - double(a.z);
    const double cz = double(c.z) - double(a.z);
    return {static_cast<float>(
                (bz * (double(c.y) - double(a.y)) - cz * (double(b.y) - double(a.y))) / area),
            static_cast<float>(
                (cz * (double(b.x) - double(a.x)) - bz * (double(c.x) - double(a.x))) / area)};
}

/// A corner of four triangles.
struct Corner {
    Floats x, y;             ///< on the screen
    std::array<Floats, 3> n; ///< the normal in the space of the scene
    Ints colour;
};

struct Vertex {
    const PlacedMesh* mesh;
    std::size_t index; ///< in the mesh
    Colour byId;       ///< where the mesh has no colours

    const Place& at(const Frame& frame) const { return frame.vertices[mesh->firstVertex + index]; }
    const Point& normal() const { return mesh->mesh->normals[index]; }
    std::int32_t colour() const {
        const std::vector<Colour>& colours = mesh->mesh->colours;
        if (colours.empty())
            return static_cast<std::int32_t>(byId);
        return static_cast<std::int32_t>(colours[colours.size() == 1 ? 0 : index]);
    }
};

Corner cornerOf(const Frame& frame, const std::array<Vertex, 4>& vertices) {
    const auto& [a, b, c, d] = vertices;
    Corner corner = {{a.at(frame).x, b.at(frame).x, c.at(frame).x, d.at(frame).x},
                     {a.at(frame).y, b.at(frame).y, c.at(frame).y, d.at(frame).y},
                     {},
                     {a.colour(), b.colour(), c.colour(), d.colour()}};
    for (std::size_t i = 0; i < 3; ++i)
        corner.n[i] = Floats{a.normal()[i], b.normal()[i], c.normal()[i], d.normal()[i]};
    return corner;
}

std::array<Corner, 3> cornersOf(const Frame& frame, Ints triangles) {
    std::array<std::array<Vertex, 4>, 3> vertices;
    for (int lane = 0; lane < 4; ++lane) {
        const PlacedMesh& mesh = frame.meshOf(triangles[lane]);
        const auto index = static_cast<std::size_t>(triangles[lane] - mesh.start);
        const auto& triangle = mesh.mesh->triangles[index];
        const Colour byId =
            mesh.mesh->colours.empty() ? (*frame.scene->idColours)[mesh.id(index) - 1] : 0;
        for (std::size_t corner = 0; corner < 3; ++corner)
            vertices[corner][static_cast<std::size_t>(lane)] = {&mesh, triangle[corner], byId};
    }
    return {cornerOf(frame, vertices[0]), cornerOf(frame, vertices[1]),
            cornerOf(frame, vertices[2])};
}

Floats twiceArea(Floats ax, Floats ay, Floats bx, Floats by, Floats cx, Floats cy) {
    return (bx - ax) * (cy - ay) - (by - ay) * (cx - ax);
}

Ints mixed(const std::array<Corner, 3>& corners, const std::array<Floats, 3>& weights) {
    const Ints first = corners[0].colour;
    if (!isAny((first != corners[1].colour) | (first != corners[2].colour)))
        return first;
    Ints result = all(0);
    for (const int shift : {0, 8, 16}) {
        Floats channel = all(0.5F);
        for (std::size_t i = 0; i < 3; ++i)
            channel += weights[i] *
                       __builtin_convertvector((corners[i].colour >> shift) & all(255), Floats);
        result |= __builtin_convertvector(channel, Ints) << shift;
    }
    return result;
}

} // namespace

// Of the triangles of a fine mesh, many lie between the samples.
Extent TriangleExtents::operator()(std::size_t triangle) {
    const Number number = m_frame->triangleStart + static_cast<Number>(triangle);
    if (!m_mesh || number < m_mesh->start || number >= m_end) {
        m_mesh = &m_frame->meshOf(number);
        m_end = m_mesh->start + static_cast<Number>(m_mesh->mesh->triangles.size());
    }
    const auto index = static_cast<std::size_t>(number - m_mesh->start);
    if (!m_frame->scene->isShown(m_mesh->id(index)))
        return nowhere;
    const auto& corners = m_mesh->mesh->triangles[index];
    const Place* const vertices = m_frame->vertices.data() + m_mesh->firstVertex;
    const std::array<Place, 3> at = {vertices[corners[0]], vertices[corners[1]],
                                     vertices[corners[2]]};
    if (std::isnan(at[0].x) || std::isnan(at[1].x) || std::isnan(at[2].x))
        return nowhere;
    Extent extent = extentOf(at);
    if (!holdsSample(extent.left, extent.right) || !holdsSample(extent.top, extent.bottom))
        extent.left = extent.right = -std::numeric_limits<float>::infinity();
    return extent;
}

void TrianglePainter::draw(Tile& tile, const Frame& frame, const Bins& triangles,
                           std::size_t tileIndex) {
    for (const std::uint32_t triangle : triangles.large()) {
        const Seen large = seen(frame, triangle);
        if (tile.hides(extentOf(large.corners).front) || frame.stop.stop_requested())
            break;
        drawOne(tile, frame, large);
    }
    m_triangles.clear();
    m_order.fronts.clear();
    for (const std::uint32_t triangle : triangles.inTile(tileIndex)) {
        m_triangles.push_back(seen(frame, triangle));
        m_order.fronts.push_back(extentOf(m_triangles.back().corners).front);
    }
    m_order.draw(tile, frame,
                 [&](std::uint32_t index) { drawOne(tile, frame, m_triangles[index]); });
}

TrianglePainter::Seen TrianglePainter::seen(const Frame& frame, std::uint32_t triangle) {
    const Number number = frame.triangleStart + static_cast<Number>(triangle);
    return {triangleOf(frame, triangle).corners, number};
}

void TrianglePainter::drawOne(Tile& tile, const Frame& frame, const Seen& triangle) {
    const std::array<Place, 3>& corners = triangle.corners;
    const Extent extent = extentOf(corners);
    const Tile::Range range = tile.range(extent);
    if (range.isEmpty() || tile.hides(range, extent.front))
        return;
    const double area = twiceArea(corners);
    // What is seen from its edge covers no sample.
    if (!(area != 0))
        return;
    const float turn = area > 0 ? 1.0F : -1.0F;
    const auto& [a, b, c] = corners;
    const std::array<Edge, 3> edges = {Edge(a, b, turn), Edge(b, c, turn), Edge(c, a, turn)};
    const Ints number = all(triangle.number);
    const int first = range.left & ~3;
    const float left = static_cast<float>(tile.left() + first) + 0.5F;
    // Many small ones cover no sample: their slope is not needed.
    Slope slope{};
    bool isDrawn = false;
    for (int row = range.top; row <= range.bottom; ++row) {
        const float y = static_cast<float>(tile.top() + row) + 0.5F;
        Floats x = {left, left + 1, left + 2, left + 3};
        for (int column = first; column <= range.right; column += 4, x += all(4.0F)) {
            Ints mask = (edges[0].inside(x, y) >= all(0.0F)) &
                        (edges[1].inside(x, y) >= all(0.0F)) & (edges[2].inside(x, y) >= all(0.0F));
            if (!isAny(mask))
                continue;
            if (!isDrawn)
                slope = slopeOf(corners, area);
            isDrawn = true;
            const Floats rowDepth = all(a.z + slope.y * (y - a.y));
            // The plane of a narrow triangle is steep: rounding must not lead out of it.
            const Floats depth =
                smaller(larger(rowDepth + all(slope.x) * (x - all(a.x)), all(extent.back)),
                        all(extent.front));
            mask &= (depth >= all(frame.back)) & (depth <= all(frame.front));
            tile.put(row, column, mask, depth, number);
        }
    }
    if (isDrawn)
        tile.touch(range);
}

TrianglePoints trianglePoints(const Frame& frame, Ints triangles, Floats x, Floats y) {
    const std::array<Corner, 3> corners = cornersOf(frame, triangles);
    const auto& [a, b, c] = corners;
    // Barycentric coordinates: the parts of the area opposite to each corner.
    const Floats inverse = all(1.0F) / twiceArea(a.x, a.y, b.x, b.y, c.x, c.y);
    std::array<Floats, 3> weights;
    weights[0] =
        smaller(larger(twiceArea(x, y, b.x, b.y, c.x, c.y) * inverse, all(0.0F)), all(1.0F));
    weights[1] = smaller(larger(twiceArea(a.x, a.y, x, y, c.x, c.y) * inverse, all(0.0F)),
                         all(1.0F) - weights[0]);
    weights[2] = all(1.0F) - weights[0] - weights[1];
    std::array<Floats, 3> normal;
    for (std::size_t i = 0; i < 3; ++i)
        normal[i] = weights[0] * a.n[i] + weights[1] * b.n[i] + weights[2] * c.n[i];
    const auto along = [&](const Point& axis) {
        return all(axis[0]) * normal[0] + all(axis[1]) * normal[1] + all(axis[2]) * normal[2];
    };
    const Floats right = along(frame.camera.axes[0]);
    const Floats up = along(frame.camera.axes[1]);
    const Floats near = along(frame.camera.axes[2]);
    const Floats squared = right * right + up * up + near * near;
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const Ints isKnown = (squared > all(0.0F)) & (squared < all(infinity));
    const Floats factor = select(near < all(0.0F), all(-1.0F), all(1.0F)) / squareRoot(squared);
    return {select(isKnown, right * factor, all(0.0F)), select(isKnown, up * factor, all(0.0F)),
            select(isKnown, near * factor, all(1.0F)), mixed(corners, weights)};
}

} // namespace view
