// From the data space to plain arrays, and from an id on the screen back to its item.
#pragma once

#include "Compound.h"
#include "Contents.h"
#include "DataWalk.h"
#include "DestroyObserver.h"
#include "LooksReading.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <vector>

namespace view {

/// Reads the data space when it is told to, in one piece or in many; whoever owns it is told of
/// changes. Its pointers to items are given up before any item is destroyed: from then on until
/// everything is read again no id has an item. For the GUI thread.
class DataReader : private TAVIK::DestroyObserver {
public:
    enum class What : std::uint8_t {
        /// Colours, visibility and selection, in one pass; everything, if positions, meshes or
        /// lines have changed or items were destroyed.
        Looks,
        Everything
    };
    enum class State : std::uint8_t {
        Done,   ///< nothing is being read
        Due,    ///< there is more to read
        Waiting ///< all is read, and another thread puts it together
    };

    /// `gone` is called when items are about to be destroyed, of which this one holds any. It must
    /// not read the data.
    explicit DataReader(std::function<void()> gone = {});
    /// Waits for the other thread.
    ~DataReader() override;

    /// Begins to read; what is being read is given up. The snapshot stays until all is read.
    ///
    /// The data may change between two pieces: whoever is told of a change then begins to read
    /// again after it, and a reading that is still going on reads items that exist.
    ///
    /// Once everything is read `digest`, if given, is called with it, perhaps on another thread. It
    /// is for what takes long and is to be known by the time that the snapshot is there.
    using Digest = std::function<void(const Contents&, const Marks&)>;
    void begin(What what, Digest digest = {});
    /// Reads for about so long, or until all is read. Throws std::bad_alloc: then nothing is being
    /// read, and what was read before is left.
    State advance(std::chrono::microseconds time);

    /// Begins to read everything, and reads it in one piece. Takes time and memory in proportion to
    /// the number of items. Throws like advance().
    void read();
    /// Likewise, of looks.
    void refresh();
    /// Reads the rest of what was begun in one piece. Throws like advance().
    void finish();

    bool isReading() const { return m_looks || m_walk || m_isJoining; }

    const Snapshot& snapshot() const { return m_snapshot; }
    /// The item of an id of a picture that was made of a snapshot with that number; null for noId,
    /// and when its items may be gone.
    TAVIK::Compound* item(Id id, std::uint64_t generation) const;
    /// The id of an item that has one: an atom, a surface, a line; else noId. Takes time in
    /// proportion to the number of items.
    Id id(const TAVIK::Compound* item) const;

private:
    void aboutToDestroy(TAVIK::Compound* item) override;
    void giveUp();
    /// A small piece; `mayWait` puts together on this thread.
    State step(bool mayWait);
    State stepLooks();
    State endWalk(bool mayWait);
    State endJoining(bool mayWait);
    void take(Collected collected);

    std::function<void()> m_gone;
    Snapshot m_snapshot;
    std::vector<TAVIK::Compound*> m_items;
    std::vector<BondRun> m_bonds;
    bool m_isStale = false; ///< items were destroyed

    // What is being read: one of these.
    std::optional<LooksReading> m_looks;
    std::shared_ptr<DataWalk> m_walk;
    Digest m_digest;
    bool m_isJoining = false;
    std::future<Collected> m_joined; ///< of no use unless joining
};

} // namespace view
