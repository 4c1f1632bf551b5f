// Taking a step back and doing it again, and what becomes of the items that belong to it.
#include "Arrivals.h"
#include "AtomItem.h"
#include "DataVersion.h"
#include "Items.h"
#include "Models.h"
#include "Parking.h"
#include "Recording.h"
#include "Selection.h"
#include "Visibility.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

namespace memory_host {

void Step::finish() noexcept {
    try {
        m_runs.shrink();
        m_parents.shrink();
        m_numbers.shrink();
        m_items.shrink();
        m_painted.shrink();
        m_colours.shrink();
    } catch (const std::bad_alloc&) { // It takes more memory then.
    }
}

// Where taking back, or doing again, has come to: all that the writes of one step have beside
// their items is in the order of the writes.
class Step::Going {
public:
    Going(Step& step, bool back)
        : m_step(step), m_back(back), m_items(step.m_items, back), m_painted(step.m_painted, back) {
        if (!back)
            return;
        m_number = step.m_numbers.size();
        m_colour = step.m_colours.size();
        m_place = step.m_places.size();
        m_description = step.m_descriptions.size();
        m_mesh = step.m_meshes.size();
        m_meshColours = step.m_meshColours.size();
        m_bounds = step.m_bounds.size();
        m_grid = step.m_grids.size();
        m_listing = step.m_listings.size();
        m_arrangement = step.m_arrangements.size();
        m_parent = step.m_parents.size();
    }

    void run(const Run& run) {
        // In the order of Write.
        static constexpr std::array<void (Going::*)(Compound&), writeCount> each = {
            nullptr,       nullptr,        nullptr,           &Going::activate, &Going::giveMarks,
            &Going::join,  &Going::move,   &Going::rewrite,   &Going::reshape,  &Going::recolour,
            &Going::bound, &Going::refill, &Going::alter,     &Going::attach,   &Going::detach,
            &Going::link,  &Going::unlink, &Going::leaveSets, &Going::arrange};
        if (run.write == Write::Select)
            inBatches(run, [&](auto items) { selectEach(items, run.on != m_back); });
        else if (run.write == Write::Show)
            inBatches(run, [&](auto items) { showEach(items, run.on != m_back); });
        else if (run.write == Write::Paint)
            paint(run.count);
        else
            for (std::uint32_t i = 0; i != run.count; ++i)
                (this->*each[static_cast<std::size_t>(run.write)])(*static_cast<Compound*>(item()));
    }

    void paint(std::size_t count) {
        for (; count != 0; --count) {
            void* const item = m_back ? m_painted.previous() : m_painted.next();
            std::uint32_t& other = m_step.m_colours[m_back ? --m_colour : m_colour++];
            std::swap(HostItem::of(static_cast<Compound*>(item)).color, other);
        }
    }

private:
    void* item() { return m_back ? m_items.previous() : m_items.next(); }
    template <class Vector> auto& of(Vector& vector, std::size_t& at) {
        return vector[m_back ? --at : at++];
    }
    std::uint32_t& number() { return of(m_step.m_numbers, m_number); }

    template <class Use> void inBatches(const Run& run, const Use& use) {
        std::array<void*, 256> batch;
        for (std::uint32_t left = run.count; left != 0;) {
            const auto count =
                static_cast<std::uint32_t>(std::min<std::size_t>(left, batch.size()));
            for (std::uint32_t i = 0; i != count; ++i)
                batch[i] = item();
            use(std::span<void* const>(batch.data(), count));
            left -= count;
        }
    }

