#include "FourTriangles.h"

#include <algorithm>
#include <limits>

namespace view {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
/// Samples. Where a side crosses a row is known that well, for triangles that are not larger than
/// `exactSize` in a picture of at most 2^16 samples.
constexpr float margin = 0.125F;
constexpr float exactSize = 1 << 14;

using Doubles = double __attribute__((vector_size(16)));

constexpr Floats fourFrom0 = {0, 1, 2, 3};

} // namespace

struct FourTriangles::Rows {
    // By row of the tile; some before and behind are not set.
    std::array<std::array<float, tileSide>, 3> starts; ///< dx * (y - startY), by side
    std::array<float, tileSide> depths;                ///< in the column of the first corner
    std::array<std::int32_t, tileSide> first, last;    ///< samples that may be covered
};

FourTriangles::FourTriangles(const Tile& tile, std::span<const PlacedTriangle> triangles,
                             std::span<const std::uint32_t> order) {
    const std::size_t last = order.size() - 1;
    const std::array<const PlacedTriangle*, 4> four = {
        &triangles[order[0]], &triangles[order[std::min<std::size_t>(1, last)]],
        &triangles[order[std::min<std::size_t>(2, last)]], &triangles[order[last]]};
    for (std::size_t i = 0; i < 3; ++i) {
        Corners& corner = m_corners[i];
        corner = {four[0]->corners[i], four[1]->corners[i], four[2]->corners[i]};
        Floats rest = four[3]->corners[i];
        transpose(corner.x, corner.y, corner.z, rest);
    }
    m_numbers = Ints{four[0]->number, four[1]->number, four[2]->number, four[3]->number};
    setExtents(tile);
    setSlopes();
    setSides(tile);
}

void FourTriangles::setExtents(const Tile& tile) {
    const auto& [a, b, c] = m_corners;
    m_front = greatest(a.z, b.z, c.z);
    m_back = least(a.z, b.z, c.z);
    const Tile::Ranges ranges = tile.ranges(least(a.x, b.x, c.x), greatest(a.x, b.x, c.x),
                                            least(a.y, b.y, c.y), greatest(a.y, b.y, c.y));
    m_left = ranges.left;
    m_right = ranges.right;
    m_top = ranges.top;
    m_bottom = ranges.bottom;
}

void FourTriangles::setSlopes() {
    const auto& [a, b, c] = m_corners;
    for (std::size_t i = 0; i < 4; i += 2) {
        const auto change = [i](Floats from, Floats to) {
            return Doubles{double(to[i]), double(to[i + 1])} -
                   Doubles{double(from[i]), double(from[i + 1])};
        };
        const Doubles bx = change(a.x, b.x);
        const Doubles by = change(a.y, b.y);
        const Doubles bz = change(a.z, b.z);
        const Doubles cx = change(a.x, c.x);
        const Doubles cy = change(a.y, c.y);
        const Doubles cz = change(a.z, c.z);
        const Doubles area = bx * cy - by * cx;
        const Doubles inverse = 1 / area;
        const Doubles slopeX = (bz * cy - cz * by) * inverse;
        const Doubles slopeY = (cz * bx - bz * cx) * inverse;
        for (std::size_t j = 0; j < 2; ++j) {
            m_turns[i + j] = area[j] > 0 ? 1.0F : -1.0F;
            m_isFlat[i + j] = area[j] != 0 ? 0 : -1;
            m_slopeX[i + j] = static_cast<float>(slopeX[j]);
            m_slopeY[i + j] = static_cast<float>(slopeY[j]);
        }
    }
}

void FourTriangles::setSides(const Tile& tile) {
    const Floats left = all(static_cast<float>(tile.left()) + 0.5F);
    const auto& [a, b, c] = m_corners;
    const Floats width = greatest(a.x, b.x, c.x) - least(a.x, b.x, c.x);
    const Floats height = greatest(a.y, b.y, c.y) - least(a.y, b.y, c.y);
    const Ints isExact = (width < all(exactSize)) & (height < all(exactSize));
    for (std::size_t i = 0; i < 3; ++i) {
        const Corners& from = m_corners[i];
        const Corners& to = m_corners[(i + 1) % 3];
        const Ints isForward = (from.x < to.x) | ((from.x == to.x) & (from.y < to.y));
        Sides& sides = m_sides[i];
        sides.startX = select(isForward, from.x, to.x);
        sides.startY = select(isForward, from.y, to.y);
        sides.dx = m_turns * (to.x - from.x);
        sides.dy = m_turns * (to.y - from.y);
        // A flat side bounds no row, or all of it.
        const Floats ratio = all(1.0F) / sides.dy;
        const Ints isFirst = (sides.dy < all(0.0F)) & isExact;
        const Ints isLast = (sides.dy > all(0.0F)) & isExact;
        const Floats at = sides.startX - left;
        sides.firstX = select(isFirst, at + all(1 - margin), all(-infinity));
        sides.firstRatio = Floats(Ints(ratio) & isFirst);
        sides.lastX = select(isLast, at + all(margin), all(infinity));
        sides.lastRatio = Floats(Ints(ratio) & isLast);
    }
}

