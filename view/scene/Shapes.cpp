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

/// Copies of `from` what `to` does not have yet, as far as `bytes` go; false if it has too much.
template <class T>
bool copySome(const std::vector<T>& from, std::vector<T>& to, std::size_t& bytes) {
    if (to.size() > from.size())
        return false;
    if (to.empty())
        to.reserve(from.size());
    const std::size_t some = std::min(from.size() - to.size(), bytes / sizeof(T));
    const auto first = from.begin() + static_cast<std::ptrdiff_t>(to.size());
    to.insert(to.end(), first, first + static_cast<std::ptrdiff_t>(some));
    bytes -= to.size() == from.size() ? some * sizeof(T) : bytes;
    return true;
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

ShapeReading::ShapeReading(Compound* item, std::size_t index) : m_item(item) {
    Shape shape;
    shape.item = static_cast<std::uint32_t>(index);
    shape.identifier = item->GetId();
    if (const auto* const surface = dynamic_cast<const TAVIK::Surface*>(item)) {
        if (TAVIK::GetSurfaceMesh(surface)) {
            m_mesh = std::make_shared<Mesh>();
            m_mesh->ids.assign(1, idOf(index));
            shape.mesh = m_mesh;
        }
    } else if (!takeLines(item, shape)) {
        return;
    }
    m_shape = std::move(shape);
}

bool ShapeReading::advance(std::size_t bytes) {
    if (!m_mesh)
        return false;
    const auto* const mesh = TAVIK::GetSurfaceMesh(static_cast<const TAVIK::Surface*>(m_item));
    // Triangles last: their vertices are there.
    if (mesh && copySome(mesh->vertices, m_mesh->vertices, bytes) &&
        copySome(mesh->normals, m_mesh->normals, bytes) &&
        copySome(mesh->colors, m_mesh->colours, bytes) &&
        copySome(mesh->triangles, m_mesh->triangles, bytes)) {
        m_shape->scale = mesh->scale;
        return bytes == 0;
    }
    // Another mesh, or none.
    *this = ShapeReading(m_item, m_shape->item);
    return m_mesh != nullptr;
}

ShapeCheck::State ShapeCheck::advance(const Shape& shape, Compound* item, std::size_t bytes) {
    const auto* const surface = dynamic_cast<const TAVIK::Surface*>(item);
    if (!surface) {
        Shape now;
        takeLines(item, now);
        return isSame(shape.points, now.points) && isSame(shape.segments, now.segments)
                   ? State::Same
                   : State::Other;
    }
    const TAVIK::SurfaceMesh* const mesh = TAVIK::GetSurfaceMesh(surface);
    if (!mesh || !shape.mesh)
        return !mesh && !shape.mesh ? State::Same : State::Other;
    std::size_t skipped = m_done;
    std::size_t left = bytes;
    const auto isSoFarSame = [&](const auto& a, const auto& b) {
        if (a.size() != b.size())
            return false;
        const std::size_t size = a.size() * sizeof(a[0]);
        const std::size_t begin = std::min(skipped, size);
        const std::size_t some = std::min(size - begin, left);
        skipped -= begin;
        left -= some;
        return some == 0 || std::memcmp(reinterpret_cast<const char*>(a.data()) + begin,
                                        reinterpret_cast<const char*>(b.data()) + begin, some) == 0;
    };
    if (shape.scale != mesh->scale || !isSoFarSame(shape.mesh->colours, mesh->colors) ||
        !isSoFarSame(shape.mesh->vertices, mesh->vertices) ||
        !isSoFarSame(shape.mesh->triangles, mesh->triangles) ||
        !isSoFarSame(shape.mesh->normals, mesh->normals))
        return State::Other;
    m_done += bytes;
    return left == 0 ? State::Due : State::Same;
}

bool showsOwnColours(const Compound* item) {
    const auto* const surface = dynamic_cast<const TAVIK::Surface*>(item);
    return surface && TAVIK::HasDefaultColor(surface);
}

void addPoints(const Shape& shape, std::vector<Point>& points) {
    points.insert(points.end(), shape.points.begin(), shape.points.end());
    if (shape.mesh)
        points.insert(points.end(), shape.mesh->vertices.begin(), shape.mesh->vertices.end());
}

} // namespace view
