// Vectors in double precision.
#pragma once

#include "Mesh.h"

#include <cmath>

namespace solid {

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

} // namespace solid
