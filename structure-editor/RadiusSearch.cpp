#include "RadiusSearch.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Above the few roundings of the single-precision test (2^-24 each), and above the largest
// difference whose square is lost to underflow (about 1e-22).
constexpr double relativeMargin = 1e-5;
constexpr double absoluteMargin = 1e-18;

float previous(float value) {
    return std::nextafter(value, -std::numeric_limits<float>::infinity());
}
float next(float value) {
    return std::nextafter(value, std::numeric_limits<float>::infinity());
}

// The largest finite single-precision number that is not above `value`.
float roundedDown(double value) {
    if (value >= static_cast<double>(std::numeric_limits<float>::max()))
        return std::numeric_limits<float>::max();
    const auto rounded = static_cast<float>(value);
    return static_cast<double>(rounded) > value ? previous(rounded) : rounded;
}

} // namespace

Reach::Reach(double radius)
    : squaredLimit(roundedDown(radius * radius)),
      distance(radius * (1.0 + relativeMargin) + absoluteMargin),
      squaredReach(next(static_cast<float>(distance * distance))) {}

std::pair<Point, Point> boundsOf(const std::vector<Point>& points) {
    Point low = points.front();
    Point high = low;
    for (const Point& point : points)
        for (const std::size_t axis : {0, 1, 2}) {
            low[axis] = std::min(low[axis], point[axis]);
            high[axis] = std::max(high[axis], point[axis]);
        }
    return {low, high};
}

RadiusSearch::RadiusSearch(std::vector<Point> centres, double radius) {
    std::erase_if(centres, [](const Point& centre) { return !isFinite(centre); });
    if (centres.empty())
        return;
    const Reach reach(radius);
    const auto [low, high] = boundsOf(centres);
    for (const std::size_t axis : {0, 1, 2}) {
        // A step beyond what they are rounded to.
        m_low[axis] = previous(static_cast<float>(static_cast<double>(low[axis]) - reach.distance));
        m_high[axis] = next(static_cast<float>(static_cast<double>(high[axis]) + reach.distance));
    }
    m_grid = CentreGrid::of(centres, reach);
    if (!m_grid)
        m_tree.emplace(std::move(centres), reach);
}

void RadiusSearch::search(const std::vector<Point>& points, std::vector<std::uint8_t>& near) const {
    near.assign(points.size(), 0);
    if (m_grid)
        m_grid->search(points, near);
    else if (m_tree)
        m_tree->search(points, near);
}