    void activate(Compound& residue) {
        Holder& holder = HostItem::of(&residue).asHolder();
        const auto model = static_cast<std::uint16_t>(std::exchange(number(), holder.model));
        activateModel(holder, model);
    }
    void giveMarks(Compound& composite) {
        if (const std::uint32_t marks = number(); m_back)
            setOwnMarks(HostItem::of(&composite).asHolder(), marks);
    }
    void join(Compound& item) {
        auto& atom = static_cast<AtomItem&>(item);
        std::uint32_t& model = number();
        const std::uint32_t now = atom.record().model;
        changeModel(atom, model);
        model = now;
    }
    void move(Compound& item) {
        auto& atom = static_cast<AtomItem&>(item);
        Place& place = of(m_step.m_places, m_place);
        const bool wasValid = atom.record().has(HostItem::HasPosition);
        std::swap(atom.m_position, place.position);
        atom.record().set(HostItem::HasPosition, std::exchange(place.isValid, wasValid));
    }
    void rewrite(Compound& item) {
        static_cast<AtomItem&>(item).swapDescription(of(m_step.m_descriptions, m_description));
    }
    void reshape(Compound& item) {
        auto& surface = static_cast<SurfaceItem&>(item);
        std::unique_ptr<TAVIK::SurfaceMesh>& mesh = of(m_step.m_meshes, m_mesh);
        m_step.m_itemBytes -= mesh ? memoryOf(*mesh) : 0;
        std::swap(surface.m_mesh, mesh);
        surface.noteMesh();
        m_step.m_itemBytes += mesh ? memoryOf(*mesh) : 0;
    }
    void recolour(Compound& item) {
        auto& surface = static_cast<SurfaceItem&>(item);
        TAVIK::SurfaceMesh& mesh = *surface.m_mesh;
        surface.noteMesh();
        MeshColours& other = of(m_step.m_meshColours, m_meshColours);
        m_step.m_itemBytes -= other.colors.capacity() * sizeof(std::uint32_t);
        std::swap(mesh.colors, other.colors);
        std::swap(mesh.scale, other.scale);
        m_step.m_itemBytes += other.colors.capacity() * sizeof(std::uint32_t);
    }
    void bound(Compound& item) {
        auto& grid = static_cast<GridItem&>(item);
        std::array<int, 6>& bounds = of(m_step.m_bounds, m_bounds);
        const std::array<int, 6> now = grid.bounds();
        grid.setBounds(std::exchange(bounds, now));
    }
    void refill(Compound& item) {
        GridItem::Contents& other = of(m_step.m_grids, m_grid);
        m_step.m_itemBytes -= memoryOf(other.values);
        static_cast<GridItem&>(item).swapContents(other);
        m_step.m_itemBytes += memoryOf(other.values);
    }
    void alter(Compound& top) {
        std::uint32_t& version = number();
        version = swapDataVersion(HostItem::of(&top), version);
    }
    void attach(Compound& item) { come(item, !m_back); }
    void detach(Compound& item) { come(item, m_back); }
    void link(Compound& bond) { list(bond, !m_back); }
    void unlink(Compound& bond) { list(bond, m_back); }
    void leaveSets(Compound& item) {
        SetListing& listing = of(m_step.m_listings, m_listing);
        if (m_back)
            rejoinSets(item, std::move(listing));
        else
            listing = memory_host::leaveSets(HostItem::of(&item));
    }

    void arrange(Compound& space) {
        swapArrangement(HostItem::of(&space).asHolder(), of(m_step.m_arrangements, m_arrangement));
    }

    void come(Compound& item, bool in) {
        Holder& parent = nextParent();
        if (in) {
            m_step.m_itemBytes -= memoryOf(item);
            putBack(item, parent);
        } else {
            takeOut(item);
            m_step.m_itemBytes += memoryOf(item);
        }
    }
    static void list(Compound& item, bool on) {
        auto& bond = static_cast<BondItem&>(item);
        if (on)
            bond.relink();
        else
            bond.unlink();
    }
    Holder& nextParent() {
        if (m_leftOfParent == 0) {
            const ParentRun& run = of(m_step.m_parents, m_parent);
            m_holder = run.parent;
            m_leftOfParent = run.count;
        }
        --m_leftOfParent;
        return *m_holder;
    }

    Step& m_step;
    bool m_back;
    ItemLog::Reader m_items;
    ItemLog::Reader m_painted;
    std::size_t m_number = 0, m_colour = 0, m_place = 0, m_description = 0, m_mesh = 0,
                m_meshColours = 0, m_bounds = 0, m_grid = 0, m_listing = 0, m_arrangement = 0,
                m_parent = 0;
    Holder* m_holder = nullptr;
    std::uint32_t m_leftOfParent = 0;
};

void Step::go(bool back) noexcept {
    recording.isReplaying = true;
    Going going(*this, back);
    if (back)
        going.paint(m_paints);
    for (std::size_t i = 0, count = m_runs.size(); i != count; ++i)
        going.run(m_runs[back ? count - 1 - i : i]);
    if (!back)
        going.paint(m_paints);
    m_isBack = back;
    recording.isReplaying = false;
}

bool Step::freeItems(std::size_t most) noexcept {
    const Write theirs = m_isBack ? Write::Attach : Write::Detach;
    if (!has(theirs))
        return true;
    if (!m_freeing)
        m_freeing.emplace(Freeing{ItemLog::Reader(m_items, false)});
    for (; m_freeing->run != m_runs.size(); ++m_freeing->run, m_freeing->done = 0) {
        const Run& run = m_runs[m_freeing->run];
        if (run.write == Write::Paint)
            continue;
        for (; m_freeing->done != run.count; ++m_freeing->done, m_freeing->item = nullptr) {
            if (!m_freeing->item)
                m_freeing->item = m_freeing->items.next();
            if (run.write == theirs && !freeTakenOut(static_cast<Compound*>(m_freeing->item), most))
                return false;
        }
    }
    return true;
}

bool Step::forgetSome(std::size_t most) noexcept {
    if (!freeItems(most))
        return false;
    forget();
    return true;
}

void Step::forget() noexcept {
    freeItems(std::numeric_limits<std::size_t>::max());
    m_freeing.reset();
    const auto empty = [](auto&... vectors) {
        ((vectors = std::remove_reference_t<decltype(vectors)>()), ...);
    };
    empty(m_runs, m_items, m_painted, m_colours, m_parents, m_numbers, m_places, m_descriptions,
          m_meshes, m_meshColours, m_bounds, m_grids, m_listings, m_arrangements);
    // What was recorded in it is to be recorded again.
    m_number = nextNumber();
    m_itemBytes = 0;
    m_writes = 0;
    m_paints = 0;
    m_isBack = false;
    m_failed = false;
}

} // namespace memory_host
