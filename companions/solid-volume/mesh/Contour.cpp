#include "Contour.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace solid {

namespace {

Vector vectorOf(const std::array<double, 3>& a) {
    return {a[0], a[1], a[2]};
}

// Beyond the largest number of single precision there is infinity.
float single(double x) {
    constexpr double largest = std::numeric_limits<float>::max();
    if (std::abs(x) > largest)
        return static_cast<float>(std::copysign(1, x)) * std::numeric_limits<float>::infinity();
    return static_cast<float>(x);
}

bool hasAllValues(const GridView& grid) {
    std::size_t points = 1;
    for (const int count : grid.points) {
        if (count < 0)
            return false;
        if (points != 0 && static_cast<std::size_t>(count) > grid.values.size() / points)
            return false;
        points *= static_cast<std::size_t>(count);
    }
    return points == grid.values.size();
}

bool isSomewhere(const GridView& grid) {
    const auto isIn = [](const std::array<double, 3>& a) {
        return std::all_of(a.begin(), a.end(), [](double x) { return std::abs(x) <= 1e9; });
    };
    return isIn(grid.origin) && std::all_of(grid.steps.begin(), grid.steps.end(), isIn);
}

// The corner of the lattice that stands for a point. Before the first point is the same one again,
// and before that one outside; likewise behind the last. So a contour that reaches the bounds is
// cut flat there, and its rim has one normal for the side and one for the cap.
constexpr int margin = 2;

// A bit for each of a row's values, up to 16, that is inside.
std::uint32_t rowOf(const float* values, int count, float sign, float level) {
    std::uint32_t bits = 0;
    int x = 0;
    for (; x + static_cast<int>(lanes) <= count; x += lanes) {
        Floats four;
        std::memcpy(&four, values + x, sizeof four);
        bits |= bitsOf(four * all(sign) >= all(level)) << x;
    }
    for (; x < count; ++x)
        bits |= static_cast<std::uint32_t>(sign * values[x] >= level) << x;
    return bits;
}

// Along a vector that is not next to nothing.
Point unitOf(const Vector& a) {
    const double size = length(a);
    return size > 1e-30 && std::isfinite(size) ? pointOf(a * (1 / size)) : Point{0, 0, 1};
}

} // namespace

Contour::Contour(const GridView& grid, double level, bool isHigh)
    : m_grid(grid), m_level(single(isHigh ? level : -level)),
      m_sign(isHigh ? 1.0F : -1.0F), m_strides{1, grid.points[0],
                                               std::ptrdiff_t{grid.points[0]} * grid.points[1]} {
    if (!hasAllValues(grid))
        throw std::invalid_argument("a grid must have a value at each point");
    if (!isSomewhere(grid))
        throw std::invalid_argument(
            "the origin and the steps of a grid must be numbers up to 1e9 Å");
    constexpr int most = 16'000'000; // blocks of more have no packed places
    if (*std::max_element(grid.points.begin(), grid.points.end()) > most)
        throw std::invalid_argument("a grid must have at most 16 million points along each axis");
    bool isEmpty = false;
    std::array<int, 3> last{};
    for (std::size_t axis = 0; axis != 3; ++axis) {
        m_grid.lower[axis] = std::max(m_grid.lower[axis], 0);
        m_grid.upper[axis] = std::min(m_grid.upper[axis], m_grid.points[axis]);
        isEmpty = isEmpty || m_grid.lower[axis] >= m_grid.upper[axis];
        last[axis] = (m_grid.upper[axis] + margin) / blockSide;
    }
    if (!isEmpty)
        for (int z = m_grid.lower[2] / blockSide; z <= last[2]; ++z)
            for (int y = m_grid.lower[1] / blockSide; y <= last[1]; ++y)
                for (int x = m_grid.lower[0] / blockSide; x <= last[0]; ++x)
                    m_blocks.push_back({x, y, z});
    m_origin = vectorOf(grid.origin);
    // Gradients go by the inverse of the steps.
    const Vector a = vectorOf(grid.steps[0]);
    const Vector b = vectorOf(grid.steps[1]);
    const Vector c = vectorOf(grid.steps[2]);
    const double volume = dot(a, cross(b, c));
    const double scale = volume != 0 ? 1 / volume : 0;
    const std::array<Vector, 3> inverse = {cross(b, c) * scale, cross(c, a) * scale,
                                           cross(a, b) * scale};
    for (std::size_t axis = 0; axis != 3; ++axis) {
        m_toSpace[axis] = inverse[axis];
        m_toSpaceLanes[axis] =
            Floats{single(inverse[axis].x), single(inverse[axis].y), single(inverse[axis].z), 0};
        m_walls[axis] = {unitOf(inverse[axis] * -1), unitOf(inverse[axis])};
        m_steps[axis] = vectorOf(grid.steps[axis]);
    }
}

