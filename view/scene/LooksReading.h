// Reading again, in pieces, how the items look that were read before.
#pragma once

#include "Compound.h"
#include "Contents.h"
#include "DataWalk.h"
#include "ManyAtoms.h"
#include "Shapes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace view {

class LooksReading {
public:
    enum class State : std::uint8_t {
        Due,
        Done,
        Outdated ///< an atom has moved, a mesh or a line is another one, or a bond is not there
    };

    /// Of the items and the bonds of a snapshot. The references must stay valid, and the items with
    /// them.
    LooksReading(const Snapshot& snapshot, const std::vector<TAVIK::Compound*>& items,
                 const std::vector<BondRun>& bonds);

    /// Reads about so many more.
    State advance(std::size_t items);
    /// Once it is done: puts what is different now into the snapshot.
    void update(Snapshot& snapshot);

private:
    State readItems(std::size_t count);
    State readBonds(std::size_t count);

    std::shared_ptr<const Contents> m_contents;
    std::shared_ptr<const Marks> m_before;
    std::shared_ptr<const SelectionMarks> m_selectedBefore;
    const std::vector<TAVIK::Compound*>& m_items;
    const std::vector<BondRun>& m_bonds;
    std::shared_ptr<Marks> m_marks;
    std::shared_ptr<SelectionMarks> m_selection;
    bool m_isOther = false;
    bool m_isSelectionOther = false;
    std::size_t m_shape = 0;                  ///< the next one
    ShapeCheck m_check;                       ///< of that
    std::size_t m_run = 0;                    ///< the one of the next bond
    std::uint32_t m_bondInRun = 0;            ///< the next bond
    std::array<TAVIK::ItemLook, 512> m_looks; ///< of those that are being read
};

} // namespace view
