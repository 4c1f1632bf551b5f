#include "radius/RadiusSearch.h"
#include "TestSupport.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float largest = std::numeric_limits<float>::max();
constexpr float smallest = std::numeric_limits<float>::denorm_min();

using Points = std::vector<Point>;

// The plain definition: every pair.
std::vector<std::uint8_t> plain(const Points& centres, const Points& points, double radius) {
    std::vector<std::uint8_t> near(points.size());
    for (std::size_t i = 0; i != points.size(); ++i)
        near[i] = std::any_of(centres.begin(), centres.end(), [&](const Point& centre) {
            return isWithin(radius * radius, points[i], centre);
        });
    return near;
}

std::vector<std::uint8_t> searched(const Points& centres, const Points& points, double radius) {
    std::vector<std::uint8_t> near;
    const RadiusSearch search(centres, radius);
    search.search(points, near);
    for (std::size_t i = 0; i != points.size(); ++i)
        if (near[i] && !search.isInReach(points[i]))
            near[i] = 2; // which no answer is
    return near;
}

// Clouds of very different kinds, so that every way through the tree is taken.
class Clouds {
public:
    explicit Clouds(unsigned seed) : m_random(seed) {}

    Points cloud(std::size_t count) {
        const float scale = std::pow(10.0F, uniform(-3.0F, 4.0F));
        const Point middle{uniform(-scale, scale), uniform(-scale, scale), uniform(-scale, scale)};
        const int kind = static_cast<int>(m_random() % 6);
        Points points;
        for (std::size_t i = 0; i != count; ++i)
            points.push_back(next(kind, scale, middle, points));
        return points;
    }
    // One of the radii that the points make interesting: 0, the limits, and exact distances.
    double radius(const Points& centres, const Points& points) {
        switch (m_random() % 6) {
        case 0:
            return 0.0;
        case 1:
            return 10000.0;
        case 2:
            return static_cast<double>(std::pow(10.0F, uniform(-3.0F, 3.9F)));
        default:
            break;
        }
        if (centres.empty() || points.empty())
            return 4.0;
        const Point& a = centres[m_random() % centres.size()];
        const Point& b = points[m_random() % points.size()];
        double sum = 0.0;
        for (const std::size_t axis : {0, 1, 2})
            sum += std::pow(static_cast<double>(a[axis]) - static_cast<double>(b[axis]), 2.0);
        // As a dialog would give it, or to the last bit.
        const double exact = std::sqrt(sum);
        if (!(exact <= 10000.0))
            return 10000.0;
        return m_random() % 2 ? exact : std::round(exact * 1000.0) / 1000.0;
    }
    std::size_t upTo(std::size_t most) { return m_random() % (most + 1); }

private:
    float uniform(float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(m_random);
    }
    Point next(int kind, float scale, const Point& middle, const Points& before) {
        const Point anywhere{uniform(-scale, scale), uniform(-scale, scale),
                             uniform(-scale, scale)};
        switch (kind) {
        case 0: // Many at the same places.
            return before.empty() || m_random() % 4 == 0 ? anywhere
                                                         : before[m_random() % before.size()];
        case 1: { // On the points of a lattice, at equal distances.
            Point point;
            for (float& coordinate : point)
                coordinate = static_cast<float>(m_random() % 8);
            return point;
        }
        case 2: { // A chain: each near the one before.
            Point point = before.empty() ? middle : before.back();
            for (float& coordinate : point)
                coordinate += uniform(-1.0F, 1.0F);
            return point;
        }
        case 3: // A line along one axis.
            return {middle[0], middle[1], uniform(-scale, scale)};
        case 4: { // What no file should hold.
            constexpr std::array<float, 12> odd{0.0F,       -0.0F,   infinity, -infinity,
                                                notANumber, largest, -largest, smallest,
                                                -smallest,  1e-23F,  1e19F,    1e-20F};
            Point point = anywhere;
            for (float& coordinate : point)
                if (m_random() % 3 == 0)
                    coordinate = odd[m_random() % odd.size()];
            return point;
        }
        default:
            return anywhere;
        }
    }

    std::mt19937 m_random;
};

} // namespace

class RadiusSearchTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void nothingIsNearNoCentre() {
        QCOMPARE(searched({}, {{0, 0, 0}}, 10000.0), std::vector<std::uint8_t>{0});
        QVERIFY(searched({{0, 0, 0}}, {}, 4.0).empty());
    }

    void radiusZeroTakesTheSamePlaceOnly() {
        const Points centres{{1, 2, 3}};
        const Points points{{1, 2, 3}, {1, 2, std::nextafter(3.0F, 4.0F)}};
        QCOMPARE(searched(centres, points, 0.0), (std::vector<std::uint8_t>{1, 0}));
    }

    void theRadiusItselfIsWithin() {
        const Points centres{{0, 0, 0}};
        const Points points{{3, 4, 0}, {3, std::nextafter(4.0F, 5.0F), 0}};
        QCOMPARE(searched(centres, points, 5.0), (std::vector<std::uint8_t>{1, 0}));
    }

    // A square that is too small for single precision is zero, and zero is within every radius.
    void differencesBelowSinglePrecisionCountAsNone() {
        const Points centres{{0, 0, 0}};
        const Points points{{1e-23F, 0, 0}, {1e-22F, 0, 0}};
        QCOMPARE(searched(centres, points, 0.0), (std::vector<std::uint8_t>{1, 0}));
    }

    void whatIsNotFiniteIsNearNothing() {
        const Points odd{{notANumber, 0, 0}, {0, infinity, 0}, {0, 0, -infinity}};
        const Points all{{0, 0, 0}, odd[0], odd[1], odd[2]};
        QCOMPARE(searched(odd, all, 10000.0), (std::vector<std::uint8_t>{0, 0, 0, 0}));
        QCOMPARE(searched(all, all, 10000.0), (std::vector<std::uint8_t>{1, 0, 0, 0}));
    }

    void farAwayCentresDoNotSpoilTheRest() {
        const Points centres{{largest, largest, -largest}, {0, 0, 0}, {-largest, 1, 1}};
        const Points points{{largest, largest, -largest}, {3, 0, 0}, {5, 0, 0}};
        QCOMPARE(searched(centres, points, 4.0), (std::vector<std::uint8_t>{1, 1, 0}));
    }

    void equalsThePlainDefinitionOnGeneratedClouds() {
        std::size_t near = 0;
        std::size_t apart = 0;
        for (unsigned seed = 0; seed != 4000; ++seed) {
            Clouds clouds(seed);
            const Points centres = clouds.cloud(clouds.upTo(seed % 3 == 0 ? 400 : 60));
            Points points = clouds.cloud(clouds.upTo(300));
            // Points near the centres, too, whatever became of the clouds.
            points.insert(points.end(), centres.begin(), centres.end());
            const double radius = clouds.radius(centres, points);
            const auto expected = plain(centres, points, radius);
            const auto found = searched(centres, points, radius);
            QVERIFY2(found == expected,
                     qPrintable(QStringLiteral("seed %1, radius %2").arg(seed).arg(radius)));
            for (const std::uint8_t each : expected)
                ++(each ? near : apart);
        }
        // The comparison says something only where both answers are frequent.
        QVERIFY2(near > 50000 && apart > 50000,
                 qPrintable(QStringLiteral("%1 near, %2 apart").arg(near).arg(apart)));
    }
};

REGISTER_TEST(RadiusSearchTest)
#include "RadiusSearchTest.moc"
