// The atoms of real structures as balls.
#pragma once

#include "mesh/Mesh.h"

#include <string>
#include <vector>

namespace surface_checks {

/// The first model's first conformers without waters and hydrogens; radii in hundredths of an Å, by
/// element: Bondi (1964).
std::vector<solid::Ball> ballsOf(const std::string& path);

} // namespace surface_checks
