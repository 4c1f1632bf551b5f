#include "Dots.h"

#include <cmath>
#include <span>

namespace view {

namespace {

/// Draws dots. Each lies in a window, which is of one size for all, and moved into the tile where
/// it would stick out.
class DotBrush {
public:
    DotBrush(Tile& tile, const Frame& frame)
        : m_tile(tile), m_squaredHalf(all(frame.dotHalf * frame.dotHalf)), m_reach(dotReach(frame)),
          m_isTiny(frame.dotHalf < 1),
          m_rows(static_cast<int>(std::min(2 * m_reach + 1, static_cast<float>(tileSide)))),
          m_columns((m_rows + 3) / 4 * 4), m_left(static_cast<float>(tile.left()) + 0.5F),
          m_top(static_cast<float>(tile.top()) + 0.5F),
          m_isUsual(m_rows == usualRows && !m_isTiny && tile.width() == tileSide &&
                    tile.height() == tileSide) {}

    /// The first sample of each window, as row * tileSide + column.
    Ints windows(Floats x, Floats y) const {
        return first(y - all(m_reach + m_top), tileSide - m_rows) * all(tileSide) +
               first(x - all(m_reach + m_left), tileSide - m_columns);
    }
    /// Whether something at a depth may be seen in a window. Most dots of a large structure are
    /// behind others.
    bool isSeen(int window, float depth) const {
        const float* const depths = m_tile.depths(0) + window;
        if (m_rows == usualRows)
            return isAny((load(depths) <= all(depth)) | (load(depths + tileSide) <= all(depth)) |
                         (load(depths + 2 * tileSide) <= all(depth)) |
                         (load(depths + 3 * tileSide) <= all(depth)));
        Ints isNearest = all(0);
        for (int row = 0; row < m_rows; ++row)
            for (int column = 0; column < m_columns; column += 4)
                isNearest |= load(depths + row * tileSide + column) <= all(depth);
        return isAny(isNearest);
    }
    void draw(int window, const Place& centre, Number number) {
        if (m_isUsual)
            drawUsual(window, centre, number);
        else
            drawAny(window, centre, number);
    }

private:
    static constexpr int usualRows = 4;

    void drawUsual(int window, const Place& centre, Number number);
    void drawAny(int window, const Place& centre, Number number);
    /// The first sample that is not before a place, but at most `last`.
    static Ints first(Floats place, int last) {
        const Floats inTile = smaller(larger(place, all(0.0F)), all(static_cast<float>(last)));
        const Ints sample = toInts(inTile);
        return sample - (toFloats(sample) < inTile);
    }

    Tile& m_tile;
    Floats m_squaredHalf;
    float m_reach;
    bool m_isTiny;  ///< perhaps without the sample that holds the centre, which is seen anyway
    int m_rows;     ///< of a window
    int m_columns;  ///< likewise
    float m_left;   ///< centre of the tile's first sample
    float m_top;    ///< likewise
    bool m_isUsual; ///< whether windows of four rows and columns lie in the picture
};

// As drawAny() does.
void DotBrush::drawUsual(int window, const Place& centre, Number number) {
    const int left = window % tileSide;
    const int top = window / tileSide;
    constexpr Floats from0 = {0, 1, 2, 3};
    const Floats dx = all(static_cast<float>(left) + m_left) + from0 - all(centre.x);
    const Floats dy = all(static_cast<float>(top) + m_top) + from0 - all(centre.y);
    const Floats squaredX = dx * dx;
    const Floats squaredY = dy * dy;
    const auto drawRow = [&](int row) {
        const Ints mask = squaredX + all(squaredY[row]) <= m_squaredHalf;
        m_tile.put(top + row, left, mask, all(centre.z), all(number));
    };
    drawRow(0);
    drawRow(1);
    drawRow(2);
    drawRow(3);
    m_tile.markFourRows(left, top);
}

void DotBrush::drawAny(int window, const Place& centre, Number number) {
    const int left = window % tileSide;
    const int top = window / tileSide;
    for (int column = left; column < left + m_columns; column += 4) {
        const float firstX = static_cast<float>(column) + m_left;
        const Floats x = {firstX, firstX + 1, firstX + 2, firstX + 3};
        const Floats dx = x - all(centre.x);
        const Floats squaredX = dx * dx;
        for (int row = top; row < top + m_rows; ++row) {
            const float y = static_cast<float>(row) + m_top;
            const float dy = y - centre.y;
            Ints mask = squaredX + all(dy * dy) <= m_squaredHalf;
            if (m_isTiny && y == std::floor(centre.y) + 0.5F)
                mask |= x == all(std::floor(centre.x) + 0.5F);
            m_tile.put(row, column, mask, all(centre.z), all(number));
        }
    }
    // What other dots hide is found out sample by sample.
    const Tile::Range range = {left, std::min(left + m_columns, m_tile.width()) - 1, top,
                               std::min(top + m_rows, m_tile.height()) - 1};
    if (!range.isEmpty())
        m_tile.mark(range);
}

} // namespace

// All that are in bins lie between the planes.
void DotPainter::draw(Tile& tile, const Frame& frame, const Bins& dots, std::size_t tileIndex) {
    const std::uint32_t* const points = frame.scene->dots.data();
    const auto at = [&](std::uint32_t dot) -> const Place& { return frame.points[points[dot]]; };
    DotBrush brush(tile, frame);
    const auto draw = [&](int window, float depth, std::uint32_t dot) {
        if (brush.isSeen(window, depth))
            brush.draw(window, at(dot), frame.dotStart + static_cast<Number>(dot));
    };
    for (const std::uint32_t dot : dots.large()) {
        const Place& centre = at(dot);
        if (tile.hides(centre.z) || frame.stop.stop_requested())
            break;
        draw(brush.windows(all(centre.x), all(centre.y))[0], centre.z, dot);
    }
    const std::span<const std::uint32_t> inTile = dots.inTile(tileIndex);
    const std::size_t count = inTile.size();
    // Whole groups of four.
    m_windows.resize((count + 3) / 4 * 4);
    m_order.fronts.resize(m_windows.size());
    for (std::size_t i = 0; i < count; i += 4) {
        const auto dot = [&](std::size_t lane) {
            return at(inTile[std::min(i + lane, count - 1)]);
        };
        const Places four(dot(0), dot(1), dot(2), dot(3));
        store(m_order.fronts.data() + i, four.z);
        store(m_windows.data() + i, brush.windows(four.x, four.y));
    }
    m_order.fronts.resize(count);
    m_order.draw(tile, frame, [&](std::uint32_t index) {
        draw(m_windows[index], m_order.fronts[index], inTile[index]);
    });
}

} // namespace view
