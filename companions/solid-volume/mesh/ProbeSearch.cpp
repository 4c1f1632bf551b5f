#include "ProbeSearch.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace solid {

namespace {

Point minus(const Point& a, const Point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
float dotOf(const Point& a, const Point& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Point along(const Point& a, const Point& direction, float far) {
    return {a[0] + direction[0] * far, a[1] + direction[1] * far, a[2] + direction[2] * far};
}

// Å; a place on two balls may be within a third one by rounding.
constexpr float tolerance = 1e-5F;
constexpr float nowhere = 1e6F;

} // namespace

void ProbeSearch::clear(const Vector& origin) {
    m_origin = origin;
    m_balls.clear();
    m_hidden.clear();
    m_lanes.clear();
    m_tracks.clear();
    m_places.clear();
    m_lastBlocker = 0;
}

void ProbeSearch::Fours::clear() {
    all.clear();
    count = 0;
}

void ProbeSearch::Fours::add(const Ball& grown, const Vector& origin, std::uint32_t index) {
    const std::size_t lane = count++ % lanes;
    if (lane == 0) {
        Four none{};
        none.x.fill(nowhere);
        all.push_back(none);
    }
    Four& four = all.back();
    const Point centre = pointOf(vectorOf(grown.centre) - origin);
    four.x[lane] = centre[0];
    four.y[lane] = centre[1];
    four.z[lane] = centre[2];
    four.radius[lane] = grown.radius;
    const float shorter = std::max(grown.radius - tolerance, 0.0F);
    four.square[lane] = shorter * shorter;
    four.ball[lane] = index;
}

void ProbeSearch::addBall(const Ball& grown, std::uint32_t index) {
    m_balls.add(grown, m_origin, index);
}

void ProbeSearch::addHidden(const Ball& grown, std::uint32_t index) {
    m_hidden.add(grown, m_origin, index);
}

void ProbeSearch::addArc(const Arc& arc) {
    const std::size_t lane = m_tracks.size() % lanes;
    if (lane == 0) {
        Tracks none{};
        none.x.fill(nowhere);
        m_lanes.push_back(none);
    }
    Tracks& four = m_lanes.back();
    const Point centre = pointOf(arc.centre - m_origin);
    const Point axis = pointOf(arc.axis);
    four.x[lane] = centre[0];
    four.y[lane] = centre[1];
    four.z[lane] = centre[2];
    four.axisX[lane] = axis[0];
    four.axisY[lane] = axis[1];
    four.axisZ[lane] = axis[2];
    four.radius[lane] = static_cast<float>(arc.radius);
    m_tracks.push_back({pointOf(cross(arc.axis, arc.first)), pointOf(cross(arc.last, arc.axis)),
                        pointOf(arc.first + arc.last), arc.isClosed, arc.isWide});
}

void ProbeSearch::addPlace(const ProbePlace& place) {
    m_places.push_back(pointOf(place.centre - m_origin));
}

bool ProbeSearch::isFree(const Point& centre) {
    const Floats x = all(centre[0]);
    const Floats y = all(centre[1]);
    const Floats z = all(centre[2]);
    const auto blocks = [&](const Four& four) {
        const Floats dx = load(four.x) - x;
        const Floats dy = load(four.y) - y;
        const Floats dz = load(four.z) - z;
        return bitsOf(dx * dx + dy * dy + dz * dz < load(four.square)) != 0;
    };
    const std::vector<Four>& balls = m_balls.all;
    if (balls.empty())
        return true;
    if (blocks(balls[m_lastBlocker]))
        return false;
    for (std::size_t i = 0; i != balls.size(); ++i)
        if (blocks(balls[i])) {
            m_lastBlocker = i;
            return false;
        }
    return true;
}

void ProbeSearch::searchPlaces(const Point& point, Probe& best) const {
    for (const Point& place : m_places) {
        const Point apart = minus(point, place);
        const float square = dotOf(apart, apart);
        if (square < best.distance * best.distance)
            best = {place, std::sqrt(square)};
    }
}

// `flat` is a point in the arc's plane, from its centre, and that far from there. On the far side
// of the circle rounding may hide on which side of an end a point is.
bool ProbeSearch::isOn(const Track& track, const Point& flat, float far) {
    if (track.isClosed)
        return true;
    const bool isAfter = dotOf(flat, track.afterFirst) >= 0;
    const bool isBefore = dotOf(flat, track.beforeLast) >= 0;
    const bool isNear = dotOf(flat, track.middle) > -far / 2;
    return track.isWide ? isAfter || isBefore || !isNear : isAfter && isBefore && isNear;
}

template <bool isFirstEnough>
void ProbeSearch::searchTracks(const Point& point, Probe& best) const {
    const Floats x = all(point[0]);
    const Floats y = all(point[1]);
    const Floats z = all(point[2]);
    for (std::size_t i = 0; i != m_lanes.size(); ++i) {
        const Tracks& four = m_lanes[i];
        const Floats outX = x - load(four.x);
        const Floats outY = y - load(four.y);
        const Floats outZ = z - load(four.z);
        const Floats height =
            outX * load(four.axisX) + outY * load(four.axisY) + outZ * load(four.axisZ);
        const Floats flatX = outX - load(four.axisX) * height;
        const Floats flatY = outY - load(four.axisY) * height;
        const Floats flatZ = outZ - load(four.axisZ) * height;
        const Floats far = squareRoot(flatX * flatX + flatY * flatY + flatZ * flatZ);
        const Floats aside = far - load(four.radius);
        const Floats square = height * height + aside * aside;
        unsigned near = bitsOf(square < all(best.distance * best.distance));
        for (; near != 0; near &= near - 1) {
            const auto lane = static_cast<std::size_t>(std::countr_zero(near));
            const Track& track = m_tracks[i * lanes + lane];
            const Point flat = {flatX[lane], flatY[lane], flatZ[lane]};
            if (!(square[lane] < best.distance * best.distance) || !(far[lane] > 0) ||
                !isOn(track, flat, far[lane]))
                continue;
            const Point centre = {four.x[lane], four.y[lane], four.z[lane]};
            best = {along(centre, flat, four.radius[lane] / far[lane]), std::sqrt(square[lane])};
            if (isFirstEnough)
                return;
        }
    }
}

template <bool isFirstEnough> void ProbeSearch::searchBalls(const Point& point, Probe& best) {
    const Floats x = all(point[0]);
    const Floats y = all(point[1]);
    const Floats z = all(point[2]);
    for (const Four& four : m_balls.all) {
        const Floats dx = x - load(four.x);
        const Floats dy = y - load(four.y);
        const Floats dz = z - load(four.z);
        const Floats far = squareRoot(dx * dx + dy * dy + dz * dz);
        const Floats gap = far - load(four.radius);
        unsigned near = bitsOf((gap < all(best.distance)) & (-gap < all(best.distance)));
        for (; near != 0; near &= near - 1) {
            const auto lane = static_cast<std::size_t>(std::countr_zero(near));
            const float distance = std::abs(gap[lane]);
            if (!(distance < best.distance) || !(far[lane] > 0))
                continue;
            const float scale = four.radius[lane] / far[lane];
            const Point on = {four.x[lane] + dx[lane] * scale, four.y[lane] + dy[lane] * scale,
                              four.z[lane] + dz[lane] * scale};
            if (!isFree(on))
                continue;
            best = {on, distance};
            if (isFirstEnough)
                return;
        }
    }
}

template <bool isFirstEnough>
ProbeSearch::Probe ProbeSearch::search(const Point& point, float within) {
    Probe best{point, within};
    searchPlaces(point, best);
    if (isFirstEnough && best.distance < within)
        return best;
    searchTracks<isFirstEnough>(point, best);
    if (isFirstEnough && best.distance < within)
        return best;
    searchBalls<isFirstEnough>(point, best);
    return best;
}

bool ProbeSearch::isAny(const Point& point, float within) {
    return search<true>(point, within).distance < within;
}

ProbeSearch::Probe ProbeSearch::nearest(const Point& point, float within) {
    return search<false>(point, within);
}

ProbeSearch::Named ProbeSearch::nearestOf(const std::vector<Four>& balls, const Point& point) {
    Floats least = all(std::numeric_limits<float>::infinity());
    Ints where = {};
    std::int32_t index = 0;
    for (const Four& four : balls) {
        const Floats dx = load(four.x) - all(point[0]);
        const Floats dy = load(four.y) - all(point[1]);
        const Floats dz = load(four.z) - all(point[2]);
        const Floats gap = squareRoot(dx * dx + dy * dy + dz * dz) - load(four.radius);
        const Ints isLess = gap < least;
        least = isLess ? gap : least;
        where = isLess ? Ints{index, index, index, index} : where;
        ++index;
    }
    std::size_t best = 0;
    for (std::size_t lane = 1; lane != lanes; ++lane)
        if (least[lane] < least[best] || (least[lane] == least[best] && where[lane] < where[best]))
            best = lane;
    return {least[best], balls[static_cast<std::size_t>(where[best])].ball[best]};
}

std::uint32_t ProbeSearch::nearestBall(const Point& point) const {
    const Named kept = nearestOf(m_balls.all, point);
    if (m_hidden.all.empty())
        return kept.ball;
    const Named hidden = nearestOf(m_hidden.all, point);
    return hidden.gap < kept.gap ? hidden.ball : kept.ball;
}

} // namespace solid
