#include "MeshChecks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace view_testing {

using view::Mesh;
using view::Point;
using view::Vector;
using view::vectorOf;

namespace {

/// Vertices in one place are one.
std::vector<std::array<std::size_t, 3>> welded(const Mesh& mesh) {
    std::map<Point, std::size_t> places;
    for (const Point& vertex : mesh.vertices)
        places.emplace(vertex, places.size());
    std::vector<std::array<std::size_t, 3>> triangles;
    for (const auto& [a, b, c] : mesh.triangles)
        triangles.push_back({places.at(mesh.vertices[a]), places.at(mesh.vertices[b]),
                             places.at(mesh.vertices[c])});
    return triangles;
}

bool areNormalsOfLengthOne(const Mesh& mesh) {
    return std::all_of(mesh.normals.begin(), mesh.normals.end(), [](const Point& normal) {
        return std::abs(view::length(vectorOf(normal)) - 1) < 1e-5;
    });
}

} // namespace

bool isClosed(const Mesh& mesh) {
    std::set<std::pair<std::size_t, std::size_t>> edges;
    for (const auto& triangle : welded(mesh))
        for (std::size_t i = 0; i < 3; ++i)
            if (!edges.emplace(triangle[i], triangle[(i + 1) % 3]).second)
                return false;
    return std::all_of(edges.begin(), edges.end(), [&](const auto& edge) {
        return edges.contains({edge.second, edge.first});
    });
}

std::size_t bodyCount(const Mesh& mesh) {
    const auto triangles = welded(mesh);
    std::map<std::size_t, std::size_t> parents;
    const auto rootOf = [&](std::size_t vertex) {
        while (parents.at(vertex) != vertex)
            vertex = parents.at(vertex) = parents.at(parents.at(vertex));
        return vertex;
    };
    for (const auto& triangle : triangles)
        for (const std::size_t vertex : triangle)
            parents.emplace(vertex, vertex);
    for (const auto& [a, b, c] : triangles) {
        parents[rootOf(a)] = rootOf(b);
        parents[rootOf(b)] = rootOf(c);
    }
    std::size_t count = 0;
    for (const auto& [vertex, parent] : parents)
        count += vertex == parent ? 1 : 0;
    return count;
}

Vector corner(const Mesh& mesh, std::size_t triangle, std::size_t number) {
    return vectorOf(mesh.vertices[mesh.triangles[triangle][number]]);
}

double volume(const Mesh& mesh) {
    double sum = 0;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i)
        sum +=
            view::dot(corner(mesh, i, 0), view::cross(corner(mesh, i, 1), corner(mesh, i, 2))) / 6;
    return sum;
}

std::size_t inwardNormals(const Mesh& mesh) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const Vector face = view::cross(corner(mesh, i, 1) - corner(mesh, i, 0),
                                        corner(mesh, i, 2) - corner(mesh, i, 0));
        for (const std::uint32_t vertex : mesh.triangles[i])
            count += view::dot(vectorOf(mesh.normals[vertex]), face) <= 0 ? 1 : 0;
    }
    return count;
}

bool isWhole(const Mesh& mesh) {
    const bool isFinite =
        std::all_of(mesh.vertices.begin(), mesh.vertices.end(), [](const Point& vertex) {
            return std::isfinite(vertex[0]) && std::isfinite(vertex[1]) && std::isfinite(vertex[2]);
        });
    const bool isInRange =
        std::all_of(mesh.triangles.begin(), mesh.triangles.end(), [&](const auto& triangle) {
            return *std::max_element(triangle.begin(), triangle.end()) < mesh.vertices.size();
        });
    return isFinite && isInRange && mesh.normals.size() == mesh.vertices.size() &&
           (mesh.colours.size() == mesh.vertices.size() || mesh.colours.size() <= 1) &&
           mesh.ids.size() == mesh.triangles.size() && areNormalsOfLengthOne(mesh);
}

} // namespace view_testing
