// Selecting rows inside of what is selected already: the gesture leaves exactly them, in the rows
// and in the host, at once. So it does where sets select the same items a second time.
#include "TreeTools.h"
#include "items/SpaceLock.h"

#include <set>

using namespace tree_tools;

namespace {

// The names of the atoms that the host has selected below `item`.
QStringList selectedAtoms(Compound* item) {
    QStringList names;
    if (dynamic_cast<TAVIK::Atom*>(item) && item->IsSelected())
        names << QString::fromStdString(item->GetName());
    for (Compound** it = item->ChildBegin(); it != item->ChildEnd(); ++it)
        names << selectedAtoms(*it);
    return names;
}

using Items = std::set<const Compound*>;

// The atoms that `item` stands for: with a set those of its members, else those that it holds. A
// set adds nothing to what it stands in.
void addAtoms(Compound* item, Items& atoms) {
    if (dynamic_cast<TAVIK::Atom*>(item))
        atoms.insert(item);
    for (Compound** it = item->PartBegin(); it != item->PartEnd(); ++it)
        addAtoms(*it, atoms);
    for (Compound** it = item->ChildBegin(); it != item->ChildEnd(); ++it)
        if ((*it)->PartBegin() == (*it)->PartEnd())
            addAtoms(*it, atoms);
}

// A shown molecule of three residues with two atoms each, all open and all selected.
struct SelectedTree : ShownTree {
    SelectedTree() {
        TreeItem* top = populate(molecule);
        for (int i = 0; i != top->childCount(); ++i)
            top->child(i)->setOpen(true);
        click(top);
        takeSelections();
    }
    Compound* molecule = makeMolecule(3, 2);
};

} // namespace

class TreeInsideSelectionTest : public SpyTestCase {
    Q_OBJECT

private slots:
    void aClickInsideASelectedRowSelectsThatRowAtOnce() {
        for (const char* name : {"R2", "R1", "R3"}) {
            SelectedTree tree;
            QCOMPARE(tree.selected(), allNames(tree));
            tree.click(tree.row(name));
            const QString residue = QString::fromLatin1(name);
            QCOMPARE(tree.selected(), (QStringList{residue, residue + "a", residue + "b"}));
            QCOMPARE(selectedAtoms(tree.molecule), (QStringList{residue + "a", residue + "b"}));
            QCOMPARE(tree.takeSelections(), 1);
            QCOMPARE(tree.dirty(), QStringList());
            tree.clear();
            DataMaker::Destroy(tree.molecule);
        }
    }

    void aClickSeveralLevelsInsideSelectsOneAtom() {
        SelectedTree tree;
        tree.click(tree.row("R2b"));
        QCOMPARE(tree.selected(), QStringList("R2b"));
        QCOMPARE(selectedAtoms(tree.molecule), QStringList("R2b"));
        QCOMPARE(tree.takeSelections(), 1);
    }

    void whatTheRowsAboveHeldIsHandedOverRowByRow() {
        SpyMolecule spies;
        ShownTree tree;
        TreeItem* top = tree.populate(&spies.molecule);
        top->child(1)->setOpen(true);
        tree.click(top);
        QCOMPARE(takeHandedOver(), QStringList("M on"));
        tree.click(tree.row("R2b"));
        QCOMPARE(takeHandedOver(),
                 (QStringList{"R1 off", "R2a off", "R3 off", "R4 off", "R5 off"}));
        tree.click(top);
        takeHandedOver();
        tree.click(tree.row("R2"));
        QCOMPARE(takeHandedOver(), (QStringList{"R1 off", "R2 on", "R3 off", "R4 off", "R5 off"}));
    }

    void keysInsideASelectedRowSelectWhereTheyLead_data() {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QStringList>("atoms");
        QTest::newRow("Up") << Qt::Key_Up << "R2b" << QStringList{"R2a"};
        QTest::newRow("Down") << Qt::Key_Down << "M" << QStringList{"R1a", "R1b"};
        QTest::newRow("End") << Qt::Key_End << "M" << QStringList{"R3b"};
        QTest::newRow("PageDown") << Qt::Key_PageDown << "R1" << QStringList{"R3b"};
        QTest::newRow("Left") << Qt::Key_Left << "R2b" << QStringList{"R2a", "R2b"};
        QTest::newRow("Right") << Qt::Key_Right << "R2" << QStringList{"R2a"};
        const QStringList all{"R1a", "R1b", "R2a", "R2b", "R3a", "R3b"};
        QTest::newRow("Home") << Qt::Key_Home << "R2b" << all;
        QTest::newRow("PageUp") << Qt::Key_PageUp << "R2b" << all;
    }
    void keysInsideASelectedRowSelectWhereTheyLead() {
        QFETCH(Qt::Key, key);
        QFETCH(QString, from);
        SelectedTree tree;
        tree.setCurrentItem(tree.row(qPrintable(from)));
        tree.key(key);
        QTEST(selectedAtoms(tree.molecule), "atoms");
        QCOMPARE(tree.takeSelections(), 1);
    }

