// Goes through things roughly from the nearest to the farthest, so that most of what is hidden need
// not be drawn.
#pragma once

#include "Tile.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace view {

/// Keeps its memory from one use to the next.
class FrontToBack {
public:
    /// z of each thing's nearest point, to be filled by the caller; no NaN.
    std::vector<float> fronts;

    /// Calls draw(index) for all things, nearest first but for those that are about equally near,
    /// until the tile hides the rest, or until a stop request.
    template <class Draw> void draw(Tile& tile, const Frame& frame, const Draw& draw) {
        drawGroups<1>(tile, frame,
                      [&](const std::uint32_t* index, std::uint32_t) { draw(*index); });
    }
    /// Likewise, but draw(indices) is for four things or fewer.
    template <class Draw> void drawFours(Tile& tile, const Frame& frame, const Draw& draw) {
        drawGroups<4>(tile, frame, [&](const std::uint32_t* indices, std::uint32_t count) {
            draw(std::span(indices, count));
        });
    }

    /// Draws the things of a tile: front(thing) is z of its nearest point, draw(thing) draws it.
    template <class Front, class Draw>
    void draw(Tile& tile, const Frame& frame, const Bins& bins, std::size_t tileIndex,
              const Front& front, const Draw& draw) {
        for (const std::uint32_t thing : bins.large()) {
            if (tile.hides(front(thing)) || frame.stop.stop_requested())
                break;
            draw(thing);
        }
        const std::span<const std::uint32_t> things = bins.inTile(tileIndex);
        fronts.clear();
        for (const std::uint32_t thing : things)
            fronts.push_back(front(thing));
        this->draw(tile, frame, [&](std::uint32_t index) { draw(things[index]); });
    }

private:
    template <std::uint32_t mostInGroup, class Draw>
    void drawGroups(Tile& tile, const Frame& frame, const Draw& draw) {
        sort();
        for (std::size_t bucket = 0; bucket + 1 < m_starts.size(); ++bucket) {
            const std::uint32_t end = m_starts[bucket + 1];
            for (std::uint32_t i = m_starts[bucket]; i < end; i += mostInGroup) {
                if (frame.stop.stop_requested())
                    return;
                draw(m_order.data() + i, std::min(mostInGroup, end - i));
            }
            // Whatever follows is farther away than anything in this bucket.
            if (m_starts[bucket] < end && tile.hides(fronts[m_order[m_starts[bucket]]]))
                return;
        }
    }
    void sort();

    std::vector<std::uint32_t> m_order;
    std::vector<std::uint32_t> m_starts; ///< of the buckets in `m_order`, and its end
    std::vector<std::uint16_t> m_buckets;
};

} // namespace view
