// Contours of values on grids.
#include "mesh/Contour.h"
#include "LatticeTopology.h"
#include "SurfaceChecks.h"
#include "TestSupport.h"
#include "mesh/Vectors.h"

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <random>
#include <stdexcept>

using solid::Contour;
using solid::GridView;
using solid::Mesh;
using solid::Vector;
using solid::vectorOf;
using surface_checks::areaOf;
using surface_checks::componentsOf;
using surface_checks::eulerNumber;
using surface_checks::isWithin;
using surface_checks::oneByOne;
using surface_checks::problemWith;
using surface_checks::topologyOf;
using surface_checks::volumeOf;

namespace {

constexpr float noValue = std::numeric_limits<float>::quiet_NaN();
constexpr float infinite = std::numeric_limits<float>::infinity();

/// A grid with the values that it shows.
class Grid {
public:
    explicit Grid(const std::array<int, 3>& points,
                  const solid::CellSteps& steps = {{{0.5, 0, 0}, {0, 0.5, 0}, {0, 0, 0.5}}})
        : view{points, {-3, -2, -1}, steps, {}, {0, 0, 0}, points},
          values(static_cast<std::size_t>(points[0] * points[1] * points[2])) {
        view.values = values;
    }
    Grid(const Grid&) = delete;
    Grid& operator=(const Grid&) = delete;

    Vector position(int x, int y, int z) const {
        Vector at = {view.origin[0], view.origin[1], view.origin[2]};
        const std::array<int, 3> index = {x, y, z};
        for (std::size_t axis = 0; axis != 3; ++axis)
            at = at + step(axis) * index[axis];
        return at;
    }
    Vector step(std::size_t axis) const {
        return {view.steps[axis][0], view.steps[axis][1], view.steps[axis][2]};
    }
    float& at(int x, int y, int z) {
        return values[static_cast<std::size_t>((z * view.points[1] + y) * view.points[0] + x)];
    }
    void fill(const std::function<double(const Vector&)>& f) {
        for (int z = 0; z != view.points[2]; ++z)
            for (int y = 0; y != view.points[1]; ++y)
                for (int x = 0; x != view.points[0]; ++x)
                    at(x, y, z) = static_cast<float>(f(position(x, y, z)));
    }

    GridView view;
    std::vector<float> values;
};

Mesh contour(const GridView& view, double level, bool isHigh) {
    return polygonize(Contour(view, level, isHigh), oneByOne());
}

/// Falls linearly from 10 in a point by 1 an Å.
std::function<double(const Vector&)> hill(const Vector& top) {
    return [top](const Vector& at) { return 10 - length(at - top); };
}

} // namespace

class ContourTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void aHillHasASphereAtEachLevel_data() {
        QTest::addColumn<bool>("isHigh");
        QTest::addColumn<bool>("isMirrored");
        QTest::newRow("high") << true << false;
        QTest::newRow("low") << false << false;
        QTest::newRow("left-handed axes") << true << true;
    }

    void aHillHasASphereAtEachLevel() {
        QFETCH(bool, isHigh);
        QFETCH(bool, isMirrored);
        const double skew = isMirrored ? -0.4 : 0.4;
        Grid grid({80, 70, 60}, {{{0.3, 0, 0}, {0.05, skew, 0}, {0.02, -0.03, 0.35}}});
        const Vector top = grid.position(40, 35, 30);
        const auto rise = hill(top);
        grid.fill([&](const Vector& at) { return isHigh ? rise(at) : -rise(at); });
        const double radius = 4;
        const Mesh mesh = contour(grid.view, isHigh ? 10 - radius : radius - 10, isHigh);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(eulerNumber(mesh), 2L);
        QVERIFY(isWithin(areaOf(mesh), 4 * std::numbers::pi * radius * radius, 0.01));
        QVERIFY(isWithin(mesh.area, 4 * std::numbers::pi * radius * radius, 0.005));
        QVERIFY(
            isWithin(volumeOf(mesh), 4.0 / 3 * std::numbers::pi * radius * radius * radius, 0.01));
        for (std::size_t i = 0; i != mesh.vertices.size(); ++i) {
            const Vector out = vectorOf(mesh.vertices[i]) - top;
            QVERIFY(std::abs(length(out) - radius) < 0.01);
            QVERIFY(dot(out, vectorOf(mesh.normals[i])) > 0.995 * radius);
        }
    }

    void aSlopeIsCutWhereItReachesTheLevel() {
        Grid grid({20, 20, 20});
        grid.fill([](const Vector& at) { return at.x; });
        const Mesh mesh = contour(grid.view, 1.3, false);
        QCOMPARE(problemWith(mesh), std::string());
        float farthest = -10;
        bool isSlope = false;
        for (std::size_t i = 0; i != mesh.vertices.size(); ++i) {
            farthest = std::max(farthest, mesh.vertices[i][0]);
            const solid::Point& normal = mesh.normals[i];
            if (mesh.vertices[i][0] > 1.25F && normal[1] == 0 && normal[2] == 0) {
                QVERIFY(normal[0] > 0.99F);
                isSlope = true;
            }
        }
        QVERIFY(isSlope);
        QVERIFY(std::abs(farthest - 1.3F) < 1e-5F);
    }

    void randomValuesMakeClosedMeshes() {
        std::mt19937 random(3);
        std::uniform_real_distribution<float> value(-1, 1);
        for (const int side : {1, 2, 5, 15, 16, 17, 33}) {
            Grid grid({side, side + 1, side + 2});
            for (float& one : grid.values)
                one = value(random);
            for (const double level : {-0.9, -0.2, 0.0, 0.5, 0.9})
                for (const bool isHigh : {true, false}) {
                    const Mesh mesh = contour(grid.view, level, isHigh);
                    QCOMPARE(problemWith(mesh), std::string());
                    QVERIFY(topologyOf(mesh) == topologyOf(Contour(grid.view, level, isHigh)));
                    QCOMPARE(mesh.vertices.empty(),
                             std::none_of(grid.values.begin(), grid.values.end(), [&](float one) {
                                 return isHigh ? one >= level : one <= level;
                             }));
                }
        }
    }

    void theMeshIsTheSameOnAnyNumberOfThreads() {
        Grid grid({90, 80, 70});
        grid.fill([](const Vector& at) {
            return std::sin(1.3 * at.x) * std::cos(1.1 * at.y) + std::sin(0.9 * at.z);
        });
        const Mesh alone = contour(grid.view, 0.2, true);
        const Mesh mesh = polygonize(Contour(grid.view, 0.2, true), surface_checks::onThreads(4));
        QVERIFY(!alone.triangles.empty());
        QVERIFY(mesh.vertices == alone.vertices);
        QVERIFY(mesh.normals == alone.normals);
        QVERIFY(mesh.triangles == alone.triangles);
        QCOMPARE(mesh.area, alone.area);
    }

    void theContourEndsWhereThePartThatCountsDoes() {
        Grid grid({40, 40, 40});
        grid.fill([](const Vector&) { return 1.0; });
        grid.view.lower = {5, 15, 16};
        grid.view.upper = {20, 33, 17};
        const Mesh mesh = contour(grid.view, 0.5, true);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(eulerNumber(mesh), 2L);
        const Vector low = grid.position(5, 15, 16);
        const Vector high = grid.position(19, 32, 16);
        for (const solid::Point& vertex : mesh.vertices) {
            QVERIFY(vertex[0] >= float(low.x) && vertex[0] <= float(high.x));
            QVERIFY(vertex[1] >= float(low.y) && vertex[1] <= float(high.y));
            QVERIFY(vertex[2] == float(low.z));
        }
    }

    void aContourThatReachesTheBoundsIsCutFlatThere_data() {
        QTest::addColumn<bool>("isHigh");
        QTest::addColumn<int>("axis");
        QTest::addColumn<bool>("isUpper");
        for (const bool isHigh : {true, false})
            for (int axis = 0; axis != 3; ++axis)
                for (const bool isUpper : {true, false})
                    QTest::addRow("%s values, the %s bound of axis %d", isHigh ? "high" : "low",
                                  isUpper ? "upper" : "lower", axis)
                        << isHigh << axis << isUpper;
    }

    // A ball of 4 Å, of which the bounds cut off what is 1.5 Å and more from its middle.
    void aContourThatReachesTheBoundsIsCutFlatThere() {
        QFETCH(bool, isHigh);
        QFETCH(int, axis);
        QFETCH(bool, isUpper);
        constexpr double pi = std::numbers::pi;
        Grid grid({45, 47, 49}, {{{0.3, 0, 0}, {0.1, 0.3, 0}, {-0.05, 0.07, 0.3}}});
        const auto fixed = static_cast<std::size_t>(axis);
        (isUpper ? grid.view.upper : grid.view.lower)[fixed] = isUpper ? 28 : 18;
        const Vector a = grid.step((fixed + 1) % 3);
        const Vector b = grid.step((fixed + 2) % 3);
        const Vector across = cross(a, b) * ((isUpper ? 1 : -1) / length(cross(a, b)));
        const Vector onBounds = grid.position(22 + (axis == 0 ? (isUpper ? 5 : -4) : 0),
                                              23 + (axis == 1 ? (isUpper ? 4 : -5) : 0),
                                              24 + (axis == 2 ? (isUpper ? 3 : -6) : 0));
        const Vector top = onBounds - across * 1.5;
        const auto rise = hill(top);
        grid.fill([&](const Vector& at) { return isHigh ? rise(at) : -rise(at); });
        const Mesh mesh = contour(grid.view, isHigh ? 6 : -6, isHigh);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(eulerNumber(mesh), 2L);
        const double disc = pi * (16 - 1.5 * 1.5);
        const double area = 2 * pi * 4 * 5.5 + disc;
        QVERIFY(isWithin(areaOf(mesh), area, 0.01));
        QVERIFY(isWithin(mesh.area, area, 0.01));
        QVERIFY(isWithin(volumeOf(mesh), pi / 3 * 5.5 * 5.5 * (3 * 4 - 5.5), 0.01));
        double cap = 0;
        for (const solid::Triangle& triangle : mesh.triangles) {
            std::array<bool, 3> isFlat{};
            for (std::size_t i = 0; i != 3; ++i) {
                const Vector at = vectorOf(mesh.vertices[triangle[i]]) - top;
                const Vector normal = vectorOf(mesh.normals[triangle[i]]);
                QVERIFY(dot(at, across) < 1.5 + 1e-5);
                isFlat[i] = dot(normal, across) > 1 - 1e-6;
                if (isFlat[i])
                    QVERIFY(std::abs(dot(at, across) - 1.5) < 1e-5 && length(at) < 4.01);
                else
                    QVERIFY(std::abs(length(at) - 4) < 0.02 && dot(normal, at) > 3.9);
            }
            const double size = surface_checks::areaOf(mesh, triangle);
            // No triangle has a part in the cap and one in the ball.
            QVERIFY(size < 1e-6 || std::count(isFlat.begin(), isFlat.end(), isFlat[0]) == 3);
            cap += isFlat[0] ? size : 0;
        }
        QVERIFY(isWithin(cap, disc, 0.01));
    }

    void aPartBeyondTheGridIsCutToIt() {
        Grid grid({9, 8, 7});
        grid.fill(hill({0, 0, 0}));
        const Mesh whole = contour(grid.view, 8.7, true);
        grid.view.lower = {-1'000'000, -5, std::numeric_limits<int>::min()};
        grid.view.upper = {1'000'000, 8, std::numeric_limits<int>::max()};
        QVERIFY(contour(grid.view, 8.7, true).vertices == whole.vertices);
        grid.view.lower = {6, 6, 6};
        grid.view.upper = {3, 8, 7};
        QVERIFY(contour(grid.view, 8.7, true).triangles.empty());
    }

    void anAbsurdLevelHasNothingOrTheBox() {
        Grid grid({20, 17, 16});
        grid.fill(hill({0, 0, 0}));
        for (const double level : {1e3, 1e300, double(infinite), double(noValue)})
            QVERIFY(contour(grid.view, level, true).triangles.empty());
        for (const double level : {-1e3, -1e300, double(-infinite)}) {
            const Mesh box = contour(grid.view, level, true);
            QCOMPARE(problemWith(box), std::string());
            QCOMPARE(eulerNumber(box), 2L);
            QVERIFY(isWithin(volumeOf(box), 9.5 * 8 * 7.5, 1e-5));
            QVERIFY(isWithin(box.area, 2 * (9.5 * 8 + 9.5 * 7.5 + 8 * 7.5), 1e-6));
            QVERIFY(isWithin(areaOf(box), box.area, 1e-6));
        }
    }

    void aMapOfOnePlaneHasFlatContours() {
        Grid grid({30, 30, 1});
        grid.fill(hill(grid.position(15, 15, 0)));
        const Mesh mesh = contour(grid.view, 6, true);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(eulerNumber(mesh), 2L);
        QVERIFY(std::abs(volumeOf(mesh)) < 1e-6);
        QVERIFY(isWithin(areaOf(mesh), 2 * std::numbers::pi * 16, 0.03));
        QVERIFY(isWithin(mesh.area, 2 * std::numbers::pi * 16, 0.03));
        Grid point({1, 1, 1});
        point.at(0, 0, 0) = 3;
        QCOMPARE(problemWith(contour(point.view, 2, true)), std::string());
        QVERIFY(contour(point.view, 4, true).triangles.empty());
    }

    void pointsWithoutAValueAreOutside() {
        Grid grid({30, 30, 30});
        grid.fill(hill(grid.position(15, 15, 15)));
        grid.at(15, 15, 15) = noValue;
        const Mesh mesh = contour(grid.view, 6, true);
        QCOMPARE(problemWith(mesh), std::string());
        QCOMPARE(componentsOf(mesh), 2L); // The hill, and the hole in it.
        QCOMPARE(eulerNumber(mesh), 4L);
        std::fill(grid.values.begin(), grid.values.end(), noValue);
        QVERIFY(contour(grid.view, 0, true).triangles.empty());
        QVERIFY(contour(grid.view, 0, false).triangles.empty());
    }

    void infiniteValuesAreBeyondEachLevel() {
        Grid grid({12, 12, 12});
        grid.at(5, 5, 5) = infinite;
        grid.at(8, 8, 8) = -infinite;
        for (const bool isHigh : {true, false}) {
            const Mesh mesh = contour(grid.view, isHigh ? 1 : -1, isHigh);
            QCOMPARE(problemWith(mesh), std::string());
            QCOMPARE(eulerNumber(mesh), 2L);
        }
        std::mt19937 random(9);
        const std::array<float, 6> some = {infinite, -infinite, noValue, 3e38F, -3e38F, 0};
        for (float& one : grid.values)
            one = some[random() % some.size()];
        for (const double level : {-3e38, -1.0, 0.0, 3e38})
            QCOMPARE(problemWith(contour(grid.view, level, true)), std::string());
    }

    void aGridWithoutAValueAPointIsRefused() {
        Grid grid({4, 5, 6});
        for (const std::array<int, 3>& points : {std::array{4, 5, 7}, std::array{-4, -5, 6},
                                                 std::array{2'000'000'000, 2'000'000'000, 4},
                                                 std::array{0, 5, 6}, std::array{4, 5, -6}}) {
            GridView view = grid.view;
            view.points = points;
            QVERIFY_THROWS_EXCEPTION(std::invalid_argument, Contour(view, 1, true));
        }
        GridView none{};
        QVERIFY(contour(none, 1, true).triangles.empty());
    }

    void aGridThatIsNowhereIsRefused() {
        Grid grid({4, 5, 6});
        for (const double bad : {double(noValue), double(infinite), -1e300}) {
            GridView view = grid.view;
            view.origin[1] = bad;
            QVERIFY_THROWS_EXCEPTION(std::invalid_argument, Contour(view, 1, true));
            view = grid.view;
            view.steps[2][0] = bad;
            QVERIFY_THROWS_EXCEPTION(std::invalid_argument, Contour(view, 1, true));
        }
        const Grid line({1, 1, 17'000'000});
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument, Contour(line.view, 1, true));
    }

    void axesInAPlaneMakeNoTrouble() {
        Grid grid({6, 6, 6}, {{{1, 0, 0}, {0, 1, 0}, {1, 1, 0}}});
        grid.fill([](const Vector& at) { return at.x; });
        QCOMPARE(problemWith(contour(grid.view, 0.3, true)), std::string());
    }
};

REGISTER_TEST(ContourTest)
#include "ContourTest.moc"
