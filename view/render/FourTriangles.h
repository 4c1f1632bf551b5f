// Drawing triangles into a tile, four of them set up at once.
#pragma once

#include "Tile.h"

#include <array>
#include <cstddef>
#include <span>

namespace view {

/// A triangle on the screen.
struct PlacedTriangle {
    std::array<Floats, 3> corners; ///< x, y, z, and something else
    Number number;
};

/// What changes evenly over four triangles, a lane each, and which samples of a tile they may
/// cover. Two triangles that share a side calculate with the same numbers, so that no sample falls
/// between them.
class FourTriangles {
public:
    /// Those at `order`, at most four of them, of `triangles`.
    FourTriangles(const Tile& tile, std::span<const PlacedTriangle> triangles,
                  std::span<const std::uint32_t> order);
    /// Draws one of them, but for what another thing hides.
    void draw(Tile& tile, const Frame& frame, std::size_t lane) const;

private:
    struct Corners {
        Floats x, y, z;
    };
    /// One side of each. It is at `startX` for `startY`, with the inner side where
    /// dx * (y - startY) - dy * (x - startX) is not below 0.
    struct Sides {
        Floats startX, startY, dx, dy;
        /// Where samples begin and end to be inside in a row in which dx * (y - startY) is 0, and
        /// how that changes with it; infinite where the side does not bound them.
        Floats firstX, firstRatio, lastX, lastRatio;
    };
    /// What holds for the rows that a triangle touches.
    struct Rows;

    void setExtents(const Tile& tile);
    void setSlopes();
    void setSides(const Tile& tile);
    Rows rowsOf(const Tile& tile, std::size_t lane) const;
    template <bool isCut>
    bool drawRows(Tile& tile, const Frame& frame, const Rows& rows, std::size_t lane) const;

    std::array<Corners, 3> m_corners;
    std::array<Sides, 3> m_sides;
    Floats m_front, m_back;
    Ints m_left, m_right, m_top, m_bottom; ///< samples of the tile, as Tile::range() says
    Floats m_turns;                        ///< 1 or -1, by the side on which the third corner lies
    Floats m_slopeX, m_slopeY;             ///< of the depth
    Ints m_isFlat;                         ///< seen from its edge, so that no sample is covered
    Ints m_numbers;
};

} // namespace view
