// Surfaces of one level of a density of atoms.
#include "mesh/Density.h"
#include "LatticeTopology.h"
#include "SurfaceChecks.h"
#include "TestSupport.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>

using solid::Ball;
using solid::DensityAtom;
using solid::DensityProfile;
using solid::DensitySolid;
using solid::Mesh;
using solid::Vector;
using solid::vectorOf;
using surface_checks::componentsOf;
using surface_checks::eulerNumber;
using surface_checks::gap;
using surface_checks::isWithin;
using surface_checks::leastGap;
using surface_checks::oneByOne;
using surface_checks::problemWith;
using surface_checks::topologyOf;

namespace {

/// Each ball with a blob of its own.
std::vector<DensityProfile> blobs(const std::vector<Ball>& balls) {
    std::vector<DensityProfile> profiles;
    for (const Ball& ball : balls)
        profiles.push_back(solid::blob(double{ball.radius}));
    return profiles;
}
std::vector<DensityAtom> atomsOf(const std::vector<Ball>& balls) {
    std::vector<DensityAtom> atoms;
    for (const Ball& ball : balls)
        atoms.push_back({ball, static_cast<std::uint32_t>(atoms.size())});
    return atoms;
}
Mesh blobSurface(const std::vector<Ball>& balls, double step,
                 const solid::ForEach& forEach = oneByOne()) {
    return polygonize(DensitySolid(atomsOf(balls), blobs(balls), 1, step), forEach);
}

/// By the definition.
double valueAt(const std::vector<Ball>& balls, const Vector& at, double fall) {
    double sum = 0;
    for (const Ball& ball : balls) {
        const Vector apart = at - vectorOf(ball.centre);
        sum += std::exp(fall * (1 - dot(apart, apart) / (double{ball.radius} * ball.radius)));
    }
    return sum;
}

const Ball one{{0.13F, -0.27F, 0.41F}, 1.7F};

} // namespace

class DensityTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void anAtomByItselfHasTheSurfaceOfItsBall() {
        const Mesh mesh = blobSurface({one}, 0.5);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(eulerNumber(mesh), 2L);
        QVERIFY(isWithin(blobSurface({one}, 0.1).area, 4 * std::numbers::pi * 1.7 * 1.7, 0.003));
        for (std::size_t i = 0; i != mesh.vertices.size(); ++i) {
            QVERIFY(std::abs(gap(mesh.vertices[i], one)) < 1e-4);
            const Vector out = vectorOf(mesh.vertices[i]) - vectorOf(one.centre);
            QVERIFY(dot(out, vectorOf(mesh.normals[i])) > 1.7 * 0.9999);
        }
    }

    void theSumOfTheAtomsIsTheLevelAtEachVertex() {
        for (unsigned seed = 0; seed != 6; ++seed) {
            const std::vector<Ball> balls =
                surface_checks::randomBalls(seed, 60 + 40 * int(seed), 8);
            const DensitySolid solid(atomsOf(balls), blobs(balls), 1, seed % 2 == 0 ? 0.5 : 0.9);
            const Mesh mesh = polygonize(solid, oneByOne());
            QCOMPARE(problemWith(mesh), std::string());
            QVERIFY(topologyOf(mesh) == topologyOf(solid));
            for (std::size_t i = 0; i != mesh.vertices.size(); ++i) {
                const Vector at = vectorOf(mesh.vertices[i]);
                QVERIFY(std::abs(valueAt(balls, at, 2.3) - 1) < 0.03);
                const Vector out = at + vectorOf(mesh.normals[i]) * 0.01;
                QVERIFY(valueAt(balls, out, 2.3) < valueAt(balls, at, 2.3));
                QVERIFY(gap(mesh.vertices[i], balls[mesh.nearest[i]]) <=
                        leastGap(mesh.vertices[i], balls) + 1e-5);
            }
        }
    }

    void nearAtomsMeltIntoOneAnother() {
        const std::vector<Ball> apart = {one, {{4.33F, -0.27F, 0.41F}, 1.7F}};
        const std::vector<Ball> near = {one, {{3.53F, -0.27F, 0.41F}, 1.7F}};
        QCOMPARE(componentsOf(blobSurface(apart, 0.3)), 2L);
        // The balls just touch, and between them each is 1.
        QCOMPARE(componentsOf(blobSurface(near, 0.3)), 1L);
    }

    // The integral of the density over space is the number of electrons.
    void electronsAreAsManyAsTheScatteringFactorSays() {
        const std::vector<solid::ScatteringTerm> carbon = {
            {2.31, 20.8439}, {1.02, 10.2075}, {1.5886, 0.5687}, {0.865, 51.6512}, {0.2156, 0}};
        const DensityProfile profile = solid::electrons(carbon, 15);
        QCOMPARE(profile.size(), std::size_t(5));
        double sum = 0;
        const double thickness = 0.001;
        for (double r = thickness / 2; r < 12; r += thickness) {
            double value = 0;
            for (const solid::GaussianTerm& term : profile)
                value += term.amplitude * std::exp(-term.exponent * r * r);
            sum += 4 * std::numbers::pi * r * r * value * thickness;
        }
        QVERIFY(isWithin(sum, 2.31 + 1.02 + 1.5886 + 0.865 + 0.2156, 1e-6));
        // Without a temperature factor a constant would be a point.
        QCOMPARE(solid::electrons(carbon, 0).size(), std::size_t(4));
        QVERIFY(solid::electrons(carbon, -100).empty());
    }

    void severalTermsAddUp() {
        const std::vector<DensityProfile> profiles = {{{3, 0.9}, {0.5, 0.2}, {-0.2, 2}},
                                                      {{2, 0.4}}};
        const std::vector<DensityAtom> atoms = {{{{0, 0, 0}, 1.7F}, 0}, {{{2, 1, 0.5F}, 1.5F}, 1}};
        const Mesh mesh = polygonize(DensitySolid(atoms, profiles, 0.3, 0.4), oneByOne());
        QCOMPARE(problemWith(mesh), std::string());
        for (const solid::Point& vertex : mesh.vertices) {
            double sum = 0;
            for (const DensityAtom& atom : atoms) {
                const Vector apart = vectorOf(vertex) - vectorOf(atom.ball.centre);
                for (const solid::GaussianTerm& term : profiles[atom.profile])
                    sum += term.amplitude * std::exp(-term.exponent * dot(apart, apart));
            }
            QVERIFY(std::abs(sum / 0.3 - 1) < 0.005);
        }
    }

    void theMeshIsTheSameOnAnyNumberOfThreads() {
        const std::vector<Ball> balls = surface_checks::randomBalls(5, 500, 14);
        const Mesh alone = blobSurface(balls, 0.7);
        const Mesh mesh = blobSurface(balls, 0.7, surface_checks::onThreads(4));
        QVERIFY(mesh.vertices == alone.vertices);
        QVERIFY(mesh.normals == alone.normals);
        QVERIFY(mesh.triangles == alone.triangles);
        QVERIFY(mesh.nearest == alone.nearest);
    }

    void whatIsNoDensityCountsAsNothing() {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double infinite = std::numeric_limits<double>::infinity();
        const std::vector<DensityProfile> profiles = {{{nan, 1}}, {{1, nan}},     {{infinite, 1}},
                                                      {{2, 0}},   {{2, -1}},      {{2, infinite}},
                                                      {},         solid::blob(0), solid::blob(nan)};
        std::vector<DensityAtom> atoms;
        for (std::uint32_t i = 0; i != profiles.size(); ++i)
            atoms.push_back({one, i});
        QVERIFY(polygonize(DensitySolid(atoms, profiles, 1, 0.5), oneByOne()).triangles.empty());
        QVERIFY(polygonize(DensitySolid({}, {}, 1, 0.5), oneByOne()).triangles.empty());
        // A density that hardly falls is cut off.
        const Mesh wide = polygonize(
            DensitySolid(std::vector<DensityAtom>{{one, 0}}, {{{2, 1e-9}}}, 1, 2), oneByOne());
        QCOMPARE(problemWith(wide), std::string());
    }

    void whatCannotBeIsRefused() {
        const std::vector<DensityAtom> atoms = {{one, 0}};
        const std::vector<DensityProfile> profiles = {solid::blob(1.7)};
        for (const double level : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), HUGE_VAL})
            QVERIFY_THROWS_EXCEPTION(std::invalid_argument,
                                     DensitySolid(atoms, profiles, level, 0.5));
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument, DensitySolid(atoms, {}, 1, 0.5));
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument, DensitySolid(atoms, profiles, 1, 0));
    }
};

REGISTER_TEST(DensityTest)
#include "DensityTest.moc"
