// Points in space, and what "within a radius" means for them, to the bit.
#pragma once

#include <array>
#include <span>
#include <utility>

/// Coordinates in Å, single precision.
using Point = std::array<float, 3>;

/// Four floats for SIMD instructions.
using Lanes [[gnu::vector_size(16)]] = float;

/// Whether `point` lies within the radius of `centre` by the plain definition: the differences,
/// squares and their sum (x first) are single precision, the sum is widened, and the comparison
/// with the square of the radius is inclusive. NaN is never near.
inline bool isWithin(double radiusSquared, const Point& point, const Point& centre) {
    const float dx = point[0] - centre[0];
    const float dy = point[1] - centre[1];
    const float dz = point[2] - centre[2];
    const float squared = dx * dx + dy * dy + dz * dz;
    return radiusSquared >= static_cast<double>(squared);
}

/// isWithin() of four centres at once, `x`, `y` and `z` being their coordinates, for a limit that
/// is the largest single-precision square within the radius.
inline auto areWithin(float squaredLimit, const Point& point, Lanes x, Lanes y, Lanes z) {
    const Lanes dx = point[0] - x;
    const Lanes dy = point[1] - y;
    const Lanes dz = point[2] - z;
    return dx * dx + dy * dy + dz * dz <= squaredLimit;
}
/// The answers of areWithin().
using LaneAnswers = decltype(areWithin(0.0F, Point(), Lanes(), Lanes(), Lanes()));

inline bool anyOf(LaneAnswers answers) {
    return answers[0] | answers[1] | answers[2] | answers[3];
}

/// Whether no coordinate is NaN or infinite.
inline bool isFinite(const Point& point) {
    // Zero times NaN or infinity is NaN, and then so is the sum.
    return 0.0F * point[0] + 0.0F * point[1] + 0.0F * point[2] == 0.0F;
}

/// The corners of the bounding box of finite points, at least one.
std::pair<Point, Point> boundsOf(std::span<const Point> points);

/// A radius as the searches use it.
struct Reach {
    /// `radius` in Å, not negative.
    explicit Reach(double radius);

    float squaredLimit; ///< the largest single-precision square that passes isWithin()
    /// Upper bound for the distance of a pair that passes, along any axis: the radius, with a
    /// margin for rounding and underflow in the single-precision test.
    double distance;
    float squaredReach; ///< the square of that distance, rounded up
};
