// Points near others, compared with the plain definition.
#include "NearSearch.h"
#include "TestSupport.h"

#include <cmath>
#include <limits>
#include <random>

using workbench::Bits;
using workbench::NearSearch;
using Points = std::vector<NearSearch::Point>;

class NearSearchTest : public test_support::TestCase {
    Q_OBJECT

    static Bits plainly(const Points& points, const Bits& from, double radius) {
        Bits near = from;
        for (std::size_t j = from.next(0); j != from.size(); j = from.next(j + 1))
            for (std::size_t i = 0; i != points.size(); ++i) {
                double sum = 0.0;
                for (std::size_t axis = 0; axis != 3; ++axis) {
                    const double d = double(points[i][axis]) - double(points[j][axis]);
                    sum += d * d;
                }
                if (sum <= radius * radius)
                    near.add(i);
            }
        return near;
    }

    static Bits pointsNear(const Points& points, const Bits& from, double radius) {
        return NearSearch(points).near(from, radius);
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

    // So many that they are shared out among threads.
    void itIsThePlainDefinitionOfManyPoints() {
        std::mt19937 random(5);
        std::uniform_real_distribution<float> place(0.0F, 60.0F);
        Points points(50'000);
        for (auto& point : points)
            point = {place(random), place(random), place(random)};
        // Some far away, and some all in one place.
        for (std::size_t i = 0; i != 100; ++i) {
            points[i] = {1e7F + static_cast<float>(i), -1e7F, 3e8F};
            points[i + 100] = {7.0F, 7.0F, 7.0F};
        }
        const NearSearch search(points);
        for (const std::size_t every : {25U, 1000U, 20'000U}) {
            Bits from(points.size());
            for (std::size_t i = 50; i < points.size(); i += every)
                from.add(i);
            for (const double radius : {0.5, 3.0, 15.0, 100.0})
                QVERIFY(search.near(from, radius) == plainly(points, from, radius));
        }
    }

    void distancesAreComparedInDoublePrecision() {
        // 0.1 Å as a float is a little more than 0.1.
        const Points points{{0, 0, 0}, {0.1F, 0, 0}, {std::nextafter(0.1F, 0.0F), 0, 0}};
        Bits from(3);
        from.add(0);
        const Bits near = pointsNear(points, from, 0.1);
        QVERIFY(!near.has(1));
        QVERIFY(near.has(2));
        QVERIFY(pointsNear(points, from, static_cast<double>(0.1F)).has(1));
        QCOMPARE(pointsNear({{0, 0, 0}, {0, 0, 0}, {1e-30F, 0, 0}}, from, 1e-200).count(),
                 std::size_t{2});
    }

    void aSearchThatIsStoppedEnds() {
        Points points(100'000);
        for (std::size_t i = 0; i != points.size(); ++i)
            points[i] = {static_cast<float>(i), 0, 0};
        Bits from(points.size());
        from.add(50'000);
        std::stop_source stop;
        stop.request_stop();
        QCOMPARE(NearSearch(points).near(from, 10.0, stop.get_token()).count(), std::size_t{1});
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
