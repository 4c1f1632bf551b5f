// Solvent-excluded surfaces.
#include "ClosedForms.h"
#include "LatticeTopology.h"
#include "SurfaceChecks.h"
#include "TestSupport.h"
#include "mesh/ExcludedSolid.h"
#include "mesh/Vectors.h"

#include <cmath>
#include <numbers>
#include <random>

using solid::Ball;
using solid::Mesh;
using solid::Point;
using solid::vectorOf;
using surface_checks::areaOf;
using surface_checks::componentsOf;
using surface_checks::eulerNumber;
using surface_checks::gap;
using surface_checks::isWithin;
using surface_checks::leastGap;
using surface_checks::oneByOne;
using surface_checks::problemWith;
using surface_checks::randomBalls;
using surface_checks::ringOfBalls;
using surface_checks::topologyOf;

namespace {

constexpr double probe = 1.4;

Mesh surfaceOf(const std::vector<Ball>& balls, double step) {
    return polygonize(solid::ExcludedSolid(balls, step, probe, oneByOne()), oneByOne());
}

/// Where a probe touches a vertex.
Point probeAt(const Mesh& mesh, std::size_t vertex) {
    return pointOf(vectorOf(mesh.vertices[vertex]) + vectorOf(mesh.normals[vertex]) * probe);
}

std::vector<Ball> grown(std::vector<Ball> balls) {
    for (Ball& ball : balls)
        ball.radius += static_cast<float>(probe);
    return balls;
}

/// Centres of probes that are near the balls and in none of them.
std::vector<Point> freeProbes(const std::vector<Ball>& balls, float halfSide, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> along(-halfSide, halfSide);
    const std::vector<Ball> larger = grown(balls);
    std::vector<Point> probes;
    while (probes.size() != 20'000) {
        const float x = along(random);
        const float y = along(random);
        const Point at = {x, y, along(random)};
        if (leastGap(at, larger) > 0)
            probes.push_back(at);
    }
    return probes;
}

/// Whether a probe that rolls over the balls touches every vertex, and reaches beyond none.
bool isRolledOver(const Mesh& mesh, const std::vector<Ball>& balls,
                  const std::vector<Point>& probes) {
    const std::vector<Ball> larger = grown(balls);
    for (std::size_t i = 0; i != mesh.vertices.size(); ++i) {
        if (leastGap(probeAt(mesh, i), larger) < -2e-3 || leastGap(mesh.vertices[i], balls) < -2e-3)
            return false;
        const auto reaches = [&](const Point& at) {
            const solid::Vector apart = vectorOf(at) - vectorOf(mesh.vertices[i]);
            return dot(apart, apart) < (probe - 5e-3) * (probe - 5e-3);
        };
        if (std::any_of(probes.begin(), probes.end(), reaches))
            return false;
    }
    return true;
}

const Ball one{{0.13F, -0.27F, 0.41F}, 1.7F};

} // namespace

class ExcludedSurfaceTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void oneBallIsItsOwnSurface() {
        const double area = 4 * std::numbers::pi * 1.7 * 1.7;
        const Mesh mesh = surfaceOf({one}, 0.5);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(eulerNumber(mesh), 2L);
        QVERIFY(isWithin(mesh.area, area, 0.02));
        QVERIFY(isWithin(surfaceOf({one}, 0.1).area, area, 0.002));
        for (const Point& vertex : mesh.vertices)
            QVERIFY(std::abs(gap(vertex, one)) < 1e-3);
    }

    void cornersOfTheLatticeMayBeOnTheSurface() {
        for (const double step : {0.1, 0.2, 0.35, 0.7})
            for (const float x : {0.0F, 1.0F, 7.0F}) {
                const Ball ball{{x, 2 * x, 3 * x}, 1.4F};
                const Mesh mesh = surfaceOf({ball}, step);
                QCOMPARE(problemWith(mesh), std::string());
                for (const Point& vertex : mesh.vertices)
                    QVERIFY(std::abs(gap(vertex, ball)) < 2e-3);
            }
    }

    // Far apart, and all alike on the lattice, so that no error cancels another.
    void roundCoordinatesKeepTheArea_data() {
        QTest::addColumn<double>("spacing");
        QTest::addColumn<double>("first");
        for (const double spacing : {20.0, 1000.0})
            for (const double first : {0.0, 0.5, 0.25, 0.137})
                QTest::addRow("%g Å apart from %g Å on", spacing, first) << spacing << first;
    }

    void roundCoordinatesKeepTheArea() {
        QFETCH(double, spacing);
        QFETCH(double, first);
        std::vector<Ball> balls;
        for (int i = 0; i != 8; ++i) {
            const auto along = [&](int axis) {
                return static_cast<float>(first + spacing * ((i >> axis) % 2));
            };
            balls.push_back({{along(0), along(1), along(2)}, 1.7F});
        }
        const double area = 8 * 4 * std::numbers::pi * 1.7 * 1.7;
        for (const double step : {1.0, 0.5}) {
            const Mesh mesh = surfaceOf(balls, step);
            QCOMPARE(problemWith(mesh), std::string());
            QVERIFY(isWithin(mesh.area, area, 0.005));
        }
    }

    void twoBallsHaveTheAreaOfTheClosedForm_data() {
        QTest::addColumn<double>("radius");
        QTest::addColumn<double>("other");
        QTest::addColumn<double>("apart");
        QTest::newRow("bonded") << 1.7 << 1.7 << 1.5;
        QTest::newRow("unequal") << 1.8 << 1.4 << 2.1;
        QTest::newRow("touching") << 1.7 << 1.5 << 3.2;
        QTest::newRow("a gap, the probe does not fit in") << 1.7 << 1.7 << 4.4;
        QTest::newRow("the probe meets itself") << 1.7 << 1.7 << 5.6;
    }

    void twoBallsHaveTheAreaOfTheClosedForm() {
        QFETCH(double, radius);
        QFETCH(double, other);
        QFETCH(double, apart);
        const float third = static_cast<float>(apart / std::sqrt(3.0));
        const std::vector<Ball> balls = {
            {{0.1F, 0.2F, 0.3F}, static_cast<float>(radius)},
            {{0.1F + third, 0.2F + third, 0.3F + third}, static_cast<float>(other)}};
        const double area = closed_forms::twoBallsExcluded(radius, other, apart, probe);
        for (const double step : {0.5, 0.25}) {
            const Mesh mesh = surfaceOf(balls, step);
            QCOMPARE(problemWith(mesh), std::string());
            QVERIFY(isWithin(mesh.area, area, 0.02));
            QVERIFY(isWithin(areaOf(mesh), area, step == 0.5 ? 0.04 : 0.02));
        }
        QVERIFY(isWithin(surfaceOf(balls, 0.1).area, area, 0.004));
    }

    void threeBallsHaveTheAreaOfTheClosedForm() {
        for (const double side : {1.5, 2.4}) {
            const auto length = static_cast<float>(side);
            const std::vector<Ball> balls = {{{0, 0, 0.2F}, 1.7F},
                                             {{length, 0, 0.2F}, 1.7F},
                                             {{length / 2, length * 0.8660254F, 0.2F}, 1.7F}};
            const double area = closed_forms::threeBallsExcluded(1.7, side, probe);
            for (const double step : {0.5, 0.25, 0.1}) {
                const Mesh mesh = surfaceOf(balls, step);
                QCOMPARE(problemWith(mesh), std::string());
                QCOMPARE(eulerNumber(mesh), 2L);
                QVERIFY(isWithin(mesh.area, area, step == 0.1 ? 0.004 : 0.02));
            }
        }
    }

    void aProbeRollsOverRandomBalls() {
        for (unsigned seed = 0; seed != 6; ++seed) {
            const std::vector<Ball> balls = randomBalls(seed, 15 + 15 * int(seed), 5);
            const std::vector<Point> probes = freeProbes(balls, 7.5F, seed);
            for (const double step : {0.5, 1.0}) {
                const Mesh mesh = surfaceOf(balls, step);
                QCOMPARE(problemWith(mesh), std::string());
                QVERIFY(isRolledOver(mesh, balls, probes));
            }
        }
    }

    void eachVertexKnowsTheBallThatIsNearest() {
        for (unsigned seed = 10; seed != 14; ++seed) {
            const std::vector<Ball> balls = randomBalls(seed, 120, 7);
            const Mesh mesh = surfaceOf(balls, 0.5);
            for (std::size_t i = 0; i != mesh.vertices.size(); ++i)
                QVERIFY(gap(mesh.vertices[i], balls[mesh.nearest[i]]) <=
                        leastGap(mesh.vertices[i], balls) + 1e-5);
        }
    }

    void randomBallsMakeClosedMeshes() {
        for (unsigned seed = 20; seed != 40; ++seed) {
            const std::vector<Ball> balls = randomBalls(seed, 40 + 20 * int(seed - 20), 9);
            const solid::ExcludedSolid solid(balls, seed % 2 == 0 ? 0.5 : 0.9, probe, oneByOne());
            const Mesh mesh = polygonize(solid, oneByOne());
            QCOMPARE(problemWith(mesh), std::string());
            QVERIFY(topologyOf(mesh) == topologyOf(solid));
        }
    }

    void aRingHasAHoleThatTheProbePassesThrough() {
        const Mesh wide = surfaceOf(ringOfBalls(24, 9), 0.5);
        QCOMPARE(problemWith(wide), std::string());
        QCOMPARE(eulerNumber(wide), 0L);
        // 3 - 2.3 Å are left, so little that probes on either side do not meet.
        const Mesh narrow = surfaceOf(ringOfBalls(12, 3), 0.5);
        QCOMPARE(componentsOf(narrow), 1L);
        QCOMPARE(eulerNumber(narrow), 2L);
    }

    void aShellHasACavity() {
        std::vector<Ball> balls;
        for (int i = 0; i != 400; ++i) { // a spiral over a sphere
            const double height = 1 - (i + 0.5) / 200;
            const double around = std::sqrt(1 - height * height);
            const double angle = i * 2.399963229728653;
            balls.push_back(
                {{static_cast<float>(9 * around * std::cos(angle)),
                  static_cast<float>(9 * around * std::sin(angle)), static_cast<float>(9 * height)},
                 1.7F});
        }
        const Mesh mesh = surfaceOf(balls, 0.5);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(componentsOf(mesh), 2L);
        QCOMPARE(eulerNumber(mesh), 4L);
    }

    void theMeshIsTheSameOnAnyNumberOfThreads() {
        const std::vector<Ball> balls = randomBalls(5, 700, 16);
        const Mesh alone = surfaceOf(balls, 0.7);
        for (const std::size_t threads : {2U, 5U}) {
            const solid::ForEach forEach = surface_checks::onThreads(threads);
            const Mesh mesh = polygonize(solid::ExcludedSolid(balls, 0.7, probe, forEach), forEach);
            QVERIFY(mesh.vertices == alone.vertices);
            QVERIFY(mesh.normals == alone.normals);
            QVERIFY(mesh.triangles == alone.triangles);
            QVERIFY(mesh.nearest == alone.nearest);
            QCOMPARE(mesh.area, alone.area);
        }
    }

    void ballsInARowOnTheLatticeAreNoSpecialCase() {
        std::vector<Ball> balls; // a cubic crystal: probes that touch four balls and more
        for (int i = 0; i != 64; ++i)
            balls.push_back({{static_cast<float>(i % 4) * 3, static_cast<float>(i / 4 % 4) * 3,
                              static_cast<float>(i / 16) * 3},
                             1.5F});
        for (const double step : {0.5, 1.0}) {
            const Mesh mesh = surfaceOf(balls, step);
            QCOMPARE(problemWith(mesh), std::string());
            QCOMPARE(componentsOf(mesh), 1L);
            QCOMPARE(eulerNumber(mesh), 2L);
            QVERIFY(isRolledOver(mesh, balls, freeProbes(balls, 14, 1)));
        }
    }
};

REGISTER_TEST(ExcludedSurfaceTest)
#include "ExcludedSurfaceTest.moc"
