#include "SubSurface.h"

#include "NewSurfaces.h"
#include "SelectedOrShown.h"
#include "SurfaceArea.h"
#include "mesh/Clip.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace solid {

namespace {

using TAVIK::SurfaceMesh;

float mixed(float a, float b, float part) {
    return a + (b - a) * part;
}

std::array<float, 3> mixed(const std::array<float, 3>& a, const std::array<float, 3>& b,
                           float part) {
    return {mixed(a[0], b[0], part), mixed(a[1], b[1], part), mixed(a[2], b[2], part)};
}

std::array<float, 3> unit(std::array<float, 3> v) {
    const float length = std::hypot(v[0], v[1], v[2]);
    for (float& x : v)
        x /= length;
    return v;
}

std::uint32_t mixedColor(std::uint32_t a, std::uint32_t b, float part) {
    std::uint32_t color = 0;
    for (unsigned shift = 0; shift != 32; shift += 8) {
        const auto from = static_cast<float>(a >> shift & 0xffU);
        const auto to = static_cast<float>(b >> shift & 0xffU);
        color |= static_cast<std::uint32_t>(std::lround(mixed(from, to, part))) << shift;
    }
    return color;
}

SurfaceMesh partOf(const SurfaceMesh& mesh, float limit) {
    const Clipped clipped = clip(mesh.triangles, mesh.values, limit);
    SurfaceMesh part;
    part.triangles = clipped.triangles;
    part.scale = mesh.scale;
    for (const auto& [from, to, way] : clipped.vertices) {
        part.vertices.push_back(mixed(mesh.vertices[from], mesh.vertices[to], way));
        const auto normal = mixed(mesh.normals[from], mesh.normals[to], way);
        // Opposite normals have no mean.
        const bool isNormal = std::hypot(normal[0], normal[1], normal[2]) > 1e-3F;
        part.normals.push_back(isNormal ? unit(normal) : mesh.normals[from]);
        part.values.push_back(from == to ? mesh.values[from] : limit);
        if (!mesh.colors.empty())
            part.colors.push_back(mixedColor(mesh.colors[from], mesh.colors[to], way));
        if (!mesh.atoms.empty())
            part.atoms.push_back(mesh.atoms[way < 0.5F ? from : to]);
    }
    // All of it as much larger than its triangles.
    if (const double whole = areaOfTriangles(mesh); mesh.area && whole > 0)
        part.area = *mesh.area * areaOfTriangles(part) / whole;
    return part;
}

// Beyond single precision are no values, and a limit there is as good as infinity.
float single(double limit) {
    constexpr double largest = std::numeric_limits<float>::max();
    if (std::abs(limit) <= largest)
        return static_cast<float>(limit);
    return std::copysign(std::numeric_limits<float>::infinity(), limit < 0 ? -1.0F : 1.0F);
}

const TAVIK::Surface* surfaceToCut() {
    return selectedOrShown<TAVIK::Surface>([](const TAVIK::Surface& one) {
        const SurfaceMesh* const mesh = TAVIK::GetSurfaceMesh(&one);
        return mesh && !mesh->values.empty();
    });
}

NewSurface cutOf(const TAVIK::Surface& surface, double limit) {
    const QString name = QString::fromLatin1(surface.GetName());
    NewSurface made;
    made.mesh = partOf(*TAVIK::GetSurfaceMesh(&surface), single(limit));
    if (made.mesh.triangles.empty())
        throw std::runtime_error(
            tr("no value on %1 reaches %2").arg(name).arg(limit).toStdString());
    made.name = surface.GetName() + " from " + QByteArray::number(limit, 'g', 4).toStdString();
    made.color = surface.GetColor();
    made.report = tr("Part of %1 from %2 on: %3")
                      .arg(name, QString::number(limit), areaInWords(areaOf(made.mesh)));
    return made;
}

} // namespace

void addSubSurface(double limit) {
    const QString title = tr("Part of a surface");
    makeOrSay(title, [&title, limit] {
        if (!std::isfinite(limit))
            return tr("the limit is no number");
        const TAVIK::Surface* const surface = surfaceToCut();
        if (!surface)
            return tr("no surface with values is selected or shown");
        // It stays as it is while the space is locked.
        return addSurfaces(title, [&](ProgressReporter&, const ForEach&) {
            std::vector<NewSurface> all;
            all.push_back(cutOf(*surface, limit));
            return all;
        });
    });
}

} // namespace solid
