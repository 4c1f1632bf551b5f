// Distances, angles, torsions and statistics against closed forms.
#include "Measure.h"
#include "TestSupport.h"

#include <cmath>
#include <limits>
#include <numbers>

using namespace workbench;

class MeasureTest : public test_support::TestCase {
    Q_OBJECT

    static bool isNear(double a, double b) { return std::abs(a - b) < 1e-9; }

private slots:
    void aDistanceIsThatOfPythagoras() {
        QVERIFY(isNear(distanceBetween({1, 2, 3}, {3, 5, 9}), 7.0));
        QVERIFY(isNear(distanceBetween({1, 2, 3}, {1, 2, 3}), 0.0));
    }

    void anAngleIsAtTheSecondPlace() {
        QVERIFY(isNear(angleAt({1, 0, 0}, {0, 0, 0}, {0, 2, 0}), 90.0));
        QVERIFY(isNear(angleAt({1, 0, 0}, {0, 0, 0}, {-3, 0, 0}), 180.0));
        QVERIFY(isNear(angleAt({2, 0, 0}, {0, 0, 0}, {5, 0, 0}), 0.0));
        // Of a regular tetrahedron: arccos(-1/3).
        QVERIFY(isNear(angleAt({1, 1, 1}, {0, 0, 0}, {1, -1, -1}),
                       std::acos(-1.0 / 3.0) * 180.0 / std::numbers::pi));
        // A tiny one is not lost in the cosine.
        QVERIFY(
            isNear(angleAt({1, 0, 0}, {0, 0, 0}, {1, 1e-9, 0}), 1e-9 * 180.0 / std::numbers::pi));
    }

    void aTorsionHasTheSignOfTheConvention() {
        const auto torsion = [](double degrees) {
            const double angle = degrees * std::numbers::pi / 180.0;
            // Seen along z, from (0,0,0) to (0,0,1), x to y is clockwise where z points away.
            return torsionAbout({1, 0, -0.5}, {0, 0, 0}, {0, 0, 1},
                                {2 * std::cos(angle), 2 * std::sin(angle), 1.7});
        };
        for (const double degrees : {-179.0, -120.0, -60.0, -1.0, 0.0, 1.0, 60.0, 90.0, 180.0})
            QVERIFY(isNear(torsion(degrees), degrees));
        // The same seen from the other end.
        QVERIFY(isNear(torsionAbout({0, 1, 1}, {0, 0, 1}, {0, 0, 0}, {1, 0, 0}), 90.0));
    }

    void whatIsNotDefinedIsNoNumber() {
        QVERIFY(std::isnan(angleAt({0, 0, 0}, {0, 0, 0}, {1, 0, 0})));
        QVERIFY(std::isnan(torsionAbout({0, 0, -1}, {0, 0, 0}, {0, 0, 1}, {1, 0, 1})));
        QVERIFY(std::isnan(torsionAbout({1, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 1, 0})));
        const Statistics none;
        QVERIFY(std::isnan(none.mean()) && std::isnan(none.deviation()) &&
                std::isnan(none.least()) && std::isnan(none.greatest()));
    }

    // 1 to n: mean (n + 1) / 2, deviation sqrt((n² - 1) / 12).
    void statisticsAreThoseOfTheFirstNumbers() {
        Statistics statistics;
        constexpr int n = 100'000;
        constexpr double far = 1e6;
        for (int i = 1; i <= n; ++i)
            statistics.add(far + i);
        statistics.add(std::numeric_limits<double>::quiet_NaN());
        statistics.add(std::numeric_limits<double>::infinity());
        QCOMPARE(statistics.count(), std::size_t{n});
        QCOMPARE(statistics.least(), far + 1);
        QCOMPARE(statistics.greatest(), far + n);
        QVERIFY(std::abs(statistics.mean() - (far + (n + 1) / 2.0)) < 1e-6);
        const double deviation = std::sqrt((double(n) * n - 1) / 12.0);
        QVERIFY(std::abs(statistics.deviation() - deviation) < 1e-6);
    }
};

REGISTER_TEST(MeasureTest)
#include "MeasureTest.moc"
