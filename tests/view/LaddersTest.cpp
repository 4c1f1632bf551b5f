// Ladders out of hydrogen bonds that are given.
#include "ribbon/Ladders.h"

#include "TestSupport.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

using view::Acceptors;
using view::Ladder;

namespace {

constexpr std::size_t count = 60;

struct Bonds {
    std::vector<Acceptors> acceptors{count, Acceptors{view::noResidue, view::noResidue}};
    std::vector<std::uint32_t> segments = std::vector<std::uint32_t>(count, 0);

    void add(std::uint32_t donor, std::uint32_t acceptor) {
        Acceptors& of = acceptors[donor];
        of[of[0] == view::noResidue ? 0 : 1] = acceptor;
    }
    /// Both residues of the pair bond to each other.
    void addAntiparallel(std::uint32_t i, std::uint32_t j) {
        add(i, j);
        add(j, i);
    }
    /// The second residue bonds to both neighbours of the first.
    void addParallel(std::uint32_t i, std::uint32_t j) {
        add(i + 1, j);
        add(j, i - 1);
    }
    std::vector<Ladder> ladders() const { return view::ladders(acceptors, segments); }
};

using Pairs = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

QByteArray textOf(const std::vector<Ladder>& ladders) {
    QByteArray text;
    for (const Ladder& ladder : ladders) {
        text += text.isEmpty() ? "" : ", ";
        for (const std::uint32_t number :
             {ladder.first.from, ladder.first.to, ladder.second.from, ladder.second.to})
            text += QByteArray::number(number) + ' ';
        text += (ladder.isParallel ? "parallel " : "antiparallel ") +
                QByteArray::number(qulonglong(ladder.bridges));
    }
    return text;
}

} // namespace

class LaddersTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void eachPatternIsABridge_data() {
        QTest::addColumn<Pairs>("bonds");
        QTest::addColumn<QByteArray>("ladders");
        // Donor and acceptor.
        QTest::newRow("a pair bonded to each other")
            << Pairs{{10, 30}, {30, 10}} << QByteArray("10 10 30 30 antiparallel 1");
        QTest::newRow("a pair between bonds")
            << Pairs{{11, 29}, {31, 9}} << QByteArray("10 10 30 30 antiparallel 1");
        QTest::newRow("the second bonded to the neighbours of the first")
            << Pairs{{11, 30}, {30, 9}} << QByteArray("10 10 30 30 parallel 1");
        QTest::newRow("the first bonded to the neighbours of the second")
            << Pairs{{31, 10}, {10, 29}} << QByteArray("10 10 30 30 parallel 1");
        QTest::newRow("one bond") << Pairs{{10, 30}} << QByteArray();
        QTest::newRow("an overlap") << Pairs{{10, 12}, {12, 10}} << QByteArray();
        QTest::newRow("no overlap")
            << Pairs{{10, 13}, {13, 10}} << QByteArray("10 10 13 13 antiparallel 1");
        QTest::newRow("at both ends") << Pairs{{0, 59}, {59, 0}} << QByteArray();
        QTest::newRow("beside both ends")
            << Pairs{{1, 58}, {58, 1}} << QByteArray("1 1 58 58 antiparallel 1");
    }

    void eachPatternIsABridge() {
        QFETCH(Pairs, bonds);
        QFETCH(QByteArray, ladders);
        Bonds found;
        for (const auto& [donor, acceptor] : bonds)
            found.add(donor, acceptor);
        QCOMPARE(textOf(found.ladders()), ladders);
    }

    void antiparallelBridgesInARowAreALadder() {
        Bonds bonds;
        for (std::uint32_t step = 0; step < 4; step += 2)
            bonds.addAntiparallel(10 + step, 30 - step);
        // The pair between two that are bonded to each other has bonds on both sides.
        QCOMPARE(textOf(bonds.ladders()), "10 12 28 30 antiparallel 3");
    }

    void parallelBridgesInARowAreALadder() {
        Bonds bonds;
        for (std::uint32_t step = 0; step < 4; step += 2)
            bonds.addParallel(10 + step, 30 + step);
        QCOMPARE(textOf(bonds.ladders()), "10 12 30 32 parallel 3");
    }

    void aBulgeLinksTwoLadders_data() {
        QTest::addColumn<bool>("isParallel");
        QTest::addColumn<uint>("first");
        QTest::addColumn<uint>("second");
        QTest::addColumn<bool>("isLinked");
        for (const bool isParallel : {false, true}) {
            const char* kind = isParallel ? "parallel" : "antiparallel";
            const auto add = [&](uint first, uint second, bool isLinked) {
                QTest::addRow("%s, %u and %u residues in between", kind, first, second)
                    << isParallel << first << second << isLinked;
            };
            add(1, 4, true);
            add(4, 1, true);
            add(0, 4, true);
            add(4, 0, true);
            add(1, 5, false);
            add(5, 1, false);
            add(2, 2, false);
            add(2, 4, false);
        }
    }

    void aBulgeLinksTwoLadders() {
        QFETCH(bool, isParallel);
        QFETCH(uint, first);
        QFETCH(uint, second);
        QFETCH(bool, isLinked);
        Bonds bonds;
        const std::uint32_t i = 10 + first + 1;
        const std::uint32_t j = isParallel ? 30 + second + 1 : 30 - second - 1;
        if (isParallel) {
            bonds.addParallel(10, 30);
            bonds.addParallel(i, j);
        } else {
            bonds.addAntiparallel(10, 30);
            bonds.addAntiparallel(i, j);
        }
        const std::vector<Ladder> found = bonds.ladders();
        QCOMPARE(found.size(), isLinked ? 1U : 2U);
        if (isLinked) {
            QCOMPARE(found[0].bridges, 2U);
            QCOMPARE(found[0].first.from, 10U);
            QCOMPARE(found[0].first.to, i);
            QCOMPARE(found[0].second.from, std::min(j, 30U));
            QCOMPARE(found[0].second.to, std::max(j, 30U));
        }
        // A chain break in between.
        for (std::uint32_t k = std::max(j, 30U) - second / 2; k < count; ++k)
            bonds.segments[k] = 1;
        if (second > 3)
            QCOMPARE(bonds.ladders().size(), 2U);
    }

    void bridgesOfDifferentKindsAreNotLinked() {
        Bonds bonds;
        bonds.addParallel(10, 30);
        bonds.addAntiparallel(13, 33);
        QCOMPARE(textOf(bonds.ladders()), "10 10 30 30 parallel 1, 13 13 33 33 antiparallel 1");
    }

    void noPatternReachesAcrossAChainBreak() {
        Bonds bonds;
        bonds.addAntiparallel(10, 30);
        for (const std::size_t broken : {10U, 11U, 30U, 31U}) {
            bonds.segments.assign(count, 0);
            for (std::size_t k = broken; k < count; ++k)
                bonds.segments[k] = 1;
            QVERIFY(bonds.ladders().empty());
        }
        for (const std::size_t broken : {9U, 12U, 20U, 29U, 32U}) {
            bonds.segments.assign(count, 0);
            for (std::size_t k = broken; k < count; ++k)
                bonds.segments[k] = 1;
            QCOMPARE(bonds.ladders().size(), 1U);
        }
    }

    void fewResiduesHaveNone() {
        for (std::size_t few = 0; few < 3; ++few)
            QVERIFY(view::ladders(std::vector<Acceptors>(few), std::vector<std::uint32_t>(few, 0))
                        .empty());
    }
};

REGISTER_TEST(LaddersTest)
#include "LaddersTest.moc"
