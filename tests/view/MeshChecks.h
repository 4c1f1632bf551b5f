// What the tests of meshes check: that bodies are closed, and which way their surfaces face.
#pragma once

#include "render/Scene.h"
#include "ribbon/Vectors.h"

#include <cstddef>

namespace view_testing {

/// Whether each directed edge occurs once, and so does its reverse; vertices in one place are one.
bool isClosed(const view::Mesh& mesh);

/// How many bodies there are that share no place.
std::size_t bodyCount(const view::Mesh& mesh);

/// The place of one of the three corners of a triangle.
view::Vector corner(const view::Mesh& mesh, std::size_t triangle, std::size_t number);

/// Å³; positive when the triangles of a closed mesh face outwards.
double volume(const view::Mesh& mesh);

/// How many normals point to the other side than their triangle, whose front is counter-clockwise.
std::size_t inwardNormals(const view::Mesh& mesh);

/// Whether everything is finite, in range, and there in the right number, and normals are of length
/// 1.
bool isWhole(const view::Mesh& mesh);

} // namespace view_testing
