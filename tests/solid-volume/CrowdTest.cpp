// More balls in one place than any molecule has.
#include "mesh/Crowd.h"
#include "SurfaceChecks.h"
#include "TestSupport.h"
#include "mesh/BallUnion.h"
#include "mesh/ExcludedSolid.h"
#include "mesh/ExposedArea.h"
#include "mesh/Vectors.h"

#include <cmath>
#include <numbers>
#include <numeric>
#include <random>

using solid::Ball;
using solid::Mesh;
using solid::Point;
using solid::vectorOf;
using surface_checks::componentsOf;
using surface_checks::eulerNumber;
using surface_checks::gap;
using surface_checks::isWithin;
using surface_checks::leastGap;
using surface_checks::oneByOne;
using surface_checks::problemWith;

namespace {

constexpr double probe = 1.4;

/// Balls at random in a cube.
std::vector<Ball> crowd(int count, float side, float smallest, float largest) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> along(0, side);
    std::uniform_real_distribution<float> radius(smallest, std::nextafter(largest, 99.0F));
    std::vector<Ball> balls;
    for (int i = 0; i != count; ++i) {
        const float x = along(random);
        const float y = along(random);
        const float z = along(random);
        balls.push_back({{x, y, z}, radius(random)});
    }
    return balls;
}

/// A cube with round edges, which crowds of balls in a cube nearly are.
double roundedCube(double side, double radius) {
    return 6 * side * side + 12 * side * radius * std::numbers::pi / 2 +
           4 * std::numbers::pi * radius * radius;
}

Mesh excluded(const std::vector<Ball>& balls) {
    return polygonize(solid::ExcludedSolid(balls, 0.5, probe, oneByOne()), oneByOne());
}

double exposedArea(const std::vector<Ball>& balls) {
    const std::vector<double> areas = exposedAreas(balls, 0, 0.5, oneByOne());
    return std::accumulate(areas.begin(), areas.end(), 0.0);
}

std::size_t countKept(const std::vector<Ball>& balls) {
    const std::vector<Ball> kept = withoutCrowd(balls, oneByOne());
    return static_cast<std::size_t>(
        std::count_if(kept.begin(), kept.end(), [](const Ball& ball) { return ball.radius > 0; }));
}

/// On a sphere, evenly.
std::vector<Ball> shell(int count, double distance, float radius) {
    std::vector<Ball> balls;
    for (int i = 0; i != count; ++i) {
        const double height = 1 - (i + 0.5) * 2 / count;
        const double around = distance * std::sqrt(1 - height * height);
        const double angle = i * 2.399963229728653;
        balls.push_back(
            {{static_cast<float>(around * std::cos(angle)),
              static_cast<float>(around * std::sin(angle)), static_cast<float>(distance * height)},
             radius});
    }
    return balls;
}

} // namespace

class CrowdTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void aHundredThousandBallsInOneCell() {
        const std::vector<Ball> balls = crowd(100'000, 4, 1.7F, 1.7F);
        const Mesh mesh = excluded(balls);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(eulerNumber(mesh), 2L);
        QVERIFY(isWithin(mesh.area, roundedCube(4, 1.7), 0.04));
        QVERIFY(isWithin(exposedArea(balls), roundedCube(4, 1.7), 0.02));
    }

