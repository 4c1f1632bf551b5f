#include "Camera.h"

#include <algorithm>
#include <cmath>

namespace view {

namespace {

double dot(const Point& a, const Point& b) {
    return double(a[0]) * b[0] + double(a[1]) * b[1] + double(a[2]) * b[2];
}

Point combined(const Point& a, double factorA, const Point& b, double factorB) {
    Point sum;
    for (std::size_t i = 0; i < 3; ++i)
        sum[i] = static_cast<float>(a[i] * factorA + b[i] * factorB);
    return sum;
}

Point cross(const Point& a, const Point& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Point unit(const Point& a) {
    const double length = std::sqrt(dot(a, a));
    return combined(a, 1 / length, a, 0);
}

/// Turns two axes of the screen in their plane. Rounding errors would add up over many turns, so
/// the axes are made perpendicular unit vectors again.
void turnAxes(std::array<Point, 3>& axes, std::size_t from, std::size_t to, double angle) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const Point turned = combined(axes[from], c, axes[to], s);
    axes[to] = combined(axes[to], c, axes[from], -s);
    axes[from] = turned;
    axes[2] = unit(axes[2]);
    axes[0] = unit(combined(axes[0], 1, axes[2], -dot(axes[0], axes[2])));
    axes[1] = cross(axes[2], axes[0]);
}

} // namespace

void Camera::turn(double right, double up) {
    // The scene turns one way, and so the axes of the screen the other way.
    turnAxes(axes, 2, 0, -right);
    turnAxes(axes, 2, 1, -up);
}

void Camera::roll(double angle) {
    turnAxes(axes, 0, 1, -angle);
}

void Camera::move(double right, double up) {
    centre = combined(centre, 1, axes[0], -right);
    centre = combined(centre, 1, axes[1], -up);
}

double Camera::depthOf(const Point& point) const {
    return dot(axes[2], point) - dot(axes[2], centre);
}

void Camera::fit(std::span<const Point> points, double aspect, double margin) {
    Point low = {farthest, farthest, farthest};
    Point high = {-farthest, -farthest, -farthest};
    bool isEmpty = true;
    for (const Point& point : points) {
        if (!isPlace(point))
            continue;
        isEmpty = false;
        for (std::size_t i = 0; i < 3; ++i) {
            low[i] = std::min(low[i], point[i]);
            high[i] = std::max(high[i], point[i]);
        }
    }
    if (isEmpty)
        return;
    centre = combined(low, 0.5, high, 0.5);
    double farthestSquared = 0;
    for (const Point& point : points) {
        if (!isPlace(point))
            continue;
        const Point from = combined(point, 1, centre, -1);
        farthestSquared = std::max(farthestSquared, dot(from, from));
    }
    const double radius = std::sqrt(farthestSquared) + margin;
    height = 2 * radius / std::min(1.0, aspect);
}

} // namespace view
