// Which points lie within a radius of any of a set of centres. Knows neither items nor widgets.
#pragma once

#include "CentreGrid.h"
#include "CentreTree.h"
#include "Point.h"

#include <cstdint>
#include <optional>
#include <vector>

/// Finds the points near any centre, with the same answer, to the bit, as isWithin() on every pair.
/// Centres that are spread as atoms are stand in a grid of cells; where many crowd together for the
/// radius, a tree keeps the cost of a point from growing with their number.
class RadiusSearch {
public:
    /// `radius` in Å, not negative. Centres that are not finite are near nothing, and left out.
    RadiusSearch(std::vector<Point> centres, double radius);

    /// Sets `near[i]` for each of `points`: 1 when it lies within the radius of a centre, else 0.
    void search(const std::vector<Point>& points, std::vector<std::uint8_t>& near) const;

private:
    std::optional<CentreGrid> m_grid;
    std::optional<CentreTree> m_tree;
};