    void aHundredThousandBallsOnOnePointAreOne() {
        const Ball one{{0.1F, 0.2F, 0.3F}, 1.7F};
        const std::vector<Ball> balls(100'000, one);
        QVERIFY(excluded(balls).vertices == excluded({one}).vertices);
        QCOMPARE(countKept(balls), std::size_t(1));
        const std::vector<double> areas = exposedAreas(balls, 0, 0.5, oneByOne());
        QVERIFY(areas[0] > 36);
        QVERIFY(std::all_of(areas.begin() + 1, areas.end(), [](double a) { return a == 0; }));
    }

    void theProbeTouchesACrowdWhereItTouchesAllItsBalls_data() {
        QTest::addColumn<float>("smallest");
        QTest::addColumn<float>("largest");
        QTest::newRow("one radius") << 1.7F << 1.7F;
        QTest::newRow("many radii") << 0.5F << 2.5F;
        QTest::newRow("tiny ones, too") << 1e-6F << 1.9F;
    }

    void theProbeTouchesACrowdWhereItTouchesAllItsBalls() {
        QFETCH(float, smallest);
        QFETCH(float, largest);
        const std::vector<Ball> balls = crowd(5'000, 5, smallest, largest);
        std::vector<Ball> grown = balls;
        for (Ball& ball : grown)
            ball.radius += static_cast<float>(probe);
        const Mesh mesh = excluded(balls);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(eulerNumber(mesh), 2L);
        for (std::size_t i = 0; i != mesh.vertices.size(); ++i) {
            const Point at =
                pointOf(vectorOf(mesh.vertices[i]) + vectorOf(mesh.normals[i]) * probe);
            QVERIFY(std::abs(leastGap(at, grown)) < 2e-3);
            // The name may be that of a ball that the probe does not touch.
            QVERIFY(gap(mesh.vertices[i], balls[mesh.nearest[i]]) <=
                    leastGap(mesh.vertices[i], balls) + 1e-5);
        }
    }

    void whatIsRemovedIsWithinWhatIsKept() {
        const std::vector<Ball> balls = crowd(10'000, 6, 0.3F, 2);
        const std::vector<Ball> kept = withoutCrowd(balls, oneByOne());
        std::mt19937 random(7);
        std::normal_distribution<double> any;
        std::size_t removed = 0;
        std::vector<Ball> left;
        std::copy_if(kept.begin(), kept.end(), std::back_inserter(left),
                     [](const Ball& ball) { return ball.radius > 0; });
        for (std::size_t i = 0; i != balls.size(); ++i) {
            QCOMPARE(kept[i].centre, balls[i].centre);
            if (kept[i].radius > 0) {
                QCOMPARE(kept[i].radius, balls[i].radius);
                continue;
            }
            ++removed;
            for (const double share : {0.0, 0.5, 1.0}) {
                const solid::Vector out = {any(random), any(random), any(random)};
                const Point at = pointOf(vectorOf(balls[i].centre) +
                                         out * (share * balls[i].radius / length(out)));
                QVERIFY(std::any_of(left.begin(), left.end(),
                                    [&](const Ball& ball) { return gap(at, ball) < 1e-5; }));
            }
        }
        QVERIFY(removed > balls.size() / 2);
    }

    void aBallThatFillsACavityStays() {
        std::vector<Ball> balls = shell(20'000, 3.2, 1);
        balls.push_back({{0, 0, 0}, 3.3F}); // Its sphere is covered, and what is inside is not.
        for (const Ball& small : crowd(300, 0.2F, 0.1F, 0.1F))
            balls.push_back(small);
        const std::vector<Ball> kept = withoutCrowd(balls, oneByOne());
        QCOMPARE(kept[20'000].radius, 3.3F);
        QVERIFY(std::count_if(kept.begin() + 20'001, kept.end(),
                              [](const Ball& ball) { return ball.radius > 0; }) < 100);
        const Mesh mesh = polygonize(solid::BallUnion(kept, 0.5, 0), oneByOne());
        QCOMPARE(eulerNumber(mesh), 2L);
        QCOMPARE(componentsOf(mesh), 1L);
    }

    void whereNoCrowdIsAllStay() {
        std::vector<Ball> balls = crowd(3'000, 30, 1.5F, 1.8F);
        QCOMPARE(countKept(balls), balls.size());
        const std::vector<Ball> others = crowd(2'000, 2, 1.7F, 1.7F);
        balls.insert(balls.end(), others.begin(), others.end());
        const std::vector<Ball> kept = withoutCrowd(balls, oneByOne());
        for (std::size_t i = 0; i != 3'000; ++i)
            QVERIFY(kept[i].radius > 0 || leastGap(balls[i].centre, others) < 6);
        QCOMPARE(countKept({}), std::size_t(0));
        QCOMPARE(countKept({{{0, 0, 0}, 0}}), std::size_t(0));
    }

    void theMeshIsTheSameOnAnyNumberOfThreads() {
        const std::vector<Ball> balls = crowd(3'000, 4, 1.2F, 1.9F);
        const Mesh alone = excluded(balls);
        for (const std::size_t threads : {2U, 5U}) {
            const solid::ForEach forEach = surface_checks::onThreads(threads);
            const Mesh mesh = polygonize(solid::ExcludedSolid(balls, 0.5, probe, forEach), forEach);
            QVERIFY(mesh.vertices == alone.vertices);
            QVERIFY(mesh.triangles == alone.triangles);
            QVERIFY(mesh.nearest == alone.nearest);
        }
    }
};

REGISTER_TEST(CrowdTest)
#include "CrowdTest.moc"
