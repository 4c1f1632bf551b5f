// How the surfaces are drawn, which is a choice of the view and no change of the data.
#include "View3D.h"

#include "Canvas.h"

#include <cstddef>

namespace view {

namespace {

QString nameOf(SurfaceStyle style) {
    switch (style) {
    case SurfaceStyle::Opaque:
        return View3D::tr("Opaque");
    case SurfaceStyle::SeeThrough:
        return View3D::tr("See-through");
    case SurfaceStyle::MeshLines:
        break;
    }
    return View3D::tr("Mesh lines");
}

} // namespace

void View3D::setSurfaceStyle(SurfaceStyle style) {
    bringUpToDate();
    const Snapshot& snapshot = m_reader.snapshot();
    std::size_t surfaces = 0;
    std::size_t selected = 0;
    for (const Shape& shape : snapshot.contents->shapes) {
        if (!shape.mesh)
            continue;
        ++surfaces;
        if (!(*snapshot.selection)[shape.item])
            continue;
        m_look.ownSurfaceStyles[shape.identifier] = style;
        ++selected;
    }
    if (selected == 0) {
        m_look.ownSurfaceStyles.clear();
        m_look.surfaces = style;
    }
    m_canvas->setLook(m_look);
    const QString which = selected != 0
                              ? tr("selected surfaces: %1 of %2").arg(selected).arg(surfaces)
                          : surfaces != 0 ? tr("all surfaces, and new ones")
                                          : tr("surfaces, once there are any");
    say(tr("%1: %2").arg(nameOf(style), which));
}

} // namespace view
