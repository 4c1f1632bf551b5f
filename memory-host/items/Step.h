// What one change has written, in the order of the writes, so that it can be taken back and done
// again.
#pragma once

#include "Arrivals.h"
#include "AtomItem.h"
#include "Chunks.h"
#include "Geometry.h"
#include "GridItem.h"
#include "HostItem.h"
#include "ItemLog.h"
#include "Sets.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <vector>

namespace memory_host {

/// A log of writes, each with what it takes to reverse it. Taking a step back reverses them from
/// the last to the first, by the functions that commands use; doing it again, from the first to the
/// last. Items that the data do not hold now, because the step destroyed them or because it made
/// them and was taken back, belong to the step: their addresses and identifiers stay. Steps are
/// taken back in the reverse order in which they were made, and nothing else may change the data
/// between them.
///
/// A write is recorded before it happens. If there is no memory for that, it must not happen, nor
/// any that follows: hasFailed() is true from then on, and the change is to be taken back. Taking
/// back, doing again and dropping allocate nothing.
class Step {
public:
    Step();
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;
    /// Frees the items that belong to the step.
    ~Step();

    enum class Write : std::uint8_t {
        Select,    ///< a record: all in it was unselected, and is selected now; or the other way
        Show,      ///< an item, likewise
        Paint,     ///< of the painted items, which have a log of their own
        Activate,  ///< a residue, and its active model before
        OwnMarks,  ///< a composite that is not to be empty any more, and its own marks
        Join,      ///< an atom, and its model before
        Move,      ///< an atom, and its place before
        Rewrite,   ///< an atom, and what else it was before
        Reshape,   ///< a surface, and its mesh before
        Recolour,  ///< a surface, and the colours of its mesh before
        Bound,     ///< a grid, and its bounds before
        Refill,    ///< a grid, and all of its values before
        Alter,     ///< a top-level item, and the version of its data before
        Attach,    ///< an item, and the composite it went into
        Detach,    ///< an item, and the composite it came out of
        Link,      ///< a bond, which its atoms list now
        Unlink,    ///< a bond, which its atoms list no more
        LeaveSets, ///< an item, and the sets that listed it
        Arrange    ///< the space, and the order and the names of its children before
    };
    static constexpr std::size_t writeCount = 19;

    /// Makes room for writes of `items` items in `runs` runs of one kind and direction. False when
    /// memory has run out, also before.
    [[nodiscard]] bool reserve(std::size_t items, std::size_t runs = 1) noexcept {
        return (!m_failed && m_items.hasRoomFor(items) && m_runs.hasRoomFor(runs)) ||
               makeRoom(items, runs);
    }
    /// Records a write; there must be room for it.
    void add(Write write, bool on, void* item) noexcept {
        m_items.push_back(item);
        if (m_runs.empty() || !m_runs.back().goesOnWith(write, on))
            beginRun(write, on);
        ++m_runs.back().count;
    }
    /// reserve() and add().
    [[nodiscard]] bool record(Write write, void* item) noexcept {
        if (!reserve(1))
            return false;
        add(write, false, item);
        return true;
    }
    /// The same with a number: a colour, a model, or flags.
    [[nodiscard]] bool record(Write write, void* item, std::uint32_t before) noexcept {
        if ((!m_numbers.hasRoomFor(1) && !growLog(m_numbers, 1)) || !record(write, item))
            return false;
        m_numbers.push_back(before);
        return true;
    }
    /// An item that is painted next, and its colour before.
    [[nodiscard]] bool recordColour(void* item, std::uint32_t before) noexcept {
        if (m_failed || !((m_painted.hasRoomFor(1) && m_colours.hasRoomFor(1)) ||
                          (growLog(m_painted, 1) && growLog(m_colours, 1))))
            return false;
        m_painted.push_back(item);
        m_colours.push_back(before);
        ++m_paints;
        return true;
    }
    /// The same with the composite of an item that comes or goes.
    [[nodiscard]] bool reserveMove() noexcept;
    void addMove(Write write, Compound* item, Holder* parent) noexcept;
    [[nodiscard]] bool recordPlace(AtomItem& atom) noexcept;
    /// All values of an atom.
    [[nodiscard]] bool recordValues(AtomItem& atom) noexcept;
    /// Takes the mesh that is replaced next.
    [[nodiscard]] bool recordMesh(Compound* surface) noexcept;
    [[nodiscard]] bool recordMeshColours(Compound* surface) noexcept;
    /// The sets that list an item; it leaves them.
    [[nodiscard]] bool leaveSetsOf(Compound* item) noexcept;

    /// Gives a grid these values; `next` is left without any.
    [[nodiscard]] bool recordGrid(GridItem& grid, GridItem::Contents& next) noexcept;
    [[nodiscard]] bool recordArrangement(Holder& space) noexcept;