    // On a screen of four rows, a page up leads to one inside of what is selected.
    void aPageUpInsideASelectedRowSelectsWhereItLeads() {
        SelectedTree tree;
        const int rows = 4 * tree.visualRect(tree.currentIndex()).height();
        tree.resize(tree.width(), tree.height() - tree.viewport()->height() + rows);
        tree.verticalScrollBar()->setValue(tree.verticalScrollBar()->maximum());
        tree.setCurrentItem(tree.row("R3b"));
        tree.key(Qt::Key_PageUp);
        QCOMPARE(tree.current(), "R2b");
        QCOMPARE(selectedAtoms(tree.molecule), QStringList("R2b"));
        QCOMPARE(tree.takeSelections(), 1);
    }

    void aRangeInsideASelectedRowIsAllThatStays() {
        SelectedTree tree;
        tree.click(tree.row("R2b"), Qt::ControlModifier); // sets the anchor
        tree.click(tree.row("M"), Qt::ShiftModifier);     // from R2b up to M: everything
        QCOMPARE(selectedAtoms(tree.molecule).size(), 6);
        tree.click(tree.row("R2a"), Qt::ShiftModifier);
        QCOMPARE(selectedAtoms(tree.molecule), (QStringList{"R2a", "R2b"}));
        tree.click(tree.row("R1b"), Qt::ControlModifier);
        tree.click(tree.row("M"), Qt::ShiftModifier);
        tree.click(tree.row("R2a"), Qt::ShiftModifier);
        QCOMPARE(selectedAtoms(tree.molecule), (QStringList{"R1b", "R2a", "R2b"}));
    }

    void shiftMovesInsideASelectedRowSelectTheRange() {
        SelectedTree tree;
        tree.click(tree.row("R1b"));
        tree.click(tree.row("M"), Qt::ControlModifier);
        tree.key(Qt::Key_End, Qt::ControlModifier);
        tree.key(Qt::Key_Up, Qt::ShiftModifier);
        QCOMPARE(selectedAtoms(tree.molecule), (QStringList{"R3a", "R3b"}));
    }

    void bondsBesideTheAtomsAreUnselectedWithTheWhole() {
        Compound* molecule = makeMolecule(2, 2);
        Compound* first = childOf(molecule, 0);
        Compound* bond = memory_host::addBond(molecule, childOf(first, 0), childOf(first, 1));
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.click(top);
        QVERIFY(bond->IsSelected());
        tree.click(tree.row("R1"));
        QVERIFY(!bond->IsSelected());
        QCOMPARE(selectedAtoms(molecule), (QStringList{"R1a", "R1b"}));
    }

    void aRefusedClickInsideLeavesTheRowsAboveUnchanged() {
        SelectedTree tree;
        {
            const memory_host::SpaceLock lock;
            tree.click(tree.row("R2"));
            QCOMPARE(tree.selected(), (QStringList{"R2", "R2a", "R2b"}).mid(0, 1));
            QVERIFY(!tree.row("M")->isDirty());
            QVERIFY(tree.row("R1")->isDirty());
            QCOMPARE(selectedAtoms(tree.molecule).size(), 6);
        }
        tree.click(tree.row("R2"));
        QCOMPARE(selectedAtoms(tree.molecule), (QStringList{"R2a", "R2b"}));
        // A row that was unselected in vain does not take along what is selected in it later.
        tree.click(tree.row("M"));
        {
            const memory_host::SpaceLock lock;
            tree.click(tree.row("M"), Qt::ControlModifier);
        }
        tree.click(tree.row("R3"));
        tree.click(tree.row("R3"));
        QCOMPARE(selectedAtoms(tree.molecule), (QStringList{"R3a", "R3b"}));
    }

    // Sets.

    void aSetOfARowDoesNotUnselectItAgain() {
        for (const Qt::SortOrder order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
            SelectedTree tree;
            Compound* residue = childOf(tree.molecule, 1);
            tree.click(tree.row("R2"));
            Compound* set = DataMaker::makeSet(tree.molecule, "S", {residue});
            static_cast<Subscriber&>(tree).commAdd();
            tree.rows()->sort(0, order);
            QVERIFY(set->IsSelected());
            for (const char* again : {"R2", "S", "S", "R2"}) {
                tree.click(tree.row(again));
                QCOMPARE(selectedAtoms(tree.molecule), (QStringList{"R2a", "R2b"}));
            }
            tree.click(tree.row("M"));
            tree.click(tree.row("S"));
            QCOMPARE(selectedAtoms(tree.molecule), (QStringList{"R2a", "R2b"}));
            tree.click(tree.row("R1"));
            QCOMPARE(selectedAtoms(tree.molecule), (QStringList{"R1a", "R1b"}));
            tree.clear();
            DataMaker::Destroy(tree.molecule);
        }
    }

