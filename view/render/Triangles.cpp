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
        m_dx = end.x - m_start.x;
        m_dy = end.y - m_start.y;
        m_sign = isForward ? turn : -turn;
    }
    /// Not below 0 on the inner side of the edge.
    Floats inside(Floats x, float y) const {
        return (all(m_dx * (y - m_start.y)) - all(m_dy) * (x - all(m_start.x))) * all(m_sign);
    }

private:
    Place m_start;
    float m_dx;
    float m_dy;
    float m_sign;
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

float along(const Point& axis, const std::array<double, 3>& vector) {
    return static_cast<float>(double(axis[0]) * vector[0] + double(axis[1]) * vector[1] +
                              double(axis[2]) * vector[2]);
}

} // namespace

// Of the triangles of a fine mesh, many lie between the samples.
Extent TriangleExtents::operator()(std::size_t triangle) {
    const Number number = m_frame->triangleStart + static_cast<Number>(triangle);
    if (!m_mesh || number < m_mesh->start || number >= m_end) {
        m_mesh = &m_frame->meshOf(number);
        m_end = m_mesh->start + static_cast<Number>(m_mesh->mesh->triangles.size());
    }
    const auto& corners = m_mesh->mesh->triangles[static_cast<std::size_t>(number - m_mesh->start)];
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

TrianglePoint trianglePoint(const Frame& frame, Number number, float x, float y) {
    const auto [placed, index, corners] =
        triangleOf(frame, static_cast<std::size_t>(number - frame.triangleStart));
    const Mesh& mesh = *placed->mesh;
    const Place at = {x, y, 0};
    const double area = twiceArea(corners);
    // Barycentric coordinates: the parts of the area opposite to each corner.
    std::array<double, 3> weights = {twiceArea({at, corners[1], corners[2]}) / area,
                                     twiceArea({corners[0], at, corners[2]}) / area, 0};
    weights[0] = std::clamp(weights[0], 0.0, 1.0);
    weights[1] = std::clamp(weights[1], 0.0, 1 - weights[0]);
    weights[2] = 1 - weights[0] - weights[1];

    std::array<double, 3> normal{};
    std::array<double, 3> channels{};
    for (std::size_t corner = 0; corner < 3; ++corner) {
        const std::uint32_t vertex = mesh.triangles[index][corner];
        const Colour colour = mesh.colours[mesh.colours.size() == 1 ? 0 : vertex];
        for (std::size_t i = 0; i < 3; ++i) {
            normal[i] += weights[corner] * double(mesh.normals[vertex][i]);
            channels[i] += weights[corner] * (colour >> (8 * i) & 255U);
        }
    }
    TrianglePoint point = {{along(frame.camera.axes[0], normal),
                            along(frame.camera.axes[1], normal),
                            along(frame.camera.axes[2], normal)},
                           0};
    const float length =
        std::sqrt(point.normal[0] * point.normal[0] + point.normal[1] * point.normal[1] +
                  point.normal[2] * point.normal[2]);
    if (length > 0 && std::isfinite(length)) {
        const float factor = (point.normal[2] < 0 ? -1 : 1) / length;
        for (float& x3 : point.normal)
            x3 *= factor;
    } else {
        point.normal = {0, 0, 1};
    }
    for (std::size_t i = 0; i < 3; ++i)
        point.colour |= static_cast<Colour>(channels[i] + 0.5) << (8 * i);
    return point;
}

} // namespace view
