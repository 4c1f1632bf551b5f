#include "NearLooker.h"

#include <algorithm>

namespace workbench {

bool NearLooker::begin(const Box& box) {
    m_nodes.assign(1, 0);
    for (std::size_t level = m_centres.top(); level != 0; --level) {
        const std::span<const EightBoxes> boxes = m_centres.level(level);
        m_below.clear();
        for (const std::uint32_t node : m_nodes) {
            const EightNear near = nearOf(boxes[node], box, m_limits);
            if (near.wholly != 0)
                return false;
            forEachBit(near.partly, [&](std::uint32_t i) { m_below.push_back(8 * node + i); });
        }
        m_nodes.swap(m_below);
    }
    return true;
}

/// Gathers the leaves that are in reach of something in `box`; false if all of it is near.
bool NearLooker::gather(const Box& box) {
    const std::span<const EightBoxes> boxes = m_centres.level(0);
    m_boxes.clear();
    m_leaves.clear();
    for (std::uint32_t& node : m_nodes) {
        const EightNear near = nearOf(boxes[node], box, m_limits);
        if (near.wholly != 0) {
            std::swap(node, m_nodes.front()); // the first to be asked for the next block
            return false;
        }
        forEachBit(near.partly, [&](std::uint32_t i) {
            if (m_leaves.size() % 8 == 0)
                m_boxes.emplace_back();
            const std::uint32_t leaf = 8 * node + i;
            m_boxes.back().set(m_leaves.size() % 8, m_centres.leafBox(leaf));
            m_leaves.push_back(leaf);
        });
    }
    return true;
}

std::uint64_t NearLooker::look(const NearBlock& block, std::uint64_t wanted) {
    std::uint64_t found = 0;
    if (m_nodes.empty())
        return found;
    bool isGathered = false;
    for (std::uint32_t i = 0; i != 8; ++i) {
        unsigned some = wanted >> 8 * i & 0xFF;
        if (some == 0)
            continue;
        const EightPoints& points = block.points[i];
        const Box& box = block.boxes[i];
        const unsigned close = nearLeaf(points, box, m_last, some);
        found |= std::uint64_t{close} << 8 * i;
        some &= ~close;
        if (some == 0)
            continue;
        if (!isGathered && !gather(block.box))
            return wanted;
        isGathered = true;
        if (m_leaves.empty())
            return found;
        found |= std::uint64_t{lookAmongLeaves(points, box, some)} << 8 * i;
    }
    return found;
}

/// Looks at the leaves that are in reach of `box`, the closest first.
unsigned NearLooker::lookAmongLeaves(const EightPoints& points, const Box& box, unsigned wanted) {
    m_chosen.clear();
    std::pair<float, std::uint32_t>* closest = nullptr;
    for (std::size_t i = 0; i != m_boxes.size(); ++i) {
        const EightNear near = nearOf(m_boxes[i], box, m_limits);
        if (near.wholly != 0) {
            m_last = m_leaves[8 * i + static_cast<std::size_t>(std::countr_zero(near.wholly))];
            return wanted;
        }
        forEachBit(near.partly, [&](std::uint32_t k) {
            m_chosen.emplace_back(near.greatest.get(k), m_leaves[8 * i + k]);
        });
    }
    if (m_chosen.empty())
        return 0;
    closest = &*std::min_element(m_chosen.begin(), m_chosen.end());
    m_last = closest->second;
    std::swap(*closest, m_chosen.front());
    unsigned found = 0;
    for (const auto& [square, leaf] : m_chosen) {
        found |= nearLeaf(points, box, leaf, wanted & ~found);
        if (found == wanted)
            break;
    }
    return found;
}

unsigned NearLooker::nearLeaf(const EightPoints& points, const Box& box, std::uint32_t leaf,
                              unsigned wanted) const {
    if ((mayBeNear(points, m_centres.leafBox(leaf), m_limits) & wanted) == 0)
        return 0;
    const EightPoints& centres = m_centres.leaf(leaf);
    Eight least;
    least.lanes.fill(all(std::numeric_limits<float>::infinity()));
    forEachBit(mayBeNear(centres, box, m_limits), [&](std::uint32_t i) {
        const Lanes x = all(centres[0].get(i));
        const Lanes y = all(centres[1].get(i));
        const Lanes z = all(centres[2].get(i));
        for (std::size_t half = 0; half != 2; ++half) {
            const Lanes dx = points[0].lanes[half] - x;
            const Lanes dy = points[1].lanes[half] - y;
            const Lanes dz = points[2].lanes[half] - z;
            least.lanes[half] = lesser(dx * dx + dy * dy + dz * dz, least.lanes[half]);
        }
    });
    unsigned in = 0;
    unsigned out = 0;
    for (std::size_t half = 0; half != 2; ++half) {
        in |= bitsOf(least.lanes[half] < all(m_limits.surelyIn)) << 4 * half;
        out |= bitsOf(least.lanes[half] > all(m_limits.surelyOut)) << 4 * half;
    }
    unsigned found = in & wanted;
    forEachBit(wanted & ~in & ~out, [&](std::uint32_t i) {
        if (isExactlyNear(points, i, leaf))
            found |= 1U << i;
    });
    return found;
}

bool NearLooker::isExactlyNear(const EightPoints& points, std::size_t point,
                               std::uint32_t leaf) const {
    const EightPoints& centres = m_centres.leaf(leaf);
    for (std::size_t i = 0; i != 8; ++i) {
        double square = 0.0;
        for (std::size_t axis = 0; axis != 3; ++axis) {
            const double d = static_cast<double>(points[axis].get(point)) -
                             static_cast<double>(centres[axis].get(i));
            square += d * d;
        }
        if (square <= m_limits.square)
            return true;
    }
    return false;
}

} // namespace workbench
