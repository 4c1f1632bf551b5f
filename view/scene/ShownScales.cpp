#include "ShownScales.h"

#include <algorithm>

namespace view {

std::vector<TAVIK::ValueScale> shownScales(const Contents& contents, const Marks& marks) {
    std::vector<TAVIK::ValueScale> scales;
    for (std::size_t i = 0; i != contents.shapes.size() && scales.size() != mostScales; ++i) {
        const Shape& shape = contents.shapes[i];
        if (shape.scale && shape.mesh && !shape.mesh->colours.empty() && marks.hasOwnColours(i) &&
            marks.shown[shape.item] &&
            std::find(scales.begin(), scales.end(), *shape.scale) == scales.end())
            scales.push_back(*shape.scale);
    }
    return scales;
}

} // namespace view
