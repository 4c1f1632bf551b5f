// Points near others, compared with the plain definition.
#include "NearSearch.h"
#include "TestSupport.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
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

    // Of every number of points around those of eights, blocks and runs, in clusters and strewn,
    // with few centres and many.
    void itIsThePlainDefinitionOfAnyNumberOfPoints() {
        std::mt19937 random(11);
        std::normal_distribution<float> scatter(0.0F, 2.0F);
        std::uniform_real_distribution<double> anyRadius(0.1, 25.0);
        for (const std::size_t count : {1U, 7U, 8U, 9U, 63U, 64U, 65U, 511U, 513U, 1200U, 5000U})
            for (int turn = 0; turn != 8; ++turn) {
                std::uniform_real_distribution<float> place(0.0F, turn % 2 == 0 ? 20.0F : 90.0F);
                Points points;
                while (points.size() != count) {
                    const NearSearch::Point middle{place(random), place(random), place(random)};
                    for (std::size_t i = random() % 60; i != 0 && points.size() != count; --i)
                        points.push_back({middle[0] + scatter(random), middle[1] + scatter(random),
                                          middle[2] + scatter(random)});
                }
                Bits from(count);
                const std::size_t every = std::size_t{1} << random() % 10;
                for (std::size_t i = 0; i != count; ++i)
                    if (random() % every == 0)
                        from.add(i);
                const double radius = anyRadius(random);
                QVERIFY(pointsNear(points, from, radius) == plainly(points, from, radius));
            }
    }

    // Many distances that are exactly the radius, or the least that differs from it.
    void itIsThePlainDefinitionOnALattice() {
        std::mt19937 random(12);
        for (const float step : {1.0F, 0.1F}) {
            Points points;
            for (int x = 0; x != 14; ++x)
                for (int y = 0; y != 14; ++y)
                    for (int z = 0; z != 14; ++z)
                        points.push_back({float(x) * step, float(y) * step, float(z) * step});
            std::shuffle(points.begin(), points.end(), random);
            for (const std::size_t centres : {1U, 5U, 300U}) {
                Bits from(points.size());
                from.add(0, centres);
                for (const double radius : {1.0, 1.4142135623730951, 3.0, 5.0, 7.0})
                    QVERIFY(pointsNear(points, from, radius * double(step)) ==
                            plainly(points, from, radius * double(step)));
            }
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

    // Few and many, again and again, near and far, and the same place; some to no place and back.
    void pointsThatWereMovedAreWhereTheyAre() {
        constexpr float infinite = std::numeric_limits<float>::infinity();
        std::mt19937 random(13);
        std::uniform_real_distribution<float> place(0.0F, 40.0F);
        Points points(6000);
        for (auto& point : points)
            point = {place(random), place(random), place(random)};
        auto search = std::make_shared<const NearSearch>(points);
        for (int turn = 0; turn != 60; ++turn) {
            const Points old = points;
            std::vector<std::uint32_t> moved;
            const std::uint32_t every = std::uint32_t{1} << (6 + random() % 7);
            for (std::uint32_t i = random() % every; i < points.size(); i += every) {
                moved.push_back(i);
                const float far = random() % 5 == 0 ? 1000.0F : 0.0F;
                if (random() % 4 != 0)
                    points[i] = {place(random) + far, place(random), place(random)};
                if (turn % 10 == 9 && random() % 3 == 0)
                    points[i][random() % 3] = infinite;
            }
            Bits from(points.size());
            for (std::size_t i = random() % 50; i < points.size(); i += 211)
                from.add(i);
            if (!moved.empty())
                from.add(moved.front());
            const auto before = search;
            search = NearSearch::moved(*before, points, moved);
            for (const double radius : {0.7, 3.0, 12.0}) {
                QVERIFY(search->near(from, radius) == plainly(points, from, radius));
                QVERIFY(before->near(from, radius) == plainly(old, from, radius));
            }
        }
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
