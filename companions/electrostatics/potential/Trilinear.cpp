#include "Trilinear.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace electrostatics {

namespace {

constexpr float none = std::numeric_limits<float>::quiet_NaN();
// How far beyond the outermost points a point may be that rounding has put there, in steps.
constexpr double slack = 1e-6;

std::array<double, 3> cross(const std::array<double, 3>& a, const std::array<double, 3>& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double dot(const std::array<double, 3>& a, const std::array<double, 3>& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

} // namespace

Trilinear::Trilinear(const GridView& grid) : m_grid(grid) {
    const auto& [x, y, z] = grid.steps;
    const double volume = dot(x, cross(y, z));
    m_toIndex = {cross(y, z), cross(z, x), cross(x, y)};
    for (auto& row : m_toIndex)
        for (double& part : row)
            part /= volume;
}

float Trilinear::at(const Point& point) const {
    std::array<double, 3> from{};
    for (std::size_t i = 0; i != 3; ++i)
        from[i] = point[i] - m_grid.origin[i];
    std::array<std::size_t, 3> cell{};
    std::array<double, 3> part{};
    for (std::size_t axis = 0; axis != 3; ++axis) {
        const double last = m_grid.points[axis] - 1;
        const double index = dot(m_toIndex[axis], from);
        if (!(index >= -slack && index <= last + slack))
            return none;
        const double first = std::clamp(std::floor(index), 0.0, std::max(0.0, last - 1));
        cell[axis] = static_cast<std::size_t>(first);
        part[axis] = std::clamp(index - first, 0.0, last > 0 ? 1.0 : 0.0);
    }
    double sum = 0;
    for (unsigned int corner = 0; corner != 8; ++corner) {
        double weight = 1;
        std::size_t at = 0;
        for (std::size_t axis = 3; axis-- != 0;) {
            const std::size_t step = corner >> axis & 1U;
            weight *= step ? part[axis] : 1 - part[axis];
            at = at * static_cast<std::size_t>(m_grid.points[axis]) + cell[axis] + step;
        }
        if (weight > 0)
            sum += weight * m_grid.values[at];
    }
    return static_cast<float>(sum);
}

} // namespace electrostatics
