#include "MapCrystal.h"

#include "GridItem.h"

namespace memory_host {

void setCrystal(TAVIK::Compound* grid, const MapCrystal& crystal) {
    if (auto* const item = dynamic_cast<GridItem*>(grid))
        item->m_crystal = crystal;
}

MapCrystal crystalOf(const TAVIK::Grid* grid) {
    const auto* const item = dynamic_cast<const GridItem*>(grid);
    return item ? item->m_crystal : MapCrystal();
}

} // namespace memory_host
