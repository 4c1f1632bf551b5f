// Drawing what has a constant width on the screen into a tile: lines and dots.
#pragma once

#include "FrontToBack.h"
#include "Tile.h"

#include <cstddef>

namespace view {

/// Where a line is; nowhere when an end is.
Extent lineExtent(const Frame& frame, std::size_t line);
Extent dotExtent(const Frame& frame, std::size_t dot);

void drawLines(Tile& tile, const Frame& frame, const Bins& lines, std::size_t tileIndex,
               FrontToBack& order);
void drawDots(Tile& tile, const Frame& frame, const Bins& dots, std::size_t tileIndex,
              FrontToBack& order);

} // namespace view
