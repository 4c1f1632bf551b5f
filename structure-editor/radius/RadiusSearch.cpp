#include "RadiusSearch.h"

#include <cmath>

RadiusSearch::RadiusSearch(std::vector<Point> centres, double radius) {
    std::erase_if(centres, [](const Point& centre) { return !isFinite(centre); });
    if (centres.empty())
        return;
    const Reach reach(radius);
    const auto [low, high] = boundsOf(centres);
    for (const std::size_t axis : {0, 1, 2}) {
        // One float further out, because the conversion may have rounded inwards.
        m_low[axis] = std::nextafter(
            static_cast<float>(static_cast<double>(low[axis]) - reach.distance), -infinity);
        m_high[axis] = std::nextafter(
            static_cast<float>(static_cast<double>(high[axis]) + reach.distance), infinity);
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
