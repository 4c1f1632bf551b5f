#include "Arcs.h"

#include "BallLists.h"
#include "CapSieve.h"
#include "CircleCover.h"
#include "Neighbours.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace solid {

namespace {

using Pair = std::pair<std::uint32_t, std::uint32_t>;

// A direction in the plane of a circle.
struct Heading {
    double x;
    double y;
};

// Grows with the angle, 0 to 4 for a whole turn. Unlike an angle it takes no more than what every
// machine rounds alike.
constexpr double turn = 4;
double turned(const Heading& heading) {
    const double share = heading.y / (std::abs(heading.x) + std::abs(heading.y));
    if (heading.x < 0)
        return 2 - share;
    return heading.y < 0 ? 4 + share : share;
}

Vector directionOf(const Circle& circle, const Heading& heading) {
    return circle.across * heading.x + circle.along * heading.y;
}

// Where two balls meet; its radius is 0 if they do not.
Circle circleOf(const Ball& a, const Ball& b) {
    Circle circle{};
    const Vector apart = vectorOf(b.centre) - vectorOf(a.centre);
    const double square = dot(apart, apart);
    if (!(square > 1e-12))
        return circle;
    const double radius = double{a.radius} * a.radius;
    const double share = (square + radius - double{b.radius} * b.radius) / (2 * square);
    const double left = radius - share * share * square;
    if (!(left > 0))
        return circle;
    circle.centre = vectorOf(a.centre) + apart * share;
    circle.axis = apart * (1 / std::sqrt(square));
    const Vector other = std::abs(circle.axis.x) < 0.6 ? Vector{1, 0, 0} : Vector{0, 1, 0};
    const Vector side = cross(circle.axis, other);
    circle.across = side * (1 / length(side));
    circle.along = cross(circle.axis, circle.across);
    circle.radius = std::sqrt(left);
    return circle;
}

// The part of a circle that a third ball covers.
struct Cover {
    double first; // 0 to 4
    double last;  // may be beyond
    Heading begin;
    Heading end;
    std::uint32_t ball;
};

enum class Covered { None, Part, All };

Covered coverOf(const Circle& circle, const Ball& ball, Cover& cover) {
    const Vector apart = circle.centre - vectorOf(ball.centre);
    const double x = dot(apart, circle.across);
    const double y = dot(apart, circle.along);
    const double most = std::sqrt(x * x + y * y);
    const double limit =
        (double{ball.radius} * ball.radius - dot(apart, apart) - circle.radius * circle.radius) /
        (2 * circle.radius);
    constexpr double tolerance = 1e-9; // Å, for a ball that stands where one of the two does
    if (limit <= tolerance - most)
        return Covered::None;
    if (limit >= most)
        return Covered::All;
    // What is free is around (x, y), half of it to either side.
    const double cosine = limit / most;
    const double sine = std::sqrt(std::max(1 - cosine * cosine, 0.0));
    cover.begin = {(x * cosine - y * sine) / most, (y * cosine + x * sine) / most};
    cover.end = {(x * cosine + y * sine) / most, (y * cosine - x * sine) / most};
    cover.first = turned(cover.begin);
    cover.last = turned(cover.end);
    if (cover.last < cover.first || (cover.last == cover.first && cosine > 0))
        cover.last += turn;
    return Covered::Part;
}

// Follows a probe around one ball after the other.
class Follower {
public:
    Follower(std::span<const Ball> grown, const Neighbours& neighbours)
        : m_grown(grown), m_neighbours(neighbours) {}

    // Around the circles with balls of higher numbers.
    void follow(std::uint32_t ball, ProbeTracks& tracks) {
        m_neighbours.find(ball, m_near);
        if (m_near.empty())
            return tracks.alone.push_back(ball);
        const Vector centre = vectorOf(m_grown[ball].centre);
        m_order.clear();
        for (const std::uint32_t other : m_near) {
            const Vector apart = vectorOf(m_grown[other].centre) - centre;
            m_order.emplace_back(dot(apart, apart), other);
        }
        std::sort(m_order.begin(), m_order.end());
        constexpr std::size_t many = 128; // In a molecule with all hydrogens it is some 100.
        const bool isCrowd = m_near.size() > many;
        if (isCrowd && !sift(ball))
            return;
        m_cover.clear(centre);
        for (const auto& [square, other] : m_order)
            m_cover.add(m_grown[other]);
        for (const std::uint32_t other : isCrowd ? m_touching : m_near)
            if (other > ball)
                follow({ball, other}, tracks);
    }

private:
    // Leaves those near a ball that decide about what is free of its sphere; false if nothing is.
    bool sift(std::uint32_t ball) {
        m_sieve.clear(m_grown[ball]);
        for (std::size_t i = 0; i != m_order.size(); ++i)
            m_sieve.add(m_grown[m_order[i].second], static_cast<std::uint32_t>(i));
        if (!m_sieve.sift())
            return false;
        m_sieve.find(m_sifted);
        m_touching.clear();
        for (const std::uint32_t i : m_sifted.touching)
            m_touching.push_back(m_order[i].second);
        std::sort(m_touching.begin(), m_touching.end());
        m_near.clear();
        for (std::size_t i = 0; i != m_sifted.covering.size(); ++i) {
            m_order[i] = m_order[m_sifted.covering[i]];
            m_near.push_back(m_order[i].second);
        }
        m_order.resize(m_near.size());
        std::sort(m_near.begin(), m_near.end());
        return true;
    }