std::size_t Contour::at(const Index& point) const {
    const auto width = static_cast<std::size_t>(m_grid.points[0]);
    const auto height = static_cast<std::size_t>(m_grid.points[1]);
    return (static_cast<std::size_t>(point[2]) * height + static_cast<std::size_t>(point[1])) *
               width +
           static_cast<std::size_t>(point[0]);
}

bool Contour::isInPart(std::size_t axis, int index) const {
    return index >= m_grid.lower[axis] && index < m_grid.upper[axis];
}

int Contour::held(std::size_t axis, int index) const {
    const int lower = m_grid.lower[axis];
    const int upper = m_grid.upper[axis];
    return index == lower - 1 ? lower : index == upper ? upper - 1 : index;
}

Contour::Index Contour::held(const Index& point) const {
    return {held(0, point[0]), held(1, point[1]), held(2, point[2])};
}

void Contour::findInside(std::size_t block, OwnSigns& signs) const {
    signs.rows.fill(0);
    Index start{};
    Index first{};
    Index last{};
    for (std::size_t axis = 0; axis != 3; ++axis) {
        start[axis] = m_blocks[block][axis] * blockSide - margin;
        first[axis] = std::max(m_grid.lower[axis] - 1 - start[axis], 0);
        last[axis] = std::min(m_grid.upper[axis] + 1 - start[axis], blockSide);
    }
    const int before = m_grid.lower[0] - 1 - start[0];
    const int after = m_grid.upper[0] - start[0];
    const int begin = std::max(before + 1, 0);
    const int end = std::min(after, blockSide);
    const float sign = m_sign;
    const float level = m_level;
    const auto bitOf = [=](float value, int x) {
        return static_cast<std::uint32_t>(sign * value >= level) << x;
    };
    for (int z = first[2]; z < last[2]; ++z) {
        const float* const plane = m_grid.values.data() + at({0, 0, held(2, start[2] + z)});
        for (int y = first[1]; y < last[1]; ++y) {
            const float* const row = plane + held(1, start[1] + y) * m_strides[1];
            std::uint32_t bits = 0;
            if (begin < end)
                bits = rowOf(row + (start[0] + begin), end - begin, sign, level) << begin;
            if (before >= 0 && before < blockSide)
                bits |= bitOf(row[m_grid.lower[0]], before);
            if (after >= 0 && after < blockSide)
                bits |= bitOf(row[m_grid.upper[0] - 1], after);
            signs.row(y, z) = static_cast<std::uint16_t>(bits);
        }
    }
}

// The axis, from 1 on, beyond whose upper bound a point is; the same below 0 for the lower one.
int Contour::sideOf(const Index& point) const {
    for (std::size_t axis = 0; axis != 3; ++axis) {
        if (point[axis] < m_grid.lower[axis])
            return -static_cast<int>(axis) - 1;
        if (point[axis] >= m_grid.upper[axis])
            return static_cast<int>(axis) + 1;
    }
    return 0;
}

std::array<double, 3> Contour::gradient(const Index& point) const {
    std::array<double, 3> found{};
    const float* const own = m_grid.values.data() + at(point);
    for (std::size_t axis = 0; axis != 3; ++axis) {
        const auto difference = [&](const float* from, const float* to) {
            return (double{*to} - *from) * m_sign;
        };
        const float* const before = own - m_strides[axis];
        const float* const after = own + m_strides[axis];
        const bool isLow = isInPart(axis, point[axis] - 1) && std::isfinite(*before);
        const bool isHigh = isInPart(axis, point[axis] + 1) && std::isfinite(*after);
        if (isLow && isHigh)
            found[axis] = difference(before, after) / 2;
        else if (isHigh)
            found[axis] = difference(own, after);
        else if (isLow)
            found[axis] = difference(before, own);
    }
    return found;
}

