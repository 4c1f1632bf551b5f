#include "BallLists.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace solid {

bool isUsable(const Ball& ball) {
    constexpr float farthest = 1e6F; // Single precision has 0.06 Å left there.
    constexpr float largest = 20;
    return ball.radius > 0 && ball.radius <= largest &&
           std::all_of(ball.centre.begin(), ball.centre.end(),
                       [](float x) { return std::abs(x) <= farthest; });
}

namespace {

struct Range {
    int first;
    int last;
};

// The blocks along one axis that have a corner within.
Range blocksIn(double low, double high) {
    const double lowest = std::ceil(low);
    const double highest = std::floor(high);
    return {static_cast<int>(std::ceil((lowest - blockSide) / blockSide)),
            static_cast<int>(std::floor(highest / blockSide))};
}

struct Reached {
    std::uint64_t block;
    std::uint32_t ball;

    bool operator<(const Reached& other) const {
        return block != other.block ? block < other.block : ball < other.ball;
    }
};

BlockPlace unpacked(std::uint64_t key) {
    BlockPlace place{};
    for (int& coordinate : place) {
        coordinate = static_cast<int>(key & ((1U << 21) - 1)) - (1 << 20);
        key >>= 21;
    }
    return place;
}

void addReached(const LatticeBall& ball, std::uint32_t index, std::vector<Reached>& reached) {
    std::array<Range, 3> ranges{};
    for (std::size_t axis = 0; axis != 3; ++axis)
        ranges[axis] = blocksIn(ball.centre[axis] - ball.radius, ball.centre[axis] + ball.radius);
    for (int z = ranges[2].first; z <= ranges[2].last; ++z)
        for (int y = ranges[1].first; y <= ranges[1].last; ++y)
            for (int x = ranges[0].first; x <= ranges[0].last; ++x)
                reached.push_back({packed({x, y, z}), index});
}

} // namespace

BallLists::BallLists(std::span<const Ball> balls, double step, double margin) : m_step(step) {
    if (!(step >= 0.1 && step <= 100))
        throw std::invalid_argument("the step of a lattice must be 0.1 to 100 Å");
    m_lattice.reserve(balls.size());
    std::vector<Reached> reached;
    for (const Ball& ball : balls) {
        LatticeBall made{{ball.centre[0] / step, ball.centre[1] / step, ball.centre[2] / step},
                         (ball.radius + margin) / step};
        if (isUsable(ball) && made.radius > 0)
            addReached(made, static_cast<std::uint32_t>(m_lattice.size()), reached);
        m_lattice.push_back(made);
    }
    std::sort(reached.begin(), reached.end());
    m_balls.reserve(reached.size());
    for (const Reached& one : reached) {
        if (m_blocks.empty() || packed(m_blocks.back()) != one.block) {
            m_blocks.push_back(unpacked(one.block));
            m_firsts.push_back(m_balls.size());
        }
        m_balls.push_back(one.ball);
    }
    m_firsts.push_back(m_balls.size());
}

} // namespace solid
