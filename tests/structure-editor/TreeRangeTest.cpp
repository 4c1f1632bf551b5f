// Selecting a range of rows in the tree, with Shift and by dragging.
#include "TreeTools.h"

#include <QAbstractEventDispatcher>

using namespace tree_tools;

namespace {

// Running timers of the pace at which a drag outside goes on.
qsizetype scrollTimers(ShownTree& tree) {
    const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(&tree);
    return std::count_if(timers.begin(), timers.end(),
                         [](const auto& timer) { return timer.interval == 100; });
}

} // namespace

class TreeRangeTest : public SpyTestCase {
    Q_OBJECT

private slots:
    // With Shift.

    void shiftPressSelectsFromTheAnchorWithWhatClosedRowsHold() {
        SpyMolecule spies;
        ShownTree tree;
        TreeItem* top = tree.populate(&spies.molecule);
        tree.handsOver = false;
        tree.click(top->child(0));
        tree.click(top->child(2), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b", "R2", "R2a", "R2b", "R3"}));
        QCOMPARE(tree.takeSelections(), 2);
        QCOMPARE(tree.current(), "R3");
        top->CheckSelection();
        QCOMPARE(takeHandedOver(), (QStringList{"R1 on", "R2 on", "R3 on"}));
    }

    void shiftPressGoesUpwardsToo() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(4, 1));
        tree.handsOver = false;
        tree.click(top->child(2));
        tree.click(top->child(0), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R2", "R2a", "R3"}));
    }

    void theRangeTurnsAroundTheAnchor() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.click(top->child(2));
        tree.click(top->child(4), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R3", "R4", "R5"}));
        tree.click(top->child(3), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R3", "R4"}));
        tree.click(top->child(1), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3"}));
        tree.click(top->child(0), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R2", "R3"}));
        tree.click(top->child(2), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), QStringList("R3"));
        QCOMPARE(tree.takeSelections(), 6);
    }

    void aRangeThatShrinksUnselectsOnlyWhatFallsOutOfIt() {
        SpyMolecule spies;
        ShownTree tree;
        TreeItem* residue = tree.populate(&spies.molecule)->child(0);
        SpyLeaf c("R1c"), d("R1d");
        spies.residues[0]->hold(&c);
        spies.residues[0]->hold(&d);
        residue->commAdd();
        residue->setOpen(true);
        tree.click(tree.row("R1a"));
        tree.click(tree.row("R1d"), Qt::ShiftModifier);
        QCOMPARE(takeHandedOver(), (QStringList{"R1a on", "R1b on", "R1c on", "R1d on"}));
        tree.click(tree.row("R1b"), Qt::ShiftModifier);
        QCOMPARE(takeHandedOver(), (QStringList{"R1c off", "R1d off"}));
        QCOMPARE(tree.selected(), (QStringList{"R1a", "R1b"}));
        tree.clear();
    }

    void aRangeThatShrinksToABranchKeepsTheWholeBranch() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(4, 2));
        for (const bool open : {false, true}) {
            top->child(1)->setOpen(open);
            tree.click(top->child(0));
            tree.click(top->child(3), Qt::ShiftModifier);
            QCOMPARE(tree.row("R4")->isSelected(), true);
            tree.click(top->child(1), Qt::ShiftModifier);
            QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b", "R2", "R2a", "R2b"}));
            tree.click(tree.row("R4"), Qt::ControlModifier);
        }
    }

    void otherSelectedRowsStayOutsideOfARange() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.click(top->child(0));
        tree.click(top->child(3), Qt::ControlModifier);
        tree.click(top->child(4), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R4", "R5"}));
        tree.click(top->child(2), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R3", "R4"}));
    }

    void ctrlWithShiftIsShift() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(4, 0));
        tree.click(top->child(0));
        tree.click(top->child(2), Qt::ShiftModifier | Qt::ControlModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R2", "R3"}));
    }

