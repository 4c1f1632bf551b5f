#include "Selecting.h"

#include "Kinds.h"
#include "ManyAtoms.h"
#include "Traversal.h"
#include "radius/RadiusSearch.h"
#include "radius/SearchQueue.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace {

using Atoms = std::span<TAVIK::Compound* const>;
using Places = std::span<const TAVIK::AtomPlace>;

struct Centres : TAVIK::AtomPlaceVisitor {
    void Visit(Atoms atoms, Places places) override {
        (void)atoms;
        for (const TAVIK::AtomPlace& place : places)
            points.push_back(place.position);
    }

    std::vector<Point> points;
};

// Selects those of the atoms that are near a centre. Some are read while earlier ones are searched.
class NearAtoms : public TAVIK::AtomPlaceVisitor {
public:
    explicit NearAtoms(const RadiusSearch& search) : m_queue(search, 2 * most) {
        // No allocation fails between two calls.
        for (std::vector<TAVIK::Compound*>& atoms : m_atoms)
            atoms.resize(2 * most);
    }

    void Visit(Atoms atoms, Places places) override {
        std::vector<Point>& points = m_queue.points();
        const std::size_t first = points.size();
        std::copy(atoms.begin(), atoms.end(), m_atoms[m_queue.number()].data() + first);
        points.resize(first + atoms.size());
        for (std::size_t i = 0; i != atoms.size(); ++i)
            points[first + i] = places[i].isValid ? places[i].position : nowhere;
        if (points.size() <= most)
            return;
        m_queue.push();
        while (m_queue.isFull() || (!m_queue.isEmpty() && m_queue.isReady()))
            selectOldest();
    }
    /// Selects those that are still to be searched.
    void finish() {
        if (!m_queue.points().empty())
            m_queue.push();
        while (!m_queue.isEmpty())
            selectOldest();
    }

    TAVIK::Changed selected{"atom"};

private:
    void selectOldest() {
        TAVIK::Compound** const atoms = m_atoms[m_queue.oldest()].data();
        std::size_t count = 0;
        for (const std::uint32_t near : m_queue.pop()) {
            selected.add(atoms[near]);
            atoms[count++] = atoms[near];
        }
        TAVIK::SelectAtoms({atoms, count}, true);
    }

    static constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    static constexpr Point nowhere{nan, nan, nan}; ///< near nothing

    SearchQueue m_queue;
    std::array<std::vector<TAVIK::Compound*>, SearchQueue::batches> m_atoms;
};

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
    Centres centres;
    TAVIK::VisitAtomPlaces(root, true, centres);
    if (centres.points.empty())
        return TAVIK::Changed("atom");
    const RadiusSearch search(std::move(centres.points), radius);
    NearAtoms near(search);
    TAVIK::VisitAtomPlaces(root, false, near);
    near.finish();
    return near.selected;
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
