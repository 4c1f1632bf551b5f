// Centres that crowd together in shapes that are hard for a k-d tree, and runs of points at the
// very radius: the answer is that of the plain definition, to the bit.
#include "radius/CrowdedCentres.h"
#include "TestSupport.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {

using Points = std::vector<Point>;

std::vector<std::uint8_t> plain(const Points& centres, const Points& points, double radius) {
    std::vector<std::uint8_t> near(points.size());
    for (std::size_t i = 0; i != points.size(); ++i)
        near[i] = std::ranges::any_of(centres, [&](const Point& centre) {
            return isWithin(radius * radius, points[i], centre);
        });
    return near;
}

std::vector<std::uint8_t> searched(const Points& centres, const Points& points, double radius) {
    std::vector<std::uint8_t> near(points.size());
    CrowdedCentres(centres, Reach(radius)).search(points, near);
    return near;
}

constexpr std::size_t many = 20'000;

} // namespace

class CrowdedCentresTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    // A run of equal points is answered by one look at the tree.
    void runsAtTheRadiusAreDecidedToTheBit() {
        const Points centres(100, Point{0, 0, 0});
        for (const float radius : {5.0F, 0.1F, 9999.0F, 1e-10F}) {
            Points points;
            float x = radius;
            for (int step = 0; step != 40; ++step)
                x = std::nextafter(x, 0.0F);
            for (int step = 0; step != 80; ++step, x = std::nextafter(x, 2.0F * radius))
                points.insert(points.end(), 128, Point{x, 0, 0});
            const auto expected = plain(centres, points, static_cast<double>(radius));
            QVERIFY(std::ranges::count(expected, 1) > 1000);
            QVERIFY(std::ranges::count(expected, 0) > 1000);
            QVERIFY2(searched(centres, points, static_cast<double>(radius)) == expected,
                     qPrintable(QString::number(static_cast<double>(radius))));
        }
    }

    void whatIsNoNumberIsNotNearWithTheRestOfItsRun() {
        const Points centres(100, Point{0, 0, 0});
        Points points(128, Point{1, 0, 0});
        points[77][1] = std::numeric_limits<float>::quiet_NaN();
        points[78][2] = std::numeric_limits<float>::infinity();
        std::vector<std::uint8_t> expected(points.size(), 1);
        expected[77] = expected[78] = 0;
        QVERIFY(searched(centres, points, 4.0) == expected);
    }

    void shapesThatAreHardForATree_data() {
        QTest::addColumn<int>("shape");
        QTest::newRow("in one place") << 0;
        QTest::newRow("in a few places") << 1;
        QTest::newRow("on a line along an axis") << 2;
        QTest::newRow("on a diagonal") << 3;
        QTest::newRow("on a sphere around the points") << 4;
        QTest::newRow("over all magnitudes") << 5;
    }
    void shapesThatAreHardForATree() {
        QFETCH(int, shape);
        std::mt19937 random(1);
        const auto uniform = [&random](float low, float high) {
            return std::uniform_real_distribution<float>(low, high)(random);
        };
        const auto centre = [&]() -> Point {
            const float x = uniform(-1.0F, 1.0F);
            const float y = uniform(-1.0F, 1.0F);
            const float z = uniform(-1.0F, 1.0F);
            const float length = std::sqrt(x * x + y * y + z * z);
            const auto magnitude = [&] {
                return std::ldexp(uniform(-1.0F, 1.0F), static_cast<int>(random() % 240) - 120);
            };
            switch (shape) {
            case 0:
                return {1, 2, 3};
            case 1:
                return {static_cast<float>(random() % 3), static_cast<float>(random() % 3), 0};
            case 2:
                return {1, 2, 30.0F * z};
            case 3:
                return {30.0F * z, 30.0F * z, 30.0F * z};
            case 4:
                return {10.0F * x / length, 10.0F * y / length, 10.0F * z / length};
            default:
                return {magnitude(), magnitude(), magnitude()};
            }
        };
        Points centres(many);
        std::ranges::generate(centres, centre);
        Points points;
        for (int i = 0; i != 300; ++i) {
            const float reach = i < 100 ? 0.05F : i < 200 ? 5.0F : 40.0F;
            points.push_back(
                {uniform(-reach, reach), uniform(-reach, reach), uniform(-reach, reach)});
        }
        for (const double radius : {0.5, 4.0, 9.97, 12.0}) {
            QVERIFY2(searched(centres, points, radius) == plain(centres, points, radius),
                     qPrintable(QString::number(radius)));
        }
    }
};

REGISTER_TEST(CrowdedCentresTest)
#include "CrowdedCentresTest.moc"
