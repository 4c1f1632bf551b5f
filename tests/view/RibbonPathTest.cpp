// The curve through guide points, and how its frame turns.
#include "ribbon/RibbonPath.h"

#include "TestSupport.h"

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

using view::distance;
using view::dot;
using view::PathPoint;
using view::Vector;

namespace {

constexpr double pi = std::numbers::pi;

std::vector<Vector> line(std::size_t count) {
    std::vector<Vector> points;
    for (std::size_t i = 0; i < count; ++i)
        points.push_back({3.8 * static_cast<double>(i), 0, 0});
    return points;
}

/// A helix about the z axis.
std::vector<Vector> turns(std::size_t count, double radius, double angle, double rise) {
    std::vector<Vector> points;
    for (std::size_t i = 0; i < count; ++i) {
        const auto step = static_cast<double>(i);
        points.push_back(
            {radius * std::cos(angle * step), radius * std::sin(angle * step), rise * step});
    }
    return points;
}

bool isNear(const Vector& a, const Vector& b, double within = 1e-9) {
    return distance(a, b) <= within;
}

bool isFrame(const PathPoint& point) {
    return std::abs(view::length(point.along) - 1) < 1e-9 &&
           std::abs(view::length(point.across) - 1) < 1e-9 &&
           std::abs(dot(point.along, point.across)) < 1e-9 &&
           isNear(point.up, view::cross(point.along, point.across));
}

} // namespace

class RibbonPathTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void thePathPassesItsGuidePoints() {
        const std::vector<Vector> guides = turns(8, 5, 0.7, 1.1);
        const auto path = view::ribbonPath(guides, std::vector<Vector>(8), 6);
        QCOMPARE(path.size(), 7U * 6 + 1);
        for (std::size_t i = 0; i < guides.size(); ++i)
            QVERIFY(isNear(path[i * 6].place, guides[i]));
    }

    void twoPointsAreJoinedByALine() {
        const auto path = view::ribbonPath(line(2), std::vector<Vector>(2), 4);
        QCOMPARE(path.size(), 5U);
        for (std::size_t k = 0; k < path.size(); ++k) {
            QVERIFY(isNear(path[k].place, {0.95 * static_cast<double>(k), 0, 0}));
            QVERIFY(isNear(path[k].along, {1, 0, 0}));
        }
    }

    void anArcOfACircleStaysOne() {
        // A cubic curve differs from an arc of 100 degrees by 0.05 % of the radius. The ends, where
        // nothing says how the arc goes on, need not be one.
        const auto path =
            view::ribbonPath(turns(15, 2.3, 100 * pi / 180, 0), std::vector<Vector>(15), 20);
        for (std::size_t k = 80; k + 80 < path.size(); ++k) {
            QVERIFY(std::abs(view::length(path[k].place) - 2.3) < 2.3 * 2e-3);
            QVERIFY(std::abs(dot(path[k].along, path[k].place)) < 0.02);
        }
    }

    void aHelixKeepsItsRadiusAndItsPitch() {
        // CA of an alpha helix: 2.3 Å from the axis, 1.5 Å and 100 degrees a residue.
        const double angle = 100 * pi / 180;
        const auto path = view::ribbonPath(turns(20, 2.3, angle, 1.5), std::vector<Vector>(20), 10);
        const double climb = std::atan(1.5 / (2.3 * angle));
        for (std::size_t k = 40; k + 40 < path.size(); ++k) {
            QVERIFY(std::abs(std::hypot(path[k].place.x, path[k].place.y) - 2.3) < 0.1);
            QVERIFY(std::abs(std::asin(path[k].along.z) - climb) < 3 * pi / 180);
        }
    }

    void tangentsAreThoseOfTheCurve() {
        const auto path = view::ribbonPath(turns(8, 5, 1.4, 1.1), std::vector<Vector>(8), 200);
        for (std::size_t k = 1; k + 1 < path.size(); ++k)
            QVERIFY(isNear(path[k].along,
                           view::unitOr(path[k + 1].place - path[k - 1].place, Vector{}), 1e-2));
    }

    void theFrameTurnsEvenlyFromDirectionToDirection() {
        // By 60 degrees about the x axis; the length of a direction and what is along the path do
        // not count.
        const std::vector<Vector> directions = {{0, 2, 0}, {5, std::cos(pi / 3), std::sin(pi / 3)}};
        const auto path = view::ribbonPath(line(2), directions, 6);
        for (std::size_t k = 0; k < path.size(); ++k) {
            const double angle = pi / 3 * static_cast<double>(k) / 6;
            QVERIFY(isNear(path[k].across, {0, std::cos(angle), std::sin(angle)}));
        }
    }

    void directionsThatAlternateDoNotTurnTheFrame() {
        std::vector<Vector> directions;
        for (int i = 0; i < 8; ++i)
            directions.push_back({0, i % 2 == 0 ? 1.0 : -1.0, 0.1});
        const auto path = view::ribbonPath(line(8), directions, 4);
        for (const PathPoint& point : path)
            QVERIFY(point.across.y > 0.99);
    }

    void noStepTurnsByMoreThanARightAngle() {
        std::mt19937 random(5);
        std::normal_distribution<double> any;
        std::vector<Vector> directions(200);
        for (Vector& direction : directions)
            direction = {any(random), any(random), any(random)};
        const auto path = view::ribbonPath(line(200), directions, 10);
        for (std::size_t k = 1; k < path.size(); ++k)
            QVERIFY(dot(path[k].across, path[k - 1].across) > std::cos(pi / 20) - 1e-9);
    }

    void withoutDirectionsTheFrameDoesNotTwist() {
        // In a plane, one axis of the frame stays as far from the plane as it is at the beginning.
        const auto path = view::ribbonPath(turns(9, 5, 0.8, 0), std::vector<Vector>(9), 10);
        for (const PathPoint& point : path)
            QVERIFY(std::abs(point.across.z - path[0].across.z) < 1e-9);
        // A direction along the path is none.
        const auto same = view::ribbonPath(line(3), std::vector<Vector>(3), 4);
        const auto along = view::ribbonPath(line(3), std::vector<Vector>(3, {1, 0, 0}), 4);
        for (std::size_t k = 0; k < same.size(); ++k)
            QVERIFY(isNear(same[k].across, along[k].across));
    }

    void framesArePerpendicularWhateverTheGuidePoints() {
        std::mt19937 random(6);
        std::normal_distribution<double> any;
        for (int turn = 0; turn < 300; ++turn) {
            std::vector<Vector> guides(8);
            std::vector<Vector> directions(8);
            for (std::size_t i = 0; i < guides.size(); ++i) {
                guides[i] = {any(random), any(random), any(random)};
                directions[i] = {any(random), any(random), any(random)};
                // Points in one place, and back where the path was.
                if (i > 1 && random() % 3 == 0)
                    guides[i] = guides[i - 1 - random() % 2];
                if (random() % 4 == 0)
                    directions[i] = {};
            }
            for (const PathPoint& point : view::ribbonPath(guides, directions, 4)) {
                QVERIFY(isFrame(point));
                QVERIFY(std::isfinite(view::length(point.place)));
            }
        }
    }
};

REGISTER_TEST(RibbonPathTest)
#include "RibbonPathTest.moc"
