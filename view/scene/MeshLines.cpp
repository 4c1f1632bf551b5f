#include "MeshLines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

namespace view {

namespace {

using Corners = std::array<std::uint32_t, 3>;

constexpr double edgesApart = 2;
// Beyond it, a number has no next one.
constexpr double mostPlanes = 1e15;

// Calls `use` with each triangle; returns false after a stop request.
template <class Use>
bool forTriangles(const Mesh& mesh, const std::stop_token& stop, const Use& use) {
    constexpr std::size_t trianglesAPart = 1 << 16;
    for (std::size_t i = 0; i != mesh.triangles.size(); ++i) {
        if (i % trianglesAPart == 0 && stop.stop_requested())
            return false;
        use(mesh.triangles[i]);
    }
    return true;
}

double length(const Point& a, const Point& b) {
    return std::hypot(double(b[0]) - a[0], double(b[1]) - a[1], double(b[2]) - a[2]);
}

/// Which triangles hang together by their corners.
class Pieces {
public:
    explicit Pieces(std::size_t vertices) : m_next(vertices) {
        std::iota(m_next.begin(), m_next.end(), 0U);
    }

    void join(const Corners& corners) {
        const std::uint32_t piece = of(corners[0]);
        m_next[of(corners[1])] = piece;
        m_next[of(corners[2])] = piece;
    }
    /// The vertex that stands for the piece of a vertex.
    std::uint32_t of(std::uint32_t vertex) {
        while (m_next[vertex] != vertex)
            vertex = m_next[vertex] = m_next[m_next[vertex]];
        return vertex;
    }

private:
    std::vector<std::uint32_t> m_next; ///< by vertex; itself at the end of the way
};

class Cutting {
public:
    Cutting(const Mesh& mesh, double spacing) : m_mesh(mesh), m_spacing(spacing) {}

    /// Returns whether there is a plane.
    bool cut(const Corners& corners) {
        const std::size_t before = m_lines.lines.size();
        for (std::size_t axis = 0; axis != 3; ++axis) {
            const auto place = [&](std::uint32_t corner) { return m_mesh.vertices[corner][axis]; };
            const auto [least, most] =
                std::minmax({place(corners[0]), place(corners[1]), place(corners[2])});
            const double last = std::floor(double(most) / m_spacing);
            double plane = std::floor(double(least) / m_spacing) + 1;
            if (!(std::abs(plane) < mostPlanes && std::abs(last) < mostPlanes))
                continue;
            for (; plane <= last; ++plane)
                cutAt(corners, axis, plane * m_spacing);
        }
        return m_lines.lines.size() != before;
    }
    void addSides(const Corners& corners) {
        const auto first = static_cast<std::uint32_t>(m_lines.points.size());
        for (std::uint32_t i = 0; i != 3; ++i) {
            m_lines.points.push_back(m_mesh.vertices[corners[i]]);
            m_lines.vertices.push_back(corners[i]);
            m_lines.lines.push_back({first + i, first + (i + 1) % 3});
        }
    }
    MeshLines take() { return std::move(m_lines); }

private:
    // A vertex in the plane counts as above it, so that a line goes from one side to another.
    void cutAt(const Corners& corners, std::size_t axis, double plane) {
        std::array<std::uint32_t, 2> ends{};
        std::size_t count = 0;
        for (std::size_t side = 0; side != 3; ++side) {
            const std::uint32_t a = corners[side];
            const std::uint32_t b = corners[(side + 1) % 3];
            const bool isAbove = double(m_mesh.vertices[a][axis]) >= plane;
            if (isAbove != (double(m_mesh.vertices[b][axis]) >= plane) && count != 2)
                ends[count++] = add(isAbove ? b : a, isAbove ? a : b, axis, plane);
        }
        if (count == 2)
            m_lines.lines.push_back({ends[0], ends[1]});
    }

    // From the vertex below to the one above: the same point from both triangles at the side.
    std::uint32_t add(std::uint32_t below, std::uint32_t above, std::size_t axis, double plane) {
        const Point& a = m_mesh.vertices[below];
        const Point& b = m_mesh.vertices[above];
        const double part = (plane - a[axis]) / (double(b[axis]) - a[axis]);
        Point point;
        for (std::size_t i = 0; i != 3; ++i)
            point[i] = static_cast<float>(a[i] + part * (double(b[i]) - a[i]));
        m_lines.points.push_back(point);
        m_lines.vertices.push_back(part < 0.5 ? below : above);
        return static_cast<std::uint32_t>(m_lines.points.size() - 1);
    }

    const Mesh& m_mesh;
    double m_spacing;
    MeshLines m_lines;
};

} // namespace

MeshLines linesOf(const Mesh& mesh, const std::stop_token& stop) {
    double sum = 0;
    const auto measure = [&](const Corners& corners) {
        for (std::size_t side = 0; side != 3; ++side)
            sum += length(mesh.vertices[corners[side]], mesh.vertices[corners[(side + 1) % 3]]);
    };
    if (!forTriangles(mesh, stop, measure) || !(sum > 0))
        return {};
    Cutting cutting(mesh, edgesApart * sum / (3 * static_cast<double>(mesh.triangles.size())));
    Pieces pieces(mesh.vertices.size());
    if (!forTriangles(mesh, stop, [&](const Corners& corners) { pieces.join(corners); }))
        return {};
    std::vector<bool> isCut(mesh.vertices.size());
    const auto cut = [&](const Corners& corners) {
        if (cutting.cut(corners))
            isCut[pieces.of(corners[0])] = true;
    };
    // What lies between two planes would not be seen.
    const auto addSides = [&](const Corners& corners) {
        if (!isCut[pieces.of(corners[0])])
            cutting.addSides(corners);
    };
    if (!forTriangles(mesh, stop, cut) || !forTriangles(mesh, stop, addSides))
        return {};
    return cutting.take();
}

} // namespace view
