// Values on a grid between its points. Knows no items.
#pragma once

#include <array>
#include <span>

namespace electrostatics {

/// Å.
using Point = std::array<float, 3>;

/// Values on a regular grid, whose steps may be skewed; x fastest.
struct GridView {
    std::array<int, 3> points;
    std::array<double, 3> origin;               ///< of point (0, 0, 0), in Å
    std::array<std::array<double, 3>, 3> steps; ///< Å from a point to the next along each axis
    std::span<const float> values;
};

class Trilinear {
public:
    /// The values stay where they are as long as this lives.
    explicit Trilinear(const GridView& grid);

    /// The value at a point, trilinear between the eight points around it; NaN outside of the grid,
    /// where one of them has no value, and everywhere if the steps lie in a plane.
    float at(const Point& point) const;

private:
    GridView m_grid;
    std::array<std::array<double, 3>, 3> m_toIndex{}; ///< rows: the inverse of the steps
};

} // namespace electrostatics
