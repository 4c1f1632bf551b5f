#include "Measure.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace workbench {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double degrees = 180.0 / std::numbers::pi;

Place minus(const Place& a, const Place& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
double dot(const Place& a, const Place& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Place cross(const Place& a, const Place& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double length(const Place& a) {
    return std::hypot(a[0], a[1], a[2]);
}

} // namespace

double distanceBetween(const Place& a, const Place& b) {
    return length(minus(a, b));
}

// Through the arc tangent, which is exact for small and flat angles, too.
double angleAt(const Place& a, const Place& b, const Place& c) {
    const Place first = minus(a, b);
    const Place second = minus(c, b);
    if (length(first) == 0.0 || length(second) == 0.0)
        return nan;
    return std::atan2(length(cross(first, second)), dot(first, second)) * degrees;
}

double torsionAbout(const Place& a, const Place& b, const Place& c, const Place& d) {
    const Place axis = minus(c, b);
    const Place near = cross(minus(b, a), axis);
    const Place far = cross(axis, minus(d, c));
    if (length(near) == 0.0 || length(far) == 0.0)
        return nan;
    return std::atan2(dot(cross(near, far), axis) / length(axis), dot(near, far)) * degrees;
}

void Statistics::add(double value) {
    if (!std::isfinite(value))
        return;
    if (m_count++ == 0)
        m_first = value;
    const double difference = value - m_first;
    m_sum += difference;
    m_squares += difference * difference;
    // Not less or not greater holds for the first number, too.
    if (!(m_least <= value))
        m_least = value;
    if (!(m_greatest >= value))
        m_greatest = value;
}

double Statistics::mean() const {
    return m_count == 0 ? nan : m_first + m_sum / static_cast<double>(m_count);
}

double Statistics::deviation() const {
    const auto count = static_cast<double>(m_count);
    const double mean = m_sum / count; // of the differences
    return m_count == 0 ? nan : std::sqrt(std::max(0.0, m_squares / count - mean * mean));
}

} // namespace workbench
