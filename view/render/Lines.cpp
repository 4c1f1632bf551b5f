#include "Lines.h"

#include <algorithm>
#include <cmath>

namespace view {

namespace {

/// Calls use(row, column, x, y) for groups of four samples that cover a range; x and y are where
/// they are on the screen.
template <class Use> void eachGroup(const Tile& tile, const Tile::Range& range, const Use& use) {
    const int first = range.left & ~3;
    const float left = static_cast<float>(tile.left() + first) + 0.5F;
    for (int row = range.top; row <= range.bottom; ++row) {
        const float y = static_cast<float>(tile.top() + row) + 0.5F;
        Floats x = {left, left + 1, left + 2, left + 3};
        for (int column = first; column <= range.right; column += 4, x += all(4.0F))
            use(row, column, x, y);
    }
}

Ints isBetweenPlanes(const Frame& frame, Floats depth) {
    return (depth >= all(frame.back)) & (depth <= all(frame.front));
}

// A sample is on the line when its distance on the screen is at most half the width.
void drawLine(Tile& tile, const Frame& frame, std::uint32_t index) {
    const Extent extent = lineExtent(frame, index);
    const Tile::Range range = tile.range(extent);
    if (range.isEmpty() || tile.hides(range, extent.front))
        return;
    const Segment& segment = frame.scene->lines[index];
    const Place& from = frame.points[segment.from];
    const Place& to = frame.points[segment.to];
    const float dx = to.x - from.x;
    const float dy = to.y - from.y;
    const float dz = to.z - from.z;
    const float squaredLength = dx * dx + dy * dy;
    // Of a line that is seen end-on, the nearer end.
    const bool isDot = !(squaredLength > 1e-6F);
    const float inverse = isDot ? 0 : 1 / squaredLength;
    const Floats start = all(isDot && dz > 0 ? 1.0F : 0.0F);
    const float half = frame.halfOfLine(index);
    const Floats squaredHalf = all(half * half);
    const Ints first = all(frame.lineStart + static_cast<Number>(2 * index));
    eachGroup(tile, range, [&](int row, int column, Floats x, float y) {
        const Floats fromX = x - all(from.x);
        const Floats fromY = all(y - from.y);
        const Floats along = start + (fromX * all(dx) + fromY * all(dy)) * all(inverse);
        const Floats t = smaller(larger(along, all(0.0F)), all(1.0F));
        const Floats awayX = fromX - t * all(dx);
        const Floats awayY = fromY - t * all(dy);
        const Floats depth = all(from.z) + t * all(dz);
        const Ints mask =
            (awayX * awayX + awayY * awayY <= squaredHalf) & isBetweenPlanes(frame, depth);
        tile.put(row, column, mask, depth, first - (t > all(0.5F)));
    });
    tile.touch(range);
}

} // namespace

void drawLines(Tile& tile, const Frame& frame, const Bins& lines, std::size_t tileIndex,
               FrontToBack& order) {
    order.draw(
        tile, frame, lines, tileIndex,
        [&](std::uint32_t line) { return lineExtent(frame, line).front; },
        [&](std::uint32_t line) { drawLine(tile, frame, line); });
}

} // namespace view
