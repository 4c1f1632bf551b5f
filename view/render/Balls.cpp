#include "Balls.h"

#include <cmath>

namespace view {

namespace {

/// Draws a sphere that the planes of the slab may cut: solid, so that a cut shows as a flat disc.
/// The surface behind the rear plane is not there.
template <bool isCut>
void drawRound(Tile& tile, const Frame& frame, const Tile::Range& range, const Place& centre,
               float radius, Number number) {
    const Floats squared = all(radius * radius);
    const Floats x = all(centre.x);
    const Floats z = all(centre.z);
    const Ints numbers = all(number);
    const int first = range.left & ~3;
    const float left = static_cast<float>(tile.left() + first) + 0.5F;
    const Floats firstSamples = {left, left + 1, left + 2, left + 3};
    for (int row = range.top; row <= range.bottom; ++row) {
        const float dy = static_cast<float>(tile.top() + row) + 0.5F - centre.y;
        const Floats inRow = squared - all(dy * dy);
        Floats samples = firstSamples;
        for (int column = first; column <= range.right; column += 4, samples += all(4.0F)) {
            const Floats dx = samples - x;
            const Floats rest = inRow - dx * dx;
            Ints mask = rest >= all(0.0F);
            const Floats half = squareRoot(select(mask, rest, all(0.0F)));
            Floats depth = z + half;
            if constexpr (isCut) {
                mask &= (depth >= all(frame.back)) & (z - half <= all(frame.front));
                depth = smaller(depth, all(frame.front));
            }
            tile.put(row, column, mask, depth, numbers);
        }
    }
}

/// Draws the sample that holds the centre of a sphere that may lie between the others.
void drawCentre(Tile& tile, const Frame& frame, const Place& centre, float radius, Number number) {
    const float column = std::floor(centre.x) - static_cast<float>(tile.left());
    const float row = std::floor(centre.y) - static_cast<float>(tile.top());
    if (!(column >= 0 && row >= 0 && column < static_cast<float>(tile.width()) &&
          row < static_cast<float>(tile.height())))
        return;
    const float dx = std::floor(centre.x) + 0.5F - centre.x;
    const float dy = std::floor(centre.y) + 0.5F - centre.y;
    const float rest = radius * radius - dy * dy - dx * dx;
    const float half = rest > 0 ? std::sqrt(rest) : 0;
    if (centre.z + half >= frame.back && centre.z - half <= frame.front)
        tile.put(static_cast<int>(row), static_cast<int>(column),
                 std::min(centre.z + half, frame.front), number);
}

} // namespace

void BallPainter::draw(Tile& tile, const Frame& frame, const Bins& balls, std::size_t tileIndex) {
    m_last = {{0, 0, 0}, 0, noNumber};
    for (const std::uint32_t ball : balls.large()) {
        const float front = ballExtent(frame, ball).front;
        if (tile.hides(front) || frame.stop.stop_requested())
            break;
        drawOne(tile, frame, seen(frame, ball));
    }
    m_balls.clear();
    m_order.fronts.clear();
    for (const std::uint32_t ball : balls.inTile(tileIndex)) {
        m_balls.push_back(seen(frame, ball));
        m_order.fronts.push_back(m_balls.back().centre.z + m_balls.back().radius);
    }
    m_order.draw(tile, frame, [&](std::uint32_t index) { drawOne(tile, frame, m_balls[index]); });
}

BallPainter::Seen BallPainter::seen(const Frame& frame, std::uint32_t ball) {
    const auto& [point, radius] = frame.scene->balls[ball];
    return {frame.points[point], radius * frame.scale, static_cast<Number>(ball)};
}

void BallPainter::drawOne(Tile& tile, const Frame& frame, const Seen& ball) {
    const auto& [centre, radius, number] = ball;
    // Atoms without real coordinates are often all in one place; the first hides the others.
    if (radius == m_last.radius && centre.z == m_last.centre.z && centre.x == m_last.centre.x &&
        centre.y == m_last.centre.y && number > m_last.number)
        return;
    const float front = centre.z + radius;
    const float reach = std::max(radius, leastRound);
    const Tile::Range range = tile.range(
        {centre.x - reach, centre.x + reach, centre.y - reach, centre.y + reach, front, front});
    if (range.isEmpty() || tile.hides(range, front))
        return;
    m_last = ball;
    if (radius < leastRound)
        drawCentre(tile, frame, centre, radius, number);
    // A smaller one has no other sample.
    if (radius >= 0.5F) {
        if (front > frame.front || centre.z < frame.back)
            drawRound<true>(tile, frame, range, centre, radius, number);
        else
            drawRound<false>(tile, frame, range, centre, radius, number);
    }
    tile.touch(range);
}

} // namespace view