    void ofASetThatHoldsMoreTheRestIsUnselected() {
        SelectedTree tree;
        Compound* const molecule = tree.molecule;
        Compound* atom = childOf(childOf(molecule, 0), 1);
        DataMaker::makeSet(molecule, "S", {atom, childOf(molecule, 1)});
        Compound* inner = DataMaker::makeSet(molecule, "T", {childOf(molecule, 1)});
        DataMaker::makeSet(molecule, "U", {inner, childOf(molecule, 2)});
        static_cast<Subscriber&>(tree).commAdd();
        tree.click(tree.row("S"));
        QCOMPARE(selectedAtoms(molecule), (QStringList{"R1b", "R2a", "R2b"}));
        tree.click(tree.row("R2"));
        QCOMPARE(selectedAtoms(molecule), (QStringList{"R2a", "R2b"}));
        tree.click(tree.row("S"));
        tree.click(tree.row("R1"));
        QCOMPARE(selectedAtoms(molecule), (QStringList{"R1a", "R1b"}));
        tree.click(tree.row("U"));
        QCOMPARE(selectedAtoms(molecule), (QStringList{"R2a", "R2b", "R3a", "R3b"}));
        tree.click(tree.row("S"));
        QCOMPARE(selectedAtoms(molecule), (QStringList{"R1b", "R2a", "R2b"}));
        tree.click(tree.row("R3"));
        QCOMPARE(selectedAtoms(molecule), (QStringList{"R3a", "R3b"}));
    }

    // Whatever was selected before, with sets that share items in every way.
    void aClickLeavesExactlyWhatItsRowStandsFor() {
        for (const Qt::SortOrder order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
            SelectedTree tree;
            Compound* const molecule = tree.molecule;
            Compound* const other = makeMolecule(2, 1);
            Compound* const second = childOf(molecule, 1);
            Compound* const third = childOf(molecule, 2);
            Items others;
            addAtoms(other, others);
            Items atoms = others;
            addAtoms(molecule, atoms);
            DataMaker::makeSet(molecule, "S", {childOf(childOf(molecule, 0), 1), second});
            Compound* const inner = DataMaker::makeSet(molecule, "T", {second});
            DataMaker::makeSet(molecule, "U", {inner, third});
            DataMaker::makeSet(molecule, "V", {childOf(second, 0)});
            DataMaker::makeSet(molecule, "W", {childOf(other, 0)});
            DataMaker::makeSet(molecule, "X", {other});
            static_cast<Subscriber&>(tree).commAdd();
            tree.rows()->sort(0, order);
            std::vector<TreeItem*> rows;
            for (TreeItemIterator it(&tree); it.current(); ++it)
                rows.push_back(it.current());
            QCOMPARE(rows.size(), 16U);
            const auto leavesIt = [&](const TreeItem* row) {
                tree.click(row);
                Items expected;
                addAtoms(row->compound(), expected);
                // What is in no row can only be unselected with a whole set, as long as nothing of
                // that is wanted.
                const bool othersMayStay = row->compound() == molecule || row->text(0) == "W";
                return std::all_of(atoms.begin(), atoms.end(), [&](const Compound* atom) {
                    return atom->IsSelected() == (expected.count(atom) > 0) ||
                           (othersMayStay && others.count(atom) > 0);
                });
            };
            QString before;
            for (const TreeItem* from : rows)
                for (const TreeItem* to : rows) {
                    QVERIFY2(leavesIt(from), qPrintable(before + " and " + from->text(0)));
                    QVERIFY2(leavesIt(to), qPrintable(from->text(0) + " and " + to->text(0)));
                    before = to->text(0);
                }
            tree.clear();
            DataMaker::Destroy(molecule);
            DataMaker::Destroy(other);
        }
    }

    void aSetOfOtherEntriesIsUnselectedAsAWhole() {
        SelectedTree tree;
        Compound* other = makeMolecule(1, 1);
        Compound* set = DataMaker::makeSet(tree.molecule, "S", {childOf(other, 0)});
        static_cast<Subscriber&>(tree).commAdd();
        tree.click(tree.row("S"));
        QCOMPARE(selectedAtoms(other), QStringList("R1a"));
        QCOMPARE(selectedAtoms(tree.molecule), QStringList());
        // A second set of the same members takes them over.
        DataMaker::makeSet(tree.molecule, "T", {other});
        static_cast<Subscriber&>(tree).commAdd();
        tree.click(tree.row("T"));
        QCOMPARE(selectedAtoms(other), QStringList("R1a"));
        tree.click(tree.row("R1"));
        QVERIFY(!set->IsSelected());
        QCOMPARE(selectedAtoms(other), QStringList());
        QCOMPARE(selectedAtoms(tree.molecule), (QStringList{"R1a", "R1b"}));
    }
};

REGISTER_TEST(TreeInsideSelectionTest)
#include "TreeInsideSelectionTest.moc"
