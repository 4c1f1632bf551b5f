// Drawing lines of a constant width on the screen into a tile.
#pragma once

#include "FrontToBack.h"
#include "Tile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace view {

/// Where a line is; nowhere when an end is.
inline Extent lineExtent(const Frame& frame, std::size_t line) {
    const auto& [from, to] = frame.scene->lines[line];
    const Place& a = frame.points[from];
    const Place& b = frame.points[to];
    if (std::isnan(a.x) || std::isnan(b.x))
        return nowhere;
    const float half = frame.halfOfLine(line);
    return {std::min(a.x, b.x) - half, std::max(a.x, b.x) + half, std::min(a.y, b.y) - half,
            std::max(a.y, b.y) + half, std::max(a.z, b.z),        std::min(a.z, b.z)};
}

void drawLines(Tile& tile, const Frame& frame, const Bins& lines, std::size_t tileIndex,
               FrontToBack& order);

} // namespace view
