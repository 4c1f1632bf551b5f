// Atoms as balls, and surfaces of them on one thread.
#pragma once

#include "mesh/Mesh.h"
#include "mesh/Polygonizer.h"

#include <cstddef>
#include <string>
#include <vector>

namespace benchmarks {

/// A probe's radius, that of water, in Å.
inline constexpr double probe = 1.4;

/// The atoms of a file's first model, without waters and hydrogens, and of alternative places only
/// the first; with van der Waals radii.
std::vector<solid::Ball> ballsOf(const std::string& path);

/// Calls its second argument one number after the other.
solid::ForEach inTurn();

/// A number with commas between thousands, and what it counts.
std::string counted(std::size_t count, const std::string& what);

} // namespace benchmarks
