#include "ColorScale.h"

#include "Colormap.h"

#include <algorithm>
#include <cmath>

namespace electrostatics {

namespace {

constexpr int entries = 255; // odd, so that 0 is white
constexpr std::uint32_t grey = 0xff808080U;

} // namespace

std::optional<TAVIK::ValueScale> readScale() {
    Colormap map("RedWhiteBlue.cm", entries, "Potential");
    if (!map.isValid())
        return std::nullopt;
    map.setMinMax(0, entries - 1);
    TAVIK::ValueScale scale;
    scale.colors.reserve(entries);
    for (int i = 0; i != entries; ++i)
        scale.colors.push_back(map.lookupValue(static_cast<float>(i)).rgba());
    return scale;
}

std::vector<std::uint32_t> colorsOf(std::span<const float> values, const TAVIK::ValueScale& scale) {
    std::vector<std::uint32_t> colors;
    colors.reserve(values.size());
    const auto last = static_cast<double>(scale.colors.size() - 1);
    const double width = double(scale.upper) - double(scale.lower);
    for (const float value : values) {
        const double place = (double(value) - double(scale.lower)) / width * last;
        colors.push_back(std::isnan(value) ? grey
                                           : scale.colors[static_cast<std::size_t>(
                                                 std::lround(std::clamp(place, 0.0, last)))]);
    }
    return colors;
}

} // namespace electrostatics
