// Drawing spheres into a tile.
#pragma once

#include "FrontToBack.h"
#include "Tile.h"

#include <cstddef>
#include <vector>

namespace view {

/// Spheres with a smaller radius show no shape. The sample that holds the centre always shows
/// the sphere, so that atoms are there at any distance. Samples.
inline constexpr float leastRound = 0.70711F;

/// Where a sphere is; nowhere when its radius is not positive or larger than any structure.
inline Extent ballExtent(const Frame& frame, std::size_t ball) {
    const auto& [point, radius] = frame.scene->balls[ball];
    if (!(radius > 0 && radius <= farthest))
        return nowhere;
    const Place& at = frame.points[point];
    const float r = radius * frame.scale;
    return {at.x - r, at.x + r, at.y - r, at.y + r, at.z + r, at.z - r};
}

/// Keeps its memory from one tile to the next.
class BallPainter {
public:
    void draw(Tile& tile, const Frame& frame, const Bins& balls, std::size_t tileIndex);

private:
    struct Seen {
        Place centre;
        float radius; ///< samples
        Number number;
    };
    static Seen seen(const Frame& frame, std::uint32_t ball);
    void drawOne(Tile& tile, const Frame& frame, const Seen& ball);

    std::vector<Seen> m_balls;
    Seen m_last; ///< of those drawn into the tile
    FrontToBack m_order;
};

} // namespace view
