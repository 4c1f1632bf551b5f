#include "Creases.h"

#include "Vectors.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <optional>
#include <utility>

namespace solid {

namespace {

struct Sphere {
    Vector centre;
    double radius;
};

// Where the spheres of three balls meet, the nearer of the two points.
std::optional<Vector> meetingPoint(const std::array<Sphere, 3>& spheres, const Vector& near) {
    const Vector u = spheres[1].centre - spheres[0].centre;
    const Vector v = spheres[2].centre - spheres[0].centre;
    const Vector w = cross(u, v);
    const double ww = dot(w, w);
    if (!(ww > 1e-12))
        return {};
    const double r = spheres[0].radius * spheres[0].radius;
    const double a = (dot(u, u) + r - spheres[1].radius * spheres[1].radius) / 2;
    const double b = (dot(v, v) + r - spheres[2].radius * spheres[2].radius) / 2;
    const Vector foot = (cross(v, w) * a + cross(w, u) * b) * (1 / ww);
    const double left = r - dot(foot, foot);
    if (!(left >= 0))
        return {};
    const double height = std::sqrt(left / ww);
    const Vector low = spheres[0].centre + foot - w * height;
    const Vector high = spheres[0].centre + foot + w * height;
    return length(low - near) < length(high - near) ? low : high;
}

// The new vertex of an edge between two vertices, by their numbers: a hash table that is as large
// as it will get.
class EdgeVertices {
public:
    explicit EdgeVertices(std::size_t most) : m_slots(std::bit_ceil(2 * most + 1)) {}

    // `missing` for an edge that is new; then to be set.
    std::uint32_t& find(std::uint32_t a, std::uint32_t b) {
        const std::uint64_t key = (std::uint64_t{std::max(a, b)} << 32) | std::min(a, b);
        std::size_t at = (key * 0x9E3779B97F4A7C15U) >> 20;
        for (;; ++at) {
            Slot& slot = m_slots[at & (m_slots.size() - 1)];
            if (slot.key == 0)
                slot.key = key;
            if (slot.key == key)
                return slot.vertex;
        }
    }

    static constexpr std::uint32_t missing = UINT32_MAX;

private:
    struct Slot {
        std::uint64_t key = 0; // no edge's: its two vertices differ
        std::uint32_t vertex = missing;
    };
    std::vector<Slot> m_slots;
};

class Divider {
public:
    Divider(Mesh& mesh, std::span<const Ball> balls, std::size_t mixed)
        : m_mesh(mesh), m_balls(balls), m_edges(mixed) {}

    void divide(const Triangle& triangle) {
        std::array<std::uint32_t, 3> balls{};
        for (std::size_t i = 0; i != 3; ++i)
            balls[i] = m_mesh.nearest[triangle[i]];
        if (balls[0] == balls[1] && balls[1] == balls[2])
            return triangles.push_back(triangle);
        if (balls[0] != balls[1] && balls[1] != balls[2] && balls[2] != balls[0])
            return divideInThree(triangle, balls);
        std::size_t lone = 0;
        while (balls[(lone + 1) % 3] != balls[(lone + 2) % 3])
            ++lone;
        const std::uint32_t a = triangle[lone];
        const std::uint32_t b = triangle[(lone + 1) % 3];
        const std::uint32_t c = triangle[(lone + 2) % 3];
        const std::uint32_t ab = onEdge(a, b);
        const std::uint32_t ca = onEdge(c, a);
        triangles.push_back({a, ab, ca});
        triangles.push_back({ab, b, c});
        triangles.push_back({ab, c, ca});
    }

    std::vector<Triangle> triangles;

private:
    Sphere sphere(std::uint32_t ball) const {
        return {vectorOf(m_balls[ball].centre), double{m_balls[ball].radius}};
    }
    Vector vertex(std::uint32_t index) const { return vectorOf(m_mesh.vertices[index]); }

