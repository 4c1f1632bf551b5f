// What a closed mesh on a lattice must hang together like, from the lattice's corners alone.
#pragma once

#include "mesh/Polygonizer.h"

namespace surface_checks {

struct Topology {
    long components; ///< surfaces that do not hang together
    long euler;      ///< vertices - edges + triangles

    bool operator==(const Topology&) const = default;
};

/// Counted over the corners inside of a solid, without a triangle. Corners inside hang together
/// along edges of the lattice, those outside across the faces of its cells, too.
Topology topologyOf(const solid::Solid& solid);
/// Of the mesh itself.
Topology topologyOf(const solid::Mesh& mesh);

} // namespace surface_checks
