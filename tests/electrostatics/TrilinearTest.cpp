// Values between the points of a grid, against closed forms.
#include "potential/Trilinear.h"
#include "TestSupport.h"

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

using electrostatics::GridView;
using electrostatics::Point;
using electrostatics::Trilinear;

namespace {

using Function = std::function<double(double, double, double)>;

/// A grid and its values.
struct Grid {
    GridView view;
    std::vector<float> values;

    /// `of` is a function of the indices.
    Grid(std::array<int, 3> points, const Function& of) {
        for (int z = 0; z != points[2]; ++z)
            for (int y = 0; y != points[1]; ++y)
                for (int x = 0; x != points[0]; ++x)
                    values.push_back(static_cast<float>(of(x, y, z)));
        view = {points, {}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, values};
    }
    void skew() {
        view.origin = {-3, 5, 2.5};
        view.steps = {{{0.5, 0.1, 0}, {-0.25, 0.75, 0.125}, {0.2, -0.3, -1}}};
    }
    /// The position of a point with these indices, which need not be whole.
    Point at(double x, double y, double z) const {
        Point point{};
        for (std::size_t i = 0; i != 3; ++i)
            point[i] = static_cast<float>(view.origin[i] + x * view.steps[0][i] +
                                          y * view.steps[1][i] + z * view.steps[2][i]);
        return point;
    }
};

double linear(double x, double y, double z) {
    return 2 * x - 3 * y + 0.5 * z + 1;
}
/// The most general function that is exact between the points of a cell.
double trilinear(double x, double y, double z) {
    return x * y * z - 2 * x * y + 0.5 * y * z + z - 3;
}

const float notANumber = std::numeric_limits<float>::quiet_NaN();

} // namespace

class TrilinearTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void linearAndTrilinearFunctionsAreExactAlsoOnSkewedGrids() {
        std::mt19937 random(5);
        for (const bool isSkewed : {false, true})
            for (const Function& function : {Function(linear), Function(trilinear)}) {
                Grid grid({7, 5, 6}, function);
                if (isSkewed)
                    grid.skew();
                const Trilinear values(grid.view);
                for (int i = 0; i != 2000; ++i) {
                    const auto within = [&random](int last) {
                        return std::uniform_real_distribution<double>(0, last)(random);
                    };
                    const double x = within(6);
                    const double y = within(4);
                    const double z = within(5);
                    QVERIFY(std::abs(double(values.at(grid.at(x, y, z))) - function(x, y, z)) <
                            1e-4);
                }
            }
    }

    void pointsHaveTheirOwnValues() {
        Grid grid({4, 3, 2}, [](double x, double y, double z) { return 100 * z + 10 * y + x; });
        const Trilinear values(grid.view);
        for (int z = 0; z != 2; ++z)
            for (int y = 0; y != 3; ++y)
                for (int x = 0; x != 4; ++x)
                    QCOMPARE(values.at(grid.at(x, y, z)), float(100 * z + 10 * y + x));
    }

    void outsideThereIsNone() {
        Grid grid({4, 3, 2}, linear);
        const Trilinear values(grid.view);
        for (const double beyond : {1e-3, 1.0, 1e30})
            for (const auto& [x, y, z] : std::vector<std::array<double, 3>>{{-beyond, 1, 1},
                                                                            {3 + beyond, 1, 1},
                                                                            {1, -beyond, 1},
                                                                            {1, 2 + beyond, 1},
                                                                            {1, 1, -beyond},
                                                                            {1, 1, 1 + beyond}})
                QVERIFY(std::isnan(values.at(grid.at(x, y, z))));
        QVERIFY(std::isnan(values.at({notANumber, 1, 1})));
        QVERIFY(std::isnan(values.at({1, std::numeric_limits<float>::infinity(), 1})));
    }

    // A value that is missing is missed only where it would count.
    void aMissingValueSpreadsAsFarAsItsCells() {
        Grid grid({4, 4, 4}, linear);
        grid.values[1 + 4 * (1 + 4 * 1)] = notANumber;
        const Trilinear values(grid.view);
        QVERIFY(std::isnan(values.at({1, 1, 1})));
        QVERIFY(std::isnan(values.at({0.5F, 0.5F, 0.5F})));
        QVERIFY(std::isnan(values.at({1.5F, 1.5F, 1.5F})));
        QCOMPARE(values.at({2, 1, 1}), float(linear(2, 1, 1)));
        QCOMPARE(values.at({2.5F, 1.5F, 1.5F}), float(linear(2.5, 1.5, 1.5)));
    }

    void aPlaneHasValuesInItself() {
        Grid grid({4, 4, 1}, linear);
        const Trilinear values(grid.view);
        QCOMPARE(values.at({1.5F, 0.25F, 0}), float(linear(1.5, 0.25, 0)));
        QVERIFY(std::isnan(values.at({1.5F, 0.25F, 0.01F})));
        Grid point({1, 1, 1}, linear);
        QCOMPARE(Trilinear(point.view).at({0, 0, 0}), 1.0F);
    }

    void stepsInAPlaneHaveNoInside() {
        Grid grid({2, 2, 2}, linear);
        grid.view.steps[2] = {1, 1, 0};
        const Trilinear values(grid.view);
        QVERIFY(std::isnan(values.at({0, 0, 0})));
        QVERIFY(std::isnan(values.at({0.5F, 0.5F, 0})));
    }
};

REGISTER_TEST(TrilinearTest)
#include "TrilinearTest.moc"
