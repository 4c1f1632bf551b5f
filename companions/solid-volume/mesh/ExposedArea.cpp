#include "ExposedArea.h"

#include "BallLists.h"
#include "Crowd.h"
#include "LatticeLines.h"
#include "Vectors.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace solid {

namespace {

struct Stretch {
    double low;
    double high;
    float part; // of the step's square, for either end
    std::uint32_t ball;
};

struct Exposed {
    std::uint32_t ball;
    float part;
};

// The ends in a block of the union of stretches that one line has.
class Ends {
public:
    Ends(double from, double to, std::vector<Exposed>& found)
        : m_from(from), m_to(to), m_found(found) {}

    void find(std::vector<Stretch>& stretches) {
        std::sort(stretches.begin(), stretches.end(), [](const Stretch& a, const Stretch& b) {
            return a.low != b.low ? a.low < b.low : a.ball < b.ball;
        });
        const Stretch* last = nullptr; // the one that reaches farthest
        for (const Stretch& stretch : stretches) {
            if (!last || stretch.low > last->high) {
                if (last)
                    add(last->high, *last);
                add(stretch.low, stretch);
                last = &stretch;
            } else if (stretch.high > last->high) {
                last = &stretch;
            }
        }
        if (last)
            add(last->high, *last);
    }

private:
    void add(double at, const Stretch& stretch) {
        if (at >= m_from && at < m_to)
            m_found.push_back({stretch.ball, stretch.part});
    }

    double m_from;
    double m_to;
    std::vector<Exposed>& m_found;
};

std::vector<Exposed> exposedIn(const BallLists& lists, std::size_t block) {
    std::vector<Exposed> found;
    std::vector<std::vector<Stretch>> lines(std::size_t{blockSide} * blockSide);
    const BlockPlace& place = lists.blocks()[block];
    for (std::size_t axis = 0; axis != 3; ++axis) {
        for (const std::uint32_t index : lists.ballsOf(block)) {
            const LatticeBall& ball = lists.ball(index);
            forLines(ball, place, axis, [&](const LatticeLine& line) {
                const double half = (line.high - line.low) / 2;
                lines[static_cast<std::size_t>(line.third * blockSide + line.second)].push_back(
                    {line.low, line.high, static_cast<float>(half / ball.radius), index});
            });
        }
        const double from = place[axis] * blockSide;
        for (std::vector<Stretch>& line : lines) {
            Ends(from, from + blockSide, found).find(line);
            line.clear();
        }
    }
    return found;
}

// Turned about the first usable ball, by 54 degrees around no axis of symmetry.
std::vector<Ball> turned(std::span<const Ball> balls) {
    const auto usable = std::find_if(balls.begin(), balls.end(), isUsable);
    if (usable == balls.end())
        return {balls.begin(), balls.end()};
    const Vector origin = vectorOf(usable->centre);
    // A quaternion's parts.
    const Vector v = {0.31, 0.37, 0.17};
    const double scale = 2 / (1 + dot(v, v));
    std::vector<Ball> made(balls.begin(), balls.end());
    for (Ball& ball : made) {
        if (!isUsable(ball)) {
            ball.radius = 0;
            continue;
        }
        const Vector at = vectorOf(ball.centre) - origin;
        const Vector once = cross(v, at);
        ball.centre = pointOf(at + (once + cross(v, once)) * scale);
    }
    return made;
}

// Without those of a crowd that are within others when all are grown by a margin.
std::vector<Ball> exposable(std::vector<Ball> balls, double margin, const ForEach& forEach) {
    std::vector<Ball> grown = balls;
    for (Ball& ball : grown)
        if (isUsable(ball))
            ball.radius += static_cast<float>(margin);
    grown = withoutCrowd(grown, forEach);
    for (std::size_t i = 0; i != balls.size(); ++i)
        if (!(grown[i].radius > 0))
            balls[i].radius = 0;
    return balls;
}

// So that the number of lines is at least that of a protein of 1,000 atoms at 0.5 Å.
double stepFor(std::size_t balls, double step) {
    const double fine = 0.5 * std::sqrt(static_cast<double>(balls) / 1000);
    return std::min(step, std::max(fine, 0.1));
}

} // namespace

std::vector<double> exposedAreas(std::span<const Ball> balls, double margin, double step,
                                 const ForEach& forEach) {
    const BallLists lists(exposable(turned(balls), margin, forEach), stepFor(balls.size(), step),
                          margin);
    std::vector<std::vector<Exposed>> found(lists.blocks().size());
    forEach(found.size(), [&](std::size_t block) { found[block] = exposedIn(lists, block); });
    std::vector<double> areas(balls.size());
    for (std::vector<Exposed>& block : found) {
        for (const Exposed& exposed : block)
            areas[exposed.ball] += double{exposed.part} * lists.step() * lists.step();
        block = {};
    }
    return areas;
}

} // namespace solid