    /// Records what became of the bounds of grids, which anybody writes directly.
    void recordBounds() noexcept;
    /// The same for one that goes.
    [[nodiscard]] bool recordBounds(GridItem& grid) noexcept;

    /// Unlike that of any other step, and of any that this one was before it was forgotten.
    std::uint32_t number() const { return m_number; }
    /// There is no memory for what is about to be written.
    void fail() noexcept { m_failed = true; }

    bool isEmpty() const { return m_runs.empty() && m_paints == 0; }
    bool hasFailed() const { return m_failed; }
    /// Whether it selects and does nothing else.
    bool onlySelects() const;
    /// Whether it makes items, or destroys some, when it is done, or taken back if `isBack`. Who
    /// shows top-level items learns of another order as of new ones.
    bool adds(bool isBack) const {
        return has(isBack ? Write::Detach : Write::Attach) || has(Write::Arrange);
    }
    bool removes(bool isBack) const { return has(isBack ? Write::Attach : Write::Detach); }

    /// Frees what the log has to spare, as nothing follows; without memory for that, it keeps it.
    void finish() noexcept;
    void takeBack() noexcept { go(true); }
    void doAgain() noexcept { go(false); }
    /// Bytes that the step takes, with the items that belong to it: an estimate.
    std::size_t bytes() const { return logBytes() + m_itemBytes; }
    /// Leaves all as it is, and forgets it: the items that belong to the step are freed.
    void forget() noexcept;
    /// The same bit by bit: frees `most` of the items that belong to the step, and forgets it with
    /// the last of them; whether it did. Nothing else may be done with the step from then on.
    [[nodiscard]] bool forgetSome(std::size_t most) noexcept;

private:
    struct Run {
        Write write;
        bool on;
        std::uint32_t count;

        bool goesOnWith(Write other, bool isOn) const {
            return write == other && on == isOn &&
                   count != std::numeric_limits<std::uint32_t>::max();
        }
    };
    struct ParentRun {
        Holder* parent;
        std::uint32_t count;
    };
    struct Place {
        std::array<float, 3> position;
        bool isValid;
    };
    struct MeshColours {
        std::vector<std::uint32_t> colors;
        std::optional<TAVIK::ValueScale> scale;
    };
    class Going;
    /// How far the items that belong to the step are freed.
    struct Freeing {
        ItemLog::Reader items;
        std::size_t run = 0;
        std::uint32_t done = 0;
        void* item = nullptr; ///< the one that is being freed
    };

    static std::uint32_t nextNumber() noexcept;
    /// What is to be as it was when all members of a set are there again; once a step.
    [[nodiscard]] bool recordLeaving(SetRecord& set) noexcept;
    [[nodiscard]] bool makeRoom(std::size_t items, std::size_t runs) noexcept;
    void beginRun(Write write, bool on) noexcept;
    /// Begins a run for what was painted since the last one.
    [[nodiscard]] bool closePaints() noexcept;
    bool has(Write write) const { return (m_writes >> static_cast<unsigned>(write) & 1U) != 0; }
    std::size_t logBytes() const;
    template <class Value> bool grow(std::vector<Value>& vector, std::size_t more) noexcept;
    template <class Log> bool growLog(Log& log, std::size_t more) noexcept {
        if (m_failed)
            return false;
        try {
            log.reserve(more);
        } catch (const std::bad_alloc&) {
            m_failed = true;
        }
        return !m_failed;
    }
    void go(bool back) noexcept;
    bool freeItems(std::size_t most) noexcept;

    Chunks<Run> m_runs;
    ItemLog m_items; ///< of all runs but Paint
    // What is painted is mostly selected or unselected, too: one run would follow another. Nothing
    // but Rewrite reads or writes colours, so that these may be put back at another time.
    ItemLog m_painted;
    Chunks<std::uint32_t> m_colours; ///< of the painted items, before
    std::size_t m_paints = 0;        ///< that no run holds: as if they were done last
    Chunks<ParentRun> m_parents;     ///< of Attach and Detach
    Chunks<std::uint32_t> m_numbers; ///< of Activate, OwnMarks, Join and Alter
    std::vector<Place> m_places;
    std::vector<AtomItem::Description> m_descriptions;
    std::vector<std::unique_ptr<TAVIK::SurfaceMesh>> m_meshes;
    std::vector<MeshColours> m_meshColours;
    std::vector<std::array<int, 6>> m_bounds;
    std::vector<GridItem::Contents> m_grids;
    std::vector<SetListing> m_listings; ///< of LeaveSets
    std::vector<Arrangement> m_arrangements;
    std::optional<Freeing> m_freeing;
    std::uint32_t m_number;
    std::size_t m_itemBytes = 0; ///< of items that belong to the step
    std::uint32_t m_writes = 0;  ///< bits: which writes there are
    bool m_isBack = false;
    bool m_failed = false;
};

} // namespace memory_host
