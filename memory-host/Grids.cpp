#include "Items.h"

#include <algorithm>
#include <cmath>

namespace memory_host {

namespace {

using Triple = std::array<double, 3>;

// Beyond this an index is only "far outside": small enough to be calculated with.
constexpr double farAway = 1 << 30;
// How far from the rounded index a nearer point is looked for: this bounds the work where a cell is
// all but flat.
constexpr double widestSearch = 16;

double bounded(double index) {
    // The comparison is written so that what is no number goes far below.
    return index >= -farAway ? std::min(index, farAway) : -farAway;
}

double squaredLength(const Triple& v) {
    return v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
}

Triple combined(const std::array<Triple, 3>& steps, const Triple& factors) {
    Triple sum{};
    for (const std::size_t axis : {0, 1, 2})
        for (const std::size_t k : {0, 1, 2})
            sum[k] += factors[axis] * steps[axis][k];
    return sum;
}

} // namespace

bool GridItem::GetNearest(const TAVIK::Vertex& point, int* ijk) const {
    Triple fraction{};
    Triple nearest{};
    bool isNear = true;
    for (const std::size_t axis : {0, 1, 2}) {
        for (const std::size_t k : {0, 1, 2})
            fraction[axis] +=
                m_inverse[axis][k] * (static_cast<double>(point[k]) - m_values.origin[k]);
        nearest[axis] = std::round(bounded(fraction[axis]));
        isNear = isNear && std::abs(nearest[axis]) < farAway;
    }
    if (isNear)
        nearest = nearestAround(fraction, nearest);
    bool inside = true;
    for (const std::size_t axis : {0, 1, 2}) {
        ijk[axis] = static_cast<int>(nearest[axis]);
        inside = inside && ijk[axis] >= 0 && ijk[axis] < m_points[axis];
    }
    return inside;
}

Triple GridItem::nearestAround(const Triple& fraction, const Triple& rounded) const {
    const auto squaredDistance = [&](const Triple& index) {
        return squaredLength(
            combined(m_values.steps,
                     {index[0] - fraction[0], index[1] - fraction[1], index[2] - fraction[2]}));
    };
    // Rounding each index finds the nearest point of a rectangular grid. In a skewed one another
    // may be nearer; how far its indices can be from the fraction follows from the distance.
    Triple best = rounded;
    double least = squaredDistance(rounded);
    Triple from{};
    Triple to{};
    for (const std::size_t axis : {0, 1, 2}) {
        const double reach = std::sqrt(least * squaredLength(m_inverse[axis]));
        from[axis] = std::max(std::ceil(fraction[axis] - reach), rounded[axis] - widestSearch);
        to[axis] = std::min(std::floor(fraction[axis] + reach), rounded[axis] + widestSearch);
    }
    for (double i = from[0]; i <= to[0]; ++i)
        for (double j = from[1]; j <= to[1]; ++j)
            for (double k = from[2]; k <= to[2]; ++k)
                if (const double distance = squaredDistance({i, j, k}); distance < least) {
                    least = distance;
                    best = {i, j, k};
                }
    return best;
}

void GridItem::setValues(GridRecord&& values) {
    m_values = std::move(values);
    for (const std::size_t axis : {0, 1, 2}) {
        m_points[axis] = m_values.points[axis];
        m_lower[axis] = 0;
        m_upper[axis] = m_points[axis];
    }
    // The inverse of the matrix whose columns are the steps, by cofactors.
    const auto& s = m_values.steps;
    const auto cofactor = [&](std::size_t row, std::size_t column) {
        const std::size_t r1 = (row + 1) % 3, r2 = (row + 2) % 3;
        const std::size_t c1 = (column + 1) % 3, c2 = (column + 2) % 3;
        return s[r1][c1] * s[r2][c2] - s[r1][c2] * s[r2][c1];
    };
    double determinant = 0.0;
    for (const std::size_t k : {0, 1, 2})
        determinant += s[0][k] * cofactor(0, k);
    for (const std::size_t axis : {0, 1, 2})
        for (const std::size_t k : {0, 1, 2})
            m_inverse[axis][k] = determinant != 0.0 ? cofactor(axis, k) / determinant : 0.0;
}

} // namespace memory_host
