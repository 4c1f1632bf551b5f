// Many items at once: reading where atoms are and how items look, and selecting atoms, at a
// fraction of the time that a call for each item takes.
#pragma once

#include "Compound.h"
#include "HostExport.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace TAVIK {

/// Where an atom is, as its GetPosition() says: Å, single precision. Without a position `isValid`
/// is false, and the coordinates are meaningless.
struct AtomPlace {
    std::array<float, 3> position;
    bool isValid;
};

class AtomPlaceVisitor {
public:
    /// Atoms in one call.
    static constexpr std::size_t most = 1024;

    virtual ~AtomPlaceVisitor() = default;
    /// Some of the atoms, 1 to `most`, and the place of each. Both views are valid during the call,
    /// in which these atoms and those of earlier calls may be selected or unselected; nothing else
    /// may be changed.
    virtual void Visit(std::span<Compound* const> atoms, std::span<const AtomPlace> places) = 0;
};

/// Visits the atoms at or below `root` that are selected, or with `selected` false those that are
/// not, many in each call, in the order of GetAtoms(). A null root has none. What the visitor
/// throws ends the walk and passes through.
HOST_EXPORT void VisitAtomPlaces(Compound* root, bool selected, AtomPlaceVisitor& visitor);

/// Selects or unselects each of these atoms, as its SetSelected() does. Cheapest where atoms of one
/// composite follow one another.
HOST_EXPORT void SelectAtoms(std::span<Compound* const> atoms, bool on);

/// What an item answers to GetColor(), IsVisible() and IsSelected().
struct ItemLook {
    std::uint32_t rgba = 0; ///< as Color packs it
    bool isVisible = false;
    bool isSelected = false;
    AtomPlace place{}; ///< of an atom; of other items not valid
};

/// Writes the looks of these items to `looks`, which has as many places. A null item has none: it
/// is transparent, hidden and not selected.
HOST_EXPORT void GetLooks(std::span<Compound* const> items, std::span<ItemLook> looks);

} // namespace TAVIK
