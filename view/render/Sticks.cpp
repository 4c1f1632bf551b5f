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
/// A row of samples meets a flatter one, by the sine, all along.
constexpr float leastSine = 0.01F;

/// A stick on the screen.
class Stick {
public:
    Stick(const Place& from, const Place& to, float radius);

    /// From where to where it may be seen in the row at y.
    struct Span {
        float left, right;
    };
    Span span(float y) const {
        const float axis = (y - m_from.y) * m_slope;
        // A little more, so that rounding takes nothing away.
        const float reach = m_rowReach + std::abs(axis) * 1e-6F;
        return {m_from.x + axis - reach, m_from.x + axis + reach};
    }
    /// Along four lines of sight.
    struct Hits {
        Ints mask;
        Floats depth; ///< times `side`
        Floats place; ///< along the axis, from the first end
    };
    /// Where they enter it, coming from the viewer; with a `side` of -1, where they leave it.
    Hits hits(Floats x, float y, float side) const {
        return m_flatness > 0 ? seenHits(x, y, side) : endOnHits(x, y, side);
    }
    /// How far along the axis a point is.
    Floats place(Floats x, float y, Floats z) const {
        return (x - all(m_from.x)) * all(m_x) + all((y - m_from.y) * m_y) +
               (z - all(m_from.z)) * all(m_z);
    }
    float length() const { return m_length; }

private:
    Hits seenHits(Floats x, float y, float side) const;
    Hits endOnHits(Floats x, float y, float side) const;

    Place m_from;
    Place m_to;
    float m_squaredRadius;
    /// The axis, of length 1.
    float m_x = 0;
    float m_y = 0;
    float m_z;
    float m_length;
    float m_inverseFlatness = 0;
    float m_flatness = 0; ///< square of the axis' length on the screen; 0 when it is seen end-on
    float m_slope = 0;    ///< of the axis, to the right a row; 0 when all of it may be in a row
    float m_rowReach = infinity;
};

Stick::Stick(const Place& from, const Place& to, float radius)
    : m_from(from), m_to(to), m_squaredRadius(radius * radius) {
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
    // On the screen a stick is within its radius of a line.
    const float sine = std::abs(y) / std::sqrt(onScreen);
    if (sine > leastSine) {
        m_slope = x / y;
        m_rowReach = (radius + 2 * leastLength) / sine;
    }
}

// With d from the first end to the line of sight on the screen, a the unit axis and t along the
// line of sight, the cylinder is |d + t z - ((d + t z) . a) a| = r, a quadratic equation in t with
// the leading coefficient ax^2 + ay^2. Where the line meets the cylinder before or after the stick
// it may meet the sphere at that end, and nothing else of the stick.
Stick::Hits Stick::seenHits(Floats x, float y, float side) const {
    const Floats zero = all(0.0F);
    const Floats squared = all(m_squaredRadius);
    const Floats dx = x - all(m_from.x);
    const float dy = y - m_from.y;
    const Floats across = dx * all(m_y) - all(dy * m_x);
    const Floats rest = all(m_flatness) * squared - across * across;
    const Floats root = squareRoot(larger(rest, zero));
    const Floats along = dx * all(m_x) + all(dy * m_y);
    const Floats slope = all(m_z * side);
    const Floats t = (along * slope + root) * all(m_inverseFlatness);
    Hits hits = {rest >= zero, all(m_from.z * side) + t, along + t * slope};
    const Ints isBefore = hits.place < zero;
    const Ints isAtEnd = isBefore | (hits.place > all(m_length));
    const Floats endX = x - select(isBefore, all(m_from.x), all(m_to.x));
    const Floats endY = all(y) - select(isBefore, all(m_from.y), all(m_to.y));
    const Floats endZ = select(isBefore, all(m_from.z), all(m_to.z)) * all(side);
    const Floats endRest = squared - endX * endX - endY * endY;
    const Floats depth = endZ + squareRoot(larger(endRest, zero));
    hits.mask = select(isAtEnd, endRest >= zero, hits.mask);
    hits.depth = select(isAtEnd, depth, hits.depth);
    return hits;
}

Stick::Hits Stick::endOnHits(Floats x, float y, float side) const {
    Hits hits = {all(0), all(-infinity), all(0.0F)};
    for (const Place& end : {m_from, m_to}) {
        const Floats dx = x - all(end.x);
        const float dy = y - end.y;
        const Floats rest = all(m_squaredRadius) - dx * dx - all(dy * dy);
        const Ints mask = rest >= all(0.0F);
        const Floats depth = all(end.z * side) + squareRoot(larger(rest, all(0.0F)));
        hits.mask |= mask;
        hits.depth = select(mask, larger(hits.depth, depth), hits.depth);
    }
    hits.place = place(x, y, hits.depth * all(side));
    return hits;
}

/// Draws four samples; `isCut` when a plane may cut the stick.
void drawGroup(Tile& tile, const Frame& frame, const Stick& stick, bool isCut, Ints first, int row,
               int column) {
    const float y = static_cast<float>(tile.top() + row) + 0.5F;
    const float left = static_cast<float>(tile.left() + column) + 0.5F;
    const Floats x = {left, left + 1, left + 2, left + 3};
    auto [mask, depth, place] = stick.hits(x, y, 1);
    if (isCut) {
        // Solid where it is cut open.
        const Stick::Hits leaving = stick.hits(x, y, -1);
        mask &= leaving.mask & (depth >= all(frame.back)) & (-leaving.depth <= all(frame.front));
        depth = smaller(depth, all(frame.front));
        place = stick.place(x, y, depth);
    }
    tile.put(row, column, mask, depth, first - (place > all(stick.length() * 0.5F)));
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
    for (int row = range.top; row <= range.bottom; ++row) {
        const Stick::Span span = stick.span(static_cast<float>(tile.top() + row) + 0.5F);
        const Tile::Columns columns = tile.columns(span.left, span.right);
        const int last = std::min(columns.last, range.right);
        for (int column = std::max(columns.first, range.left); column <= last; column += 4) {
            const int from = std::min(column, tileSide - 4);
            if (isAny(load(tile.depths(row) + from) <= all(extent.front)))
                drawGroup(tile, frame, stick, isCut, first, row, from);
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
