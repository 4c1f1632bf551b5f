// Points near others, compared with the plain definition.
#include "NearSearch.h"
#include "TestSupport.h"

#include <limits>
#include <random>

using workbench::Bits;
using workbench::pointsNear;
using Points = std::vector<std::array<float, 3>>;

class NearSearchTest : public test_support::TestCase {
    Q_OBJECT

    static Bits plainly(const Points& points, const Bits& from, double radius) {
        Bits near = from;
        for (std::size_t i = 0; i != points.size(); ++i)
            for (std::size_t j = 0; j != points.size(); ++j) {
                double sum = 0.0;
                for (std::size_t axis = 0; axis != 3; ++axis) {
                    const double d = double(points[i][axis]) - double(points[j][axis]);
                    sum += d * d;
                }
                if (from.has(j) && sum <= radius * radius)
                    near.add(i);
            }
        return near;
    }

private slots:
    void itIsThePlainDefinition() {
        std::mt19937 random(20261122);
        for (const float size : {3.0F, 30.0F, 300.0F}) {
            std::uniform_real_distribution<float> place(-size, size);
            Points points(700);
            for (auto& point : points)
                point = {place(random), place(random), place(random)};
            for (const double radius : {0.3, 1.0, 4.7, 20.0, 100.0}) {
                Bits from(points.size());
                for (std::size_t i = 0; i < points.size(); i += 1 + random() % 40)
                    from.add(i);
                QVERIFY(pointsNear(points, from, radius) == plainly(points, from, radius));
            }
        }
    }

    void theBorderBelongsToIt() {
        const Points points{{0, 0, 0}, {3, 4, 0}, {3, 4, 0.001F}, {-5, 0, 0}};
        Bits from(4);
        from.add(0);
        const Bits near = pointsNear(points, from, 5.0);
        QVERIFY(near.has(0) && near.has(1) && !near.has(2) && near.has(3));
    }

    void whatIsNotFiniteIsNearNothingButItself() {
        constexpr float nan = std::numeric_limits<float>::quiet_NaN();
        constexpr float infinite = std::numeric_limits<float>::infinity();
        const Points points{
            {nan, 0, 0}, {infinite, 0, 0}, {1, 0, 0}, {1e30F, 1e30F, 0}, {1e30F, 1e30F, 1}};
        Bits from(5);
        from.add(0, 2);
        from.add(3);
        const Bits near = pointsNear(points, from, 100.0);
        QCOMPARE(near.count(), std::size_t{4});
        QVERIFY(near.has(0) && near.has(1) && near.has(3) && near.has(4));
    }

    void nothingIsNearNothing() {
        QCOMPARE(pointsNear({{0, 0, 0}}, Bits(1), 5.0).count(), std::size_t{0});
        QCOMPARE(pointsNear({}, Bits(0), 5.0).size(), std::size_t{0});
    }
};

REGISTER_TEST(NearSearchTest)
#include "NearSearchTest.moc"
