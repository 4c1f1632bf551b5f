#include "Point.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// More than the rounding errors of the single-precision test (2^-24 each), and more than the
// largest difference whose square underflows (about 1e-22).
constexpr double relativeMargin = 1e-5;
constexpr double absoluteMargin = 1e-18;

constexpr float infinity = std::numeric_limits<float>::infinity();

// The largest finite single-precision number that is not above `value`.
float roundedDown(double value) {
    if (value >= static_cast<double>(std::numeric_limits<float>::max()))
        return std::numeric_limits<float>::max();
    const auto rounded = static_cast<float>(value);
    return static_cast<double>(rounded) > value ? std::nextafter(rounded, -infinity) : rounded;
}

} // namespace

Reach::Reach(double radius)
    : squaredLimit(roundedDown(radius * radius)),
      distance(radius * (1.0 + relativeMargin) + absoluteMargin),
      squaredReach(std::nextafter(static_cast<float>(distance * distance), infinity)) {}

std::pair<Point, Point> boundsOf(std::span<const Point> points) {
    Point low = points.front();
    Point high = low;
    for (const Point& point : points)
        for (const std::size_t axis : {0, 1, 2}) {
            low[axis] = std::min(low[axis], point[axis]);
            high[axis] = std::max(high[axis], point[axis]);
        }
    return {low, high};
}
