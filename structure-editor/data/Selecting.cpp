#include "Selecting.h"

#include "Kinds.h"
#include "Traversal.h"
#include "radius/RadiusSearch.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

Point pointOf(const TAVIK::Vertex& vertex) {
    return {vertex[0], vertex[1], vertex[2]};
}

using Indices = std::array<std::int64_t, 3>; // Wide enough for an index and a margin.

Indices nearest(const TAVIK::Grid& grid, const TAVIK::Vertex& point) {
    std::array<int, 3> ijk{};
    grid.GetNearest(point, ijk.data());
    return {ijk[0], ijk[1], ijk[2]};
}

// The margin is uneven: two points below the lowest nearest point, four above the highest.
constexpr std::int64_t margin = 2;

// Returns whether the grid was fitted.
bool boundGrid(TAVIK::Grid& grid, const TAVIK::Vertex& low, const TAVIK::Vertex& high) {
    Indices lower = nearest(grid, low);
    Indices upper = nearest(grid, high);
    for (std::int64_t& index : upper)
        index += margin;
    if (std::any_of(upper.begin(), upper.end(), [](std::int64_t index) { return index <= -2; }))
        return false;
    for (const std::size_t axis : {0, 1, 2}) {
        lower[axis] = std::max<std::int64_t>(lower[axis] - margin, 0);
        upper[axis] = std::min<std::int64_t>(upper[axis] + margin, grid.m_points[axis]);
        if (lower[axis] >= static_cast<std::int64_t>(static_cast<unsigned>(grid.m_points[axis])))
            return false;
    }
    for (const std::size_t axis : {0, 1, 2}) {
        grid.m_lower[axis] = static_cast<int>(lower[axis]);
        grid.m_upper[axis] = static_cast<int>(upper[axis]);
    }
    return true;
}

} // namespace

bool FullGroup(TAVIK::Compound* group) {
    const bool isSelected = group->HasSelected();
    if (isSelected)
        group->SetSelected(true);
    return isSelected;
}

void SelectType::operator()(TAVIK::Compound* atom) {
    if (atom->GetType() == m_type)
        m_found.push_back(atom);
}

TAVIK::Changed SelectType::select() const {
    for (TAVIK::Compound* atom : m_found)
        atom->SetSelected(true);
    return {"atom", m_found};
}

TAVIK::Changed selectAround(TAVIK::Compound* root, double radius) {
    TAVIK::Changed selected("atom");
    std::vector<TAVIK::Compound*> atoms;
    TAVIK::GetAtoms(root, atoms, false);
    if (atoms.empty())
        return selected;
    std::vector<Point> centres;
    centres.reserve(atoms.size());
    for (const TAVIK::Compound* atom : atoms)
        centres.push_back(pointOf(atom->GetPosition()));

    const RadiusSearch search(std::move(centres), radius);

    // In batches, whose points stay in the processor's cache.
    constexpr std::size_t batch = 4096;
    std::vector<TAVIK::Compound*> candidates;
    std::vector<Point> points;
    std::vector<std::uint8_t> near;
    candidates.reserve(batch); // so that no allocation fails between two batches
    points.reserve(batch);
    near.reserve(batch);
    const auto selectNear = [&] {
        search.search(points, near);
        for (std::size_t i = 0; i != candidates.size(); ++i)
            if (near[i]) {
                candidates[i]->SetSelected(true);
                selected.add(candidates[i]);
            }
        candidates.clear();
        points.clear();
    };
    atoms.clear();
    TAVIK::GetAtoms(root, atoms, true);
    for (TAVIK::Compound* atom : atoms) {
        if (atom->IsSelected())
            continue;
        const TAVIK::Vertex position = atom->GetPosition();
        const Point point = pointOf(position);
        if (!position.isValid() || !search.isInReach(point))
            continue;
        candidates.push_back(atom);
        points.push_back(point);
        if (points.size() == batch)
            selectNear();
    }
    selectNear();
    return selected;
}

TAVIK::Changed boundGrids(TAVIK::Compound* root) {
    TAVIK::Changed fitted("grid");
    std::vector<TAVIK::Compound*> atoms;
    TAVIK::GetAtoms(root, atoms, false);
    if (atoms.empty())
        return fitted;
    constexpr float largest = std::numeric_limits<float>::max();
    TAVIK::Vertex low(largest, largest, largest, false);
    TAVIK::Vertex high(-largest, -largest, -largest, false);
    for (const TAVIK::Compound* atom : atoms) {
        const TAVIK::Vertex position = atom->GetPosition();
        if (!position.isValid())
            continue;
        for (const std::size_t axis : {0, 1, 2}) {
            if (low[axis] > position[axis])
                low[axis] = position[axis];
            if (position[axis] > high[axis])
                high[axis] = position[axis];
        }
    }
    std::vector<TAVIK::Compound*> grids;
    TAVIK::GetItems<TAVIK::Grid>(root, grids, true, nullptr, true);
    for (TAVIK::Compound* grid : grids)
        if (boundGrid(dynamic_cast<TAVIK::Grid&>(*grid), low, high))
            fitted.add(grid);
    return fitted;
}
