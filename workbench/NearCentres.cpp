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

void NearCentres::finish() {
    std::vector<Box> boxes = m_boxes;
    do
        m_levels.push_back(gather(boxes));
    while (boxes.size() > 1);
}

} // namespace workbench
