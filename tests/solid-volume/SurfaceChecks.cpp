#include "SurfaceChecks.h"

#include "mesh/Vectors.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>
#include <span>
#include <thread>

using solid::Mesh;
using solid::Triangle;
using solid::Vector;
using solid::vectorOf;

namespace surface_checks {

namespace {

/// A directed edge, and the vertex across it.
struct Edge {
    std::uint32_t to;
    std::uint32_t across;
};

/// The edges that leave each vertex.
class Edges {
public:
    explicit Edges(const Mesh& mesh)
        : m_firsts(mesh.vertices.size() + 1), m_edges(3 * mesh.triangles.size()) {
        for (const Triangle& triangle : mesh.triangles)
            for (const std::uint32_t vertex : triangle)
                ++m_firsts[vertex];
        std::partial_sum(m_firsts.begin(), m_firsts.end(), m_firsts.begin());
        for (const Triangle& triangle : mesh.triangles)
            for (std::size_t i = 0; i != 3; ++i)
                m_edges[--m_firsts[triangle[i]]] = {triangle[(i + 1) % 3], triangle[(i + 2) % 3]};
    }

    std::span<const Edge> from(std::size_t vertex) const {
        return {m_edges.data() + m_firsts[vertex], m_firsts[vertex + 1] - m_firsts[vertex]};
    }
    /// Null if there is none.
    const Edge* find(std::uint32_t from, std::uint32_t to) const {
        for (const Edge& edge : this->from(from))
            if (edge.to == to)
                return &edge;
        return nullptr;
    }
    std::size_t count(std::uint32_t from, std::uint32_t to) const {
        const std::span<const Edge> all = this->from(from);
        return static_cast<std::size_t>(std::count_if(
            all.begin(), all.end(), [to](const Edge& edge) { return edge.to == to; }));
    }

private:
    std::vector<std::size_t> m_firsts;
    std::vector<Edge> m_edges;
};

/// How many triangles are passed on the way around a vertex.
std::size_t ringLength(const Edges& edges, std::uint32_t vertex) {
    const std::span<const Edge> all = edges.from(vertex);
    const std::uint32_t first = all.front().to;
    std::size_t length = 0;
    std::uint32_t at = first;
    do {
        at = edges.find(vertex, at)->across;
        ++length;
    } while (at != first && edges.find(vertex, at) && length <= all.size());
    return length;
}

} // namespace

bool isWholeProof() {
    return std::getenv("SURFACES_WHOLE") != nullptr;
}

solid::ForEach oneByOne() {
    return [](std::size_t count, const std::function<void(std::size_t)>& part) {
        for (std::size_t i = 0; i != count; ++i)
            part(i);
    };
}

solid::ForEach onThreads(std::size_t threads) {
    return [threads](std::size_t count, const std::function<void(std::size_t)>& part) {
        std::atomic<std::size_t> next = 0;
        std::vector<std::jthread> all;
        for (std::size_t i = 0; i != threads; ++i)
            all.emplace_back([&] {
                for (std::size_t k = next++; k < count; k = next++)
                    part(k);
            });
    };
}

std::string problemWith(const Mesh& mesh) {
    if (mesh.normals.size() != mesh.vertices.size())
        return "not one normal a vertex";
    for (const solid::Point& normal : mesh.normals)
        if (!(std::abs(length(vectorOf(normal)) - 1) < 1e-4))
            return "a normal is no unit vector";
    for (const solid::Point& vertex : mesh.vertices)
        for (const float x : vertex)
            if (!std::isfinite(x))
                return "a vertex is nowhere";
    for (const Triangle& triangle : mesh.triangles)
        for (const std::uint32_t vertex : triangle)
            if (vertex >= mesh.vertices.size())
                return "a vertex does not exist";
    const Edges edges(mesh);
    for (std::uint32_t vertex = 0; vertex != mesh.vertices.size(); ++vertex) {
        if (edges.from(vertex).empty())
            return "a vertex is in no triangle";
        for (const Edge& edge : edges.from(vertex)) {
            if (edges.count(vertex, edge.to) != 1)
                return "a directed edge is in two triangles";
            if (edges.count(edge.to, vertex) != 1)
                return "an edge is in one triangle alone";
        }
        if (ringLength(edges, vertex) != edges.from(vertex).size())
            return "two sheets meet in a vertex";
    }
    return {};
}

long eulerNumber(const Mesh& mesh) {
    const auto triangles = static_cast<long>(mesh.triangles.size());
    return static_cast<long>(mesh.vertices.size()) - triangles / 2 * 3 + triangles;
}

long componentsOf(const Mesh& mesh) {
    std::vector<std::uint32_t> root(mesh.vertices.size());
    std::iota(root.begin(), root.end(), 0U);
    const auto find = [&](std::uint32_t vertex) {
        while (root[vertex] != vertex)
            vertex = root[vertex] = root[root[vertex]];
        return vertex;
    };
    long components = static_cast<long>(mesh.vertices.size());
    for (const Triangle& triangle : mesh.triangles)
        for (const std::uint32_t vertex : {triangle[1], triangle[2]}) {
            const std::uint32_t a = find(triangle[0]);
            const std::uint32_t b = find(vertex);
            components -= a != b ? 1 : 0;
            root[b] = a;
        }
    return components;
}

double areaOf(const Mesh& mesh) {
    double area = 0;
    for (const Triangle& triangle : mesh.triangles)
        area += areaOf(mesh, triangle);
    return area;
}

double areaOf(const Mesh& mesh, const Triangle& triangle) {
    const Vector a = vectorOf(mesh.vertices[triangle[0]]);
    return length(cross(vectorOf(mesh.vertices[triangle[1]]) - a,
                        vectorOf(mesh.vertices[triangle[2]]) - a)) /
           2;
}

double volumeOf(const Mesh& mesh) {
    double volume = 0;
    for (const Triangle& triangle : mesh.triangles)
        volume +=
            dot(vectorOf(mesh.vertices[triangle[0]]),
                cross(vectorOf(mesh.vertices[triangle[1]]), vectorOf(mesh.vertices[triangle[2]]))) /
            6;
    return volume;
}

std::vector<solid::Ball> randomBalls(unsigned seed, int count, float halfSide) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> along(-halfSide, halfSide);
    std::uniform_real_distribution<float> radius(1.1F, 2.1F);
    std::vector<solid::Ball> balls;
    for (int i = 0; i != count; ++i) {
        const float x = along(random);
        const float y = along(random);
        const float z = along(random);
        balls.push_back({{x, y, z}, radius(random)});
    }
    return balls;
}

std::vector<solid::Ball> ringOfBalls(int count, double radius) {
    std::vector<solid::Ball> balls;
    for (int i = 0; i != count; ++i) {
        const double angle = 2 * std::numbers::pi * i / count;
        balls.push_back({{static_cast<float>(radius * std::cos(angle)),
                          static_cast<float>(radius * std::sin(angle)), 0.1F},
                         2.3F});
    }
    return balls;
}

double gap(const solid::Point& point, const solid::Ball& ball) {
    return length(vectorOf(point) - vectorOf(ball.centre)) - ball.radius;
}

double leastGap(const solid::Point& point, const std::vector<solid::Ball>& balls) {
    double least = std::numeric_limits<double>::infinity();
    for (const solid::Ball& ball : balls)
        least = std::min(least, gap(point, ball));
    return least;
}

bool isWithin(double value, double expected, double share) {
    const bool isIt = std::abs(value / expected - 1) <= share;
    if (!isIt)
        std::fprintf(stderr, "%.6g instead of %.6g\n", value, expected);
    return isIt;
}

} // namespace surface_checks
