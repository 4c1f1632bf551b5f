#include "Shapes.h"

#include "Geometry.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace view {

namespace {

using TAVIK::Compound;

template <class T> bool isSame(const std::vector<T>& a, const std::vector<T>& b) {
    static_assert(std::is_trivially_copyable_v<T>);
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

std::shared_ptr<const Mesh> meshOf(const TAVIK::SurfaceMesh& surface, Id id) {
    auto mesh = std::make_shared<Mesh>();
    mesh->vertices = surface.vertices;
    mesh->normals = surface.normals;
    mesh->triangles = surface.triangles;
    mesh->colours = surface.colors;
    mesh->ids.assign(1, id);
    return mesh;
}

void takeLine(const std::vector<TAVIK::Vertex>& points, Shape& shape) {
    for (const TAVIK::Vertex& point : points) {
        constexpr float nowhere = std::numeric_limits<float>::quiet_NaN();
        shape.points.push_back(point.isValid() ? Point{point[0], point[1], point[2]}
                                               : Point{nowhere, nowhere, nowhere});
    }
    for (std::uint32_t i = 1; i < points.size(); ++i)
        if (points[i - 1].isValid() && points[i].isValid())
            shape.segments.push_back({i - 1, i});
}

void takeBox(const TAVIK::Grid& grid, const TAVIK::GridValues& values, Shape& shape) {
    for (std::size_t axis = 0; axis != 3; ++axis)
        if (grid.m_lower[axis] >= grid.m_upper[axis])
            return;
    for (std::uint32_t corner = 0; corner != 8; ++corner) {
        std::array<double, 3> at = values.origin;
        for (std::size_t axis = 0; axis != 3; ++axis) {
            const bool isUpper = (corner >> axis & 1U) != 0;
            const int index = isUpper ? grid.m_upper[axis] - 1 : grid.m_lower[axis];
            for (std::size_t i = 0; i != 3; ++i)
                at[i] += index * values.steps[axis][i];
        }
        shape.points.push_back(
            {static_cast<float>(at[0]), static_cast<float>(at[1]), static_cast<float>(at[2])});
        // Each edge from its lower end.
        for (std::uint32_t axis = 0; axis != 3; ++axis)
            if ((corner >> axis & 1U) == 0)
                shape.segments.push_back({corner, corner | 1U << axis});
    }
}

// Points and segments; nothing for other kinds.
bool takeLines(Compound* item, Shape& shape) {
    if (const auto* const points = TAVIK::GetPolyLinePoints(item)) {
        takeLine(*points, shape);
        return true;
    }
    const auto* const grid = dynamic_cast<const TAVIK::Grid*>(item);
    if (!grid)
        return false;
    if (const TAVIK::GridValues* const values = TAVIK::GetGridValues(grid))
        takeBox(*grid, *values, shape);
    return true;
}

} // namespace

std::optional<Shape> shapeOf(Compound* item, std::size_t index) {
    Shape shape;
    shape.item = static_cast<std::uint32_t>(index);
    if (const auto* const surface = dynamic_cast<const TAVIK::Surface*>(item)) {
        if (const TAVIK::SurfaceMesh* const mesh = TAVIK::GetSurfaceMesh(surface))
            shape.mesh = meshOf(*mesh, idOf(index));
        return shape;
    }
    if (!takeLines(item, shape))
        return {};
    return shape;
}

bool isAsRead(const Shape& shape, Compound* item) {
    if (const auto* const surface = dynamic_cast<const TAVIK::Surface*>(item)) {
        const TAVIK::SurfaceMesh* const mesh = TAVIK::GetSurfaceMesh(surface);
        if (!mesh || !shape.mesh)
            return !mesh && !shape.mesh;
        return isSame(shape.mesh->colours, mesh->colors) &&
               isSame(shape.mesh->vertices, mesh->vertices) &&
               isSame(shape.mesh->triangles, mesh->triangles) &&
               isSame(shape.mesh->normals, mesh->normals);
    }
    Shape now;
    takeLines(item, now);
    return isSame(shape.points, now.points) && isSame(shape.segments, now.segments);
}

void addPoints(const Shape& shape, std::vector<Point>& points) {
    points.insert(points.end(), shape.points.begin(), shape.points.end());
    if (shape.mesh)
        points.insert(points.end(), shape.mesh->vertices.begin(), shape.mesh->vertices.end());
}

} // namespace view