    void divideInThree(const Triangle& triangle, const std::array<std::uint32_t, 3>& balls) {
        Triangle between{};
        for (std::size_t i = 0; i != 3; ++i)
            between[i] = onEdge(triangle[i], triangle[(i + 1) % 3]);
        const Vector mean =
            (vertex(between[0]) + vertex(between[1]) + vertex(between[2])) * (1.0 / 3);
        const std::array<Sphere, 3> spheres = {sphere(balls[0]), sphere(balls[1]),
                                               sphere(balls[2])};
        const double size = length(vertex(triangle[0]) - vertex(triangle[1])) +
                            length(vertex(triangle[1]) - vertex(triangle[2]));
        Vector middle = meetingPoint(spheres, mean).value_or(mean);
        if (length(middle - mean) > size)
            middle = mean;
        const std::uint32_t centre = addVertex(middle, balls);
        for (std::size_t i = 0; i != 3; ++i) {
            triangles.push_back({triangle[i], between[i], centre});
            triangles.push_back({triangle[i], centre, between[(i + 2) % 3]});
        }
    }

    std::uint32_t onEdge(std::uint32_t a, std::uint32_t b) {
        std::uint32_t& known = m_edges.find(a, b);
        if (known == EdgeVertices::missing)
            known = a < b ? makeOnEdge(a, b) : makeOnEdge(b, a);
        return known;
    }

    // A point is as far in, by the power of the point, of one ball as of the other in a plane,
    // which lies between two vertices of the surface.
    std::uint32_t makeOnEdge(std::uint32_t a, std::uint32_t b) {
        const std::array<std::uint32_t, 2> balls = {m_mesh.nearest[a], m_mesh.nearest[b]};
        const Sphere first = sphere(balls[0]);
        const Sphere second = sphere(balls[1]);
        const auto difference = [&](const Vector& x) {
            const Vector p = x - first.centre;
            const Vector q = x - second.centre;
            return dot(p, p) - first.radius * first.radius - dot(q, q) +
                   second.radius * second.radius;
        };
        const double low = difference(vertex(a));
        const double high = difference(vertex(b));
        const double share = high > low ? std::clamp(-low / (high - low), 0.0, 1.0) : 0.5;
        Vector point = vertex(a) + (vertex(b) - vertex(a)) * share;
        const Vector axis = second.centre - first.centre;
        const double square = dot(axis, axis);
        if (square > 0) {
            const double along =
                (square + first.radius * first.radius - second.radius * second.radius) /
                (2 * square);
            const double radius = first.radius * first.radius - along * along * square;
            const Vector centre = first.centre + axis * along;
            const Vector out = point - centre;
            const double distance = length(out);
            if (radius > 0 && distance > 0)
                point = centre + out * (std::sqrt(radius) / distance);
        }
        return addVertex(point, balls);
    }

    std::uint32_t addVertex(const Vector& point, std::span<const std::uint32_t> balls) {
        Vector normal;
        for (const std::uint32_t ball : balls)
            normal = normal + (point - sphere(ball).centre) * (1 / sphere(ball).radius);
        const double size = length(normal);
        m_mesh.vertices.push_back(pointOf(point));
        m_mesh.normals.push_back(size > 1e-6 ? pointOf(normal * (1 / size)) : Point{0, 0, 1});
        m_mesh.nearest.push_back(*std::min_element(balls.begin(), balls.end()));
        return static_cast<std::uint32_t>(m_mesh.vertices.size() - 1);
    }

    Mesh& m_mesh;
    std::span<const Ball> m_balls;
    EdgeVertices m_edges;
};

} // namespace

void divideAtCreases(Mesh& mesh, std::span<const Ball> balls) {
    std::size_t mixed = 0;
    for (const Triangle& triangle : mesh.triangles)
        for (std::size_t i = 0; i != 3; ++i)
            mixed += mesh.nearest[triangle[i]] != mesh.nearest[triangle[(i + 1) % 3]] ? 1U : 0U;
    Divider divider(mesh, balls, mixed / 2);
    divider.triangles.reserve(mesh.triangles.size() + 2 * mixed);
    for (const Triangle& triangle : mesh.triangles)
        divider.divide(triangle);
    mesh.triangles = std::move(divider.triangles);
}

} // namespace solid
