// Vectors in double precision, in which the numerics of ribbons are done.
#pragma once

#include "render/Scene.h"

#include <cmath>

namespace view {

struct Vector {
    double x = 0;
    double y = 0;
    double z = 0;
};

inline Vector vectorOf(const Point& point) {
    return {point[0], point[1], point[2]};
}

inline Point pointOf(const Vector& a) {
    return {static_cast<float>(a.x), static_cast<float>(a.y), static_cast<float>(a.z)};
}

inline Vector operator+(const Vector& a, const Vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

inline Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline Vector operator*(const Vector& a, double factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}

inline double dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Vector cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline double length(const Vector& a) {
    return std::sqrt(dot(a, a));
}

inline double distance(const Vector& a, const Vector& b) {
    return length(a - b);
}

/// The vector of length 1 in the same direction; `otherwise` for one that has no direction: shorter
/// than 1e-6, or not finite.
inline Vector unitOr(const Vector& a, const Vector& otherwise) {
    const double size = length(a);
    return size > 1e-6 && size < 1e30 ? a * (1 / size) : otherwise;
}

/// A unit vector perpendicular to a unit vector.
inline Vector anyPerpendicular(const Vector& a) {
    const Vector axis = std::abs(a.x) < 0.6 ? Vector{1, 0, 0} : Vector{0, 1, 0};
    return unitOr(cross(a, axis), {0, 0, 1});
}

/// What is left of `a` when its part along a unit vector is taken away.
inline Vector perpendicularPart(const Vector& a, const Vector& unit) {
    return a - unit * dot(a, unit);
}

} // namespace view
