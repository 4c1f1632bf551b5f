#include "NearCentres.h"

namespace workbench {

namespace {

/// The boxes in eights; in their place those of each eight.
std::vector<EightBoxes> gather(std::vector<Box>& boxes) {
    std::vector<EightBoxes> eights((boxes.size() + 7) / 8);
    for (std::size_t i = 0; i != boxes.size(); ++i) {
        eights[i / 8].set(i % 8, boxes[i]);
        if (i % 8 == 0)
            boxes[i / 8] = boxes[i];
        else
            boxes[i / 8].add(boxes[i]);
    }
    boxes.resize(eights.size());
    return eights;
}

} // namespace

void NearCentres::add(const Point& point) {
    const std::size_t at = m_count++ % 8;
    if (at == 0) {
        m_leaves.emplace_back();
        for (std::size_t axis = 0; axis != 3; ++axis)
            m_leaves.back()[axis].lanes.fill(all(point[axis]));
        return;
    }
    for (std::size_t axis = 0; axis != 3; ++axis)
        m_leaves.back()[axis].set(at, point[axis]);
}

void NearCentres::finish() {
    m_boxes.reserve(m_leaves.size());
    for (const EightPoints& leaf : m_leaves)
        m_boxes.push_back(boxAround(leaf));
    std::vector<Box> boxes = m_boxes;
    do
        m_levels.push_back(gather(boxes));
    while (boxes.size() > 1);
}

} // namespace workbench
