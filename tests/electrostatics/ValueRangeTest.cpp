// The range that colours show.
#include "potential/ValueRange.h"
#include "TestSupport.h"

#include <cmath>
#include <limits>
#include <vector>

using electrostatics::summaryOf;

namespace {

constexpr float none = std::numeric_limits<float>::quiet_NaN();

float rangeOf(const std::vector<float>& values) {
    return summaryOf(values).range;
}

} // namespace

class ValueRangeTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void itIsRoundedUpToOneTwoOrFive() {
        for (const auto& [value, range] : std::vector<std::pair<float, float>>{{1, 1},
                                                                               {1.01F, 2},
                                                                               {2, 2},
                                                                               {-2.5F, 5},
                                                                               {5, 5},
                                                                               {-5.1F, 10},
                                                                               {10, 10},
                                                                               {73, 100},
                                                                               {101, 200},
                                                                               {0.1F, 0.1F},
                                                                               {0.11F, 0.2F},
                                                                               {0.003F, 0.005F},
                                                                               {4.5e30F, 5e30F}})
            QCOMPARE(rangeOf({value}), range);
    }

    void oneInTenMayLieBeyond() {
        std::vector<float> values(18, -3);
        values.insert(values.end(), {1000, -2000});
        QCOMPARE(rangeOf(values), 5.0F);
        values.push_back(900);
        QCOMPARE(rangeOf(values), 1000.0F);
    }

    void zerosHideNothing() {
        QCOMPARE(rangeOf({0, 0, 0}), 1.0F);
        QCOMPARE(rangeOf({}), 1.0F);
        QCOMPARE(rangeOf({none, none}), 1.0F);
        std::vector<float> values(1000, 0);
        values.push_back(-7);
        QCOMPARE(rangeOf(values), 10.0F);
    }

    void theLargestNumbersAreARange() {
        constexpr float most = std::numeric_limits<float>::max();
        QVERIFY(std::isfinite(rangeOf({most})));
        QVERIFY(rangeOf({most}) >= 3e38F);
        QVERIFY(rangeOf({std::numeric_limits<float>::denorm_min()}) > 0);
    }

    void aSummaryLeavesOutWhatHasNoValue() {
        const auto summary = summaryOf(std::vector<float>{none, 3, -1, none, 4});
        QCOMPARE(summary.count, std::size_t(3));
        QCOMPARE(summary.least, -1.0F);
        QCOMPARE(summary.greatest, 4.0F);
        QCOMPARE(summary.mean, 2.0);
        QCOMPARE(summaryOf({}).count, std::size_t(0));
    }
};

REGISTER_TEST(ValueRangeTest)
#include "ValueRangeTest.moc"
