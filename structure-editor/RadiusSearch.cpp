#include "RadiusSearch.h"

#include <cmath>
#include <limits>

namespace {

// Above the few roundings of the single-precision test (2^-24 each), and above the largest
// difference whose square is lost to underflow (about 1e-22).
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

RadiusSearch::RadiusSearch(std::vector<Point> centres, double radius) {
    std::erase_if(centres, [](const Point& centre) { return !isFinite(centre); });
    if (centres.empty())
        return;
    const Reach reach(radius);
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
