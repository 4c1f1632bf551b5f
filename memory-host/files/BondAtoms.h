// What decides over the bonds of an atom by its distances from others, for each element.
#pragma once

#include "Bonds.h"
#include "Elements.h"

#include <array>
#include <string_view>

namespace memory_host {

/// The residue of dummy atoms that mark the position of a membrane, which have no bonds.
inline constexpr std::string_view membraneMarker = "DUM";

class BondAtoms {
public:
    BondAtoms();

    BondAtom of(Element element, const std::array<float, 3>& position, bool hasPosition,
                std::uint16_t alternative) const {
        return {position, m_radii[element], alternative, m_kinds[element], hasPosition, false};
    }
    /// Tells two atoms that the file says are bonded.
    static void join(BondAtom& a, BondAtom& b) {
        a.isHeld = a.isHeld || b.kind == BondKind::Ligand;
        b.isHeld = b.isHeld || a.kind == BondKind::Ligand;
    }

private:
    std::array<BondKind, elementCount> m_kinds{};
    std::array<float, elementCount> m_radii{};
};

} // namespace memory_host
