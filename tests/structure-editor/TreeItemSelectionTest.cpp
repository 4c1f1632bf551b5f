// How rows carry the selection both ways: the user's to the host, the host's into the rows.
#include "TreeTools.h"

using namespace tree_tools;

class TreeItemSelectionTest : public SpyTestCase {
    Q_OBJECT

private slots:
    void aNewRowIsSelectedAsItsItemAndNotDirty() {
        Compound* molecule = makeMolecule(2, 2);
        childOf(molecule, 0)->SetSelected(true);
        ShownTree tree;
        tree.populate(molecule);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b"}));
        QCOMPARE(tree.dirty(), QStringList());
    }

    void setSelectedMarksTheRowAndSetCleanForgetsTheWholeBranch() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        top->child(0)->setSelected(true);
        top->child(0)->child(0)->setSelected(false);
        top->child(1)->setSelected(false);
        QVERIFY(top->child(0)->isSelected());
        QCOMPARE(tree.dirty(), (QStringList{"R1", "R1a", "R2"}));
        top->child(0)->SetClean();
        QCOMPARE(tree.dirty(), QStringList("R2"));
        QVERIFY(top->child(0)->isSelected());
    }

    void unrelatedRowsAreHandedOverOneByOneAndLeaveNothingDirty() {
        SpyHolder molecule("M"), first("R1"), second("R2");
        SpyLeaf a("a"), b("b");
        first.hold(&a);
        second.hold(&b);
        molecule.hold(&first);
        molecule.hold(&second);
        ShownTree tree;
        TreeItem* top = tree.populate(&molecule);
        tree.row("R1")->setSelected(true);
        tree.row("R2")->setSelected(true);
        top->CheckSelection();
        QCOMPARE(takeHandedOver(), (QStringList{"R1 on", "R2 on"}));
        QCOMPARE(tree.dirty(), QStringList());
        top->CheckSelection();
        QCOMPARE(takeHandedOver(), QStringList());
        top->UpdateSelection();
        QCOMPARE(tree.selected(), (QStringList{"M", "R1", "a", "R2", "b"}));
    }

    void ofTwoChangedRowsOneInsideTheOtherOnlyTheOuterIsHandedOver() {
        SpyHolder molecule("M"), residue("R1");
        SpyLeaf a("a"), b("b");
        residue.hold(&a);
        residue.hold(&b);
        molecule.hold(&residue);
        ShownTree tree;
        TreeItem* top = tree.populate(&molecule);
        tree.row("a")->setSelected(true);
        tree.row("R1")->setSelected(false);
        top->CheckSelection();
        QCOMPARE(takeHandedOver(), QStringList("R1 off"));
        QCOMPARE(tree.dirty(), QStringList());
    }

    void checkSelectionHandsOverInTheOrderShown() {
        SpyHolder molecule("M");
        SpyLeaf a("a"), b("b"), c("c");
        for (SpyLeaf* leaf : {&a, &b, &c})
            molecule.hold(leaf);
        ShownTree tree;
        TreeItem* top = tree.populate(&molecule);
        tree.rows()->sort(0, Qt::DescendingOrder);
        for (TreeItem* row = top->firstChild(); row; row = row->nextSibling())
            row->setSelected(true);
        top->CheckSelection();
        QCOMPARE(takeHandedOver(), (QStringList{"c on", "b on", "a on"}));
    }

    void updateSelectionTakesTheHostsStateWithoutMarkingRows() {
        Compound* molecule = makeMolecule(2, 2);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.row("R1")->setSelected(true);
        tree.row("R1")->SetClean();
        childOf(molecule, 1)->SetSelected(true);
        top->UpdateSelection();
        QCOMPARE(tree.selected(), (QStringList{"R2", "R2a", "R2b"}));
        QCOMPARE(tree.dirty(), QStringList());
    }

    void updateSelectionKeepsTheMarksOfTheUser() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 2));
        tree.row("R1")->setSelected(true);
        top->UpdateSelection();
        QCOMPARE(tree.selected(), QStringList());
        QCOMPARE(tree.dirty(), QStringList("R1"));
    }

    // Marks that the host has refused go with the next update, and what is handed over afterwards
    // is what the rows then say.
    void aRowHandsItsOwnFlagOverAfterARefusedPressAnUpdateAndASecondPress() {
        SpyMolecule spies;
        ShownTree tree;
        TreeItem* top = tree.populate(&spies.molecule);
        tree.row("R1")->setOpen(true);
        for (const char* refused : {"R1a", "R3"}) {
            tree.handsOver = false;
            tree.click(tree.row(refused));
            top->UpdateSelection();
            QCOMPARE(tree.selected(), QStringList());
            tree.handsOver = true;
            tree.click(tree.row("R2"));
            QCOMPARE(takeHandedOver(), refused == QLatin1String("R1a")
                                           ? (QStringList{"R1a off", "R2 on"})
                                           : (QStringList{"R2 on", "R3 off"}));
            QCOMPARE(tree.selected(), (QStringList{"R2", "R2a", "R2b"}));
            QCOMPARE(tree.dirty(), QStringList());
            spies.molecule.mark(false);
            top->UpdateSelection();
        }
    }
};

REGISTER_TEST(TreeItemSelectionTest)
#include "TreeItemSelectionTest.moc"
