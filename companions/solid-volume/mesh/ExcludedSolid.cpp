#include "ExcludedSolid.h"

#include "Crowd.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <utility>

namespace solid {

namespace {

// Corners of a box, for which what is near is looked up together.
constexpr int boxSide = 4;
constexpr int boxes = blockSide / boxSide; // along each axis

void check(double step, double probe) {
    if (!(probe >= 0.1 && probe <= 10))
        throw std::invalid_argument("the radius of a probe must be 0.1 to 10 Å");
    // From a corner that no probe reaches the way in would not be found.
    if (!(step <= 2 * probe))
        throw std::invalid_argument("the step of the lattice must be at most a probe's diameter");
}

std::vector<Ball> grownBy(std::span<const Ball> balls, double margin) {
    std::vector<Ball> grown(balls.begin(), balls.end());
    for (Ball& ball : grown)
        if (isUsable(ball))
            ball.radius += static_cast<float>(margin);
    return grown;
}

// A ball that holds an arc.
struct Bound {
    Vector centre;
    double radius;
};

Bound boundOf(const Arc& arc) {
    if (arc.isClosed || arc.isWide)
        return {arc.centre, arc.radius};
    return {arc.centre + (arc.first + arc.last) * (arc.radius / 2),
            length(arc.last - arc.first) * arc.radius / 2};
}

// Adds a number to the lists of all blocks with a point within reach.
void addTo(std::vector<std::vector<std::uint32_t>>& lists, std::span<const BlockPlace> blocks,
           const Vector& centre, double reach, double step, std::uint32_t number) {
    const double side = step * blockSide;
    const std::array<double, 3> at = {centre.x, centre.y, centre.z};
    std::array<int, 3> first{};
    std::array<int, 3> last{};
    for (std::size_t axis = 0; axis != 3; ++axis) {
        first[axis] = static_cast<int>(std::floor((at[axis] - reach) / side));
        last[axis] = static_cast<int>(std::floor((at[axis] + reach) / side));
    }
    for (int z = first[2]; z <= last[2]; ++z)
        for (int y = first[1]; y <= last[1]; ++y)
            for (int x = first[0]; x <= last[0]; ++x) {
                const std::size_t block = findBlock(blocks, {x, y, z});
                if (block != blocks.size())
                    lists[block].push_back(number);
            }
}

Point cornerAt(const std::array<int, 3>& corner, float step) {
    return {static_cast<float>(corner[0]) * step, static_cast<float>(corner[1]) * step,
            static_cast<float>(corner[2]) * step};
}

} // namespace

ExcludedSolid::ExcludedSolid(std::span<const Ball> balls, double step, double probe,
                             const ForEach& forEach)
    : m_grown((check(step, probe), grownBy(balls, probe))), m_kept(withoutCrowd(m_grown, forEach)),
      m_probe(probe), m_balls(m_grown, step, -probe), m_reach(m_kept, step, 0),
      m_around(m_grown, step, probe + step), m_tracks(findTracks(m_kept, forEach)) {
    const std::span<const BlockPlace> all = blocks();
    m_arcsOf.resize(all.size());
    m_placesOf.resize(all.size());
    const double reach = probe + step;
    for (std::size_t i = 0; i != m_tracks.arcs.size(); ++i) {
        const Bound bound = boundOf(m_tracks.arcs[i]);
        addTo(m_arcsOf, all, bound.centre, bound.radius + reach, step,
              static_cast<std::uint32_t>(i));
    }
    for (std::size_t i = 0; i != m_tracks.places.size(); ++i)
        addTo(m_placesOf, all, m_tracks.places[i].centre, reach, step,
              static_cast<std::uint32_t>(i));
}

bool ExcludedSolid::isAlone(std::uint32_t ball) const {
    return std::binary_search(m_tracks.alone.begin(), m_tracks.alone.end(), ball);
}

double ExcludedSolid::knownArea() const {
    double area = 0;
    for (const std::uint32_t ball : m_tracks.alone) {
        const double radius = m_grown[ball].radius - m_probe;
        area += 4 * std::numbers::pi * radius * radius;
    }
    return area;
}

ExcludedSolid::Surroundings ExcludedSolid::surroundings(std::size_t block) const {
    const BlockPlace& place = blocks()[block];
    const double side = m_around.step() * blockSide;
    Surroundings around{{place[0] * side, place[1] * side, place[2] * side}, {}, {}, {}, {}};
    const std::size_t there = findBlock(m_around.blocks(), place);
    if (there != m_around.blocks().size())
        for (const std::uint32_t index : m_around.ballsOf(there))
            (m_kept[index].radius > 0 ? around.balls : around.hidden)
                .add(vectorOf(m_grown[index].centre) - around.origin,
                     m_grown[index].radius + m_probe, index);
    for (const std::uint32_t index : m_arcsOf[block]) {
        const Bound bound = boundOf(m_tracks.arcs[index]);
        around.arcs.add(bound.centre - around.origin, bound.radius + m_probe, index);
    }
    for (const std::uint32_t index : m_placesOf[block])
        around.places.add(m_tracks.places[index].centre - around.origin, m_probe, index);
    return around;
}

Box ExcludedSolid::boxAt(const Point& low) const {
    const float side = boxSide * step();
    return {low, {low[0] + side, low[1] + side, low[2] + side}};
}

void ExcludedSolid::gather(const Surroundings& around, const Point& low, ProbeSearch& near) const {
    near.clear(around.origin + vectorOf(low));
    const Box box = boxAt(low);
    around.balls.forReaching(box,
                             [&](std::uint32_t index) { near.addBall(m_grown[index], index); });
    around.arcs.forReaching(box, [&](std::uint32_t index) { near.addArc(m_tracks.arcs[index]); });
    around.places.forReaching(box,
                              [&](std::uint32_t index) { near.addPlace(m_tracks.places[index]); });
}

void ExcludedSolid::findInside(std::size_t block, OwnSigns& signs) const {
    m_reach.findInside(block, signs);
    OwnSigns filled{};
    const std::size_t there = findBlock(m_balls.blocks(), blocks()[block]);
    if (there != m_balls.blocks().size())
        m_balls.findInside(there, filled);
    const Surroundings around = surroundings(block);
    ProbeSearch near;
    const auto probe = static_cast<float>(m_probe);
    for (int box = 0; box != boxes * boxes * boxes; ++box) {
        const std::array<int, 3> first = {box % boxes * boxSide, box / boxes % boxes * boxSide,
                                          box / boxes / boxes * boxSide};
        bool isGathered = false;
        for (int z = 0; z != boxSide; ++z)
            for (int y = 0; y != boxSide; ++y) {
                std::uint16_t& row = signs.row(first[1] + y, first[2] + z);
                unsigned open = row & ~filled.row(first[1] + y, first[2] + z) &
                                (((1U << boxSide) - 1) << first[0]);
                for (; open != 0; open &= open - 1) {
                    const int x = std::countr_zero(open);
                    if (!isGathered)
                        gather(around, cornerAt(first, step()), near);
                    isGathered = true;
                    if (near.isAny(cornerAt({x - first[0], y, z}, step()), probe))
                        row &= static_cast<std::uint16_t>(~(1U << x));
                }
            }
    }
}

// Everything within a probe's radius of a free probe is outside. From the outside corner, each
// probe that is found clears the way up to where its ball ends, until that is the surface.
Crossing ExcludedSolid::crossing(Point inside, Point outside, const Vector& origin,
                                 ProbeSearch& near) const {
    const auto radius = static_cast<float>(m_probe);
    const Vector from = vectorOf(outside);
    const Vector way = vectorOf(inside) - from;
    const double square = dot(way, way);
    double share = 0;
    // A corner on the surface may be found to be outside in one box, and by rounding not in
    // another.
    const float beside = radius + 1e-3F;
    ProbeSearch::Probe probe = near.nearest(outside, beside);
    if (!(probe.distance < beside)) {
        const std::uint32_t ball = near.nearestBall(outside);
        return {pointOf(from + origin), pointOf(way * (-1 / std::sqrt(square))), ball,
                isAlone(ball) ? 0.0F : 1.0F};
    }
    ProbeSearch::Probe last = probe;
    for (int i = 0; i != 10; ++i) {
        if (i != 0)
            probe = near.nearest(pointOf(from + way * share), radius);
        if (!(probe.distance < radius))
            break;
        last = probe;
        if (probe.distance > radius - 2e-4F)
            break;
        const Vector apart = from - vectorOf(probe.centre);
        const double half = dot(way, apart) / square;
        const double left = half * half - (dot(apart, apart) - m_probe * m_probe) / square;
        const double end = std::sqrt(std::max(left, 0.0)) - half;
        if (!(end > share))
            break;
        share = std::min(end, 1.0);
    }
    const Vector at = from + way * share;
    const Vector out = vectorOf(last.centre) - at;
    const double distance = length(out);
    const Vector normal = distance > 1e-6 ? out * (1 / distance) : Vector{0, 0, 1};
    const Vector on = vectorOf(last.centre) - normal * m_probe;
    const std::uint32_t ball = near.nearestBall(pointOf(on));
    return {pointOf(on + origin), pointOf(normal), ball, isAlone(ball) ? 0.0F : 1.0F};
}

void ExcludedSolid::findCrossings(std::size_t block, const BlockEdges& edges,
                                  std::vector<Crossing>& crossings) const {
    // By boxes, so that what is near is gathered once.
    std::vector<std::pair<int, std::uint32_t>> order;
    order.reserve(edges.own().size());
    for (std::size_t i = 0; i != edges.own().size(); ++i) {
        const auto& corner = edges.own()[i].corner;
        const int box =
            (corner[2] / boxSide * boxes + corner[1] / boxSide) * boxes + corner[0] / boxSide;
        order.emplace_back(box, static_cast<std::uint32_t>(i));
    }
    std::sort(order.begin(), order.end());
    crossings.resize(order.size());
    const Surroundings around = surroundings(block);
    ProbeSearch near;
    int gathered = -1;
    Point start{};
    for (const auto& [box, index] : order) {
        const std::array<int, 3> first = {box % boxes * boxSide, box / boxes % boxes * boxSide,
                                          box / boxes / boxes * boxSide};
        if (box != gathered) {
            start = cornerAt(first, step());
            gather(around, start, near);
            around.hidden.forReaching(boxAt(start), [&](std::uint32_t hidden) {
                near.addHidden(m_grown[hidden], hidden);
            });
        }
        gathered = box;
        const BlockEdge& edge = edges.own()[index];
        const Point low = cornerAt(
            {edge.corner[0] - first[0], edge.corner[1] - first[1], edge.corner[2] - first[2]},
            step());
        Point high = low;
        high[edge.axis] += step();
        const Vector origin = around.origin + vectorOf(start);
        crossings[index] = edge.isLowInside ? crossing(low, high, origin, near)
                                            : crossing(high, low, origin, near);
    }
}

} // namespace solid
