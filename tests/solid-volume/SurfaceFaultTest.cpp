// What no good surface can be made of, work that ends early, and memory that runs out.
#include "FailingMemory.h"
#include "SurfaceChecks.h"
#include "TestSupport.h"
#include "mesh/BallUnion.h"
#include "mesh/Contour.h"
#include "mesh/Creases.h"
#include "mesh/Density.h"
#include "mesh/ExcludedSolid.h"
#include "mesh/ExposedArea.h"

#include <functional>
#include <limits>
#include <new>
#include <numeric>
#include <random>
#include <stdexcept>

using solid::Ball;
using solid::ForEach;
using solid::Mesh;
using surface_checks::eulerNumber;
using surface_checks::isWholeProof;
using surface_checks::isWithin;
using surface_checks::oneByOne;
using surface_checks::problemWith;
using surface_checks::randomBalls;

namespace {

struct Cancelled {};

/// All that is made of balls.
struct Surfaces {
    Mesh united;
    Mesh excluded;
    Mesh density;
    std::vector<double> areas;
};

Mesh dividedUnion(const std::vector<Ball>& balls, const ForEach& forEach) {
    Mesh mesh = polygonize(solid::BallUnion(balls, 0.5, 0), forEach);
    divideAtCreases(mesh, balls);
    return mesh;
}

Mesh blobs(const std::vector<Ball>& balls, const ForEach& forEach) {
    std::vector<solid::DensityAtom> atoms;
    for (const Ball& ball : balls)
        atoms.push_back({ball, 0});
    return polygonize(solid::DensitySolid(atoms, {solid::blob(1.7)}, 1, 0.5), forEach);
}

Surfaces surfacesOf(const std::vector<Ball>& balls, const ForEach& forEach = oneByOne()) {
    return {dividedUnion(balls, forEach),
            polygonize(solid::ExcludedSolid(balls, 0.5, 1.4, forEach), forEach),
            blobs(balls, forEach), exposedAreas(balls, 0, 0.5, forEach)};
}

bool isSame(const Surfaces& a, const Surfaces& b) {
    const auto isSameMesh = [](const Mesh& x, const Mesh& y) {
        return x.vertices == y.vertices && x.triangles == y.triangles;
    };
    return isSameMesh(a.united, b.united) && isSameMesh(a.excluded, b.excluded) &&
           isSameMesh(a.density, b.density) && a.areas == b.areas;
}

/// What is wrong with any of the meshes.
std::string problems(const Surfaces& surfaces) {
    return problemWith(surfaces.united) + problemWith(surfaces.excluded) +
           problemWith(surfaces.density);
}

double sumOf(const std::vector<double>& areas) {
    return std::accumulate(areas.begin(), areas.end(), 0.0);
}

bool isEmpty(const Surfaces& surfaces) {
    return surfaces.united.triangles.empty() && surfaces.excluded.triangles.empty() &&
           surfaces.density.triangles.empty() && sumOf(surfaces.areas) == 0;
}

/// Ends the work when so many parts are done.
ForEach cancelledAfter(std::size_t& left) {
    return [&left](std::size_t count, const std::function<void(std::size_t)>& part) {
        for (std::size_t i = 0; i != count; ++i) {
            if (left == 0)
                throw Cancelled();
            --left;
            part(i);
        }
    };
}

/// All numbers below a count for the whole proof; otherwise the first, the last, and some at random
/// between them.
std::vector<std::size_t> someBelow(std::size_t count) {
    constexpr std::size_t some = 40;
    std::vector<std::size_t> numbers;
    std::mt19937 random(11);
    for (std::size_t i = 0; i != count; ++i)
        if (isWholeProof() || i < 5 || i + 2 >= count || random() % count < some)
            numbers.push_back(i);
    return numbers;
}

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinite = std::numeric_limits<float>::infinity();
const Ball one{{0.1F, 0.2F, 0.3F}, 1.7F};

} // namespace

class SurfaceFaultTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void noBallHasNoSurface() { QVERIFY(isEmpty(surfacesOf({}))); }

    void ballsOnOnePointAreOne() {
        const Surfaces expected = surfacesOf({one});
        for (const std::size_t count : {2U, 3U, 100U}) {
            const Surfaces surfaces = surfacesOf(std::vector<Ball>(count, one));
            QCOMPARE(problems(surfaces), std::string());
            QVERIFY(surfaces.united.vertices == expected.united.vertices);
            QVERIFY(surfaces.excluded.vertices == expected.excluded.vertices);
        }
        Ball smaller = one;
        smaller.radius = 1.2F;
        Ball near = one;
        near.centre[0] += 1e-5F;
        for (const Ball& other : {smaller, near}) {
            const Surfaces surfaces = surfacesOf({one, other});
            QCOMPARE(problems(surfaces), std::string());
            QVERIFY(isWithin(surfaces.excluded.area, expected.excluded.area, 0.02));
            QCOMPARE(eulerNumber(surfaces.excluded), 2L);
        }
    }

    void whatIsNoBallCountsAsNothing() {
        std::vector<Ball> bad;
        for (const float x : {notANumber, infinite, -infinite, 2e6F, -1e30F})
            for (std::size_t axis = 0; axis != 3; ++axis) {
                bad.push_back(one);
                bad.back().centre[axis] = x;
            }
        for (const float radius : {0.0F, -1.0F, notANumber, infinite, -infinite, 50.0F, 1e30F})
            bad.push_back({one.centre, radius});
        QVERIFY(isEmpty(surfacesOf(bad)));
        const Surfaces expected = surfacesOf({one});
        bad.push_back(one);
        const Surfaces surfaces = surfacesOf(bad);
        QVERIFY(surfaces.excluded.vertices == expected.excluded.vertices);
        QVERIFY(surfaces.united.vertices == expected.united.vertices);
        QVERIFY(surfaces.excluded.nearest ==
                std::vector<std::uint32_t>(surfaces.excluded.vertices.size(),
                                           std::uint32_t(bad.size() - 1)));
    }

    void ballsFarOutAreAsGood() {
        for (const float far : {5e3F, 9.9e5F}) {
            std::vector<Ball> balls;
            for (int i = 0; i != 5; ++i)
                balls.push_back({{far + float(i) * 2, -far, far}, 1.7F});
            QCOMPARE(problems(surfacesOf(balls)), std::string());
        }
    }

    void aSmallestAndALargestBallAreBalls() {
        const std::vector<Ball> balls = {{{0, 0, 0}, 1e-6F}, {{30, 0, 0}, 18.5F}};
        const Surfaces surfaces = surfacesOf(balls);
        QCOMPARE(problems(surfaces), std::string());
        QVERIFY(eulerNumber(surfaces.united) >= 2); // The small one may be between the corners.
    }

    void stepsAndProbesThatCannotBeAreRefused() {
        const std::vector<Ball> balls = {one};
        for (const double step : {0.0, -1.0, 0.01, 1e9, double(notANumber), double(infinite)}) {
            QVERIFY_THROWS_EXCEPTION(std::invalid_argument, solid::BallUnion(balls, step, 0));
            QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                                     solid::ExcludedSolid(balls, step, 1.4, oneByOne()));
            if (!(step > 1))
                QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                                         exposedAreas(balls, 0, step, oneByOne()));
        }
        for (const double probe : {0.0, -1.4, 1e3, double(notANumber), double(infinite)})
            QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                                     solid::ExcludedSolid(balls, 0.5, probe, oneByOne()));
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                                 solid::ExcludedSolid(balls, 3, 1.4, oneByOne()));
    }

    void workThatIsCancelledEndsAtOnce() {
        const std::vector<Ball> balls = randomBalls(3, 60, 6);
        const Surfaces expected = surfacesOf(balls);
        std::size_t parts = std::numeric_limits<std::size_t>::max();
        const std::size_t all = parts;
        surfacesOf(balls, cancelledAfter(parts));
        parts = all - parts;
        QVERIFY(parts > 100);
        for (const std::size_t after : someBelow(parts + 1)) {
            std::size_t left = after;
            try {
                const Surfaces surfaces = surfacesOf(balls, cancelledAfter(left));
                QVERIFY(isSame(surfaces, expected));
                QCOMPARE(after, parts);
            } catch (const Cancelled&) {
                QVERIFY(after < parts);
                QCOMPARE(left, std::size_t(0));
            }
        }
    }

    void memoryThatEndsIsSaid() {
        const std::vector<Ball> balls = randomBalls(3, 5, 2);
        const Surfaces expected = surfacesOf(balls);
        endMemoryIn(
            [&] { QVERIFY(dividedUnion(balls, oneByOne()).vertices == expected.united.vertices); });
        endMemoryIn([&] {
            const solid::ExcludedSolid excluded(balls, 0.5, 1.4, oneByOne());
            QVERIFY(polygonize(excluded, oneByOne()).vertices == expected.excluded.vertices);
        });
        endMemoryIn(
            [&] { QVERIFY(blobs(balls, oneByOne()).vertices == expected.density.vertices); });
        endMemoryIn([&] { QVERIFY(exposedAreas(balls, 0, 0.5, oneByOne()) == expected.areas); });
    }

    void memoryThatEndsInAContourIsSaid() {
        const std::vector<float> values = {0, 1, 2, 1, 0, 3, 2, 5, 1, 0, 0, 4};
        const solid::GridView grid{{3, 2, 2}, {}, solid::cubicSteps(1), values, {}, {3, 2, 2}};
        const Mesh expected = polygonize(solid::Contour(grid, 1.5, true), oneByOne());
        endMemoryIn([&] {
            const Mesh mesh = polygonize(solid::Contour(grid, 1.5, true), oneByOne());
            QVERIFY(mesh.vertices == expected.vertices);
        });
    }

private:
    /// Lets one allocation after the other fail, for the whole proof each of them.
    static void endMemoryIn(const std::function<void()>& work) {
        std::mt19937 random(5);
        int failed = 0;
        for (int granted = 0;; granted += leap(granted, random)) {
            bool isSaid = false;
            int refusals = 0;
            {
                const FailingMemory memory(granted, 1, 0);
                try {
                    work();
                } catch (const std::bad_alloc&) {
                    isSaid = true;
                }
                refusals = FailingMemory::refusals();
            }
            if (refusals == 0)
                break;
            QVERIFY(isSaid);
            ++failed;
        }
        QVERIFY(failed > 5);
    }
    /// To the next one that fails: ever farther, so that there are some hundred.
    static int leap(int granted, std::mt19937& random) {
        return isWholeProof() ? 1 : 1 + static_cast<int>(random() % (1 + unsigned(granted) / 50));
    }
};

REGISTER_TEST(SurfaceFaultTest)
#include "SurfaceFaultTest.moc"
