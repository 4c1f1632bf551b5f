// "Nearby Grids": how the shown range of a grid is fitted to the selected atoms.
#include "SelectionTestCase.h"

using namespace command_tools;
using namespace selection_tools;
using namespace window_tools;
using TAVIK::Compound;

class NearbyGridsTest : public SelectionTestCase {
    Q_OBJECT

private slots:
    void nearbyGridsFitsTheShownRangeWithTheUnevenMargin() {
        TAVIK::Grid* grid = addGridItem("map");
        Compound* shown = addChain("1abc", {{"R 1",
                                             {{"C0", "C", {4.2F, 5.0F, 6.0F, true}},
                                              {"C1", "C", {5.0F, 7.4F, 26.0F, true}},
                                              {"C2", "C", {-50.0F, 1.0F, 1.0F, false}},
                                              {"C3", "C", {9.0F, 9.0F, 9.0F, true}}}}});
        for (const std::size_t i : {0, 1, 2})
            atomsOf(shown)[i]->SetSelected(true);
        showWindow(1);
        OtherPlugin other;
        select("Nearby Grids");
        QCOMPARE(shownRange(grid), (std::vector<int>{2, 3, 4, 9, 11, 30}));
        QCOMPARE(other.updates, 1);
    }

    void nearbyGridsStaysWithinTheGridAndLeavesWhatIsFarAway_data() {
        using Range = std::vector<int>;
        const Range whole{0, 0, 0, 10, 20, 30};
        QTest::addColumn<double>("x");
        QTest::addColumn<Range>("expected");
        QTest::newRow("just near enough below") << -3.0 << Range{0, 0, 0, 1, 4, 4};
        QTest::newRow("too far below") << -4.0 << whole;
        QTest::newRow("far below") << -1000.0 << whole;
        QTest::newRow("at the lower end") << 0.0 << Range{0, 0, 0, 4, 4, 4};
        QTest::newRow("where the lower margin just fits") << 2.0 << Range{0, 0, 0, 6, 4, 4};
        QTest::newRow("where it leaves one point out") << 3.0 << Range{1, 0, 0, 7, 4, 4};
        QTest::newRow("where the upper margin just fits") << 6.0 << Range{4, 0, 0, 10, 4, 4};
        QTest::newRow("where it does not") << 7.0 << Range{5, 0, 0, 10, 4, 4};
        QTest::newRow("just near enough above") << 11.0 << Range{9, 0, 0, 10, 4, 4};
        QTest::newRow("too far above") << 12.0 << whole;
        QTest::newRow("out of all bounds") << 3e38 << whole;
    }
    void nearbyGridsStaysWithinTheGridAndLeavesWhatIsFarAway() {
        QFETCH(double, x);
        QFETCH(std::vector<int>, expected);
        TAVIK::Grid* grid = addGridItem("map");
        Compound* shown = addLine("1abc", {float(x)});
        shown->SetSelected(true);
        showWindow(1);
        select("Nearby Grids");
        QCOMPARE(shownRange(grid), expected);
    }

    void nearbyGridsDoesNothingWithoutASelection() {
        TAVIK::Grid* grid = addGridItem("map");
        const std::vector<int> before = shownRange(grid);
        addLine("1abc", {3});
        showWindow(1);
        select("Nearby Grids");
        QCOMPARE(shownRange(grid), before);
    }

    // Only the atoms that have a position count; with none, the bounds are upside down.
    void nearbyGridsWithoutAPositionLeavesTheRange() {
        TAVIK::Grid* grid = addGridItem("map");
        const std::vector<int> before = shownRange(grid);
        addChain("1abc", {{"R 1", {{"C0", "C", {3, 3, 3, false}}}}})->SetSelected(true);
        showWindow(1);
        select("Nearby Grids");
        QCOMPARE(shownRange(grid), before);
    }

    void nearbyGridsDoesNotRefreshTheWindow() {
        addGridItem("map");
        Compound* shown = addLine("1abc", {3});
        showWindow(1);
        shown->SetSelected(true);
        QCOMPARE(entries(*m_window)[1], " _ 1abc");
        select("Nearby Grids");
        QCOMPARE(entries(*m_window)[1], " _ 1abc");
    }
};

REGISTER_TEST(NearbyGridsTest)
#include "NearbyGridsTest.moc"