Crossing Contour::crossing(const Index& inside, const Index& outside, std::size_t axis) const {
    const Index from = held(inside);
    const Index to = held(outside);
    const float in = m_sign * m_grid.values[at(from)];
    const bool isWithin = isInPart(axis, to[axis]);
    const float out =
        isWithin ? m_sign * m_grid.values[at(to)] : std::numeric_limits<float>::quiet_NaN();
    Vector position = positionOf(from);
    Point normal;
    if (!std::isfinite(out)) {
        normal = m_walls[axis][outside[axis] > inside[axis] ? 1 : 0];
    } else {
        // Where the inside is infinite, everything between two points is.
        const double share = std::isfinite(in) ? (double{in} - m_level) / (double{in} - out) : 1;
        position = position + m_steps[axis] * ((to[axis] - from[axis]) * share);
        if (const int side = sideOf(inside); side != 0) {
            normal = m_walls[static_cast<std::size_t>(std::abs(side) - 1)][side > 0 ? 1 : 0];
        } else {
            const std::array<double, 3> here = gradient(inside);
            const std::array<double, 3> there = gradient(outside);
            Vector slope;
            for (std::size_t i = 0; i != 3; ++i)
                slope = slope + m_toSpace[i] * (here[i] + (there[i] - here[i]) * share);
            normal = unitOf(slope * -1);
        }
    }
    return {pointOf(position), normal, 0, shareOfFace(inside, axis)};
}

// Of an edge along an axis, by the cells around it that are within the bounds.
float Contour::shareOfFace(const Index& point, std::size_t axis) const {
    float share = 1;
    for (std::size_t other = 0; other != 3; ++other) {
        const int index = point[other];
        if (other == axis)
            continue;
        const int lower = m_grid.lower[other];
        const int last = m_grid.upper[other] - 1;
        if (index < lower || index > last)
            return 0;
        share *= (index > lower ? 0.5F : 0) + (index < last ? 0.5F : 0);
    }
    return share;
}

// What crossing() gives where there are points all around an edge; false if not all of them have
// values, or those are too far apart or too close for single precision.
bool Contour::crossAmidPoints(const Index& low, std::size_t axis, Crossing& made) const {
    const float* const lower = m_grid.values.data() + at(low);
    const float* const upper = lower + m_strides[axis];
    const double share =
        (double{*lower} - double{m_sign} * m_level) / (double{*lower} - double{*upper});
    const auto part = static_cast<float>(share);
    const auto slope = [&](std::size_t i) {
        const std::ptrdiff_t next = m_strides[i];
        const float here = lower[next] - lower[-next];
        const float there = upper[next] - upper[-next];
        return m_toSpaceLanes[i] * all(here + (there - here) * part);
    };
    const Floats along = slope(0) + slope(1) + slope(2);
    const Floats squares = along * along;
    const float square = squares[0] + squares[1] + squares[2];
    if (!(square > 1e-30F && square < 1e30F && std::abs(part) <= 1))
        return false;
    const Floats normal = along * all(-m_sign / std::sqrt(square));
    made.position = pointOf(positionOf(low) + m_steps[axis] * share);
    made.normal = {normal[0], normal[1], normal[2]};
    return true;
}

void Contour::findCrossings(std::size_t block, const BlockEdges& edges,
                            std::vector<Crossing>& crossings) const {
    crossings.resize(edges.own().size());
    Crossing* next = crossings.data();
    Index start{};
    // The lower corners of edges around which there are points on all sides.
    Index amid{};
    std::array<unsigned, 3> amids{};
    for (std::size_t axis = 0; axis != 3; ++axis) {
        start[axis] = m_blocks[block][axis] * blockSide - margin;
        amid[axis] = m_grid.lower[axis] + 1;
        amids[axis] =
            static_cast<unsigned>(std::max(m_grid.upper[axis] - m_grid.lower[axis] - 3, 0));
    }
    const auto isAmid = [&](const Index& point, std::size_t axis) {
        return static_cast<unsigned>(point[axis] - amid[axis]) < amids[axis];
    };
    for (const BlockEdge& edge : edges.own()) {
        Index inside = {start[0] + edge.corner[0], start[1] + edge.corner[1],
                        start[2] + edge.corner[2]};
        if (isAmid(inside, 0) && isAmid(inside, 1) && isAmid(inside, 2) &&
            crossAmidPoints(inside, edge.axis, *next)) {
            ++next;
            continue;
        }
        Index outside = inside;
        ++(edge.isLowInside ? outside : inside)[edge.axis];
        *next++ = crossing(inside, outside, edge.axis);
    }
}

} // namespace solid
