#include "AlongCurve.h"

#include "NearLanes.h"

#include <algorithm>
#include <numeric>

namespace workbench {

namespace {

constexpr std::size_t cells = 1024; ///< along each axis
constexpr int bits = 10;            ///< of their numbers
/// Few points far away shall not make the cells large. Å.
constexpr float farthest = 1e5F;

/// For each number of a cell, its bits with two zeros behind each.
constexpr auto spread = [] {
    std::array<std::uint32_t, cells> all{};
    for (std::uint32_t i = 0; i != cells; ++i)
        for (int bit = 0; bit != bits; ++bit)
            all[i] |= (i >> bit & 1) << 3 * bit;
    return all;
}();

struct Keyed {
    std::uint32_t key; ///< of 30 bits
    std::uint32_t number;
};

/// How often each value of each digit is there, of `bits` bits, from the lowest.
using Counts = std::array<std::array<std::uint32_t, cells + 1>, 3>;

/// Sorts by the keys, digit by digit; what has the same key stays in its order.
void sortByKey(std::vector<Keyed>& all, Counts& counts) {
    std::vector<Keyed> sorted(all.size());
    for (std::size_t digit = 0; digit != counts.size(); ++digit) {
        std::array<std::uint32_t, cells + 1>& begins = counts[digit];
        if (begins[1] == all.size())
            continue; // it is 0 everywhere
        std::partial_sum(begins.begin(), begins.end(), begins.begin());
        const std::size_t shift = bits * digit;
        for (const Keyed& each : all)
            sorted[begins[each.key >> shift & (cells - 1)]++] = each;
        all.swap(sorted);
    }
}

Lanes placeOf(const std::array<float, 3>& point) {
    return lesser(greater(Lanes{point[0], point[1], point[2], point[2]}, all(-farthest)),
                  all(farthest));
}

bool isFinite(const std::array<float, 3>& point) {
    // Infinities and NaN have no difference to themselves.
    const Lanes lanes{point[0], point[1], point[2], point[2]};
    return bitsOf(lanes - lanes == Lanes{}) == 15;
}

} // namespace

std::vector<std::uint32_t> alongCurve(const std::vector<std::array<float, 3>>& points) {
    Lanes low = all(farthest);
    Lanes high = all(-farthest);
    std::vector<Keyed> keyed;
    keyed.reserve(points.size());
    for (std::uint32_t i = 0; i != points.size(); ++i) {
        if (!isFinite(points[i]))
            continue;
        const Lanes place = placeOf(points[i]);
        low = lesser(low, place);
        high = greater(high, place);
        keyed.push_back({0, i});
    }
    const Lanes size = high - low;
    const float extent = std::max({size[0], size[1], size[2]});
    const Lanes perAngstrom = all(1.0F / std::max(2.0F, extent / (cells - 1)));
    Counts counts{};
    for (Keyed& each : keyed) {
        const Lanes cell = (placeOf(points[each.number]) - low) * perAngstrom;
        for (std::size_t axis = 0; axis != 3; ++axis)
            each.key |= spread[std::min(cells - 1, static_cast<std::size_t>(cell[axis]))] << axis;
        for (std::size_t digit = 0; digit != counts.size(); ++digit)
            ++counts[digit][(each.key >> bits * digit & (cells - 1)) + 1];
    }
    sortByKey(keyed, counts);
    std::vector<std::uint32_t> numbers(keyed.size());
    std::transform(keyed.begin(), keyed.end(), numbers.begin(),
                   [](const Keyed& each) { return each.number; });
    return numbers;
}

} // namespace workbench
