#include "RibbonPath.h"

#include <algorithm>
#include <cmath>

namespace view {

namespace {

// The derivatives of the cubic spline with continuous second derivatives through the guide points,
// which are taken to be at 0, 1, 2 ..., as unit vectors. At both ends the second derivative does
// not change.
std::vector<Vector> tangents(std::span<const Vector> guides) {
    const std::size_t last = guides.size() - 1;
    // Gaussian elimination of (1 1), (1 4 1) ... (1 4 1), (1 1); `above` is what is left right of
    // the diagonal.
    std::vector<Vector> found(guides.size());
    std::vector<double> above(guides.size(), 1);
    found[0] = (guides[1] - guides[0]) * 2;
    for (std::size_t i = 1; i < last; ++i) {
        above[i] = 1 / (4 - above[i - 1]);
        found[i] = ((guides[i + 1] - guides[i - 1]) * 3 - found[i - 1]) * above[i];
    }
    if (last == 1)
        found[1] = found[0] = found[0] * 0.5;
    else
        found[last] =
            ((guides[last] - guides[last - 1]) * 2 - found[last - 1]) * (1 / (1 - above[last - 1]));
    for (std::size_t i = last - 1; last > 1 && i < last; --i)
        found[i] = found[i] - found[i + 1] * above[i];

    Vector before = unitOr(guides[1] - guides[0], {1, 0, 0});
    for (Vector& tangent : found)
        before = tangent = unitOr(tangent, before);
    return found;
}

// The length of both tangents with which a Hermite spline follows an arc of a circle, from the
// chord and the unit tangents at its ends: chord / cos²(angle / 4), and 2 / (1 + cos(angle / 2))
// is the same as 1 / cos²(angle / 4).
double tangentLength(double chord, const Vector& from, const Vector& to) {
    const double halfAngleCosine = std::sqrt(std::max(0.0, (1 + dot(from, to)) / 2));
    return 2 * chord / (1 + halfAngleCosine);
}

void addCurve(std::span<const Vector> guides, std::size_t subdivisions,
              std::vector<PathPoint>& path) {
    const std::vector<Vector> directions = tangents(guides);
    path.push_back({guides[0], directions[0], {}, {}});
    for (std::size_t i = 0; i + 1 < guides.size(); ++i) {
        const double size =
            tangentLength(distance(guides[i], guides[i + 1]), directions[i], directions[i + 1]);
        const Vector from = directions[i] * size;
        const Vector to = directions[i + 1] * size;
        const Vector chord = guides[i + 1] - guides[i];
        for (std::size_t k = 1; k < subdivisions; ++k) {
            const double t = static_cast<double>(k) / static_cast<double>(subdivisions);
            const double s = 1 - t;
            path.push_back(
                {guides[i] + chord * (t * t * (3 - 2 * t)) + from * (t * s * s) - to * (t * t * s),
                 unitOr(chord * (6 * t * s) + from * (s * (1 - 3 * t)) + to * (t * (3 * t - 2)),
                        path.back().along),
                 {},
                 {}});
        }
        path.push_back({guides[i + 1], directions[i + 1], {}, {}});
    }
}

// The direction perpendicular to the path; of length 0 where there is none.
Vector acrossDirection(const Vector& direction, const Vector& along) {
    constexpr double smallestSine = 0.05;
    const Vector across = perpendicularPart(unitOr(direction, {}), along);
    return length(across) < smallestSine ? Vector{} : unitOr(across, {});
}

// The angle about `along` from one perpendicular direction to another or its reverse: at most 90
// degrees either way.
double turnTo(const Vector& to, const Vector& from, const Vector& along) {
    const double sine = dot(cross(from, to), along);
    const double cosine = dot(from, to);
    return cosine < 0 ? std::atan2(-sine, -cosine) : std::atan2(sine, cosine);
}

} // namespace

std::vector<PathPoint> ribbonPath(std::span<const Vector> guides,
                                  std::span<const Vector> directions, std::size_t subdivisions) {
    std::vector<PathPoint> path;
    path.reserve((guides.size() - 1) * subdivisions + 1);
    addCurve(guides, subdivisions, path);

    path[0].across =
        unitOr(acrossDirection(directions[0], path[0].along), anyPerpendicular(path[0].along));
    for (std::size_t i = 1; i < guides.size(); ++i) {
        const std::size_t end = i * subdivisions;
        for (std::size_t k = end - subdivisions + 1; k <= end; ++k)
            path[k].across = unitOr(perpendicularPart(path[k - 1].across, path[k].along),
                                    anyPerpendicular(path[k].along));
        const Vector across = acrossDirection(directions[i], path[end].along);
        if (across.x == 0 && across.y == 0 && across.z == 0)
            continue;
        const double turn =
            turnTo(across, path[end].across, path[end].along) / static_cast<double>(subdivisions);
        for (std::size_t k = 1; k <= subdivisions; ++k) {
            PathPoint& point = path[end - subdivisions + k];
            const double angle = turn * static_cast<double>(k);
            point.across =
                point.across * std::cos(angle) + cross(point.along, point.across) * std::sin(angle);
        }
    }
    for (PathPoint& point : path)
        point.up = cross(point.along, point.across);
    return path;
}

} // namespace view
