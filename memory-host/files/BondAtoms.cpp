#include "BondAtoms.h"

namespace memory_host {

namespace {

BondKind bondKindOf(Element element) {
    return isHydrogen(element)             ? BondKind::Hydrogen
           : isMetal(element)              ? BondKind::Metal
           : isMetalLigand(element)        ? BondKind::Ligand
           : isCarbonOrPhosphorus(element) ? BondKind::Framework
                                           : BondKind::Other;
}

} // namespace

BondAtoms::BondAtoms() {
    for (std::size_t i = 0; i != elementCount; ++i) {
        m_kinds[i] = bondKindOf(static_cast<Element>(i));
        m_radii[i] = covalentRadius(static_cast<Element>(i));
    }
}

} // namespace memory_host
