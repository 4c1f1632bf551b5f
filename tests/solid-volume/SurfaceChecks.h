// What every closed mesh must hold, and its own area and volume.
#pragma once

#include "mesh/Mesh.h"
#include "mesh/Polygonizer.h"

#include <span>
#include <string>
#include <vector>

namespace surface_checks {

/// Whether to look at all of everything, which takes minutes: scripts/surface-proof asks for it.
bool isWholeProof();

/// On the calling thread.
solid::ForEach oneByOne();
/// On threads of its own; what is called does not throw.
solid::ForEach onThreads(std::size_t threads);

/// What is wrong with a mesh that should be closed; empty if nothing is. Each directed edge is in
/// one triangle, and its reverse in another; the triangles around a vertex follow one another in
/// one ring; normals are unit vectors, and no vertex is without a triangle.
std::string problemWith(const solid::Mesh& mesh);

/// Vertices - edges + triangles: twice the number of closed surfaces, less twice their handles.
long eulerNumber(const solid::Mesh& mesh);
/// How many surfaces do not hang together.
long componentsOf(const solid::Mesh& mesh);

/// Of the flat triangles, in Å² and Å³.
double areaOf(const solid::Mesh& mesh);
double areaOf(const solid::Mesh& mesh, const solid::Triangle& triangle);
double volumeOf(const solid::Mesh& mesh);

/// Balls at random in a cube around the origin, the same for each seed.
std::vector<solid::Ball> randomBalls(unsigned seed, int count, float halfSide);

/// Balls in a ring around the z axis.
std::vector<solid::Ball> ringOfBalls(int count, double radius);

/// How far outside of a ball a point is; negative inside; Å.
double gap(const solid::Point& point, const solid::Ball& ball);
double leastGap(const solid::Point& point, const std::vector<solid::Ball>& balls);

/// Whether a value differs by at most this share; if not, it is written to standard error.
bool isWithin(double value, double expected, double share);

} // namespace surface_checks
