// Small plots of time over atoms, side by side in one SVG picture.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace benchmarks {

/// How long a work took at several sizes.
struct Curve {
    struct Sample {
        double atoms;
        double ours;   ///< seconds
        double theirs; ///< seconds; 0 when there is none
    };
    std::string work;
    std::string peer; ///< empty when there is no competitor
    std::vector<Sample> samples;
};

/// Draws a plot for each curve, both axes logarithmic.
void drawPlots(std::ostream& out, const std::vector<Curve>& curves);

} // namespace benchmarks
