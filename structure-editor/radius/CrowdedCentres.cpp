#include "CrowdedCentres.h"

#include <nanoflann.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Length of a run of points, and of one that is not worth dividing.
constexpr std::size_t runLength = 128;
constexpr std::size_t shortestRun = 4;

constexpr std::size_t leafSize = 16;

using Place = std::array<double, 3>;

double square(double x) {
    return x * x;
}

// The centres, with the interface that nanoflann expects.
struct Centres {
    std::vector<Point> points;

    std::size_t kdtree_get_point_count() const { return points.size(); }
    double kdtree_get_pt(std::size_t i, std::size_t axis) const {
        return static_cast<double>(points[i][axis]);
    }
    template <class Box> bool kdtree_get_bbox(Box& /*box*/) const { return false; }
};

// A result set for nanoflann that ends the search at the first centre within the radius.
class FirstWithin {
public:
    FirstWithin(const Centres& centres, const Reach& reach, const Point& point)
        : m_centres(centres), m_point(point), m_squaredLimit(reach.squaredLimit),
          m_squaredReach(square(reach.distance)) {}

    double worstDist() const { return m_squaredReach; }
    bool full() const { return m_isFound; }
    bool addPoint(double /*squared*/, std::uint32_t i) {
        m_isFound = isWithin(static_cast<double>(m_squaredLimit), m_point, m_centres.points[i]);
        return !m_isFound;
    }

private:
    const Centres& m_centres;
    const Point& m_point;
    float m_squaredLimit;
    double m_squaredReach;
    bool m_isFound = false;
};

// A result set for an approximately nearest centre; ends the search at one that is near enough.
class Nearest {
public:
    /// Centres further away than `reach` are ignored.
    Nearest(double enough, double reach)
        : m_squaredEnough(enough > 0.0 ? square(enough) : -1.0), m_worst(square(reach)) {}

    double worstDist() const { return m_worst; }
    bool full() const { return m_isFound; }
    bool isEnough() const { return m_isEnough; }
    bool addPoint(double squared, std::uint32_t /*i*/) {
        // Without this, all of many centres at equal distances would be visited.
        constexpr double clearlyNearer = 1.0 - 1e-6;
        m_isFound = true;
        m_worst = std::min(m_worst, squared * clearlyNearer);
        m_isEnough = squared <= m_squaredEnough;
        return !m_isEnough;
    }

private:
    double m_squaredEnough;
    double m_worst;
    bool m_isFound = false;
    bool m_isEnough = false;
};

// A bounding sphere.
struct Ball {
    Place middle{};
    double radius = -1.0; ///< negative where no point is finite
};

Ball ballAround(const Point* points, std::size_t count) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Place low{infinity, infinity, infinity};
    Place high{-infinity, -infinity, -infinity};
    for (std::size_t i = 0; i != count; ++i) {
        if (!isFinite(points[i]))
            continue;
        for (const std::size_t axis : {0, 1, 2}) {
            low[axis] = std::min(low[axis], static_cast<double>(points[i][axis]));
            high[axis] = std::max(high[axis], static_cast<double>(points[i][axis]));
        }
    }
    Ball ball;
    if (low[0] > high[0])
        return ball;
    double squared = 0.0;
    for (const std::size_t axis : {0, 1, 2}) {
        ball.middle[axis] = (low[axis] + high[axis]) / 2.0;
        squared += square(high[axis] - ball.middle[axis]);
    }
    constexpr double margin = 1e-9; // More than the rounding error of double precision.
    ball.radius = std::sqrt(squared) * (1.0 + margin);
    return ball;
}

} // namespace

struct CrowdedCentres::Tree {
    using Index = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Centres>,
                                                      Centres, 3, std::uint32_t>;

    explicit Tree(std::vector<Point> points)
        : centres{std::move(points)},
          index(3, centres, nanoflann::KDTreeSingleIndexAdaptorParams(leafSize)) {}

    Centres centres;
    Index index;
};

// The margins cover rounding and underflow in the single-precision test.
CrowdedCentres::CrowdedCentres(std::vector<Point> centres, const Reach& reach)
    : m_tree(std::make_unique<Tree>(std::move(centres))), m_reach(reach),
      m_surelyWithin(std::sqrt(static_cast<double>(reach.squaredLimit)) * (1.0 - 1e-6) - 1e-17) {}

CrowdedCentres::~CrowdedCentres() = default;

bool CrowdedCentres::isNear(const Point& point) const {
    FirstWithin first(m_tree->centres, m_reach, point);
    const Place place{static_cast<double>(point[0]), static_cast<double>(point[1]),
                      static_cast<double>(point[2])};
    return m_tree->index.findNeighbors(first, place.data(), {});
}

void CrowdedCentres::searchRun(const Point* points, std::size_t count, std::uint8_t* near) const {
    if (count <= shortestRun) {
        for (std::size_t i = 0; i != count; ++i)
            near[i] = isFinite(points[i]) && isNear(points[i]) ? 1 : 0;
        return;
    }
    const Ball ball = ballAround(points, count);
    if (ball.radius < 0.0)
        return;
    Nearest nearest(m_surelyWithin - ball.radius, m_reach.distance + ball.radius);
    if (!m_tree->index.findNeighbors(nearest, ball.middle.data(), {}))
        return;
    if (nearest.isEnough()) {
        std::transform(points, points + count, near,
                       [](const Point& point) { return isFinite(point) ? 1 : 0; });
        return;
    }
    const std::size_t half = count / 2;
    searchRun(points, half, near);
    searchRun(points + half, count - half, near + half);
}

void CrowdedCentres::search(const std::vector<Point>& points,
                            std::vector<std::uint8_t>& near) const {
    for (std::size_t first = 0; first < points.size(); first += runLength)
        searchRun(points.data() + first, std::min(runLength, points.size() - first),
                  near.data() + first);
}
