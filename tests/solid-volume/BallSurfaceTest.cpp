// Van der Waals and solvent-accessible surfaces: meshes and areas of unions of balls.
#include "ClosedForms.h"
#include "LatticeTopology.h"
#include "SurfaceChecks.h"
#include "TestSupport.h"
#include "mesh/BallUnion.h"
#include "mesh/Creases.h"
#include "mesh/ExposedArea.h"
#include "mesh/Vectors.h"

#include <cmath>
#include <numbers>
#include <numeric>

using solid::Ball;
using solid::Mesh;
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
using surface_checks::volumeOf;

namespace {

Mesh surfaceOf(const std::vector<Ball>& balls, double step) {
    return polygonize(solid::BallUnion(balls, step, 0), oneByOne());
}

double exposedArea(const std::vector<Ball>& balls, double step, double margin = 0) {
    const std::vector<double> areas = exposedAreas(balls, margin, step, oneByOne());
    return std::accumulate(areas.begin(), areas.end(), 0.0);
}

const Ball one{{0.13F, -0.27F, 0.41F}, 1.7F};
const std::vector<Ball> two = {one, {{1.63F, -0.27F, 0.41F}, 1.5F}};
const std::vector<Ball> three = {
    {{0, 0, 0}, 1.7F}, {{1.6F, 0, 0}, 1.7F}, {{0.8F, 1.6F * 0.8660254F, 0}, 1.7F}};

} // namespace

class BallSurfaceTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void oneBallHasTheAreaAndTheVolumeOfASphere() {
        const double area = 4 * std::numbers::pi * 1.7 * 1.7;
        const Mesh mesh = surfaceOf({one}, 0.25);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(eulerNumber(mesh), 2L);
        QVERIFY(isWithin(areaOf(mesh), area, 0.01));
        QVERIFY(isWithin(mesh.area, area, 0.002));
        QVERIFY(isWithin(exposedArea({one}, 0.25), area, 0.005));
        QVERIFY(isWithin(volumeOf(mesh), area * 1.7 / 3, 0.02));
        for (std::size_t i = 0; i != mesh.vertices.size(); ++i) {
            QVERIFY(std::abs(gap(mesh.vertices[i], one)) < 1e-5);
            const solid::Vector out = vectorOf(mesh.vertices[i]) - vectorOf(one.centre);
            QVERIFY(dot(out, vectorOf(mesh.normals[i])) > 1.7 * 0.9999);
        }
    }

    void theErrorOfASphereFallsWithTheSquareOfTheStep() {
        const double area = 4 * std::numbers::pi * 1.7 * 1.7;
        const double coarse = 1 - areaOf(surfaceOf({one}, 0.4)) / area;
        const double fine = 1 - areaOf(surfaceOf({one}, 0.1)) / area;
        QVERIFY(coarse > 0);
        QVERIFY(fine > 0);
        QVERIFY(isWithin(coarse / fine, 16, 0.3));
    }

    void twoBallsExposeWhatTheOtherDoesNotCover() {
        const double vdw = closed_forms::twoBalls(1.7, 1.5, 1.5);
        const double accessible = closed_forms::twoBalls(3.1, 2.9, 1.5);
        QVERIFY(isWithin(exposedArea(two, 0.5), vdw, 0.005));
        QVERIFY(isWithin(exposedArea(two, 0.25), vdw, 0.005));
        QVERIFY(isWithin(exposedArea(two, 0.5, 1.4), accessible, 0.005));
        QVERIFY(isWithin(exposedArea(two, 0.25, 1.4), accessible, 0.005));
    }

    void threeBallsExposeWhatTheOthersDoNotCover() {
        const double vdw = closed_forms::threeBalls(1.7, 1.6);
        const double accessible = closed_forms::threeBalls(3.1, 1.6);
        QVERIFY(isWithin(exposedArea(three, 0.5), vdw, 0.005));
        QVERIFY(isWithin(exposedArea(three, 0.25), vdw, 0.005));
        QVERIFY(isWithin(exposedArea(three, 0.5, 1.4), accessible, 0.005));
        QVERIFY(isWithin(exposedArea(three, 0.25, 1.4), accessible, 0.005));
    }

    void theExposedAreaOfEachBallIsItsOwn() {
        std::vector<Ball> balls = two;
        balls.push_back({{1.7F, -0.27F, 0.41F}, 0.4F}); // within the second
        const std::vector<double> areas = exposedAreas(balls, 0, 0.1, oneByOne());
        const double plane = (1.5 * 1.5 + 1.7 * 1.7 - 1.5 * 1.5) / 3;
        QVERIFY(isWithin(areas[0], 2 * std::numbers::pi * 1.7 * (1.7 + plane), 0.005));
        QVERIFY(isWithin(areas[1], 2 * std::numbers::pi * 1.5 * (1.5 + 1.5 - plane), 0.005));
        QCOMPARE(areas[2], 0.0);
    }

    void creasesAreWhereTwoBallsMeet() {
        Mesh mesh = surfaceOf(two, 0.5);
        divideAtCreases(mesh, two);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(eulerNumber(mesh), 2L);
        for (const solid::Triangle& triangle : mesh.triangles) {
            const auto isOn = [&](const Ball& ball) {
                return std::all_of(triangle.begin(), triangle.end(), [&](std::uint32_t vertex) {
                    return std::abs(gap(mesh.vertices[vertex], ball)) < 1e-4;
                });
            };
            QVERIFY(isOn(two[0]) || isOn(two[1])); // none reaches from one to the other
        }
    }

    void threeBallsMeetInAPoint() {
        Mesh mesh = surfaceOf(three, 0.5);
        divideAtCreases(mesh, three);
        QCOMPARE(problemWith(mesh), std::string());
        const double height = std::sqrt(1.7 * 1.7 - 1.6 * 1.6 / 3);
        int found = 0;
        for (const solid::Point& vertex : mesh.vertices)
            for (const double z : {height, -height}) {
                const solid::Vector apart =
                    vectorOf(vertex) - solid::Vector{0.8, 1.6 * 0.28867513, z};
                found += length(apart) < 1e-4 ? 1 : 0;
            }
        QCOMPARE(found, 2);
    }

    void aRingHasAHole() {
        for (const double step : {0.5, 1.0}) {
            Mesh mesh = surfaceOf(ringOfBalls(24, 9), step);
            QCOMPARE(componentsOf(mesh), 1L);
            QCOMPARE(eulerNumber(mesh), 0L);
            divideAtCreases(mesh, ringOfBalls(24, 9));
            QCOMPARE(problemWith(mesh), std::string());
            QCOMPARE(eulerNumber(mesh), 0L);
        }
    }

    void ballsApartAreSurfacesOfTheirOwn() {
        std::vector<Ball> balls;
        for (int i = 0; i != 20; ++i)
            balls.push_back(
                {{static_cast<float>(i % 5) * 700, static_cast<float>(i / 5) * 5, -9}, 1.7F});
        const Mesh mesh = surfaceOf(balls, 0.5);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(componentsOf(mesh), 20L);
        QCOMPARE(eulerNumber(mesh), 40L);
    }

    void randomBallsMakeClosedMeshesOnTheNearestBalls() {
        for (unsigned seed = 0; seed != 20; ++seed) {
            const std::vector<Ball> balls = randomBalls(seed, 40 + 20 * int(seed), 9);
            const solid::BallUnion solid(balls, seed % 2 == 0 ? 0.5 : 0.9, 0);
            Mesh mesh = polygonize(solid, oneByOne());
            QCOMPARE(problemWith(mesh), std::string());
            QVERIFY(topologyOf(mesh) == topologyOf(solid));
            for (std::size_t i = 0; i != mesh.vertices.size(); ++i) {
                QVERIFY(std::abs(leastGap(mesh.vertices[i], balls)) < 1e-4);
                QVERIFY(std::abs(gap(mesh.vertices[i], balls[mesh.nearest[i]])) < 1e-5);
            }
            const long euler = eulerNumber(mesh);
            divideAtCreases(mesh, balls);
            QCOMPARE(problemWith(mesh), std::string());
            QCOMPARE(eulerNumber(mesh), euler);
        }
    }

    void theMeshIsTheSameOnAnyNumberOfThreads() {
        const std::vector<Ball> balls = randomBalls(5, 700, 16);
        const solid::BallUnion solid(balls, 0.5, 1.4);
        const Mesh alone = polygonize(solid, oneByOne());
        for (const std::size_t threads : {2U, 5U}) {
            const Mesh mesh = polygonize(solid, surface_checks::onThreads(threads));
            QVERIFY(mesh.vertices == alone.vertices);
            QVERIFY(mesh.normals == alone.normals);
            QVERIFY(mesh.triangles == alone.triangles);
            QVERIFY(mesh.nearest == alone.nearest);
            QCOMPARE(mesh.area, alone.area);
            QVERIFY(exposedAreas(balls, 1.4, 0.5, oneByOne()) ==
                    exposedAreas(balls, 1.4, 0.5, surface_checks::onThreads(threads)));
        }
    }

    void aPartIsTheSameWhateverElseThereIs() {
        std::vector<Ball> balls = two;
        const Mesh alone = surfaceOf(balls, 0.5);
        balls.push_back({{90, -80, 70}, 2});
        const Mesh mesh = surfaceOf(balls, 0.5);
        for (const solid::Point& vertex : alone.vertices)
            QVERIFY(std::find(mesh.vertices.begin(), mesh.vertices.end(), vertex) !=
                    mesh.vertices.end());
    }
};

REGISTER_TEST(BallSurfaceTest)
#include "BallSurfaceTest.moc"
