// Where a probe that rolls over balls touches two of them at a time, or three.
//
// Source: the terms are those of M. L. Connolly, J. Appl. Cryst. 16 (1983) 548-558. A probe that
// touches two balls moves on a circle, of which arcs are free of the other balls; it touches a
// third one where an arc ends.
#pragma once

#include "Mesh.h"
#include "Polygonizer.h"
#include "Vectors.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace solid {

/// Å.
struct Arc {
    std::array<std::uint32_t, 2> balls;
    Vector centre;
    Vector axis; ///< a unit vector, perpendicular to the circle
    double radius;
    /// Unit vectors from the centre to the ends; the arc runs counterclockwise, seen against the
    /// axis.
    Vector first;
    Vector last;
    bool isClosed; ///< a whole circle; its ends mean nothing
    bool isWide;   ///< more than half a turn
};

/// A probe that touches three balls.
struct ProbePlace {
    std::array<std::uint32_t, 3> balls;
    Vector centre;
};

struct ProbeTracks {
    std::vector<Arc> arcs;
    std::vector<ProbePlace> places;
    std::vector<std::uint32_t> alone; ///< balls that overlap no other, ascending
};

/// All arcs that are free, and the places at their ends; each place once or, where rounding parts
/// them, a few times within 1e-6 Å. The same on any number of threads. `grown` are the balls, each
/// larger by the radius of the probe.
ProbeTracks findTracks(std::span<const Ball> grown, const ForEach& forEach);

} // namespace solid
