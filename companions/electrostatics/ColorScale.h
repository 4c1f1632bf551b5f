// From values to colours.
#pragma once

#include "Geometry.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace electrostatics {

/// Red at -range, white at 0, blue at range, as potentials are shown: by the colour map
/// RedWhiteBlue.cm. Nullopt if the host cannot read it, which it has logged.
std::optional<TAVIK::ValueScale> readScale();

/// The colours of values between the bounds of a scale; values beyond them have those of the
/// bounds, and NaN is grey.
std::vector<std::uint32_t> colorsOf(std::span<const float> values, const TAVIK::ValueScale& scale);

} // namespace electrostatics
