// What the file of a map says of the crystal that its grid is a part of, so that a saved map says
// it, too.
#pragma once

#include "HostExport.h"
#include "Kinds.h"

#include <array>

namespace memory_host {

struct MapCrystal {
    std::array<int, 3> cellSteps{}; ///< along each edge of the unit cell; 0s: not known
    int spaceGroup = 1;             ///< its number, as CCP4 counts them

    bool operator==(const MapCrystal&) const = default;
};

/// Does nothing for an item that is no grid.
HOST_EXPORT void setCrystal(TAVIK::Compound* grid, const MapCrystal& crystal);
/// That of a grid without one, and of null, has no known cell.
HOST_EXPORT MapCrystal crystalOf(const TAVIK::Grid* grid);

} // namespace memory_host
