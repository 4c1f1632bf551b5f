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
    /// Of so many leaves, which are to be set, and then finished.
    explicit NearCentres(std::size_t leaves) : m_leaves(leaves), m_boxes(leaves) {}

    /// Neighbours should mostly follow each other, in leaves and from leaf to leaf. Where there are
    /// less than eight, some are there several times. Different leaves may be set by different
    /// threads.
    void setLeaf(std::size_t number, const EightPoints& points) {
        m_leaves[number] = points;
        m_boxes[number] = boxAround(points);
    }
    /// After the last one.
    void finish();

    std::size_t leafCount() const { return m_leaves.size(); }
    const EightPoints& leaf(std::uint32_t number) const { return m_leaves[number]; }
    const Box& leafBox(std::uint32_t number) const { return m_boxes[number]; }

    /// The level with one element. Each element holds the boxes of eight of the level below, or at
    /// level 0 of eight leaves.
    std::size_t top() const { return m_levels.size() - 1; }
    std::span<const EightBoxes> level(std::size_t number) const { return m_levels[number]; }

private:
    std::vector<EightPoints> m_leaves;
    std::vector<Box> m_boxes; ///< of the leaves
    std::vector<std::vector<EightBoxes>> m_levels;
};

} // namespace workbench
