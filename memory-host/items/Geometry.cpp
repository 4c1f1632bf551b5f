#include "Geometry.h"

#include "GeometryFaults.h"
#include "GridItem.h"
#include "Items.h"

#include <memory>
#include <utility>

namespace TAVIK {

using namespace memory_host;

const SurfaceMesh* GetSurfaceMesh(const Surface* surface) {
    const auto* const item = dynamic_cast<const SurfaceItem*>(surface);
    return item ? item->m_mesh.get() : nullptr;
}

bool SetSurfaceMesh(Surface* surface, SurfaceMesh mesh) {
    auto* const item = dynamic_cast<SurfaceItem*>(surface);
    if (!item || isRefused(mesh, "SetSurfaceMesh", item->GetName()))
        return false;
    item->m_mesh = std::make_unique<SurfaceMesh>(std::move(mesh));
    return true;
}

const GridValues* GetGridValues(const Grid* grid) {
    const auto* const item = dynamic_cast<const GridItem*>(grid);
    return item && !item->m_values.values.empty() ? &item->m_values : nullptr;
}

const std::vector<Vertex>* GetPolyLinePoints(const Compound* line) {
    const auto* const item = dynamic_cast<const PolyLineItem*>(line);
    return item ? &item->m_points : nullptr;
}

} // namespace TAVIK
