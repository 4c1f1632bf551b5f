// Writing grids as maps in the CCP4/MRC format.
#pragma once

#include "Geometry.h"
#include "HostExport.h"

#include <array>
#include <string>

namespace memory_host {

struct SavedContent;
class SaveReport;

/// The part of a grid from index `lower` up to, not including, `upper` along each axis; what is
/// beyond the grid is left out. May be empty: then it has no points along some axis.
HOST_EXPORT TAVIK::GridValues partOf(const TAVIK::GridValues& grid, const std::array<int, 3>& lower,
                                     const std::array<int, 3>& upper);

/// The whole file of the content's grid, with values of mode 2. The points stand at multiples of
/// the steps from the origin of the cell or, where they do not, from an origin in Å. Refuses a grid
/// without points, and one whose steps are not those of a cell as the format has it: the first
/// along x, the second in the plane of x and y. Remarks on what some programs read otherwise.
HOST_EXPORT std::string writeMap(const SavedContent& content, SaveReport& report);

} // namespace memory_host
