// Selecting in the tree with the mouse and the keyboard: which rows, how often it is told, and what
// reaches the host.
#include "TreeTools.h"

#include <QAbstractEventDispatcher>

using namespace tree_tools;

namespace {

QStringList allNames(const ShownTree& tree) {
    QStringList names;
    for (TreeItemIterator it(&tree); it.current(); ++it)
        names << it.current()->text(0);
    return names;
}

// Running timers of the pace at which a drag outside goes on.
qsizetype scrollTimers(ShownTree& tree) {
    const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(&tree);
    return std::count_if(timers.begin(), timers.end(),
                         [](const auto& timer) { return timer.interval == 100; });
}

// A molecule of spies: "M" holds "R1" to "R5", each of which holds "R1a" and "R1b" and so on.
struct SpyMolecule {
    SpyMolecule() {
        for (int r = 0; r != 5; ++r) {
            const std::string name = "R" + std::to_string(r + 1);
            residues.push_back(std::make_unique<SpyHolder>(name));
            molecule.hold(residues.back().get());
            for (const char* suffix : {"a", "b"}) {
                atoms.push_back(std::make_unique<SpyLeaf>(name + suffix));
                residues.back()->hold(atoms.back().get());
            }
        }
    }
    SpyHolder molecule{"M"};
    std::vector<std::unique_ptr<SpyHolder>> residues;
    std::vector<std::unique_ptr<SpyLeaf>> atoms;
};

} // namespace

class TreeSelectionTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void cleanup() override {
        handedOver().clear();
        TestCase::cleanup();
    }

    // Presses.

    void aPlainPressClearsAllAndSelectsTheRow() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 2));
        tree.press(tree.cell(top->child(0), 0));
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b"}));
        QCOMPARE(tree.takeSelections(), 1);
        tree.release(tree.cell(top->child(0), 0));
        QCOMPARE(tree.takeSelections(), 0);
        tree.click(top->child(2));
        QCOMPARE(tree.selected(), (QStringList{"R3", "R3a", "R3b"}));
        QCOMPARE(tree.takeSelections(), 1);
        QCOMPARE(tree.current(), "R3");
        QVERIFY(!tree.selectionModel()->hasSelection());
    }

    void aPressSelectsInEveryColumnAndRightOfTheLast() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 0));
        for (const int column : {0, 1, 2, 3}) {
            tree.clickCell(top->child(column % 2), column, Qt::LeftButton);
            QCOMPARE(tree.selected(), QStringList(top->child(column % 2)->text(0)));
        }
        const QPoint right(tree.viewport()->width() - 2, tree.cell(top->child(2), 0).y());
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, right);
        QCOMPARE(tree.selected(), QStringList("R3"));
    }

    void aPressOnASelectedRowSelectsItAloneWhenReleased() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.click(top->child(0));
        tree.click(top->child(1), Qt::ControlModifier);
        tree.takeSelections();
        const QPoint first = tree.cell(top->child(0), 0);
        tree.press(first);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R2", "R2a"}));
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.current(), "R1");
        tree.release(first);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a"}));
        QCOMPARE(tree.takeSelections(), 1);
    }

    void aReleaseOverAnotherPlaceSelectsNothing() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.click(top->child(0));
        tree.click(top->child(1), Qt::ControlModifier);
        tree.takeSelections();
        for (const QPoint& to : {tree.cell(top->child(2), 0), tree.below()}) {
            tree.press(tree.cell(top->child(0), 0));
            tree.release(to);
            QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R2", "R2a"}));
        }
        QCOMPARE(tree.takeSelections(), 0);
        // A release that no press came before does nothing either.
        tree.release(tree.cell(top->child(0), 0));
        QCOMPARE(tree.takeSelections(), 0);
    }

    void aPressWhoseReleaseWasLostIsForgotten() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.click(top->child(0));
        tree.click(top->child(1), Qt::ControlModifier);
        tree.takeSelections();
        tree.press(tree.cell(top->child(0), 0));
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.mark(top->child(0)));
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R2", "R2a"}));
        QCOMPARE(tree.takeSelections(), 0);
    }

    void aPressInsideWhatIsSelectedAsAWholeUnselectsTheWhole() {
        // All rows change, and of those only the outermost goes to the host.
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        tree.click(top);
        QCOMPARE(tree.selected(), allNames(tree));
        tree.click(top->child(0));
        QCOMPARE(tree.selected(), QStringList());
        tree.click(top->child(0));
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a"}));
    }

    void aPressAgainOnASelectedBranchSelectsAllThatItHolds() {
        // A molecule counts as selected when its atoms are, bonds or not.
        Compound* molecule = makeMolecule(1, 2);
        Compound* residue = childOf(molecule, 0);
        memory_host::addBond(molecule, childOf(residue, 0), childOf(residue, 1));
        residue->SetSelected(true);
        QVERIFY(molecule->IsSelected());
        QVERIFY(!childOf(molecule, 1)->IsSelected());
        ShownTree tree;
        tree.click(tree.populate(molecule));
        QVERIFY(childOf(molecule, 1)->IsSelected());
        QCOMPARE(tree.selected(), allNames(tree));
    }

    void ctrlPressTogglesTheRowAndKeepsTheOthers() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.click(top->child(0), Qt::ControlModifier);
        tree.click(top->child(2), Qt::ControlModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R3", "R3a"}));
        tree.click(top->child(0), Qt::ControlModifier);
        QCOMPARE(tree.selected(), (QStringList{"R3", "R3a"}));
        QCOMPARE(tree.takeSelections(), 3);
        QCOMPARE(tree.current(), "R1");
    }

    void onlyRowsThatChangeAreHandedOver() {
        SpyMolecule spies;
        ShownTree tree;
        TreeItem* top = tree.populate(&spies.molecule);
        tree.row("R1")->setOpen(true);
        tree.click(tree.row("R1a"));
        QCOMPARE(takeHandedOver(), QStringList("R1a on"));
        tree.click(tree.row("R1b"));
        QCOMPARE(takeHandedOver(), (QStringList{"R1a off", "R1b on"}));
        tree.click(tree.row("R1b"));
        QCOMPARE(takeHandedOver(), QStringList());
        tree.click(top->child(3), Qt::ControlModifier);
        QCOMPARE(takeHandedOver(), QStringList("R4 on"));
        tree.click(top->child(3), Qt::ControlModifier);
        QCOMPARE(takeHandedOver(), QStringList("R4 off"));
        tree.key(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(takeHandedOver(), QStringList("M on"));
    }

    void severalRowsChangedInOneGestureAreHandedOverOneByOne() {
        SpyMolecule spies;
        ShownTree tree;
        TreeItem* top = tree.populate(&spies.molecule);
        tree.handsOver = false;
        tree.click(top->child(0), Qt::ControlModifier);
        tree.click(top->child(2), Qt::ControlModifier);
        top->CheckSelection();
        QCOMPARE(takeHandedOver(), (QStringList{"R1 on", "R3 on"}));
        QCOMPARE(tree.dirty(), QStringList());
    }

    // Ranges.

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

    void withoutAnAnchorARangeStartsAtTheTop() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(4, 0));
        tree.handsOver = false;
        tree.click(top->child(1), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"M", "R1", "R2"}));
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

    // The empty area.

    void aPressOnTheEmptyAreaClearsAndTellsOnlyIfSomethingWasSelected() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.below());
        QCOMPARE(tree.takeSelections(), 0);
        for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton}) {
            tree.click(top->child(0));
            tree.takeSelections();
            QTest::mouseClick(tree.viewport(), button, Qt::ControlModifier, tree.below());
            QCOMPARE(tree.selected(), (QStringList{"R1", "R1a"}));
            QCOMPARE(tree.takeSelections(), 0);
            QTest::mouseClick(tree.viewport(), button, {}, tree.below());
            QCOMPARE(tree.selected(), QStringList());
            QCOMPARE(tree.takeSelections(), 1);
            QCOMPARE(tree.current(), "R1");
        }
        QVERIFY(tree.victims.empty());
    }

    void aPressInAnEmptyTreeDoesNothing() {
        ShownTree tree;
        for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton})
            QTest::mouseClick(tree.viewport(), button, {}, {10, 10});
        tree.doubleClick({10, 10});
        tree.press({10, 10});
        tree.drag({10, 60});
        tree.release({10, 60});
        QCOMPARE(tree.takeSelections(), 0);
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

    // Keys.

    void theArrowKeysMoveAndSelectTheRowAlone() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        top->child(0)->setOpen(true);
        tree.setCurrentItem(top->child(0));
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.selected().contains("R1a"), true);
        QCOMPARE(tree.current(), "R1a");
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.current(), "R2");
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.selected(), (QStringList{"R3", "R3a"}));
        QCOMPARE(tree.takeSelections(), 3);
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.takeSelections(), 0);
        tree.key(Qt::Key_Up);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R2a"}));
        QCOMPARE(tree.takeSelections(), 1);
        tree.setCurrentItem(top);
        tree.key(Qt::Key_Up);
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R2a"}));
    }

    void ctrlMovesTheCurrentRowOnly() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.click(top->child(0));
        tree.takeSelections();
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_End,
                                  Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home})
            tree.key(key, Qt::ControlModifier);
        QCOMPARE(tree.current(), "M");
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a"}));
        QCOMPARE(tree.takeSelections(), 0);
    }

    void shiftExtendsOverTheRowsOnScreen() {
        SpyMolecule spies;
        ShownTree tree;
        TreeItem* top = tree.populate(&spies.molecule);
        tree.handsOver = false;
        tree.click(top->child(1));
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3", "R4"}));
        QCOMPARE(tree.takeSelections(), 3);
        tree.key(Qt::Key_Up, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3"}));
        tree.key(Qt::Key_Home, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"M", "R1", "R2"}));
        tree.key(Qt::Key_End, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3", "R4", "R5"}));
        top->CheckSelection();
        QCOMPARE(takeHandedOver(), QStringList("M off"));
    }

    void shiftMovesKeepBranchesWhole() {
        Compound* molecule = makeMolecule(4, 2);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.click(top->child(0));
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b", "R2", "R2a", "R2b"}));
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        tree.key(Qt::Key_Up, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b", "R2", "R2a", "R2b"}));
    }

    void shiftMovesUnselectWhatIsNotInTheRange() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.click(top->child(4));
        tree.click(top->child(0), Qt::ControlModifier);
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R2"}));
        tree.click(top->child(4), Qt::ControlModifier);
        tree.key(Qt::Key_Up, Qt::ShiftModifier | Qt::ControlModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R2", "R4", "R5"}));
    }

    void onlyRowsThatChangeAreHandedOverByKeys() {
        SpyMolecule spies;
        ShownTree tree;
        SpyLeaf c("R1c");
        spies.residues[0]->hold(&c);
        tree.populate(&spies.molecule);
        tree.row("R1")->setOpen(true);
        tree.click(tree.row("R1a"));
        takeHandedOver();
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(takeHandedOver(), QStringList("R1b on"));
        tree.key(Qt::Key_Up, Qt::ShiftModifier);
        QCOMPARE(takeHandedOver(), QStringList("R1b off"));
        tree.key(Qt::Key_Down);
        QCOMPARE(takeHandedOver(), (QStringList{"R1a off", "R1b on"}));
        tree.clear();
    }

    void aMoveSetsTheAnchor() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.click(top->child(0));
        tree.key(Qt::Key_Down);
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3"}));
        tree.click(top->child(4), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3", "R4", "R5"}));
    }

    void ctrlASelectsAllRowsInClosedBranchesToo() {
        SpyMolecule spies;
        ShownTree tree;
        TreeItem* top = tree.populate(&spies.molecule);
        tree.handsOver = false;
        tree.setCurrentItem(top->child(1));
        tree.key(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(tree.selected(), allNames(tree));
        QCOMPARE(tree.takeSelections(), 1);
        QCOMPARE(tree.current(), "R2");
        tree.key(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(tree.takeSelections(), 0);
        top->CheckSelection();
        QCOMPARE(takeHandedOver(), QStringList("M on"));
    }

    void spaceTogglesTheCurrentRow() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.click(top->child(0));
        tree.key(Qt::Key_Down, Qt::ControlModifier);
        for (const Qt::KeyboardModifier modifier : {Qt::NoModifier, Qt::ControlModifier}) {
            tree.takeSelections();
            tree.key(Qt::Key_Space, modifier);
            QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R2", "R2a"}));
            tree.key(Qt::Key_Space, modifier);
            QCOMPARE(tree.selected(), (QStringList{"R1", "R1a"}));
            QCOMPARE(tree.takeSelections(), 2);
        }
    }

    void rightOpensThenGoesToTheFirstChildAndLeftComesBack() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 2));
        tree.setCurrentItem(top->child(0));
        tree.key(Qt::Key_Right);
        QVERIFY(top->child(0)->isOpen());
        QCOMPARE(tree.current(), "R1");
        QCOMPARE(tree.takeSelections(), 0);
        tree.key(Qt::Key_Right);
        QCOMPARE(tree.current(), "R1a");
        QCOMPARE(tree.selected(), QStringList("R1a"));
        tree.key(Qt::Key_Right);
        QCOMPARE(tree.current(), "R1a");
        QCOMPARE(tree.takeSelections(), 1);
        tree.key(Qt::Key_Left);
        QCOMPARE(tree.current(), "R1");
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b"}));
        QCOMPARE(tree.takeSelections(), 1);
        tree.key(Qt::Key_Left);
        QVERIFY(!top->child(0)->isOpen());
        QCOMPARE(tree.current(), "R1");
        tree.key(Qt::Key_Left);
        QCOMPARE(tree.current(), "M");
        tree.key(Qt::Key_Left);
        QVERIFY(!top->isOpen());
        tree.key(Qt::Key_Left);
        QCOMPARE(tree.current(), "M");
    }

    void plusAndMinusOpenAndClose() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 2));
        tree.setCurrentItem(top->child(1));
        tree.key(Qt::Key_Plus);
        QVERIFY(top->child(1)->isOpen());
        tree.key(Qt::Key_Plus);
        QVERIFY(top->child(1)->isOpen());
        QCOMPARE(tree.current(), "R2");
        tree.key(Qt::Key_Minus);
        QVERIFY(!top->child(1)->isOpen());
        tree.key(Qt::Key_Minus);
        QCOMPARE(tree.current(), "R2");
        QCOMPARE(tree.takeSelections(), 0);
    }

    void theAsteriskOpensNothing() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.key(Qt::Key_Asterisk);
        for (int i = 0; i != 3; ++i)
            QVERIFY(!top->child(i)->isOpen());
        QCOMPARE(tree.takeSelections(), 0);
    }

    void homeEndAndPagesReachRowsAndScrollToThem() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(200, 1));
        QApplication::processEvents();
        const auto isSeen = [&] {
            return tree.viewport()->rect().contains(
                tree.visualRect(tree.rows()->indexOf(tree.currentItem())).adjusted(0, 0, -1, 0));
        };
        tree.key(Qt::Key_End);
        QCOMPARE(tree.current(), "R200");
        QVERIFY(isSeen());
        tree.key(Qt::Key_Home);
        QCOMPARE(tree.current(), "M");
        QVERIFY(isSeen());
        const int rowHeight = tree.visualRect(tree.rows()->indexOf(top)).height();
        const int page = tree.viewport()->height() / rowHeight;
        int last = 0;
        for (int i = 0; i != 4; ++i) {
            tree.key(Qt::Key_PageDown);
            const int at = tree.currentItem()->position();
            QVERIFY(at - last >= page - 2 && at - last <= page + 1);
            last = at;
            QVERIFY(isSeen());
        }
        for (int i = 0; i != 30; ++i)
            tree.key(Qt::Key_PageDown);
        QCOMPARE(tree.current(), "R200");
        for (int i = 0; i != 4; ++i) {
            tree.key(Qt::Key_PageUp);
            QVERIFY(isSeen());
        }
        QVERIFY(tree.currentItem()->position() <= 200 - 3 * (page - 2));
        for (int i = 0; i != 30; ++i)
            tree.key(Qt::Key_PageUp);
        QCOMPARE(tree.current(), "M");
        QCOMPARE(tree.selected().first(), "M");
    }

    void withoutACurrentRowAKeyMakesTheFirstOneCurrent() {
        ShownTree tree;
        Compound* molecule = makeMolecule(2, 1);
        new TreeItem(&tree, molecule);
        tree.selectionModel()->clearCurrentIndex();
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.current(), "M");
        QCOMPARE(tree.takeSelections(), 0);
        tree.clear();
        tree.key(Qt::Key_Down);
        tree.key(Qt::Key_A, Qt::ControlModifier);
        tree.key(Qt::Key_Space);
        QCOMPARE(tree.takeSelections(), 0);
    }

    void aCurrentRowInAClosedBranchStandsForTheBranch() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 2));
        tree.setCurrentItem(tree.row("R2b"));
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.current(), "R3");
        tree.setCurrentItem(tree.row("R2b"));
        tree.key(Qt::Key_Up);
        QCOMPARE(tree.current(), "R1");
        // So does an anchor that was closed away.
        top->child(0)->setOpen(true);
        tree.click(tree.row("R1b"));
        top->child(0)->setOpen(false);
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b", "R2", "R2a", "R2b"}));
    }

    void keysFollowTheOrderShown() {
        ShownTree tree;
        tree.populate(makeMolecule(3, 1));
        tree.rows()->sort(0, Qt::DescendingOrder);
        tree.row("R2")->setOpen(true);
        tree.key(Qt::Key_Home);
        QStringList visited;
        for (int i = 0; i != 4; ++i) {
            tree.key(Qt::Key_Down);
            visited << tree.current();
        }
        QCOMPARE(visited, (QStringList{"R3", "R2", "R2a", "R1"}));
    }

    void typingGoesToTheNextRowWhoseNameStartsSo() {
        Compound* molecule = DataMaker::makeCore(TAVIK::Space::instance(), "1ubq", "Molecule");
        for (const char* name : {"ALA 1", "GLY 2", "ALA 3", "gly 4", "ARG 5"})
            DataMaker::makeCore(DataMaker::makeCore(molecule, name, "Residue"), "ALX", "Atom");
        ShownTree tree;
        tree.populate(molecule);
        QTest::keyClicks(&tree, QStringLiteral("gLY"));
        QCOMPARE(tree.current(), "GLY 2");
        QCOMPARE(tree.selected(), (QStringList{"GLY 2", "ALX"}));
        tree.key(Qt::Key_Home); // ends what was typed
        QTest::keyClicks(&tree, QStringLiteral("al"));
        QCOMPARE(tree.current(), "ALA 1");
        QTest::keyClicks(&tree, QStringLiteral("x"));
        QCOMPARE(tree.current(), "ALA 1");
        tree.key(Qt::Key_Down);
        QTest::keyClicks(&tree, QStringLiteral("ar"));
        QCOMPARE(tree.current(), "ARG 5");
        tree.key(Qt::Key_Up);
        tree.key(Qt::Key_Down);
        QTest::keyClicks(&tree, QStringLiteral("a"));
        QCOMPARE(tree.current(), "ALA 1"); // round the end
        const int told = tree.takeSelections();
        tree.key(Qt::Key_Up);
        tree.takeSelections();
        QTest::keyClicks(&tree, QStringLiteral("q"));
        QCOMPARE(tree.takeSelections(), 0);
        QVERIFY(told > 0);
    }

    void afterAPauseTypingStartsAnew() {
        Compound* molecule = DataMaker::makeCore(TAVIK::Space::instance(), "M", "Molecule");
        for (const char* name : {"ab", "bb", "aa"})
            DataMaker::makeCore(molecule, name, "Residue");
        const int interval = QApplication::keyboardInputInterval();
        QApplication::setKeyboardInputInterval(0);
        ShownTree tree;
        tree.populate(molecule);
        QTest::keyClicks(&tree, QStringLiteral("a"));
        QCOMPARE(tree.current(), "ab");
        QTest::qSleep(2);
        QTest::keyClicks(&tree, QStringLiteral("a"));
        QCOMPARE(tree.current(), "aa");
        QTest::qSleep(2);
        QTest::keyClicks(&tree, QStringLiteral("b"));
        QCOMPARE(tree.current(), "bb");
        QApplication::setKeyboardInputInterval(interval);
    }

    void otherKeysAreLeftToTheWindow() {
        QWidget window;
        auto* const tree = new TreeView(&window);
        auto* const row = new TreeItem(tree, makeMolecule(1, 1));
        tree->setCurrentItem(row);
        window.show();
        for (const int key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Delete,
                              Qt::Key_Backspace, Qt::Key_F5}) {
            QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
            QApplication::sendEvent(tree, &event);
            QVERIFY2(!event.isAccepted(), qPrintable(QKeySequence(key).toString()));
        }
        QKeyEvent copy(QEvent::KeyPress, Qt::Key_C, Qt::ControlModifier, QStringLiteral("c"));
        QApplication::sendEvent(tree, &copy);
        QVERIFY(!copy.isAccepted());
        QVERIFY(!row->isSelected());
    }

    // Refused changes.

    void aRefusedGuardLeavesTheMarksOfTheUser() {
        Compound* molecule = makeMolecule(3, 1);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        {
            const memory_host::SpaceLock lock;
            tree.click(top->child(0));
            QCOMPARE(tree.selected(), QStringList("R1"));
            QVERIFY(!molecule->HasSelected());
        }
        // They go with the next change, unless it took them back.
        tree.click(top->child(2), Qt::ControlModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R3", "R3a"}));
        QVERIFY(childOf(molecule, 0)->IsSelected());
    }
};

REGISTER_TEST(TreeSelectionTest)
#include "TreeSelectionTest.moc"
