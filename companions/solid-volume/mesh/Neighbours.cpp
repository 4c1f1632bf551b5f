#include "Neighbours.h"

#include "BallLists.h"
#include <algorithm>
#include <cmath>

namespace solid {

namespace {

BlockPlace cellOf(const Point& point, double side) {
    BlockPlace cell{};
    for (std::size_t axis = 0; axis != 3; ++axis)
        cell[axis] = static_cast<int>(std::floor(point[axis] / side));
    return cell;
}

} // namespace

Neighbours::Neighbours(std::span<const Ball> balls) : m_balls(balls) {
    for (const Ball& ball : balls)
        if (isUsable(ball))
            m_side = std::max(m_side, 2 * double{ball.radius});
    for (std::size_t i = 0; i != balls.size(); ++i)
        if (isUsable(balls[i]))
            m_placed.push_back(
                {packed(cellOf(balls[i].centre, m_side)), static_cast<std::uint32_t>(i)});
    std::sort(m_placed.begin(), m_placed.end(), [](const Placed& a, const Placed& b) {
        return a.cell != b.cell ? a.cell < b.cell : a.ball < b.ball;
    });
}

void Neighbours::find(std::uint32_t ball, std::vector<std::uint32_t>& found) const {
    found.clear();
    const Ball& own = m_balls[ball];
    const Vector centre = vectorOf(own.centre);
    const BlockPlace cell = cellOf(own.centre, m_side);
    for (int z = -1; z <= 1; ++z)
        for (int y = -1; y <= 1; ++y) {
            const std::uint64_t first = packed({cell[0] - 1, cell[1] + y, cell[2] + z});
            auto at = std::lower_bound(m_placed.begin(), m_placed.end(), first,
                                       [](const Placed& a, std::uint64_t b) { return a.cell < b; });
            for (; at != m_placed.end() && at->cell <= first + 2; ++at) {
                const Ball& other = m_balls[at->ball];
                const double reach = double{own.radius} + other.radius;
                const Vector apart = vectorOf(other.centre) - centre;
                if (at->ball != ball && dot(apart, apart) < reach * reach)
                    found.push_back(at->ball);
            }
        }
    std::sort(found.begin(), found.end());
}

} // namespace solid
