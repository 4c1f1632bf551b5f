#include "GridItem.h"

#include "Recording.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

namespace memory_host {

namespace {

std::vector<GridItem*>& grids() {
    // Never destroyed: grids may outlive every static object.
    static auto* const all = new std::vector<GridItem*>;
    return *all;
}

} // namespace

GridItem::GridItem(Name name) : LeafItem(std::move(name)) {
    grids().push_back(this);
}

GridItem::~GridItem() {
    std::erase(grids(), this);
}

const std::vector<GridItem*>& GridItem::all() {
    return grids();
}

std::array<int, 6> GridItem::bounds() const {
    return {m_lower[0], m_lower[1], m_lower[2], m_upper[0], m_upper[1], m_upper[2]};
}

void GridItem::setBounds(const std::array<int, 6>& bounds) {
    std::copy_n(bounds.begin(), 3, m_lower);
    std::copy_n(bounds.begin() + 3, 3, m_upper);
}

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
    static std::uint32_t lastVersion = 0;
    Contents next{std::move(values), m_crystal, 0, {}};
    std::ranges::copy(next.values.points, next.bounds.begin() + 3);
    if (!m_values.values.empty())
        next.version = ++lastVersion;
    if (Step* const step = stepForComing(m_record); !step)
        swapContents(next);
    else if (!step->recordGrid(*this, next))
        throw std::bad_alloc();
}

void GridItem::swapContents(Contents& other) noexcept {
    ++valuesChanges;
    const std::array<int, 6> shown = std::exchange(other.bounds, bounds());
    std::swap(m_values, other.values);
    std::swap(m_crystal, other.crystal);
    std::swap(m_valuesVersion, other.version);
    std::ranges::copy(m_values.points, m_points);
    setBounds(shown);
    m_keptBounds = shown;
    m_lattice = Lattice(m_values.steps);
}

} // namespace memory_host
