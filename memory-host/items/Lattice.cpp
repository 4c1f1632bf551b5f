#include "Lattice.h"

#include <algorithm>
#include <cmath>

namespace memory_host {

namespace {

using Triple = Lattice::Triple;

// Longer vectors lead out of any grid that fits into memory, and incommensurable steps could be
// combined for ever.
constexpr double mostSteps = 1 << 20;
// Each round halves some vector or is among the last few.
constexpr int mostRounds = 200;
// Positions beyond this count as "far outside".
constexpr double farthest = 1e15; // Å

double dot(const Triple& a, const Triple& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// a + factor * b
Triple sum(const Triple& a, double factor, const Triple& b) {
    return {a[0] + factor * b[0], a[1] + factor * b[1], a[2] + factor * b[2]};
}

bool isTooLong(const Triple& index) {
    return std::any_of(index.begin(), index.end(),
                       [](double steps) { return std::abs(steps) > mostSteps; });
}

} // namespace

Lattice::Lattice(const std::array<Triple, 3>& steps) : m_steps(steps) {
    double longest = 0.0;
    for (const Triple& step : steps)
        longest = std::max(longest, dot(step, step));
    m_null = longest * 1e-24;
    m_basis = {vectorOf({1, 0, 0}), vectorOf({0, 1, 0}), vectorOf({0, 0, 1}),
               vectorOf({-1, -1, -1})};
    shorten();
    makeObtuse();
    orthogonalize();
    // In an obtuse superbase (three vectors and minus their sum), the vectors between neighbours
    // are the sums of some of the four; the other sums are their negatives.
    for (std::size_t some = 1; some != 8; ++some) {
        Triple index{};
        for (const std::size_t i : {0, 1, 2})
            if (some >> i & 1)
                index = sum(index, 1, m_basis[i].index);
        m_neighbours[some - 1] = vectorOf(index);
    }
}

Lattice::Vector Lattice::vectorOf(const Triple& index) const {
    Vector vector{index, {}, 0.0};
    for (const std::size_t axis : {0, 1, 2})
        vector.at = sum(vector.at, index[axis], m_steps[axis]);
    vector.squared = dot(vector.at, vector.at);
    return vector;
}

// Subtracts integer multiples of one vector from another as long as that makes it shorter (Lagrange
// and Gauss): many steps at once, which the next reduction would take one by one.
void Lattice::shorten() {
    bool changed = true;
    for (int round = 0; changed && round != mostRounds; ++round) {
        changed = false;
        for (const std::size_t i : {0, 1, 2})
            for (const std::size_t j : {0, 1, 2}) {
                if (i == j || isNull(m_basis[j].squared))
                    continue;
                const double times =
                    std::round(dot(m_basis[i].at, m_basis[j].at) / m_basis[j].squared);
                const Vector shorter = vectorOf(sum(m_basis[i].index, -times, m_basis[j].index));
                if (times == 0 || isTooLong(shorter.index) ||
                    shorter.squared >= m_basis[i].squared * (1 - 1e-9))
                    continue;
                m_basis[i] = shorter;
                changed = true;
            }
    }
    m_basis[3] = vectorOf(
        sum(sum(sum({}, -1, m_basis[0].index), -1, m_basis[1].index), -1, m_basis[2].index));
}

// Makes all angles between the four vectors at least 90 degrees (Selling). While an angle is acute,
// negating one of its vectors and adding the old one to the two others reduces the sum of squares.
void Lattice::makeObtuse() {
    for (int round = 0; round != mostRounds; ++round) {
        std::size_t turned = 0;
        std::size_t partner = 0;
        double most = 1e-9;
        for (std::size_t i = 0; i != 4; ++i)
            for (std::size_t j = i + 1; j != 4; ++j) {
                const double longer = std::max(m_basis[i].squared, m_basis[j].squared);
                const double product = dot(m_basis[i].at, m_basis[j].at);
                if (isNull(longer) || product <= most * longer)
                    continue;
                most = product / longer;
                turned = i;
                partner = j;
            }
        if (turned == partner)
            return;
        std::array<Vector, 4> next = m_basis;
        const Triple& was = m_basis[turned].index;
        next[turned] = vectorOf(sum({}, -1, was));
        for (std::size_t k = 0; k != 4; ++k)
            if (k != turned && k != partner)
                next[k] = vectorOf(sum(m_basis[k].index, 1, was));
        if (std::any_of(next.begin(), next.end(),
                        [](const Vector& vector) { return isTooLong(vector.index); }))
            return;
        m_basis = next;
    }
}

void Lattice::orthogonalize() {
    for (std::size_t i = 0; i != 3; ++i) {
        Triple rest = m_basis[i].at;
        for (std::size_t j = 0; j != i; ++j)
            if (!isNull(m_orthogonal[j].squared))
                rest = sum(rest, -dot(rest, m_orthogonal[j].at) / m_orthogonal[j].squared,
                           m_orthogonal[j].at);
        m_orthogonal[i] = {{}, rest, dot(rest, rest)};
    }
}

Triple Lattice::nearest(const Triple& place) const {
    Triple rest{};
    for (const std::size_t k : {0, 1, 2}) {
        if (std::isnan(place[k]))
            return {-farAway, -farAway, -farAway};
        rest[k] = std::clamp(place[k], -farthest, farthest);
    }
    Triple index{};
    const auto step = [&](double times, const Vector& vector) {
        rest = sum(rest, -times, vector.at);
        index = sum(index, times, vector.index);
    };
    // Rounding plane by plane (Babai) finds a near point, and in a rectangular grid the nearest.
    for (const std::size_t i : {2, 1, 0})
        if (const Vector& across = m_orthogonal[i]; !isNull(across.squared))
            step(std::round(dot(rest, across.at) / across.squared), m_basis[i]);
    // From there a few steps between neighbours lead to the nearest.
    bool moved = true;
    for (int round = 0; moved && round != mostRounds; ++round) {
        moved = false;
        for (const Vector& neighbour : m_neighbours) {
            if (isNull(neighbour.squared))
                continue;
            const double times = dot(rest, neighbour.at) / neighbour.squared;
            if (std::abs(times) <= 0.5 + 1e-9)
                continue;
            step(std::round(times), neighbour);
            moved = true;
        }
    }
    for (double& steps : index)
        steps = std::clamp(steps, -farAway, farAway);
    return index;
}

} // namespace memory_host
