// Drawing cylinders with round ends into a tile.
#pragma once

#include "FrontToBack.h"
#include "Tile.h"

#include <cstddef>

namespace view {

/// Where a stick is; nowhere when an end is, or when sticks have no positive radius.
Extent stickExtent(const Frame& frame, std::size_t stick);

void drawSticks(Tile& tile, const Frame& frame, const Bins& sticks, std::size_t tileIndex,
                FrontToBack& order);

} // namespace view
