// The potential of charges, against a plain sum and the constants of nature.
#include "potential/Coulomb.h"
#include "FailingMemory.h"
#include "TestSupport.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numbers>
#include <random>
#include <vector>

using electrostatics::Charge;
using electrostatics::ChargeTree;
using electrostatics::coulombPotential;
using electrostatics::Point;

namespace {

/// The definition, in kT/e.
double plain(const Point& at, const std::vector<Charge>& charges) {
    constexpr double elementaryCharge = 1.602176634e-19;    // C
    constexpr double vacuumPermittivity = 8.8541878128e-12; // F/m
    constexpr double boltzmann = 1.380649e-23;              // J/K
    constexpr double unit = elementaryCharge * elementaryCharge /
                            (4 * std::numbers::pi * vacuumPermittivity * 1e-10) /
                            (boltzmann * 298.15);
    double sum = 0;
    for (const Charge& charge : charges) {
        const double r = std::max(1.0, std::hypot(double(at[0]) - double(charge.position[0]),
                                                  double(at[1]) - double(charge.position[1]),
                                                  double(at[2]) - double(charge.position[2])));
        sum += double(charge.charge) / (4 * r) / r;
    }
    return unit * sum;
}

std::vector<Charge> randomCharges(unsigned int seed, std::size_t count, float size, bool isMixed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> along(-size, size);
    std::uniform_int_distribution<int> sign(0, isMixed ? 1 : 0);
    std::vector<Charge> charges;
    for (std::size_t i = 0; i != count; ++i) {
        const float x = along(random);
        const float y = along(random);
        const float z = along(random);
        charges.push_back({{x, y, z}, sign(random) ? 0.5F : -0.5F});
    }
    return charges;
}

float at(const ChargeTree& tree, const Point& point) {
    float value = 0;
    tree.at({&point, 1}, {&value, 1});
    return value;
}

/// The largest difference between a tree and the plain sum, by the range of potentials.
double error(const std::vector<Charge>& charges, float size, bool areNear = true) {
    const ChargeTree tree(charges);
    std::mt19937 random(11);
    std::uniform_real_distribution<float> along(-1.2F * size, 1.2F * size);
    std::vector<Point> points;
    for (int i = 0; i != 2000; ++i) {
        const float x = along(random);
        const float y = along(random);
        points.push_back({x, y, along(random)});
    }
    if (areNear)
        std::ranges::sort(points, {}, [](const Point& point) {
            const auto cell = [](float x) { return std::lround(x / 8); };
            return std::array{cell(point[0]), cell(point[1]), cell(point[2])};
        });
    std::vector<float> found(points.size());
    tree.at(points, found);
    double worst = 0;
    double least = 0;
    double greatest = 0;
    for (std::size_t i = 0; i != points.size(); ++i) {
        const double expected = plain(points[i], charges);
        worst = std::max(worst, std::abs(double(found[i]) - expected));
        least = std::min(least, expected);
        greatest = std::max(greatest, expected);
    }
    return worst / (greatest - least);
}

} // namespace

class CoulombTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void oneChargeHasItsClosedForm() {
        const std::vector<Charge> charges = {{{1, 2, 3}, -1}};
        for (const float r : {1.0F, 1.5F, 4.0F, 50.0F}) {
            const Point there = {1, 2 - r, 3};
            const double expected = -560.459 / (4 * double(r) * double(r));
            QVERIFY(std::abs(double(coulombPotential(there, charges)) / expected - 1) < 1e-5);
            QVERIFY(std::abs(double(at(ChargeTree(charges), there)) / expected - 1) < 1e-5);
            QVERIFY(std::abs(plain(there, charges) / expected - 1) < 1e-5);
        }
    }

    void aChargeNearerThanAnAngstromCountsAsOneAway() {
        const std::vector<Charge> charges = {{{0, 0, 0}, 1}};
        const float atOne = coulombPotential({1, 0, 0}, charges);
        for (const float r : {0.0F, 0.5F, 0.999F}) {
            QCOMPARE(coulombPotential({0, r, 0}, charges), atOne);
            QCOMPARE(at(ChargeTree(charges), {0, r, 0}), atOne);
        }
    }

    void thePlainSumIsTheDefinition() {
        const std::vector<Charge> charges = randomCharges(1, 300, 20, true);
        std::mt19937 random(2);
        std::uniform_real_distribution<float> along(-25, 25);
        for (int i = 0; i != 500; ++i) {
            const float x = along(random);
            const float y = along(random);
            const Point at = {x, y, along(random)};
            QVERIFY(std::abs(double(coulombPotential(at, charges)) - plain(at, charges)) < 1e-3);
        }
    }

    void theTreeIsThePlainSumWithinATenthOfAPercentOfItsRange() {
        for (const bool isMixed : {true, false})
            for (const std::size_t count : {1U, 2U, 8U, 9U, 100U, 3000U}) {
                const std::vector<Charge> charges = randomCharges(3, count, 40, isMixed);
                const double found = std::max(error(charges, 40), error(charges, 40, false));
                QVERIFY2(found < 1e-3, qPrintable(QString("%1 charges, %2: %3")
                                                      .arg(count)
                                                      .arg(isMixed ? "mixed" : "one sign")
                                                      .arg(found)));
            }
    }

    // As a ribosome has: along a line through a ball of mixed charges.
    void anUnevenCrowdIsNoWorse() {
        std::vector<Charge> charges = randomCharges(4, 2000, 60, true);
        for (int i = 0; i != 3000; ++i) {
            const auto t = static_cast<float>(i) * 0.02F;
            charges.push_back({{10 * std::cos(t), 10 * std::sin(t), t - 30}, -0.5F});
        }
        const double found = error(charges, 60);
        QVERIFY2(found < 1e-3, qPrintable(QString::number(found)));
    }

    void chargesOnOnePointAreOne() {
        const std::vector<Charge> charges(1000, {{1, 1, 1}, 0.001F});
        const ChargeTree tree(charges);
        for (const float x : {1.0F, 2.0F, 3.5F, 100.0F})
            QVERIFY(std::abs(double(at(tree, {x, 1, 1})) / plain({x, 1, 1}, charges) - 1) < 1e-4);
    }

    void chargesThatCancelGiveADipole() {
        const std::vector<Charge> charges = {{{-0.5F, 0, 0}, -1}, {{0.5F, 0, 0}, 1}};
        const ChargeTree tree(charges);
        for (const float x : {2.0F, 10.0F, 100.0F})
            QVERIFY(std::abs(double(at(tree, {x, 0, 0})) / plain({x, 0, 0}, charges) - 1) < 1e-5);
        QVERIFY(std::abs(at(tree, {0, 5, 0})) < 1e-4F);
    }

    void whatIsNoChargeIsLeftOut() {
        constexpr float none = std::numeric_limits<float>::quiet_NaN();
        constexpr float infinite = std::numeric_limits<float>::infinity();
        std::vector<Charge> charges = {
            {{none, 0, 0}, 1}, {{0, infinite, 0}, 1}, {{0, 0, 0}, none}, {{0, 0, 0}, infinite}};
        QCOMPARE(at(ChargeTree(charges), {1, 2, 3}), 0.0F);
        charges.push_back({{0, 0, 0}, 1});
        QCOMPARE(at(ChargeTree(charges), {1, 0, 0}),
                 coulombPotential({1, 0, 0}, {{charges.back()}}));
        QCOMPARE(at(ChargeTree({}), {1, 2, 3}), 0.0F);
        QCOMPARE(at(ChargeTree({{{0, 0, 0}, 0.0F}}), {0, 0, 0}), 0.0F);
    }

    void memoryThatEndsIsSaid() {
        const std::vector<Charge> charges = randomCharges(5, 200, 10, true);
        const float expected = at(ChargeTree(charges), {1, 2, 3});
        int failed = 0;
        for (int granted = 0;; ++granted) {
            bool isSaid = false;
            int refusals = 0;
            {
                const FailingMemory memory(granted, 1, 0);
                try {
                    const ChargeTree tree(charges);
                    QCOMPARE(at(tree, {1, 2, 3}), expected);
                } catch (const std::bad_alloc&) {
                    isSaid = true;
                }
                refusals = FailingMemory::refusals();
            }
            if (refusals == 0)
                break;
            QVERIFY(isSaid);
            ++failed;
        }
        QVERIFY(failed >= 2);
    }
};

REGISTER_TEST(CoulombTest)
#include "CoulombTest.moc"
