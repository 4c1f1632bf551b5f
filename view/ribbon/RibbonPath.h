// The middle line of a ribbon: a smooth curve through guide points, with a frame that turns along.
#pragma once

#include "Vectors.h"

#include <span>
#include <vector>

namespace view {

/// A point of the path with three perpendicular unit vectors, right-handed in the order across, up,
/// along.
struct PathPoint {
    Vector place; ///< Å
    Vector along;
    Vector across;
    Vector up;
};

/// `subdivisions` steps from each guide point to the next, so that the guide point i is the point
/// i * subdivisions of the path; at least two guide points.
///
/// The curve is a cubic Hermite spline. The directions of its tangents are those of the cubic
/// spline with continuous second derivatives; they are as long as for an arc of a circle between
/// two guide points. So a helix keeps its radius and its pitch: between the CA of an alpha helix a
/// Catmull-Rom spline would come nearer to the axis by a sixth and climb at 33 instead of 20
/// degrees, and a B-spline would have 60 % of the radius.
///
/// `directions`, one a guide point and of any length, say where `across` points there; they may be
/// reversed, which for a ribbon is the same, so that no step turns by more than 90 degrees from one
/// guide point to the next. Between them the frame turns evenly relative to one that does not
/// twist. A direction of length 0, or along the path, leaves the frame as it is.
std::vector<PathPoint> ribbonPath(std::span<const Vector> guides,
                                  std::span<const Vector> directions, std::size_t subdivisions);

} // namespace view
