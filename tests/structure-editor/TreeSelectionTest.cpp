// Selecting in the tree with a press of the mouse: which rows, how often it is told, and what
// reaches the host.
#include "TreeTools.h"
#include "items/SpaceLock.h"

using namespace tree_tools;

class TreeSelectionTest : public SpyTestCase {
    Q_OBJECT

private slots:
    // Presses on rows.

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

    void aPressInsideWhatIsSelectedAsAWholeWaitsForTheRelease() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        tree.click(top);
        tree.takeSelections();
        tree.press(tree.cell(top->child(0), 0));
        QCOMPARE(tree.selected(), allNames(tree));
        QCOMPARE(tree.takeSelections(), 0);
        tree.release(tree.cell(top->child(0), 0));
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a"}));
        QCOMPARE(tree.takeSelections(), 1);
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
