// The area of a surface.
#pragma once

#include "Geometry.h"

#include <array>
#include <cmath>
#include <cstddef>

/// The sum of the triangles, in Å².
inline double areaOfTriangles(const TAVIK::SurfaceMesh& mesh) {
    double area = 0;
    for (const auto& [a, b, c] : mesh.triangles) {
        std::array<double, 3> u{};
        std::array<double, 3> v{};
        for (std::size_t i = 0; i != 3; ++i) {
            u[i] = double(mesh.vertices[b][i]) - mesh.vertices[a][i];
            v[i] = double(mesh.vertices[c][i]) - mesh.vertices[a][i];
        }
        area += std::hypot(u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                           u[0] * v[1] - u[1] * v[0]) /
                2;
    }
    return area;
}

/// What a user is told, in Å²: what the mesh says, else the sum of its triangles.
inline double areaOf(const TAVIK::SurfaceMesh& mesh) {
    return mesh.area ? *mesh.area : areaOfTriangles(mesh);
}
