// Opening and closing branches of the tree with the mouse.
#include "TreeTools.h"

using namespace tree_tools;

class TreeOpeningTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void aRowOpenedByItsMarkBecomesCurrentAndNothingIsSelected() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        tree.setCurrentItem(top->child(1));
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.mark(top->child(0)));
        QVERIFY(top->child(0)->isOpen());
        QCOMPARE(tree.current(), "R1");
        QCOMPARE(tree.selected(), QStringList());
        QCOMPARE(tree.takeSelections(), 0);
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.mark(top->child(0)));
        QVERIFY(!top->child(0)->isOpen());
    }

    void theMarkTakesTheLastStepOfTheIndentationAndNoMore() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        DataMaker::makeCore(childOf(top->compound(), 0), "G", "Group");
        DataMaker::makeCore(childOf(childOf(top->compound(), 0), 1), "Ga", "Atom");
        top->commAdd();
        tree.row("R1")->setOpen(true);
        TreeItem* group = tree.row("G");
        const int y = tree.cell(group, 0).y();
        for (const int x : {20, 39}) {
            const bool open = group->isOpen();
            QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, {x, y});
            QCOMPARE(group->isOpen(), !open);
        }
        QCOMPARE(tree.takeSelections(), 0);
        for (const int x : {19, 40}) {
            const bool open = group->isOpen();
            QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, {x, y});
            QCOMPARE(group->isOpen(), open);
        }
        QCOMPARE(tree.selected(), (QStringList{"G", "Ga"}));
    }

    void whereAMarkWouldBeTheTopRowAndLeavesAreSelected() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(1, 1));
        tree.row("R1")->setOpen(true);
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.mark(tree.row("R1a")));
        QCOMPARE(tree.current(), "R1a");
        QCOMPARE(tree.takeSelections(), 1);
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, {3, tree.cell(top, 0).y()});
        QVERIFY(top->isOpen());
        QCOMPARE(tree.current(), "M");
    }

    void twoQuickClicksOnAMarkAreOneClick() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        tree.doubleClick(tree.mark(top->child(0)));
        QVERIFY(top->child(0)->isOpen());
        QCOMPARE(tree.takeSelections(), 0);
    }

    void aDoubleClickWithTheLeftButtonOpensAndCloses() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        tree.doubleClick(tree.cell(top->child(0), 0));
        QVERIFY(top->child(0)->isOpen());
        QCOMPARE(tree.takeSelections(), 1);
        tree.doubleClick(tree.cell(top->child(0), 2));
        QVERIFY(!top->child(0)->isOpen());
        // On a selected row the first release selects; the second press is none, and so its end.
        QCOMPARE(tree.takeSelections(), 1);
        tree.doubleClick(tree.cell(top, 0));
        QVERIFY(!top->isOpen());
    }

    void aDoubleClickOnALeafOpensNothing() {
        ShownTree tree;
        tree.populate(makeMolecule(1, 1));
        tree.row("R1")->setOpen(true);
        tree.doubleClick(tree.cell(tree.row("R1a"), 0));
        QVERIFY(!tree.row("R1a")->isOpen());
        tree.doubleClick(tree.below());
        QCOMPARE(shownNames(tree), (QStringList{"M", "R1", "R1a"}));
    }

    void aDoubleClickWithAnotherButtonIsOneClickOfIt() {
        Compound* molecule = makeMolecule(2, 1);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.doubleClick(tree.cell(top->child(0), 1), Qt::RightButton);
        QVERIFY(!childOf(molecule, 0)->IsVisible());
        QVERIFY(!top->child(0)->isOpen());
        tree.doubleClick(tree.cell(top->child(0), 1), Qt::MiddleButton);
        QCOMPARE(tree.victims.size(), 1U);
        QVERIFY(!top->child(0)->isOpen());
    }

    void closingABranchThatHoldsTheCurrentRowMakesTheClosedRowCurrent() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 2));
        for (const bool byMark : {true, false}) {
            tree.row("R1")->setOpen(true);
            tree.setCurrentItem(tree.row("R1b"));
            if (byMark)
                QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.mark(top->child(0)));
            else
                tree.row("R1")->setOpen(false);
            QVERIFY(!tree.row("R1")->isOpen());
            QCOMPARE(tree.current(), "R1");
        }
        tree.row("R1")->setOpen(true);
        tree.setCurrentItem(tree.row("R2"));
        tree.row("R1")->setOpen(false);
        QCOMPARE(tree.current(), "R2");
    }

    void whatIsOpenInsideAClosedBranchIsOpenAgainLater() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        tree.row("R2")->setOpen(true);
        top->setOpen(false);
        QCOMPARE(shownNames(tree), QStringList("M"));
        top->setOpen(true);
        QCOMPARE(shownNames(tree), (QStringList{"M", "R1", "R2", "R2a"}));
        QVERIFY(cellRect(tree, tree.row("R2a"), 0).isValid());
    }
};

REGISTER_TEST(TreeOpeningTest)
#include "TreeOpeningTest.moc"
