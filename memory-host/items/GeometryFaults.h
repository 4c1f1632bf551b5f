// Which meshes and grids are refused.
#pragma once

#include "Geometry.h"

#include <string>

namespace memory_host {

/// Whether a mesh or a grid is malformed (see Geometry.h and DataMaker.h). If so, warns: the
/// warning begins with `what`, and names the item.
bool isRefused(const TAVIK::SurfaceMesh& mesh, const char* what, const std::string& name);
bool isRefused(const TAVIK::GridValues& grid, const char* what, const std::string& name);

} // namespace memory_host
