#include "GeometryFaults.h"

#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace memory_host {

namespace {

using Vectors = std::vector<std::array<float, 3>>;

bool isFinite(const std::array<float, 3>& vector) {
    return std::isfinite(vector[0]) && std::isfinite(vector[1]) && std::isfinite(vector[2]);
}

// False for NaN, too.
bool isUnit(const std::array<float, 3>& vector) {
    constexpr float most = 0.01F;
    const float length = std::hypot(vector[0], vector[1], vector[2]);
    return std::abs(length - 1.0F) <= most;
}

// NaN compares false.
bool isUsable(const TAVIK::ValueScale& scale) {
    return scale.colors.size() >= 2 && std::isfinite(scale.lower) && std::isfinite(scale.upper) &&
           scale.lower < scale.upper;
}

// What is wrong with a mesh, or null.
const char* faultOf(const TAVIK::SurfaceMesh& mesh) {
    const std::size_t count = mesh.vertices.size();
    const auto fits = [count](const auto& list) { return list.empty() || list.size() == count; };
    if (mesh.normals.size() != count)
        return "there is not one normal a vertex";
    if (!fits(mesh.colors))
        return "there is not one colour a vertex";
    if (!fits(mesh.values))
        return "there is not one value a vertex";
    if (!fits(mesh.atoms))
        return "there is not one atom a vertex";
    if (mesh.area && !(*mesh.area >= 0 && std::isfinite(*mesh.area)))
        return "its area is negative or not finite";
    if (!std::ranges::all_of(mesh.vertices, isFinite))
        return "a vertex is not finite";
    if (!std::ranges::all_of(mesh.normals, isUnit))
        return "a normal is no unit vector";
    if (std::ranges::any_of(mesh.values, [](float value) { return std::isinf(value); }))
        return "a value is infinite";
    if (mesh.scale && !isUsable(*mesh.scale))
        return "its scale has no range, or fewer than two colours";
    for (const std::array<std::uint32_t, 3>& triangle : mesh.triangles)
        if (triangle[0] >= count || triangle[1] >= count || triangle[2] >= count)
            return "a triangle has an index out of range";
    return nullptr;
}

const char* faultOf(const TAVIK::GridValues& grid) {
    // No product of indices overflows: it is compared before each factor.
    std::size_t count = 1;
    for (const int points : grid.points) {
        if (points < 1)
            return "a number of points is below 1";
        if (count > grid.values.size())
            break;
        count *= static_cast<std::size_t>(points);
    }
    if (count != grid.values.size())
        return "there are not as many values as points";
    bool areFinite = true;
    for (const std::size_t axis : {0, 1, 2}) {
        areFinite = areFinite && std::isfinite(grid.origin[axis]);
        for (const double step : grid.steps[axis])
            areFinite = areFinite && std::isfinite(step);
    }
    return areFinite ? nullptr : "its origin or a step is not finite";
}

template <class Geometry>
bool isRefusedFor(const Geometry& geometry, const char* what, const std::string& name) {
    const char* const fault = faultOf(geometry);
    if (fault)
        qWarning("%s: \"%s\" is refused: %s", what, QString::fromLatin1(name).toUtf8().constData(),
                 fault);
    return fault != nullptr;
}

} // namespace

bool isRefused(const TAVIK::SurfaceMesh& mesh, const char* what, const std::string& name) {
    return isRefusedFor(mesh, what, name);
}

bool isRefused(const TAVIK::GridValues& grid, const char* what, const std::string& name) {
    return isRefusedFor(grid, what, name);
}

} // namespace memory_host
