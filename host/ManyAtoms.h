// Many atoms at once: reading where they are, and selecting them, at a fraction of the time that a
// call for each atom takes.
#pragma once

#include "Compound.h"
#include "HostExport.h"

#include <array>
#include <cstddef>
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
    /// in which these atoms may be selected or unselected; nothing else may be changed.
    virtual void Visit(std::span<Compound* const> atoms, std::span<const AtomPlace> places) = 0;
};

/// Visits the atoms at or below `root` that are selected, or with `selected` false those that are
/// not, many in each call, in the order of GetAtoms(). A null root has none. What the visitor
/// throws ends the walk and passes through.
HOST_EXPORT void VisitAtomPlaces(Compound* root, bool selected, AtomPlaceVisitor& visitor);

/// Selects or unselects each of these atoms, as its SetSelected() does. Cheapest where atoms of one
/// composite follow one another.
HOST_EXPORT void SelectAtoms(std::span<Compound* const> atoms, bool on);

} // namespace TAVIK
