// Drawing points as dots of a constant size on the screen into a tile.
#pragma once

#include "FrontToBack.h"
#include "Tile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace view {

/// Half the width of the square around a dot, in samples: at least a sample's diagonal wide, so
/// that it holds the sample at the centre.
inline float dotReach(const Frame& frame) {
    return std::max(frame.dotHalf, 0.70711F);
}

/// Where dots are.
class DotExtents {
public:
    explicit DotExtents(const Frame& frame)
        : m_points(frame.points.data()), m_dots(frame.scene->dots.data()),
          m_reach(dotReach(frame)) {}
    Extent operator()(std::size_t dot) const {
        const Place& at = m_points[m_dots[dot]];
        return {at.x - m_reach, at.x + m_reach, at.y - m_reach, at.y + m_reach, at.z, at.z};
    }
    Extents four(const std::array<std::size_t, 4>& dots) const {
        const auto [x, y, z] = Places(m_points[m_dots[dots[0]]], m_points[m_dots[dots[1]]],
                                      m_points[m_dots[dots[2]]], m_points[m_dots[dots[3]]]);
        const Floats reach = all(m_reach);
        return {x - reach, x + reach, y - reach, y + reach, z, z};
    }

private:
    const Place* m_points;
    const std::uint32_t* m_dots;
    float m_reach;
};

/// Keeps its memory from one tile to the next.
class DotPainter {
public:
    void draw(Tile& tile, const Frame& frame, const Bins& dots, std::size_t tileIndex);

private:
    std::vector<std::int32_t> m_windows; ///< the first sample, by dot
    FrontToBack m_order;
};

} // namespace view
