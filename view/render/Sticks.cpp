#include "Sticks.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace view {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

/// Shorter ones on the screen, in samples, are seen along their axis: the nearer end hides the
/// rest.
constexpr float leastLength = 0.01F;

/// A stick on the screen.
class Stick {
public:
    Stick(const Place& from, const Place& to, float radius);

    /// Whether four lines of sight may meet the stick.
    bool isNear(Floats x, float y) const;
    /// Along four lines of sight.
    struct Hits {
        Ints mask;
        Floats depth; ///< times `side`
    };
    /// Where they enter it, coming from the viewer; with a `side` of -1, where they leave it.
    Hits hits(Floats x, float y, float side) const;
    /// Whether a point of the surface is nearer to the second end, -1 or 0.
    Ints isSecondHalf(Floats x, float y, Floats z) const;

private:
    Place m_from;
    Place m_to;
    float m_squaredRadius;
    float m_squaredReach;
    /// The axis, of length 1.
    float m_x = 0;
    float m_y = 0;
    float m_z;
    float m_length;
    float m_inverseFlatness = 0;
    float m_flatness = 0; ///< square of the axis' length on the screen; 0 when it is seen end-on
};

Stick::Stick(const Place& from, const Place& to, float radius)
    : m_from(from), m_to(to), m_squaredRadius(radius * radius),
      m_squaredReach((radius + leastLength * 2) * (radius + leastLength * 2)) {
    const float x = to.x - from.x;
    const float y = to.y - from.y;
    const float z = to.z - from.z;
    const float onScreen = x * x + y * y;
    m_length = std::sqrt(onScreen + z * z);
    if (!(onScreen > leastLength * leastLength)) {
        m_z = z < 0 ? -1 : 1;
        return;
    }
    m_x = x / m_length;
    m_y = y / m_length;
    m_z = z / m_length;
    m_flatness = m_x * m_x + m_y * m_y;
    m_inverseFlatness = 1 / m_flatness;
}

// On the screen a stick is what lies within its radius of a line. A little more, so that rounding
// takes nothing away.
bool Stick::isNear(Floats x, float y) const {
    const Floats dx = x - all(m_from.x);
    const Floats dy = all(y - m_from.y);
    const Floats along = (dx * all(m_x) + dy * all(m_y)) * all(m_inverseFlatness);
    const Floats place = smaller(larger(along, all(0.0F)), all(m_length));
    const Floats awayX = dx - place * all(m_x);
    const Floats awayY = dy - place * all(m_y);
    const Floats squared = awayX * awayX + awayY * awayY;
    return isAny(squared <= all(m_squaredReach));
}

// With d from the first end to the line of sight on the screen, a the unit axis and t along the
// line of sight, the cylinder is |d + t z - ((d + t z) . a) a| = r, a quadratic equation in t with
// the leading coefficient ax^2 + ay^2.
Stick::Hits Stick::hits(Floats x, float y, float side) const {
    const Floats zero = all(0.0F);
    const Floats squared = all(m_squaredRadius);
    Hits hits = {all(0), all(-infinity)};
    const auto meet = [&hits](Ints mask, Floats depth) {
        hits.mask |= mask;
        hits.depth = select(mask, larger(hits.depth, depth), hits.depth);
    };
    for (const Place& end : {m_from, m_to}) {
        const Floats dx = x - all(end.x);
        const float dy = y - end.y;
        const Floats rest = squared - dx * dx - all(dy * dy);
        meet(rest >= zero, all(end.z * side) + squareRoot(larger(rest, zero)));
    }
    if (m_flatness > 0) {
        const Floats dx = x - all(m_from.x);
        const float dy = y - m_from.y;
        const Floats across = dx * all(m_y) - all(dy * m_x);
        const Floats rest = all(m_flatness) * squared - across * across;
        const Floats root = squareRoot(larger(rest, zero));
        const Floats along = dx * all(m_x) + all(dy * m_y);
        const float slope = m_z * side;
        const Floats t = (along * all(slope) + root) * all(m_inverseFlatness);
        const Floats place = along + t * all(slope);
        meet((rest >= zero) & (place >= zero) & (place <= all(m_length)), all(m_from.z * side) + t);
    }
    return hits;
}

Ints Stick::isSecondHalf(Floats x, float y, Floats z) const {
    const Floats place =
        (x - all(m_from.x)) * all(m_x) + all((y - m_from.y) * m_y) + (z - all(m_from.z)) * all(m_z);
    return place > all(m_length * 0.5F);
}

void drawStick(Tile& tile, const Frame& frame, std::uint32_t index) {
    const Extent extent = stickExtent(frame, index);
    const Tile::Range range = tile.range(extent);
    if (range.isEmpty() || tile.hides(range, extent.front))
        return;
    const Segment& segment = frame.scene->sticks[index];
    const Stick stick(frame.points[segment.from], frame.points[segment.to],
                      frame.scene->stickRadius * frame.scale);
    const bool isCut = extent.front > frame.front || extent.back < frame.back;
    const Ints first = all(frame.stickStart + static_cast<Number>(2 * index));
    const int firstColumn = range.left & ~3;
    const float left = static_cast<float>(tile.left() + firstColumn) + 0.5F;
    for (int row = range.top; row <= range.bottom; ++row) {
        const float y = static_cast<float>(tile.top() + row) + 0.5F;
        Floats x = {left, left + 1, left + 2, left + 3};
        for (int column = firstColumn; column <= range.right; column += 4, x += all(4.0F)) {
            if (!stick.isNear(x, y))
                continue;
            auto [mask, depth] = stick.hits(x, y, 1);
            if (isCut) {
                // Solid where it is cut open.
                const Floats back = -stick.hits(x, y, -1).depth;
                mask &= (depth >= all(frame.back)) & (back <= all(frame.front));
                depth = smaller(depth, all(frame.front));
            }
            if (!isAny(mask))
                continue;
            tile.put(row, column, mask, depth, first - stick.isSecondHalf(x, y, depth));
        }
    }
    tile.touch(range);
}

} // namespace

Extent stickExtent(const Frame& frame, std::size_t stick) {
    const auto& [from, to] = frame.scene->sticks[stick];
    const Place& a = frame.points[from];
    const Place& b = frame.points[to];
    const float r = frame.scene->stickRadius * frame.scale;
    if (std::isnan(a.x) || std::isnan(b.x) ||
        !(frame.scene->stickRadius > 0 && frame.scene->stickRadius <= farthest))
        return nowhere;
    return {std::min(a.x, b.x) - r, std::max(a.x, b.x) + r, std::min(a.y, b.y) - r,
            std::max(a.y, b.y) + r, std::max(a.z, b.z) + r, std::min(a.z, b.z) - r};
}

void drawSticks(Tile& tile, const Frame& frame, const Bins& sticks, std::size_t tileIndex,
                FrontToBack& order) {
    order.draw(
        tile, frame, sticks, tileIndex,
        [&](std::uint32_t stick) { return stickExtent(frame, stick).front; },
        [&](std::uint32_t stick) { drawStick(tile, frame, stick); });
}

} // namespace view
