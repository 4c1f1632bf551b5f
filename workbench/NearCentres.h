// The centres of a search for what is near them.
#pragma once

#include "NearLanes.h"

#include <cstdint>
#include <span>
#include <vector>

namespace workbench {

/// Leaves of eight centres each, and boxes around leaves, around eight of these boxes, and so on.
class NearCentres {
public:
    using Point = std::array<float, 3>; ///< Å

    /// With room for `count` of them.
    explicit NearCentres(std::size_t count) { m_leaves.reserve((count + 7) / 8); }

    /// Neighbours should mostly follow each other.
    void add(const Point& point);
    /// After the last one.
    void finish();

    bool isEmpty() const { return m_count == 0; }
    /// With its first centre several times where there are less than eight.
    const EightPoints& leaf(std::uint32_t number) const { return m_leaves[number]; }
    const Box& leafBox(std::uint32_t number) const { return m_boxes[number]; }

    /// The level with one element. Each element holds the boxes of eight of the level below, or at
    /// level 0 of eight leaves.
    std::size_t top() const { return m_levels.size() - 1; }
    std::span<const EightBoxes> level(std::size_t number) const { return m_levels[number]; }

private:
    std::size_t m_count = 0;
    std::vector<EightPoints> m_leaves;
    std::vector<Box> m_boxes; ///< of the leaves
    std::vector<std::vector<EightBoxes>> m_levels;
};

} // namespace workbench
