#include "ValueRange.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace electrostatics {

namespace {

// The least of 1, 2, 5, 10 ... times a power of ten that is not below `value`.
float roundedUp(double value) {
    constexpr double rounding = 1 - 1e-6;
    constexpr double most = std::numeric_limits<float>::max();
    // Below, floats have not enough digits left.
    const double least = std::max(value, 1e-30);
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double step : {1.0, 2.0, 5.0, 10.0})
        if (step * power >= least * rounding)
            return static_cast<float>(std::min(step * power, most));
    return static_cast<float>(most);
}

} // namespace

ValueSummary summaryOf(std::span<const float> values) {
    ValueSummary summary;
    std::vector<float> sizes;
    sizes.reserve(values.size());
    double sum = 0;
    for (const float value : values) {
        if (std::isnan(value))
            continue;
        if (sizes.empty())
            summary.least = summary.greatest = value;
        summary.least = std::min(summary.least, value);
        summary.greatest = std::max(summary.greatest, value);
        sum += double(value);
        sizes.push_back(std::abs(value));
    }
    summary.count = sizes.size();
    if (sizes.empty())
        return summary;
    summary.mean = sum / static_cast<double>(sizes.size());
    const auto at = sizes.begin() + static_cast<std::ptrdiff_t>((sizes.size() * 9 + 9) / 10 - 1);
    std::nth_element(sizes.begin(), at, sizes.end());
    // Where most values are 0, the others are shown.
    const float size = *at > 0 ? *at : std::max(std::abs(summary.least), summary.greatest);
    if (size > 0)
        summary.range = roundedUp(double(size));
    return summary;
}

} // namespace electrostatics