FourTriangles::Rows FourTriangles::rowsOf(const Tile& tile, std::size_t lane) const {
    Rows rows;
    const Floats left = all(static_cast<float>(m_left[lane]));
    const Floats right = all(static_cast<float>(m_right[lane]));
    const int bottom = m_bottom[lane];
    for (int row = m_top[lane] & ~3; row <= bottom; row += 4) {
        const Floats y = all(static_cast<float>(tile.top() + row) + 0.5F) + fourFrom0;
        Floats first = left;
        Floats last = right;
        for (std::size_t i = 0; i < 3; ++i) {
            const Sides& sides = m_sides[i];
            const Floats start = all(sides.dx[lane]) * (y - all(sides.startY[lane]));
            store(rows.starts[i].data() + row, start);
            // Without a number, the side does not bound the row.
            first = larger(all(sides.firstX[lane]) + start * all(sides.firstRatio[lane]), first);
            last = smaller(all(sides.lastX[lane]) + start * all(sides.lastRatio[lane]), last);
        }
        store(rows.depths.data() + row,
              all(m_corners[0].z[lane]) + all(m_slopeY[lane]) * (y - all(m_corners[0].y[lane])));
        store(rows.first.data() + row, toInts(smaller(first, all(tileSide - 4.0F))));
        store(rows.last.data() + row, toInts(larger(last, left)));
    }
    return rows;
}

template <bool isCut>
bool FourTriangles::drawRows(Tile& tile, const Frame& frame, const Rows& rows,
                             std::size_t lane) const {
    const auto& [one, two, three] = m_sides;
    const auto atLane = [lane](Floats x) { return all(x[lane]); };
    const std::array<Floats, 3> startX = {atLane(one.startX), atLane(two.startX),
                                          atLane(three.startX)};
    const std::array<Floats, 3> dy = {atLane(one.dy), atLane(two.dy), atLane(three.dy)};
    const Floats front = atLane(m_front);
    const Floats back = atLane(m_back);
    const Floats slopeX = atLane(m_slopeX);
    const Floats cornerX = atLane(m_corners[0].x);
    const Ints number = all(m_numbers[lane]);
    const Floats firstX = all(static_cast<float>(tile.left()) + 0.5F) + fourFrom0;
    Ints drawn = all(0);
    for (int row = m_top[lane]; row <= m_bottom[lane]; ++row) {
        const auto at = static_cast<std::size_t>(row);
        const std::array<Floats, 3> start = {all(rows.starts[0][at]), all(rows.starts[1][at]),
                                             all(rows.starts[2][at])};
        const Floats rowDepth = all(rows.depths[at]);
        // Most triangles have few samples in a row.
        for (int column = rows.first[at];;) {
            const Floats x = firstX + all(static_cast<float>(column));
            const auto inside = [&](std::size_t i) { return start[i] - dy[i] * (x - startX[i]); };
            Ints mask = least(inside(0), inside(1), inside(2)) >= all(0.0F);
            // The plane of a narrow triangle is steep: rounding must not lead out of it.
            const Floats depth = smaller(larger(rowDepth + slopeX * (x - cornerX), back), front);
            if constexpr (isCut)
                mask &= (depth >= all(frame.back)) & (depth <= all(frame.front));
            drawn |= mask;
            tile.put(row, column, mask, depth, number);
            column += 4;
            if (column > rows.last[at])
                break;
            column = std::min(column, tileSide - 4);
        }
    }
    return isAny(drawn);
}

void FourTriangles::draw(Tile& tile, const Frame& frame, std::size_t lane) const {
    const Tile::Range range = {m_left[lane], m_right[lane], m_top[lane], m_bottom[lane]};
    if (m_isFlat[lane] != 0 || range.isEmpty() || tile.hides(range, m_front[lane]))
        return;
    const Rows rows = rowsOf(tile, lane);
    const bool isCut = m_front[lane] > frame.front || m_back[lane] < frame.back;
    if (isCut ? drawRows<true>(tile, frame, rows, lane) : drawRows<false>(tile, frame, rows, lane))
        tile.touch(range);
}

} // namespace view
