// The scales of the values that the shown surfaces have their colours by.
#pragma once

#include "Contents.h"
#include "Geometry.h"

#include <cstddef>
#include <vector>

namespace view {

/// More keys would hide the picture.
inline constexpr std::size_t mostScales = 3;

/// Each scale once, in the order of the data, `mostScales` of them at most. Surfaces that have one
/// colour show no values.
std::vector<TAVIK::ValueScale> shownScales(const Contents& contents, const Marks& marks);

} // namespace view
