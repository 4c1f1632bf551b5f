#include "Picking.h"

#include <algorithm>
#include <cstddef>
#include <tuple>

namespace view {

namespace {

std::size_t pixelAt(const Picture& picture, int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.image.width()) +
           static_cast<std::size_t>(x);
}

} // namespace

Id idAt(const Picture& picture, int x, int y) {
    return picture.image.valid(x, y) ? picture.ids[pixelAt(picture, x, y)] : noId;
}

Id idNear(const Picture& picture, int x, int y, int radius) {
    std::tuple<int, float, Id> best = {0, 0.0F, noId};
    bool isFound = false;
    // Only what is in the picture, however large the radius.
    const int reach = std::clamp(radius, 0, 1 << 14);
    if (!picture.image.rect().adjusted(-reach, -reach, reach, reach).contains(x, y))
        return noId;
    const int left = std::max(0, x - reach);
    const int right = std::min(picture.image.width() - 1, x + reach);
    const int bottom = std::min(picture.image.height() - 1, y + reach);
    for (int row = std::max(0, y - reach); row <= bottom; ++row) {
        for (int column = left; column <= right; ++column) {
            const int distance = (column - x) * (column - x) + (row - y) * (row - y);
            const std::size_t pixel = pixelAt(picture, column, row);
            if (distance > reach * reach || picture.ids[pixel] == noId)
                continue;
            const std::tuple here(distance, -picture.depths[pixel], picture.ids[pixel]);
            if (!isFound || here < best)
                best = here;
            isFound = true;
        }
    }
    return std::get<Id>(best);
}

} // namespace view
