#include "CircleCover.h"

#include <cmath>
#include <numbers>

namespace solid {

namespace {

// Points of a circle, whose sectors are between each two.
constexpr std::size_t samples = 16;
constexpr unsigned everywhere = (1U << samples) - 1;

struct Directions {
    std::array<Lanes, samples / lanes> x;
    std::array<Lanes, samples / lanes> y;
};

const Directions directions = [] {
    Directions made{};
    for (std::size_t i = 0; i != samples; ++i) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(i) / samples;
        made.x[i / lanes][i % lanes] = static_cast<float>(std::cos(angle));
        made.y[i / lanes][i % lanes] = static_cast<float>(std::sin(angle));
    }
    return made;
}();

// A bit for each sample in whose direction (x, y) is shorter than a limit.
unsigned samplesWithin(float x, float y, float limit) {
    unsigned bits = 0;
    for (std::size_t i = 0; i != samples / lanes; ++i)
        bits |= bitsOf(load(directions.x[i]) * all(x) + load(directions.y[i]) * all(y) < all(limit))
                << (i * lanes);
    return bits;
}

} // namespace

void CircleCover::clear(const Vector& origin) {
    m_origin = origin;
    m_fours.clear();
    m_count = 0;
}

void CircleCover::add(const Ball& ball) {
    const std::size_t lane = m_count++ % lanes;
    if (lane == 0) {
        Four none{};
        none.square.fill(-1e6F);
        m_fours.push_back(none);
    }
    Four& four = m_fours.back();
    const Point centre = pointOf(vectorOf(ball.centre) - m_origin);
    four.x[lane] = centre[0];
    four.y[lane] = centre[1];
    four.z[lane] = centre[2];
    four.square[lane] = ball.radius * ball.radius;
}

bool CircleCover::isAllAround(const Circle& circle) const {
    constexpr float margin = 1e-3F; // Å, for single precision
    const Point centre = pointOf(circle.centre - m_origin);
    const Point across = pointOf(circle.across);
    const Point along = pointOf(circle.along);
    const auto radius = static_cast<float>(circle.radius);
    const float scale = 0.5F / radius;
    unsigned sectors = 0;
    for (const Four& four : m_fours) {
        const Floats dx = all(centre[0]) - load(four.x);
        const Floats dy = all(centre[1]) - load(four.y);
        const Floats dz = all(centre[2]) - load(four.z);
        const Floats x = dx * all(across[0]) + dy * all(across[1]) + dz * all(across[2]);
        const Floats y = dx * all(along[0]) + dy * all(along[1]) + dz * all(along[2]);
        const Floats limit =
            (load(four.square) - (dx * dx + dy * dy + dz * dz) - all(radius * radius)) *
                all(scale) -
            all(margin);
        for (std::size_t lane = 0; lane != lanes; ++lane) {
            const unsigned within = samplesWithin(x[lane], y[lane], limit[lane]);
            if (within != everywhere)
                sectors |= within & ((within >> 1) | (within << (samples - 1)));
            else if (limit[lane] * limit[lane] > x[lane] * x[lane] + y[lane] * y[lane])
                return true;
            // Otherwise what is free is in one sector, which is as good as any.
        }
        if ((sectors & everywhere) == everywhere)
            return true;
    }
    return false;
}

} // namespace solid
