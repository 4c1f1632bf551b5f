// Which points lie within a radius of any of a set of centres. Knows neither items nor widgets.
#pragma once

#include "CentreGrid.h"
#include "CrowdedCentres.h"
#include "Point.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

/// Finds the points near any centre, with the same answer, to the bit, as isWithin() on every pair.
/// Centres as dense as atoms are kept in a grid of cells. Where many more lie within a radius, a
/// k-d tree keeps the cost of a point from growing with their number.
class RadiusSearch {
public:
    /// `radius` in Å, not negative. Centres that are not finite are near nothing and are left out.
    RadiusSearch(std::vector<Point> centres, double radius);

    /// False for points outside the bounding box of all centres, widened by the radius: they need
    /// not be searched.
    bool isInReach(const Point& point) const {
        bool inReach = true;
        for (const std::size_t axis : {0, 1, 2})
            inReach &= (point[axis] >= m_low[axis]) & (point[axis] <= m_high[axis]);
        return inReach;
    }
    /// Sets `near[i]` for each of `points`: 1 when it lies within the radius of a centre, else 0.
    void search(const std::vector<Point>& points, std::vector<std::uint8_t>& near) const;

private:
    static constexpr float infinity = std::numeric_limits<float>::infinity();

    Point m_low{infinity, infinity, infinity};
    Point m_high{-infinity, -infinity, -infinity};
    std::optional<CentreGrid> m_grid;
    std::optional<CrowdedCentres> m_tree;
};
