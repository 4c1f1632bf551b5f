#include "Density.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <numbers>
#include <stdexcept>
#include <utility>

namespace solid {

namespace {

// exp(-x) for x of at least 0, to 1e-15 of its value, and alike on every machine: the library's may
// differ in the last bit.
double decay(double x) {
    if (!(x < 700))
        return 0;
    const double count = std::floor(x / std::numbers::ln2 + 0.5);
    const double rest = x - count * 0.693147180369123816490 - count * 1.90821492927058770002e-10;
    // Multiplied, as divisions take several times as long.
    static constexpr std::array<double, 13> inverse = {
        1.0 / 13, 1.0 / 12, 1.0 / 11, 1.0 / 10, 1.0 / 9, 1.0 / 8, 1.0 / 7,
        1.0 / 6,  1.0 / 5,  1.0 / 4,  1.0 / 3,  1.0 / 2, 1.0};
    double sum = 1;
    for (const double share : inverse)
        sum = 1 - sum * (rest * share);
    return sum * std::bit_cast<double>((1023 - static_cast<std::uint64_t>(count)) << 52U);
}

constexpr double smallestShare = 1e-3; // of the level
// Å from the surface of a ball, where it may still be the nearest one.
constexpr float besideBall = 2;

void removeUnusable(DensityProfile& profile) {
    const auto isUnusable = [](const GaussianTerm& term) {
        return !std::isfinite(term.amplitude) || term.amplitude == 0 ||
               !std::isfinite(term.exponent) || !(term.exponent > 0);
    };
    profile.erase(std::remove_if(profile.begin(), profile.end(), isUnusable), profile.end());
}

// How far from an atom each of its terms has that much.
double reachOf(const DensityProfile& profile, double least) {
    double square = 0;
    for (const GaussianTerm& term : profile)
        if (std::abs(term.amplitude) > least)
            square = std::max(square, std::log(std::abs(term.amplitude) / least) / term.exponent);
    return std::sqrt(square);
}

std::vector<Ball> reaches(std::span<const DensityAtom> atoms,
                          const std::vector<DensityProfile>& profiles, double level) {
    if (!(level > 0) || !std::isfinite(level))
        throw std::invalid_argument("the level of a density must be positive");
    std::vector<float> reach;
    reach.reserve(profiles.size());
    for (const DensityProfile& profile : profiles)
        reach.push_back(
            static_cast<float>(std::min(reachOf(profile, level * smallestShare), 20.0)));
    std::vector<Ball> balls;
    balls.reserve(atoms.size());
    for (const DensityAtom& atom : atoms) {
        if (atom.profile >= profiles.size())
            throw std::invalid_argument("an atom has a density that is not in the list");
        const float far = reach[atom.profile];
        const bool counts = isUsable(atom.ball) && far > 0;
        balls.push_back(
            {atom.ball.centre,
             counts ? std::min(std::max(far, atom.ball.radius + besideBall), 20.0F) : 0});
    }
    return balls;
}

// The corners of a block along one axis that an atom reaches.
struct Corners {
    int first;
    int last;
};

Corners reached(double centre, double radius, int start) {
    return {static_cast<int>(std::max(std::ceil(centre - radius) - start, 0.0)),
            static_cast<int>(std::min(std::floor(centre + radius) - start, double{blockSide}))};
}

// Where a row of corners begins in the values of a block.
std::size_t rowOf(int y, int z) {
    return static_cast<std::size_t>(z * blockCorners + y) * blockCorners;
}

} // namespace

DensityProfile blob(double radius) {
    constexpr double fall = 2.3;
    return {{1 / decay(fall), fall / (radius * radius)}};
}

DensityProfile electrons(std::span<const ScatteringTerm> factor, double temperatureFactor) {
    DensityProfile profile;
    for (const ScatteringTerm& term : factor) {
        const double width = term.width + temperatureFactor;
        if (!(width > 0))
            continue;
        const double ratio = 4 * std::numbers::pi / width;
        profile.push_back({term.amplitude * ratio * std::sqrt(ratio), std::numbers::pi * ratio});
    }
    return profile;
}

DensitySolid::DensitySolid(std::span<const DensityAtom> atoms, std::vector<DensityProfile> profiles,
                           double level, double step)
    : m_profiles(
          (std::for_each(profiles.begin(), profiles.end(), removeUnusable), std::move(profiles))),
      m_level(level), m_lists(reaches(atoms, m_profiles, level), step, 0) {
    m_profileOf.reserve(atoms.size());
    m_balls.reserve(atoms.size());
    for (const DensityAtom& atom : atoms) {
        m_profileOf.push_back(atom.profile);
        m_balls.push_back(atom.ball);
    }
}

// The terms are products of what they are along the three axes.
void DensitySolid::add(const GaussianTerm& term, const LatticeBall& ball, const BlockPlace& place,
                       Values& values) const {
    const double exponent = term.exponent * m_lists.step() * m_lists.step();
    std::array<std::array<double, blockCorners>, 3> parts{};
    std::array<Corners, 3> corners{};
    for (std::size_t axis = 0; axis != 3; ++axis) {
        const int start = place[axis] * blockSide;
        corners[axis] = reached(ball.centre[axis], ball.radius, start);
        for (int i = corners[axis].first; i <= corners[axis].last; ++i) {
            const double apart = start + i - ball.centre[axis];
            parts[axis][static_cast<std::size_t>(i)] = decay(exponent * apart * apart);
        }
    }
    for (int z = corners[2].first; z <= corners[2].last; ++z)
        for (int y = corners[1].first; y <= corners[1].last; ++y) {
            const double factor = term.amplitude * parts[2][static_cast<std::size_t>(z)] *
                                  parts[1][static_cast<std::size_t>(y)];
            double* const row = values.data() + rowOf(y, z);
            for (int x = corners[0].first; x <= corners[0].last; ++x)
                row[x] += factor * parts[0][static_cast<std::size_t>(x)];
        }
}

void DensitySolid::sumUp(std::size_t block, Values& values) const {
    values.fill(0);
    for (const std::uint32_t index : m_lists.ballsOf(block))
        for (const GaussianTerm& term : m_profiles[m_profileOf[index]])
            add(term, m_lists.ball(index), m_lists.blocks()[block], values);
}

void DensitySolid::findInside(std::size_t block, OwnSigns& signs) const {
    const auto values = std::make_unique<Values>();
    sumUp(block, *values);
    for (int z = 0; z != blockSide; ++z)
        for (int y = 0; y != blockSide; ++y) {
            const double* const row = values->data() + rowOf(y, z);
            unsigned bits = 0;
            for (int x = 0; x != blockSide; ++x)
                bits |= static_cast<unsigned>(row[x] >= m_level) << x;
            signs.row(y, z) = static_cast<std::uint16_t>(bits);
        }
}

// `point` and the gradient are in steps of the lattice.
DensitySolid::Sample DensitySolid::sampleAt(std::size_t block, const Vector& point) const {
    Sample sample{0, {}, 0};
    double least = std::numeric_limits<double>::infinity();
    const double step = m_lists.step();
    for (const std::uint32_t index : m_lists.ballsOf(block)) {
        const LatticeBall& ball = m_lists.ball(index);
        const Vector apart = {point.x - ball.centre[0], point.y - ball.centre[1],
                              point.z - ball.centre[2]};
        const double square = dot(apart, apart);
        // Most are farther from their surfaces than the nearest one so far: no root is needed.
        const double within = (least + m_balls[index].radius) / step;
        if (within > 0 && square < within * within) {
            least = std::sqrt(square) * step - m_balls[index].radius;
            sample.ball = index;
        }
        if (square > ball.radius * ball.radius)
            continue;
        for (const GaussianTerm& term : m_profiles[m_profileOf[index]]) {
            const double exponent = term.exponent * step * step;
            const double value = term.amplitude * decay(exponent * square);
            sample.value += value;
            sample.gradient = sample.gradient - apart * (2 * exponent * value);
        }
    }
    return sample;
}

Crossing DensitySolid::crossing(std::size_t block, const Vector& inside, const Vector& outside,
                                double in, double out) const {
    const Vector way = outside - inside;
    double low = 0;
    double high = 1;
    double share = (in - m_level) / (in - out);
    constexpr int most = 5;
    Sample sample = sampleAt(block, inside + way * share);
    for (int i = 1; i != most && std::abs(sample.value - m_level) > 1e-4 * m_level; ++i) {
        const double excess = sample.value - m_level;
        (excess >= 0 ? low : high) = share;
        const double next = share - excess / dot(sample.gradient, way);
        share = next > low && next < high ? next : (low + high) / 2;
        sample = sampleAt(block, inside + way * share);
    }
    const double size = length(sample.gradient);
    return {pointOf((inside + way * share) * m_lists.step()),
            size > 0 ? pointOf(sample.gradient * (-1 / size)) : Point{0, 0, 1}, sample.ball};
}

void DensitySolid::findCrossings(std::size_t block, const BlockEdges& edges,
                                 std::vector<Crossing>& crossings) const {
    const auto values = std::make_unique<Values>();
    sumUp(block, *values);
    const auto valueAt = [&](const std::array<int, 3>& corner) {
        return (*values)[rowOf(corner[1], corner[2]) + static_cast<std::size_t>(corner[0])];
    };
    for (const BlockEdge& edge : edges.own()) {
        std::array<int, 3> inside = {edge.corner[0], edge.corner[1], edge.corner[2]};
        std::array<int, 3> outside = inside;
        ++(edge.isLowInside ? outside : inside)[edge.axis];
        const BlockPlace& place = m_lists.blocks()[block];
        const auto vectorAt = [&](const std::array<int, 3>& corner) {
            return Vector{double(place[0] * blockSide + corner[0]),
                          double(place[1] * blockSide + corner[1]),
                          double(place[2] * blockSide + corner[2])};
        };
        crossings.push_back(crossing(block, vectorAt(inside), vectorAt(outside), valueAt(inside),
                                     valueAt(outside)));
    }
}

} // namespace solid
