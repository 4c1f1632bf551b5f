#include "Crowd.h"

#include "BallLists.h"
#include "CapSieve.h"
#include "Vectors.h"

#include <nanoflann.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace solid {

namespace {

using Numbers = std::vector<std::uint32_t>;

// More balls than these in a cube of a mean diameter are a crowd: in a molecule with all hydrogens
// it is some 30.
constexpr std::size_t crowd = 200;

// Balls in four dimensions, as nanoflann reads them: the square of the distance from a point is how
// far it is outside of a ball, by the point's power, and a constant.
struct Powers {
    std::span<const Ball> balls;
    std::span<const std::uint32_t> numbers;
    float largest; // radius

    std::size_t kdtree_get_point_count() const { return numbers.size(); } // NOLINT: its name
    float kdtree_get_pt(std::size_t i, std::size_t axis) const {          // NOLINT: its name
        const Ball& ball = balls[numbers[i]];
        return axis != 3 ? ball.centre[axis]
                         : std::sqrt(largest * largest - ball.radius * ball.radius);
    }
    template <class Box> bool kdtree_get_bbox(Box&) const { return false; } // NOLINT: its name
};
using Tree =
    nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<float, Powers, double>, Powers,
                                        4, std::uint32_t>;

// Whether other balls cover a ball.
class Burial {
public:
    Burial(std::span<const Ball> balls, std::span<const std::uint32_t> others, float largest)
        : m_powers{balls, others, largest}, m_tree(4, m_powers) {}

    bool isBuried(const Ball& own, CapSieve& sieve) const {
        // Deep within a few are enough.
        return isWithin<12>(own, sieve) || isWithin<64>(own, sieve);
    }

private:
    // Of balls that hold the centre, no more than the sphere has to be covered.
    template <std::size_t most> bool isWithin(const Ball& own, CapSieve& sieve) const {
        std::array<std::uint32_t, most> near{};
        std::array<double, most> squares{};
        const std::array<float, 4> at = {own.centre[0], own.centre[1], own.centre[2], 0};
        const std::size_t count = m_tree.knnSearch(at.data(), most, near.data(), squares.data());
        sieve.clear(own);
        for (std::size_t i = 0; i != count; ++i) {
            const std::uint32_t number = m_powers.numbers[near[i]];
            const Ball& other = m_powers.balls[number];
            constexpr double margin = 1e-4; // Å
            if (length(vectorOf(other.centre) - vectorOf(own.centre)) < other.radius - margin)
                sieve.add(other, number);
        }
        return !sieve.sift();
    }

    Powers m_powers;
    Tree m_tree;
};

// Balls in cubes of a mean diameter with so many that they are a crowd.
Numbers findCrowd(std::span<const Ball> balls) {
    double sum = 0;
    Numbers usable;
    for (std::size_t i = 0; i != balls.size(); ++i)
        if (isUsable(balls[i])) {
            sum += balls[i].radius;
            usable.push_back(static_cast<std::uint32_t>(i));
        }
    if (usable.size() <= crowd)
        return {};
    struct Placed {
        std::uint64_t cell;
        std::uint32_t ball;
    };
    const double side = std::max(2 * sum / static_cast<double>(usable.size()), 1.0);
    std::vector<Placed> placed;
    placed.reserve(usable.size());
    for (const std::uint32_t ball : usable) {
        BlockPlace cell{};
        for (std::size_t axis = 0; axis != 3; ++axis)
            cell[axis] = static_cast<int>(std::floor(balls[ball].centre[axis] / side));
        placed.push_back({packed(cell), ball});
    }
    std::sort(placed.begin(), placed.end(), [](const Placed& a, const Placed& b) {
        return a.cell != b.cell ? a.cell < b.cell : a.ball < b.ball;
    });
    Numbers found;
    for (std::size_t first = 0; first != placed.size();) {
        std::size_t last = first;
        while (last != placed.size() && placed[last].cell == placed[first].cell)
            ++last;
        for (std::size_t i = first; i != last && last - first > crowd; ++i)
            found.push_back(placed[i].ball);
        first = last;
    }
    return found;
}

// Leaves one of those that are the same.
void removeTwins(std::span<const Ball> balls, Numbers& numbers) {
    std::sort(numbers.begin(), numbers.end(), [&](std::uint32_t a, std::uint32_t b) {
        const Ball& x = balls[a];
        const Ball& y = balls[b];
        if (x.centre != y.centre)
            return x.centre < y.centre;
        return x.radius != y.radius ? x.radius > y.radius : a < b;
    });
    numbers.erase(std::unique(numbers.begin(), numbers.end(),
                              [&](std::uint32_t a, std::uint32_t b) {
                                  return balls[a].centre == balls[b].centre;
                              }),
                  numbers.end());
}

// Leaves, in their order, those that the ones left before them do not cover. So what is removed is
// within what is left, and may be found out for many at a time.
void removeCovered(std::span<const Ball> balls, Numbers& numbers, const ForEach& forEach) {
    float largest = 0;
    for (const std::uint32_t ball : numbers)
        largest = std::max(largest, balls[ball].radius);
    Numbers left;
    std::vector<char> isBuried;
    constexpr std::size_t least = 64;
    constexpr std::size_t portion = 256;
    for (std::size_t first = 0; first != numbers.size();) {
        const std::size_t count = std::min(std::max(first, least), numbers.size() - first);
        const Burial burial(balls, left, largest);
        isBuried.assign(count, 0);
        forEach((count + portion - 1) / portion, [&](std::size_t part) {
            CapSieve sieve;
            const std::size_t end = std::min((part + 1) * portion, count);
            for (std::size_t i = part * portion; i != end; ++i)
                isBuried[i] = burial.isBuried(balls[numbers[first + i]], sieve) ? 1 : 0;
        });
        for (std::size_t i = 0; i != count; ++i)
            if (isBuried[i] == 0)
                left.push_back(numbers[first + i]);
        first += count;
    }
    numbers = std::move(left);
}

} // namespace

std::vector<Ball> withoutCrowd(std::span<const Ball> balls, const ForEach& forEach) {
    std::vector<Ball> made(balls.begin(), balls.end());
    Numbers crowded = findCrowd(balls);
    if (crowded.empty())
        return made;
    for (const std::uint32_t ball : crowded)
        made[ball].radius = 0;
    removeTwins(balls, crowded);
    // In no order that means anything, for a few from everywhere cover most.
    std::sort(crowded.begin(), crowded.end(),
              [](std::uint32_t a, std::uint32_t b) { return a * 2654435769U < b * 2654435769U; });
    removeCovered(balls, crowded, forEach);
    // The first ones are covered by what came later.
    std::reverse(crowded.begin(), crowded.end());
    removeCovered(balls, crowded, forEach);
    for (const std::uint32_t ball : crowded)
        made[ball].radius = balls[ball].radius;
    return made;
}

} // namespace solid
