#include "Frame.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace view {

namespace {

constexpr std::size_t pointsAPart = 1 << 16;
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

float along(const Point& axis, const Point& from) {
    return axis[0] * from[0] + axis[1] * from[1] + axis[2] * from[2];
}

/// Places four points, each as Frame::place() does.
void placeFour(const Frame& frame, const Point* from, Place* to) {
    const auto coordinates = [from](std::size_t i) {
        return Floats{from[0][i], from[1][i], from[2][i], from[3][i]};
    };
    const Floats x = coordinates(0);
    const Floats y = coordinates(1);
    const Floats z = coordinates(2);
    const auto isNear = [](Floats a) { return (a <= all(farthest)) & (a >= all(-farthest)); };
    const Ints isThere = isNear(x) & isNear(y) & isNear(z);
    const Camera& camera = frame.camera;
    const Floats dx = x - all(camera.centre[0]);
    const Floats dy = y - all(camera.centre[1]);
    const Floats dz = z - all(camera.centre[2]);
    const auto alongAxis = [&](std::size_t i) {
        const Point& axis = camera.axes[i];
        return (all(axis[0]) * dx + all(axis[1]) * dy + all(axis[2]) * dz) * all(frame.scale);
    };
    const auto placed = [&](Floats a) { return select(isThere, a, all(nan)); };
    const Floats right = placed(all(static_cast<float>(frame.width) * 0.5F) + alongAxis(0));
    const Floats down = placed(all(static_cast<float>(frame.height) * 0.5F) - alongAxis(1));
    const Floats near = placed(alongAxis(2));
    for (int lane = 0; lane < 4; ++lane)
        to[lane] = {right[lane], down[lane], near[lane]};
}

/// Chooses the coarsest surface of a mesh that is not off by a sample.
PlacedMesh placed(const Mesh& mesh, const MeshLook& look, float scale) {
    PlacedMesh placed = {&mesh, &mesh.triangles, &mesh.ids, mesh.vertices.size(), look};
    for (const CoarserSurface& surface : mesh.coarser)
        if (surface.error * scale < 1)
            placed = {&mesh, &surface.triangles, &surface.ids, surface.vertexCount, look};
    return placed;
}

} // namespace

Place Frame::place(const Point& point) const {
    if (!isPlace(point))
        return {nan, nan, nan};
    const Point from = {point[0] - camera.centre[0], point[1] - camera.centre[1],
                        point[2] - camera.centre[2]};
    return {static_cast<float>(width) * 0.5F + along(camera.axes[0], from) * scale,
            static_cast<float>(height) * 0.5F - along(camera.axes[1], from) * scale,
            along(camera.axes[2], from) * scale};
}

// Each point is placed for itself, so that the parts need not be the same in every run.
bool Frame::placeAll(std::span<const Point> from, Place* to, Workers& workers) const {
    return workers.run((from.size() + pointsAPart - 1) / pointsAPart,
                       [&](std::size_t part, std::size_t) {
                           const std::size_t end = std::min(from.size(), (part + 1) * pointsAPart);
                           std::size_t i = part * pointsAPart;
                           for (; i + 4 <= end; i += 4)
                               placeFour(*this, from.data() + i, to + i);
                           for (; i < end; ++i)
                               to[i] = place(from[i]);
                       },
                       stop);
}

bool Frame::project(Workers& workers) {
    scale = static_cast<float>(height / camera.height);
    front = static_cast<float>(camera.front * static_cast<double>(scale));
    back = static_cast<float>(camera.back * static_cast<double>(scale));

    std::size_t number = scene->balls.size();
    const auto count = [&number](Number& start, std::size_t things) {
        start = static_cast<Number>(number);
        number += things;
    };
    count(stickStart, 2 * scene->sticks.size());
    count(lineStart, 2 * scene->lines.size());
    count(dotStart, scene->dots.size());
    triangleStart = static_cast<Number>(number);
    meshes.clear();
    std::size_t vertexCount = 0;
    for (std::size_t i = 0; i < scene->meshes.size(); ++i) {
        meshes.push_back(placed(*scene->meshes[i], scene->meshLook(i), scale));
        meshes.back().start = static_cast<Number>(number);
        meshes.back().firstVertex = vertexCount;
        number += meshes.back().triangles->size();
        vertexCount += meshes.back().vertexCount;
    }
    if (number >= static_cast<std::size_t>(noNumber))
        throw std::length_error("too many things in a scene");

    points.resize(scene->pointCount());
    vertices.resize(vertexCount + 1);
    if ((scene->sharedPoints && !placeAll(*scene->sharedPoints, points.data(), workers)) ||
        !placeAll(scene->points, points.data() + scene->sharedCount(), workers))
        return false;
    return std::all_of(meshes.begin(), meshes.end(), [&](const PlacedMesh& mesh) {
        return placeAll(std::span(mesh.mesh->vertices).first(mesh.vertexCount),
                        vertices.data() + mesh.firstVertex, workers);
    });
}

std::size_t Frame::earlierMeshOf(Number triangle) const {
    const auto after =
        std::upper_bound(meshes.begin(), meshes.end(), triangle,
                         [](Number number, const PlacedMesh& mesh) { return number < mesh.start; });
    return static_cast<std::size_t>(after - meshes.begin()) - 1;
}

} // namespace view
