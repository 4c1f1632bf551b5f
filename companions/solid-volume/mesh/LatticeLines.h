// The lines of a lattice along one axis that pass through a ball.
#pragma once

#include "BallLists.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace solid {

/// A line of one block's own corners. `second` and `third` are its coordinates on the two other
/// axes, the nearer to x first.
struct LatticeLine {
    int second; ///< in the block
    int third;
    double low; ///< where the ball begins, on the lattice
    double high;
};

namespace detail {

struct Interval {
    int first;
    int last;
};

// The block's own corners within a distance of a place on one axis.
inline Interval cornersIn(double centre, double reach, int start) {
    const double first = std::max(std::ceil(centre - reach) - start, 0.0);
    const double last = std::min(std::floor(centre + reach) - start, double{blockSide - 1});
    return {static_cast<int>(first), static_cast<int>(last)};
}

} // namespace detail

/// Calls visit(LatticeLine) for each line of a block's own corners along `axis` that passes through
/// the ball. Blocks in a row get the same ends for it.
template <class Visit>
void forLines(const LatticeBall& ball, const BlockPlace& place, std::size_t axis, Visit&& visit) {
    const std::size_t second = axis == 0 ? 1 : 0;
    const std::size_t third = axis == 2 ? 1 : 2;
    const int secondStart = place[second] * blockSide;
    const int thirdStart = place[third] * blockSide;
    const double square = ball.radius * ball.radius;
    const detail::Interval thirds = detail::cornersIn(ball.centre[third], ball.radius, thirdStart);
    for (int k = thirds.first; k <= thirds.last; ++k) {
        const double c = thirdStart + k - ball.centre[third];
        const double left = square - c * c;
        if (!(left > 0))
            continue;
        const detail::Interval seconds =
            detail::cornersIn(ball.centre[second], std::sqrt(left), secondStart);
        for (int j = seconds.first; j <= seconds.last; ++j) {
            const double b = secondStart + j - ball.centre[second];
            const double half = left - b * b;
            if (!(half > 0))
                continue;
            const double reach = std::sqrt(half);
            visit(LatticeLine{j, k, ball.centre[axis] - reach, ball.centre[axis] + reach});
        }
    }
}

} // namespace solid
