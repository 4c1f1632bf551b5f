#include "Geometry.h"

#include "ElementColours.h"
#include "GeometryFaults.h"
#include "GridItem.h"
#include "Items.h"
#include "Recording.h"

#include <QtGlobal>

#include <memory>
#include <new>
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
    auto made = std::make_unique<SurfaceMesh>(std::move(mesh));
    if (Step* const step = stepForComing(HostItem::of(item)); step && !step->recordMesh(item))
        throw std::bad_alloc();
    item->m_mesh = std::move(made);
    item->noteMesh();
    return true;
}

bool SetSurfaceColors(Surface* surface, std::vector<std::uint32_t> colors) {
    auto* const item = dynamic_cast<SurfaceItem*>(surface);
    SurfaceMesh* const mesh = item ? item->m_mesh.get() : nullptr;
    if (!mesh || !(colors.empty() || colors.size() == mesh->vertices.size())) {
        qWarning("SetSurfaceColors: %s",
                 mesh ? "there is not one colour a vertex" : "there is no surface with a mesh");
        return false;
    }
    if (Step* const step = stepForComing(HostItem::of(item));
        step && !step->recordMeshColours(item))
        throw std::bad_alloc();
    mesh->colors = std::move(colors);
    mesh->scale.reset();
    item->noteMesh();
    return true;
}

bool HasDefaultColor(const Surface* surface) {
    return surface && surface->GetColor().rgba() == defaultColor(HostItem::of(surface)).rgba();
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