    void aShiftPressBeforeAnyAnchorSelectsNothing() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(4, 0));
        for (const Qt::KeyboardModifiers held :
             {Qt::KeyboardModifiers(Qt::ShiftModifier), Qt::ShiftModifier | Qt::ControlModifier}) {
            tree.click(top->child(1), held);
            QCOMPARE(tree.selected(), QStringList());
            QCOMPARE(tree.takeSelections(), 0);
            QCOMPARE(tree.current(), "R2");
        }
        // Nor does it set one, and nor does a drag that goes on from there.
        tree.press(tree.cell(top->child(1), 0), Qt::ShiftModifier);
        tree.drag(tree.cell(top->child(2), 0));
        tree.release(tree.cell(top->child(2), 0));
        QCOMPARE(tree.selected(), QStringList());
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.current(), "R3");
        // Rows that come anew have none again.
        tree.click(top->child(0));
        top = tree.populate(makeMolecule(4, 0));
        tree.click(top->child(1), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), QStringList());
    }

    void aPressOnABranchMarkWithoutShiftSetsTheAnchor() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 1));
        tree.click(top->child(0));
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.mark(top->child(2)));
        tree.click(top->child(3), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R3", "R3a", "R4", "R4a"}));
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::ShiftModifier,
                          tree.mark(top->child(4)));
        tree.click(top->child(2), Qt::ControlModifier);
        tree.click(top->child(2), Qt::ControlModifier);
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::ShiftModifier,
                          tree.mark(top->child(0)));
        tree.click(top->child(3), Qt::ShiftModifier);
        QVERIFY(!tree.row("R2")->isSelected());
        QVERIFY(tree.row("R3")->isSelected());
    }

    void theAnchorIsSetByPressesWithoutShiftAlone() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(6, 0));
        tree.click(top->child(2), Qt::ControlModifier);
        tree.click(top->child(4), Qt::ShiftModifier);
        tree.click(top->child(3), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R3", "R4"}));
        // Neither being made current nor a right click moves it.
        tree.setCurrentItem(top->child(3));
        QTest::mouseClick(tree.viewport(), Qt::RightButton, {},
                          {tree.viewport()->width() - 2, tree.cell(top->child(3), 0).y()});
        tree.click(top->child(5), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R3", "R4", "R5", "R6"}));
    }

    void rangesFollowTheOrderShown() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(4, 1));
        tree.handsOver = false;
        tree.rows()->sort(0, Qt::DescendingOrder);
        tree.click(tree.row("R3"));
        tree.click(tree.row("R1"), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R3", "R3a", "R2", "R2a", "R1"}));
        tree.click(top->child(0), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R4", "R4a", "R3"}));
    }

    void rangesCrossLevels() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 2));
        top->child(1)->setOpen(true);
        tree.handsOver = false;
        tree.click(tree.row("R2b"));
        tree.click(tree.row("R1"), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b", "R2", "R2a", "R2b"}));
        tree.click(tree.row("R2a"), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2a", "R2b"}));
        tree.click(top, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"M", "R1", "R1a", "R1b", "R2", "R2a", "R2b"}));
    }

    // Dragging.

    void draggingExtendsFromTheAnchorAndTellsEachRowCrossed() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.press(tree.cell(top->child(1), 0));
        QCOMPARE(tree.takeSelections(), 1);
        tree.drag(tree.cell(top->child(1), 1));
        QCOMPARE(tree.takeSelections(), 0);
        tree.drag(tree.cell(top->child(2), 1));
        QCOMPARE(tree.takeSelections(), 1);
        tree.drag(tree.cell(top->child(3), 0));
        QCOMPARE(tree.takeSelections(), 1);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3", "R4"}));
        QCOMPARE(tree.current(), "R4");
        tree.drag(tree.cell(top->child(2), 0));
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3"}));
        tree.drag(tree.cell(top->child(1), 0));
        tree.drag(tree.cell(top->child(0), 0));
        QCOMPARE(tree.selected(), (QStringList{"R1", "R2"}));
        QCOMPARE(tree.takeSelections(), 3);
        tree.release(tree.cell(top->child(0), 0));
        QCOMPARE(tree.takeSelections(), 0);
        tree.drag(tree.cell(top->child(4), 0));
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.current(), "R1");
    }

    void aMoveOverSeveralRowsTellsEachOfThem() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(6, 0));
        QStringList reached;
        connect(&tree, qOverload<>(&TreeView::selectionChanged), this,
                [&] { reached << tree.current() + u':' + tree.selected().join(u' '); });
        tree.press(tree.cell(top->child(1), 0));
        reached.clear();
        tree.drag(tree.cell(top->child(4), 0));
        QCOMPARE(reached, (QStringList{"R3:R2 R3", "R4:R2 R3 R4", "R5:R2 R3 R4 R5"}));
        reached.clear();
        tree.drag(tree.cell(top->child(0), 0));
        QCOMPARE(reached, (QStringList{"R4:R2 R3 R4", "R3:R2 R3", "R2:R2", "R1:R1 R2"}));
        tree.release(tree.cell(top->child(0), 0));
    }

    void whoHearsOfARowCrossedMayEmptyTheTree() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(6, 0));
        tree.press(tree.cell(top->child(0), 0));
        int told = 0;
        connect(&tree, qOverload<>(&TreeView::selectionChanged), this, [&] {
            if (++told == 2)
                tree.clear();
        });
        tree.drag(tree.cell(top->child(5), 0));
        QCOMPARE(told, 2);
        QVERIFY(!tree.firstChild());
    }

    void whoHearsOfARowCrossedMayEndTheDrag() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(6, 0));
        tree.press(tree.cell(top->child(0), 0));
        int told = 0;
        connect(&tree, qOverload<>(&TreeView::selectionChanged), this, [&] {
            if (++told == 2)
                tree.key(Qt::Key_Up);
        });
        tree.drag(tree.cell(top->child(5), 0));
        QCOMPARE(told, 3); // the last time by the key
        QCOMPARE(tree.current(), "R2");
        QCOMPARE(tree.selected(), QStringList("R2"));
    }

    // The wheel scrolls during a drag, too.
    void aMoveFromARowThatIsOffScreenTellsOfTheRowReachedAlone() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(200, 0));
        tree.press(tree.cell(top->child(0), 0));
        tree.verticalScrollBar()->setValue(tree.verticalScrollBar()->maximum());
        tree.takeSelections();
        tree.drag(tree.cell(top->child(198), 0));
        QCOMPARE(tree.takeSelections(), 1);
        QCOMPARE(tree.selected().size(), 199);
        tree.release(tree.cell(top->child(198), 0));
    }

    void draggingFromASelectedRowKeepsTheOthers() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.click(top->child(0));
        tree.click(top->child(2), Qt::ControlModifier);
        tree.press(tree.cell(top->child(2), 0));
        tree.drag(tree.cell(top->child(3), 0));
        tree.release(tree.cell(top->child(3), 0));
        QCOMPARE(tree.selected(), (QStringList{"R1", "R3", "R4"}));
    }

    void draggingAfterACtrlPressSelectsFromThere() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.click(top->child(4));
        tree.press(tree.cell(top->child(0), 0), Qt::ControlModifier);
        tree.drag(tree.cell(top->child(1), 0));
        tree.release(tree.cell(top->child(1), 0), Qt::ControlModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R2", "R5"}));
    }

    void draggingFromTheEmptyAreaReachesRowsOnlyAboveIt() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 0));
        tree.click(top->child(1));
        tree.takeSelections();
        tree.press(tree.below());
        QCOMPARE(tree.takeSelections(), 1);
        tree.drag(tree.below() + QPoint(3, 3));
        QCOMPARE(tree.takeSelections(), 0);
        tree.drag(tree.cell(top->child(2), 0));
        tree.release(tree.cell(top->child(2), 0));
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3"}));
        QCOMPARE(tree.takeSelections(), 1);
    }

    void draggingBelowTheLastRowReachesIt() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(4, 0));
        tree.press(tree.cell(top->child(1), 0));
        tree.drag(tree.below());
        tree.release(tree.below());
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3", "R4"}));
        QCOMPARE(tree.current(), "R4");
    }

    void draggingBeyondTheEdgesScrollsRowByRow() {
        ShownTree tree;
        tree.resize(400, 150);
        TreeItem* top = tree.populate(makeMolecule(60, 0));
        QApplication::processEvents();
        const QPoint below(20, tree.viewport()->height() + 10);
        tree.press(tree.cell(top->child(0), 0));
        tree.takeSelections();
        tree.drag(below);
        QCOMPARE(scrollTimers(tree), 1);
        QVERIFY(tree.takeSelections() >= 1);
        const int reached = tree.currentItem()->position();
        QVERIFY(tree.viewport()->rect().contains(tree.cell(tree.currentItem(), 0)));
        QTRY_VERIFY(tree.currentItem()->position() >= reached + 3);
        QVERIFY(tree.verticalScrollBar()->value() > 0);
        QVERIFY(tree.viewport()->rect().contains(tree.cell(tree.currentItem(), 0)));
        QCOMPARE(tree.selected().count(), tree.currentItem()->position() + 1);

        tree.drag({20, -5});
        QTRY_COMPARE(tree.current(), "M");
        QCOMPARE(tree.verticalScrollBar()->value(), 0);
        tree.release({20, -5});
        QVERIFY(tree.takeSelections() > 3);
        QCOMPARE(scrollTimers(tree), 0);
    }
};

REGISTER_TEST(TreeRangeTest)
#include "TreeRangeTest.moc"