    void follow(const Pair& pair, ProbeTracks& tracks) {
        const Circle circle = circleOf(m_grown[pair.first], m_grown[pair.second]);
        if (!(circle.radius > 0) || m_cover.isAllAround(circle) || !findCovers(circle, pair))
            return;
        if (m_covers.empty()) {
            tracks.arcs.push_back({{pair.first, pair.second},
                                   circle.centre,
                                   circle.axis,
                                   circle.radius,
                                   circle.across,
                                   circle.across,
                                   true,
                                   true});
            return;
        }
        std::sort(m_covers.begin(), m_covers.end(), [](const Cover& a, const Cover& b) {
            return a.first != b.first ? a.first < b.first : a.ball < b.ball;
        });
        // Begins with what the covers that pass the start leave of it.
        Cover reached = m_covers.front();
        for (const Cover& cover : m_covers)
            if (cover.last > reached.last)
                reached = cover;
        reached.last -= turn;
        for (const Cover& cover : m_covers) {
            if (cover.first > reached.last)
                add(circle, pair, reached, cover, tracks);
            if (cover.last > reached.last)
                reached = cover;
        }
    }

    // False if nothing of the circle is free.
    bool findCovers(const Circle& circle, const Pair& pair) {
        m_covers.clear();
        for (const std::uint32_t ball : m_near) {
            if (ball == pair.second)
                continue;
            Cover cover{};
            cover.ball = ball;
            const Covered covered = coverOf(circle, m_grown[ball], cover);
            if (covered == Covered::None)
                continue;
            if (covered == Covered::All)
                return false;
            m_covers.push_back(cover);
        }
        return true;
    }

    // The arc from where one cover ends to where the next begins.
    static void add(const Circle& circle, const Pair& pair, const Cover& before, const Cover& after,
                    ProbeTracks& tracks) {
        const Heading& from = before.end;
        const Heading& to = after.begin;
        const Arc arc{{pair.first, pair.second},
                      circle.centre,
                      circle.axis,
                      circle.radius,
                      directionOf(circle, from),
                      directionOf(circle, to),
                      false,
                      after.first - before.last > turn / 2};
        tracks.arcs.push_back(arc);
        const auto meet = [&](std::uint32_t third, const Vector& end) {
            std::array<std::uint32_t, 3> balls = {pair.first, pair.second, third};
            std::sort(balls.begin(), balls.end());
            tracks.places.push_back({balls, arc.centre + end * arc.radius});
        };
        meet(before.ball, arc.first);
        meet(after.ball, arc.last);
    }

    std::span<const Ball> m_grown;
    const Neighbours& m_neighbours;
    std::vector<Cover> m_covers;
    std::vector<std::uint32_t> m_near;
    std::vector<std::pair<double, std::uint32_t>> m_order; // of these, the nearest first
    CircleCover m_cover;                                   // likewise
    CapSieve m_sieve;
    CapSieve::Found m_sifted;
    std::vector<std::uint32_t> m_touching; // of those near
};

// A place is found from each of the pairs of balls that it touches.
void mergePlaces(std::vector<ProbePlace>& places) {
    std::sort(places.begin(), places.end(), [](const ProbePlace& a, const ProbePlace& b) {
        return a.balls != b.balls ? a.balls < b.balls : a.centre.x < b.centre.x;
    });
    constexpr double same = 1e-6; // Å
    places.erase(std::unique(places.begin(), places.end(),
                             [](const ProbePlace& a, const ProbePlace& b) {
                                 const Vector apart = b.centre - a.centre;
                                 return a.balls == b.balls && dot(apart, apart) < same * same;
                             }),
                 places.end());
}

} // namespace

ProbeTracks findTracks(std::span<const Ball> grown, const ForEach& forEach) {
    const Neighbours neighbours(grown);
    constexpr std::size_t portion = 256;
    std::vector<ProbeTracks> parts((grown.size() + portion - 1) / portion);
    forEach(parts.size(), [&](std::size_t i) {
        Follower follower(grown, neighbours);
        const std::size_t end = std::min((i + 1) * portion, grown.size());
        for (std::size_t ball = i * portion; ball != end; ++ball)
            if (isUsable(grown[ball]))
                follower.follow(static_cast<std::uint32_t>(ball), parts[i]);
        mergePlaces(parts[i].places);
    });
    std::size_t arcs = 0;
    std::size_t places = 0;
    for (const ProbeTracks& part : parts) {
        arcs += part.arcs.size();
        places += part.places.size();
    }
    ProbeTracks tracks;
    tracks.arcs.reserve(arcs);
    tracks.places.reserve(places);
    for (ProbeTracks& part : parts) {
        tracks.arcs.insert(tracks.arcs.end(), part.arcs.begin(), part.arcs.end());
        tracks.places.insert(tracks.places.end(), part.places.begin(), part.places.end());
        tracks.alone.insert(tracks.alone.end(), part.alone.begin(), part.alone.end());
        part = {};
    }
    mergePlaces(tracks.places);
    tracks.places.shrink_to_fit();
    return tracks;
}

} // namespace solid
