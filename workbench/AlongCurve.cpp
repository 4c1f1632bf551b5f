#include "AlongCurve.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace workbench {

namespace {

using Point = std::array<float, 3>;

bool isFinite(const Point& point) {
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

/// Puts two zeros behind each of the lower 10 bits.
std::uint32_t spread(std::uint32_t x) {
    x = (x | x << 16) & 0x030000FFU;
    x = (x | x << 8) & 0x0300F00FU;
    x = (x | x << 4) & 0x030C30C3U;
    return (x | x << 2) & 0x09249249U;
}

struct Keyed {
    std::uint32_t key; ///< of 30 bits
    std::uint32_t number;
};

/// Sorts by the keys, digit by digit from the lowest; what has the same key stays in its order.
void sortByKey(std::vector<Keyed>& all) {
    constexpr int bits = 10;
    constexpr std::size_t digits = std::size_t{1} << bits;
    std::vector<Keyed> sorted(all.size());
    for (int shift = 0; shift != 30; shift += bits) {
        std::array<std::uint32_t, digits + 1> begins{};
        for (const Keyed& each : all)
            ++begins[(each.key >> shift & (digits - 1)) + 1];
        std::partial_sum(begins.begin(), begins.end(), begins.begin());
        for (const Keyed& each : all)
            sorted[begins[each.key >> shift & (digits - 1)]++] = each;
        all.swap(sorted);
    }
}

} // namespace

std::vector<std::uint32_t> alongCurve(const std::vector<Point>& points) {
    // Few points far away shall not make the cells large.
    static constexpr float farthest = 1e5F;
    const auto coordinate = [](const Point& point, std::size_t axis) {
        return std::clamp(point[axis], -farthest, farthest);
    };
    Point least{farthest, farthest, farthest};
    float extent = 0.0F;
    std::vector<Keyed> all;
    all.reserve(points.size());
    for (std::uint32_t i = 0; i != points.size(); ++i) {
        if (!isFinite(points[i]))
            continue;
        for (std::size_t axis = 0; axis != 3; ++axis)
            least[axis] = std::min(least[axis], coordinate(points[i], axis));
        all.push_back({0, i});
    }
    for (const Keyed& each : all)
        for (std::size_t axis = 0; axis != 3; ++axis)
            extent = std::max(extent, coordinate(points[each.number], axis) - least[axis]);
    const float cells = 1.0F / std::max(2.0F, extent / 1023.0F);
    for (Keyed& each : all)
        for (std::size_t axis = 0; axis != 3; ++axis) {
            const float cell = (coordinate(points[each.number], axis) - least[axis]) * cells;
            each.key |= spread(std::min(1023U, static_cast<std::uint32_t>(cell))) << axis;
        }
    sortByKey(all);
    std::vector<std::uint32_t> numbers;
    numbers.reserve(all.size());
    for (const Keyed& each : all)
        numbers.push_back(each.number);
    return numbers;
}

} // namespace workbench
