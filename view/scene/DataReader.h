// From the data space to plain arrays, and from an id on the screen back to its item.
#pragma once

#include "Compound.h"
#include "Contents.h"
#include "DataWalk.h"
#include "DestroyObserver.h"
#include "Vertex.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace view {

/// Reads the data space when it is told to; whoever owns it is told of changes. Its pointers to
/// items are given up before any item is destroyed: from then on until the next read() no id has an
/// item. For the GUI thread.
class DataReader : private TAVIK::DestroyObserver {
public:
    /// `gone` is called, once until the next read(), when items are about to be destroyed. It must
    /// not read the data.
    explicit DataReader(std::function<void()> gone = {});
    ~DataReader() override;

    /// Reads everything. Takes time and memory in proportion to the number of items. Throws
    /// std::bad_alloc, and leaves what was read before.
    void read();
    /// Reads colours, visibility and selection again, in one pass; all of it, if positions, meshes
    /// or lines have changed or items were destroyed. Throws std::bad_alloc, and can be called
    /// again.
    void refresh();

    const Snapshot& snapshot() const { return m_snapshot; }
    /// The item of an id of a picture that was made of a snapshot with that number; null for noId,
    /// and when its items may be gone.
    TAVIK::Compound* item(Id id, std::uint64_t generation) const;
    /// The id of an item that has one: an atom, a surface, a line; else noId. Takes time in
    /// proportion to the number of items.
    Id id(const TAVIK::Compound* item) const;

private:
    void aboutToDestroy(TAVIK::Compound* item) override;

    std::function<void()> m_gone;
    Snapshot m_snapshot;
    std::vector<TAVIK::Compound*> m_items;
    std::vector<BondRun> m_bonds;
    std::uint64_t m_selectionChanges = 0;
    bool m_isStale = false; ///< items were destroyed
};

} // namespace view
