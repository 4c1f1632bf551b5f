// Rows whose items are told of together: they follow each of them, also when the user selects one,
// and when children come that have no rows yet.
#include "TreeTools.h"

using namespace tree_tools;

class TreeChildMarksTest : public test_support::TestCase {
    Q_OBJECT

    static Compound* residueOf(int atoms) {
        Compound* residue = DataMaker::makeCore(TAVIK::Space::instance(), "MET 1", "Residue");
        for (int i = 0; i != atoms; ++i)
            addAtomTo(residue);
        return residue;
    }
    static void addAtomTo(Compound* residue) {
        memory_host::addAtom(residue, {"CA", "C", TAVIK::Vertex(0.0F, 0.0F, 0.0F, true), 1.0F, 0});
    }
    static void requireFollowed(const TreeItem* top) {
        QCOMPARE(top->isSelected(), top->compound()->IsSelected());
        for (TreeItem* row : top->children()) {
            QCOMPARE(row->isSelected(), row->compound()->IsSelected());
            QVERIFY((row->hasSelected() && top->hasSelected()) || !row->isSelected());
            QVERIFY(!row->isDirty());
        }
    }
    static void addCounts() {
        QTest::addColumn<int>("count");
        for (const int count : {1, 5, 63, 64, 65, 130})
            QTest::addRow("%d atoms", count) << count;
    }

private slots:
    void rowsFollowTheirItems_data() { addCounts(); }
    void rowsFollowTheirItems() {
        QFETCH(int, count);
        Compound* residue = residueOf(count);
        ShownTree tree;
        const TreeItem* top = tree.populate(residue);
        requireFollowed(top);
        for (int step = 1; step != 8; ++step) {
            for (int i = step % 3; i < count; i += step)
                residue->ChildBegin()[i]->ToggleSelected();
            tree.UpdateSelection();
            requireFollowed(top);
        }
        for (const bool on : {true, false}) {
            residue->SetSelected(on);
            tree.UpdateSelection();
            requireFollowed(top);
        }
    }

    void theUsersSelectionLeavesTheOtherRowsAsTheyAre_data() { addCounts(); }
    void theUsersSelectionLeavesTheOtherRowsAsTheyAre() {
        QFETCH(int, count);
        Compound* residue = residueOf(count);
        ShownTree tree;
        TreeItem* top = tree.populate(residue);
        for (int i = 0; i < count; i += 2)
            residue->ChildBegin()[i]->SetSelected(true);
        tree.UpdateSelection();
        TreeItem* const last = top->child(count - 1);
        const bool wasSelected = last->isSelected();
        last->setSelected(!wasSelected);
        for (TreeItem* row : top->children())
            QCOMPARE(row->isSelected(), row->compound()->IsSelected() != (row == last));
        top->CheckSelection();
        QCOMPARE(last->compound()->IsSelected(), !wasSelected);
        tree.UpdateSelection();
        requireFollowed(top);
        // One row alone takes the host's state over.
        last->compound()->SetSelected(wasSelected);
        last->UpdateSelection();
        for (TreeItem* row : top->children())
            QCOMPARE(row->isSelected(), row->compound()->IsSelected());
    }

    // Until they have rows, and afterwards.
    void childrenThatComeLeaveTheOtherRowsRight_data() { addCounts(); }
    void childrenThatComeLeaveTheOtherRowsRight() {
        QFETCH(int, count);
        Compound* residue = residueOf(count);
        ShownTree tree;
        TreeItem* top = tree.populate(residue);
        residue->ChildBegin()[count / 2]->SetSelected(true);
        tree.UpdateSelection();
        addAtomTo(residue);
        residue->ChildBegin()[count]->SetSelected(true);
        residue->ChildBegin()[0]->ToggleSelected();
        tree.UpdateSelection();
        requireFollowed(top);
        top->commAdd();
        QCOMPARE(top->childCount(), count + 1);
        tree.UpdateSelection();
        requireFollowed(top);
        residue->ChildBegin()[count]->SetSelected(false);
        tree.UpdateSelection();
        requireFollowed(top);
    }

    void aRowPutBelowAnAtomsRowLeavesTheOtherRowsRight() {
        Compound* residue = residueOf(4);
        ShownTree tree;
        TreeItem* top = tree.populate(residue);
        residue->ChildBegin()[1]->SetSelected(true);
        residue->ChildBegin()[2]->SetSelected(true);
        tree.UpdateSelection();
        new TreeItem(top->child(1), residue->ChildBegin()[3]);
        requireFollowed(top);
        residue->ChildBegin()[0]->SetSelected(true);
        tree.UpdateSelection();
        requireFollowed(top);
    }
};

REGISTER_TEST(TreeChildMarksTest)
#include "TreeChildMarksTest.moc"
