// Which points are within a distance of others.
#pragma once

#include "Bits.h"

#include <array>
#include <stop_token>
#include <vector>

namespace workbench {

/// The points that are at most `radius` (Å, above 0) away from a point of `from`, those themselves
/// included. Points that are not finite are near nothing but themselves. When `stop` is requested,
/// the answer is not complete.
Bits pointsNear(const std::vector<std::array<float, 3>>& points, const Bits& from, double radius,
                const std::stop_token& stop = {});

} // namespace workbench
