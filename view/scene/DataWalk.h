// The walk over the data space that collects what is drawn, and how it looks.
#pragma once

#include "Compound.h"
#include "Contents.h"
#include "ManyAtoms.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace view {

/// Bonds that follow each other among the children of an item.
struct BondRun {
    TAVIK::Compound* parent;
    std::uint32_t first; ///< index of a child
    std::uint32_t count;
};

struct Collected {
    Contents contents;
    Marks marks;
    SelectionMarks selection;
    std::vector<TAVIK::Compound*> items; ///< by index, as Contents has them
    std::vector<BondRun> bonds;          ///< those of Contents, in that order
};

/// Collects everything below an item, or the item itself if it is no composite, in pieces. Members
/// of sets stand elsewhere, and are taken where they stand.
///
/// Items may be changed and made between two pieces: then what is collected may be of no one time,
/// and is to be collected again. After an item was destroyed a walk may only be destroyed, too.
class DataWalk {
public:
    explicit DataWalk(TAVIK::Compound* root);
    DataWalk(const DataWalk&) = delete;
    DataWalk& operator=(const DataWalk&) = delete;
    ~DataWalk();

    /// Takes about so many more items. Returns whether there may be others.
    bool advance(std::size_t items);
    /// How many items were taken, bonds not counted in.
    std::size_t size() const;
    /// What was collected, once advance() has returned false. Touches no item, and may be called on
    /// any thread; the walk may only be destroyed then.
    Collected finish();

private:
    class Walk;
    std::unique_ptr<Walk> m_walk;
};

/// All of it in one piece.
Collected collect(TAVIK::Compound* root);

/// Where an atom is, as Contents has it.
Point pointOf(const TAVIK::AtomPlace& place);

} // namespace view
