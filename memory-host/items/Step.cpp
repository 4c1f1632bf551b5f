#include "Step.h"

#include "AtomItem.h"
#include "Items.h"
#include "Parking.h"
#include "Recording.h"
#include "Space.h"

#include <algorithm>
#include <new>
#include <utility>

namespace memory_host {

namespace {

std::uint32_t numberOf(Step::Write write) {
    return std::uint32_t{1} << static_cast<unsigned>(write);
}

} // namespace

Step::Step() : m_number(nextNumber()) {}

Step::~Step() {
    forget();
}

std::uint32_t Step::nextNumber() noexcept {
    static std::uint32_t last = 0;
    return ++last;
}

template <class Value> bool Step::grow(std::vector<Value>& vector, std::size_t more) noexcept {
    if (m_failed)
        return false;
    const std::size_t needed = vector.size() + more;
    if (needed <= vector.capacity())
        return true;
    try {
        vector.reserve(std::max(needed, vector.capacity() * 2));
    } catch (const std::exception&) { // Also a length that no vector can have.
        m_failed = true;
    }
    return !m_failed;
}

bool Step::makeRoom(std::size_t items, std::size_t runs) noexcept {
    return growLog(m_items, items) && growLog(m_runs, runs);
}

void Step::beginRun(Write write, bool on) noexcept {
    m_runs.push_back({write, on, 0});
    m_writes |= numberOf(write);
}

bool Step::closePaints() noexcept {
    for (; m_paints != 0; m_paints -= m_runs.back().count) {
        if (!growLog(m_runs, 1))
            return false;
        beginRun(Write::Paint, false);
        m_runs.back().count = static_cast<std::uint32_t>(
            std::min<std::size_t>(m_paints, std::numeric_limits<std::uint32_t>::max()));
    }
    return !m_failed;
}

bool Step::reserveMove() noexcept {
    // With its parent's own marks.
    return reserve(2, 2) && growLog(m_parents, 1) && growLog(m_numbers, 1);
}

void Step::addMove(Write write, Compound* item, Holder* parent) noexcept {
    if (write == Write::Attach && parent->sum.leaves == 0) {
        add(Write::OwnMarks, false, parent->self);
        m_numbers.push_back(ownMarksOf(parent));
    }
    if (write == Write::Detach)
        m_itemBytes += memoryOf(*item);
    add(write, false, item);
    if (m_parents.empty() || m_parents.back().parent != parent)
        m_parents.push_back({parent, 0});
    ++m_parents.back().count;
}

bool Step::recordPlace(AtomItem& atom) noexcept {
    if (!grow(m_places, 1) || !record(Write::Move, static_cast<Compound*>(&atom)))
        return false;
    m_places.push_back({atom.m_position, atom.record().has(HostItem::HasPosition)});
    return true;
}

bool Step::recordValues(AtomItem& atom) noexcept {
    try {
        if (!closePaints() || !recordPlace(atom) ||
            !record(Write::Join, static_cast<Compound*>(&atom), atom.record().model) ||
            !grow(m_descriptions, 1))
            return false;
        m_descriptions.push_back({Name(atom.record().type.text()), atom.m_temperature,
                                  atom.record().color, atom.details()});
    } catch (const std::bad_alloc&) {
        m_failed = true;
        return false;
    }
    if (record(Write::Rewrite, static_cast<Compound*>(&atom)))
        return true;
    m_descriptions.pop_back();
    return false;
}

bool Step::recordMesh(Compound* surface) noexcept {
    if (!grow(m_meshes, 1) || !record(Write::Reshape, surface))
        return false;
    m_meshes.push_back(std::move(static_cast<SurfaceItem*>(surface)->m_mesh));
    m_itemBytes += m_meshes.back() ? memoryOf(*m_meshes.back()) : 0;
    return true;
}

bool Step::recordMeshColours(Compound* surface) noexcept {
    if (!grow(m_meshColours, 1) || !record(Write::Recolour, surface))
        return false;
    TAVIK::SurfaceMesh& mesh = *static_cast<SurfaceItem*>(surface)->m_mesh;
    m_meshColours.push_back({std::move(mesh.colors), std::move(mesh.scale)});
    m_itemBytes += m_meshColours.back().colors.capacity() * sizeof(std::uint32_t);
    return true;
}

bool Step::recordLeaving(SetRecord& set) noexcept {
    if (set.leftIn == m_number)
        return true;
    // Without members the set counts where it stands, which may have been empty.
    if (set.parent && !record(Write::OwnMarks, set.parent->self, ownMarksOf(set.parent)))
        return false;
    set.leftIn = m_number;
    return true;
}

bool Step::leaveSetsOf(Compound* item) noexcept {
    HostItem& record = HostItem::of(item);
    if (!record.has(HostItem::InSets))
        return !m_failed;
    if (!reserve(1) || !grow(m_listings, 1))
        return false;
    for (const Listing& listing : listingsOf(record))
        if (!recordLeaving(*listing.set))
            return false;
    if (!reserve(1))
        return false;
    add(Write::LeaveSets, false, item);
    m_listings.push_back(leaveSets(record));
    return true;
}

bool Step::recordGrid(GridItem& grid, GridItem::Contents& next) noexcept {
    // The bounds change with the values; what was written to them until now is another write.
    if (!recordBounds(grid) || !grow(m_grids, 1) ||
        !record(Write::Refill, static_cast<Compound*>(&grid)))
        return false;
    grid.swapContents(next);
    m_grids.push_back(std::move(next));
    m_itemBytes += memoryOf(m_grids.back().values);
    return true;
}

bool Step::recordArrangement(Holder& space) noexcept {
    if (!reserve(1) || !grow(m_arrangements, 1))
        return false;
    try {
        m_arrangements.push_back(arrangementOf(space));
    } catch (const std::bad_alloc&) {
        m_failed = true;
        return false;
    }
    add(Write::Arrange, false, space.self);
    return true;
}

bool Step::recordBounds(GridItem& grid) noexcept {
    const std::array<int, 6> now = grid.bounds();
    if (now == grid.m_keptBounds)
        return true;
    if (!grow(m_bounds, 1) || !record(Write::Bound, static_cast<Compound*>(&grid)))
        return false;
    m_bounds.push_back(std::exchange(grid.m_keptBounds, now));
    return true;
}

void Step::recordBounds() noexcept {
    for (GridItem* grid : GridItem::all())
        if (isInSpace(HostItem::of(grid)) && !recordBounds(*grid))
            grid->setBounds(grid->m_keptBounds);
}

bool Step::onlySelects() const {
    return m_writes == numberOf(Write::Select) && m_paints == 0;
}

std::size_t Step::logBytes() const {
    const auto of = [](const auto& vector) { return vector.capacity() * sizeof(vector[0]); };
    return sizeof(Step) + m_runs.bytes() + m_items.bytes() + m_painted.bytes() + m_colours.bytes() +
           m_parents.bytes() + m_numbers.bytes() + of(m_places) + of(m_meshes) + of(m_meshColours) +
           of(m_bounds) + of(m_descriptions) + of(m_listings) + of(m_grids) + of(m_arrangements);
}

} // namespace memory_host
