#include "BallUnion.h"

#include "LatticeLines.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace solid {

namespace {

// The best crossing of each own edge so far.
struct Best {
    double at = std::numeric_limits<double>::quiet_NaN(); // along the axis
    std::uint32_t ball = 0;
};

void offer(std::vector<Best>& best, const BlockEdges& edges, std::size_t axis,
           const LatticeLine& line, int corner, bool isHigh, std::uint32_t ball) {
    std::array<int, 3> at{};
    at[axis] = corner;
    at[axis == 0 ? 1 : 0] = line.second;
    at[axis == 2 ? 1 : 2] = line.third;
    const std::int32_t edge = edges.at(static_cast<int>(axis), at[0], at[1], at[2]);
    if (edge < 0)
        return;
    const auto index = static_cast<std::size_t>(edge);
    if (edges.own()[index].isLowInside != isHigh)
        return;
    Best& known = best[index];
    const double end = isHigh ? line.high : line.low;
    if (std::isnan(known.at) || (isHigh ? end > known.at : end < known.at))
        known = {end, ball};
}

// Where rounding hid the end: by the inside corner, on the ball that holds it most.
Best nearCorner(const BlockEdge& edge, const BlockPlace& place, const BallLists& lists,
                std::span<const std::uint32_t> balls) {
    std::array<double, 3> inside{};
    for (std::size_t axis = 0; axis != 3; ++axis)
        inside[axis] = place[axis] * blockSide + edge.corner[axis];
    if (!edge.isLowInside)
        inside[edge.axis] += 1;
    Best best{inside[edge.axis], balls.front()};
    double deepest = -std::numeric_limits<double>::infinity();
    for (const std::uint32_t index : balls) {
        const LatticeBall& ball = lists.ball(index);
        double depth = ball.radius * ball.radius;
        for (std::size_t axis = 0; axis != 3; ++axis)
            depth -= (inside[axis] - ball.centre[axis]) * (inside[axis] - ball.centre[axis]);
        if (depth > deepest) {
            deepest = depth;
            best.ball = index;
        }
    }
    return best;
}

} // namespace

void BallUnion::findInside(std::size_t block, OwnSigns& signs) const {
    signs.rows.fill(0);
    const BlockPlace& place = m_lists.blocks()[block];
    const int start = place[0] * blockSide;
    for (const std::uint32_t index : m_lists.ballsOf(block))
        forLines(m_lists.ball(index), place, 0, [&](const LatticeLine& line) {
            const int first = static_cast<int>(std::max(std::ceil(line.low) - start, 0.0));
            const int last =
                static_cast<int>(std::min(std::floor(line.high) - start, double{blockSide - 1}));
            if (first <= last)
                signs.row(line.second, line.third) |=
                    static_cast<std::uint16_t>((2U << last) - (1U << first));
        });
}

void BallUnion::findCrossings(std::size_t block, const BlockEdges& edges,
                              std::vector<Crossing>& crossings) const {
    const BlockPlace& place = m_lists.blocks()[block];
    const std::span<const std::uint32_t> balls = m_lists.ballsOf(block);
    std::vector<Best> best(edges.own().size());
    for (std::size_t axis = 0; axis != 3; ++axis) {
        const int start = place[axis] * blockSide;
        for (const std::uint32_t index : balls)
            forLines(m_lists.ball(index), place, axis, [&](const LatticeLine& line) {
                const double low = std::ceil(line.low) - 1 - start;
                if (low >= 0 && low < blockSide)
                    offer(best, edges, axis, line, static_cast<int>(low), false, index);
                const double high = std::floor(line.high) - start;
                if (high >= 0 && high < blockSide)
                    offer(best, edges, axis, line, static_cast<int>(high), true, index);
            });
    }
    crossings.reserve(best.size());
    for (std::size_t i = 0; i != best.size(); ++i) {
        const BlockEdge& edge = edges.own()[i];
        const Best found =
            std::isnan(best[i].at) ? nearCorner(edge, place, m_lists, balls) : best[i];
        const LatticeBall& ball = m_lists.ball(found.ball);
        std::array<double, 3> offset{};
        double square = 0;
        for (std::size_t axis = 0; axis != 3; ++axis) {
            const double at =
                axis == edge.axis ? found.at : place[axis] * blockSide + edge.corner[axis];
            offset[axis] = at - ball.centre[axis];
            square += offset[axis] * offset[axis];
        }
        const double length = square > 0 ? 1 / std::sqrt(square) : 0;
        Crossing made{{}, {}, found.ball};
        for (std::size_t axis = 0; axis != 3; ++axis) {
            made.normal[axis] = static_cast<float>(offset[axis] * length);
            made.position[axis] = static_cast<float>(
                (ball.centre[axis] + offset[axis] * length * ball.radius) * m_lists.step());
        }
        crossings.push_back(made);
    }
}

} // namespace solid
