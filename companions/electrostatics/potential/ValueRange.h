// The range of values that colours show. Knows no items.
#pragma once

#include <cstddef>
#include <span>

namespace electrostatics {

/// What there is to say of values, of which some are NaN.
struct ValueSummary {
    std::size_t count = 0; ///< of those that are not NaN
    float least = 0;
    float greatest = 0;
    double mean = 0;
    /// For colours from -range to range: the least of 1, 2, 5, 10, 20 ... or 0.5, 0.2, 0.1 ... that
    /// is at least as large as nine of ten values, whatever their sign; so those beside a charge do
    /// not bleach all others. 1 if all values are 0.
    float range = 1;
};

ValueSummary summaryOf(std::span<const float> values);

} // namespace electrostatics
