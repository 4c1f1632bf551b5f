// Looks which of many points are near centres.
#pragma once

#include "NearCentres.h"
#include "NearLanes.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace workbench {

/// Points in a place, as blocks of 64 and in them as eights; they should be neighbours.
struct NearBlock {
    Box box;
    std::array<Box, 8> boxes;          ///< of each eight
    std::array<EightPoints, 8> points; ///< the last one several times where there are less
};

/// Remembers where it found centres, since the next points are mostly close to the last ones. One
/// for each thread.
class NearLooker {
public:
    /// The centres, at least one, must outlive it. The radius is in Å.
    NearLooker(const NearCentres& centres, double radius) : m_centres(centres), m_limits(radius) {}

    /// Begins with blocks that are in `box`; false if all of it is near.
    bool begin(const Box& box);
    /// Which of `wanted`, a bit for each point, are near a centre.
    std::uint64_t look(const NearBlock& block, std::uint64_t wanted);

private:
    struct Near {
        unsigned found = 0;
        unsigned left = 0;
    };

    bool gather(const Box& box);
    unsigned lookAmongLeaves(const EightPoints& points, const Box& box, unsigned wanted);
    unsigned nearLeaf(const EightPoints& points, const Box& box, std::uint32_t leaf,
                      unsigned wanted) const;
    bool isExactlyNear(const EightPoints& points, std::size_t point, std::uint32_t leaf) const;

    const NearCentres& m_centres;
    const NearLimits m_limits;
    std::vector<std::uint32_t> m_nodes; ///< of level 0, in reach of the blocks
    std::vector<std::uint32_t> m_below; ///< room to work in
    /// In reach of the block that is looked at.
    std::vector<EightBoxes> m_boxes;
    std::vector<std::uint32_t> m_leaves;                   ///< theirs, eight for each of m_boxes
    std::vector<std::pair<float, std::uint32_t>> m_chosen; ///< room to work in
    std::uint32_t m_last = 0; ///< the leaf that was close to what was looked at last
};

} // namespace workbench
