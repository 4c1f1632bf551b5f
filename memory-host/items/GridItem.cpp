#include "GridItem.h"

#include <cstddef>
#include <utility>

namespace memory_host {

bool GridItem::GetNearest(const TAVIK::Vertex& point, int* ijk) const {
    Lattice::Triple place{};
    for (const std::size_t axis : {0, 1, 2})
        place[axis] = static_cast<double>(point[axis]) - m_values.origin[axis];
    const Lattice::Triple nearest = m_lattice.nearest(place);
    bool inside = true;
    for (const std::size_t axis : {0, 1, 2}) {
        ijk[axis] = static_cast<int>(nearest[axis]);
        inside = inside && ijk[axis] >= 0 && ijk[axis] < m_points[axis];
    }
    return inside;
}

void GridItem::setValues(TAVIK::GridValues&& values) {
    m_values = std::move(values);
    for (const std::size_t axis : {0, 1, 2}) {
        m_points[axis] = m_values.points[axis];
        m_lower[axis] = 0;
        m_upper[axis] = m_points[axis];
    }
    m_lattice = Lattice(m_values.steps);
}

} // namespace memory_host
