// How rows come for items that have none yet: where they stand, in how many steps they come, and
// that no other row changes.
#include "FailingMemory.h"
#include "TreeTools.h"

#include <optional>

using namespace tree_tools;

namespace {

QStringList childNames(const TreeItem* row) {
    QStringList names;
    for (const TreeItem* child = row->firstChild(); child; child = child->nextSibling())
        names << child->text(0);
    return names;
}

// Rows must mirror the items below `row`, in order of their ids.
void compareToHost(const TreeItem* row) {
    std::vector<Compound*> items(row->compound()->ChildBegin(), row->compound()->ChildEnd());
    std::sort(items.begin(), items.end(),
              [](const Compound* a, const Compound* b) { return a->GetId() < b->GetId(); });
    QCOMPARE(row->childCount(), static_cast<int>(items.size()));
    for (int i = 0; i != row->childCount(); ++i) {
        const TreeItem* child = row->child(i);
        QCOMPARE(child->compound(), items[static_cast<std::size_t>(i)]);
        QCOMPARE(child->parent(), row);
        QCOMPARE(child->position(), i);
        QCOMPARE(child->isSelected(), child->compound()->IsSelected());
        compareToHost(child);
    }
}

} // namespace

class TreeNewRowsTest : public SpyTestCase {
    Q_OBJECT

private slots:
    void aNewRowComesWithAllRowsBelowInOneStep() {
        Compound* molecule = makeMolecule(3, 4);
        ShownTree tree;
        auto* const top = new TreeItem(&tree, space());
        tree.watch.inserted.clear();
        QVERIFY(FFF2(molecule, top));
        QCOMPARE(tree.watch.inserted.count(), 1);
        compareToHost(top);
        QCOMPARE(top->child(0)->depth(), 1);
        QCOMPARE(top->child(0)->child(2)->child(3)->depth(), 3);
        QCOMPARE(tree.watch.resets.count(), 0);
    }

    void commAddBuildsAllRowsOfTheTopInOneStep() {
        Compound* molecule = makeMolecule(3, 4);
        ShownTree tree;
        tree.populate(molecule);
        QCOMPARE(tree.watch.inserted.count(), 2); // the top row, and all others
        compareToHost(tree.firstChild());
    }

    void commAddMakesOneRowForOneNewChildAndTouchesNoOther() {
        Compound* molecule = makeMolecule(2, 2);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        TreeItem* first = tree.row("R1");
        first->setOpen(true);
        tree.setCurrentItem(first->child(1));
        first->child(0)->setSelected(true);
        tree.watch.inserted.clear();

        Compound* residue = DataMaker::makeCore(molecule, "R3", "Residue");
        DataMaker::makeCore(residue, "R3a", "Atom");
        top->commAdd();

        QCOMPARE(tree.watch.inserted.count(), 1);
        QCOMPARE(tree.watch.inserted.at(0).at(1).toInt(), 2);
        QCOMPARE(tree.watch.inserted.at(0).at(2).toInt(), 2);
        QCOMPARE(tree.watch.removed.count(), 0);
        QCOMPARE(tree.watch.resets.count(), 0);
        QCOMPARE(childNames(top), (QStringList{"R1", "R2", "R3"}));
        QCOMPARE(top->child(2)->childCount(), 1);
        QCOMPARE(tree.row("R1"), first);
        QVERIFY(first->isOpen());
        QVERIFY(!top->child(2)->isOpen());
        QCOMPARE(tree.selected(), QStringList("R1a"));
        QCOMPARE(tree.dirty(), QStringList("R1a"));
        QCOMPARE(tree.current(), "R1b");
    }

    void commAddFindsNewGrandchildren() {
        Compound* molecule = makeMolecule(3, 1);
        ShownTree tree;
        tree.populate(molecule);
        tree.watch.inserted.clear();
        DataMaker::makeCore(childOf(molecule, 0), "x", "Atom");
        DataMaker::makeCore(childOf(molecule, 2), "y", "Atom");
        tree.firstChild()->commAdd();
        QCOMPARE(tree.watch.inserted.count(), 2);
        compareToHost(tree.firstChild());
    }

    void commAddWithoutNewsTellsNothing() {
        ShownTree tree;
        tree.populate(makeMolecule(3, 3));
        tree.watch.inserted.clear();
        tree.firstChild()->commAdd();
        QCOMPARE(tree.watch.inserted.count(), 0);
        QCOMPARE(tree.watch.layouts.count(), 0);
    }

    void commAddDoesNothingForWhatHoldsNothing() {
        Compound* residue = DataMaker::makeCore(space(), "R", "Residue");
        DataMaker::makeCore(residue, "a", "Atom");
        Compound* empty = DataMaker::makeCore(space(), "empty", "Composite");
        ShownTree tree;
        tree.populate(residue)->child(0)->commAdd();
        QCOMPARE(tree.row("a")->childCount(), 0);
        tree.populate(empty)->commAdd();
        QCOMPARE(tree.firstChild()->childCount(), 0);
    }

    void aSetIsARowWithoutRowsForItsMembers() {
        Compound* molecule = makeMolecule(2, 2);
        DataMaker::makeSet(molecule, "picked", {childOf(molecule, 0), childOf(molecule, 1)});
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        QCOMPARE(childNames(top), (QStringList{"R1", "R2", "picked"}));
        QCOMPARE(tree.row("picked")->childCount(), 0);
        tree.row("picked")->commAdd();
        QCOMPARE(tree.row("picked")->childCount(), 0);
    }

    void rowsOfGoneItemsStayAndAreNotAsked() {
        Compound* molecule = makeMolecule(3, 0);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        DataMaker::Destroy(childOf(molecule, 1));
        Compound* added = DataMaker::makeCore(molecule, "R4", "Residue");
        top->commAdd();
        QCOMPARE(top->childCount(), 4);
        QCOMPARE(top->child(3)->compound(), added);
        tree.rows()->sort(0, Qt::DescendingOrder);
        QCOMPARE(top->child(0)->compound(), added);
        QCOMPARE(top->child(1)->compare(top->child(2), 0, true), 1);
    }

    void anItemAtTheAddressOfAGoneOneGetsARowOfItsOwn() {
        SpyHolder residue("R");
        std::optional<SpyLeaf> leaf(std::in_place, "gone");
        residue.hold(&*leaf);
        ShownTree tree;
        TreeItem* row = tree.populate(&residue);
        const TreeItem* gone = row->child(0);
        leaf.emplace("new");
        row->commAdd();
        QCOMPARE(row->childCount(), 2);
        QCOMPARE(row->child(0), gone);
        QCOMPARE(row->child(1)->text(0), "new");
        row->commAdd();
        QCOMPARE(row->childCount(), 2);
    }

    void childrenThatTheHostGivesOutOfOrderStandByTheirIds() {
        SpyLeaf a("a"), b("b"), c("c"), d("d");
        SpyHolder residue("R"), other("S");
        for (SpyLeaf* leaf : {&c, &a, &d, &b})
            residue.hold(leaf);
        SpyHolder molecule("M");
        molecule.hold(&residue);
        ShownTree tree;
        TreeItem* row = tree.populate(&molecule)->child(0);
        QCOMPARE(childNames(row), (QStringList{"a", "b", "c", "d"}));
        compareToHost(row);
        row->commAdd();
        QCOMPARE(row->childCount(), 4);
    }

    void newRowsComeWhereTheirIdsBelongAndNeighboursComeTogether() {
        std::vector<std::unique_ptr<SpyLeaf>> leaves;
        for (int i = 0; i != 10; ++i)
            leaves.push_back(std::make_unique<SpyLeaf>(std::to_string(i)));
        SpyHolder residue("R");
        for (const std::size_t i : {2, 5})
            residue.hold(leaves[i].get());
        ShownTree tree;
        TreeItem* row = tree.populate(&residue);
        tree.watch.inserted.clear();
        for (const std::size_t i : {9, 3, 0, 4, 1, 8})
            residue.hold(leaves[i].get());
        row->commAdd();
        QCOMPARE(childNames(row), (QStringList{"0", "1", "2", "3", "4", "5", "8", "9"}));
        QCOMPARE(tree.watch.inserted.count(), 3);
        compareToHost(row);

        tree.rows()->sort(0, Qt::DescendingOrder);
        residue.hold(leaves[6].get());
        residue.hold(leaves[7].get());
        row->commAdd();
        QCOMPARE(childNames(row), (QStringList{"9", "8", "7", "6", "5", "4", "3", "2", "1", "0"}));
        QCOMPARE(tree.watch.inserted.count(), 4);
        QCOMPARE(tree.watch.resets.count(), 0);
    }

    void manyPlacesAreFilledAtOnceAndEveryRowStaysWhatItWas() {
        constexpr std::size_t count = 400;
        std::vector<std::unique_ptr<SpyHolder>> items;
        std::vector<std::unique_ptr<SpyLeaf>> leaves;
        for (std::size_t i = 0; i != count; ++i) {
            items.push_back(std::make_unique<SpyHolder>(std::to_string(i)));
            leaves.push_back(std::make_unique<SpyLeaf>("leaf"));
            items.back()->hold(leaves.back().get());
        }
        SpyHolder molecule("M");
        for (std::size_t i = 0; i < count; i += 2)
            molecule.hold(items[i].get());
        ShownTree tree;
        TreeItem* row = tree.populate(&molecule);
        for (const bool descending : {false, true}) {
            tree.rows()->sort(0, descending ? Qt::DescendingOrder : Qt::AscendingOrder);
            TreeItem* open = tree.row("100");
            open->setOpen(true);
            tree.setCurrentItem(open->child(0));
            tree.watch.inserted.clear();
            for (std::size_t i = descending ? 3 : 1; i < count; i += 4)
                molecule.hold(items[i].get());
            row->commAdd();
            QCOMPARE(tree.watch.inserted.count(), 1);
            QCOMPARE(tree.watch.resets.count(), 0);
            QCOMPARE(row->childCount(), static_cast<int>(molecule.m_children.size()));
            for (int i = 1; i != row->childCount(); ++i)
                QCOMPARE(row->child(i)->compare(row->child(i - 1), 0, true), descending ? -1 : 1);
            QCOMPARE(tree.row("100"), open);
            QVERIFY(open->isOpen() && tree.isExpanded(tree.rows()->indexOf(open)));
            QCOMPARE(tree.currentItem(), open->child(0));
        }
    }

    void manyInsertionsAreToldAtOnceAndEveryRowStaysWhatItWas() {
        Compound* const molecule = makeMolecule(100, 2);
        ShownTree tree;
        TreeItem* const top = tree.populate(molecule);
        for (const bool descending : {false, true}) {
            tree.rows()->sort(0, descending ? Qt::DescendingOrder : Qt::AscendingOrder);
            TreeItem* const open = tree.row("R50");
            open->setOpen(true);
            TreeItem* const current = tree.row("R50a");
            tree.setCurrentItem(current);
            current->setSelected(true);
            tree.watch.inserted.clear();
            tree.watch.layouts.clear();
            for (int i = 0; i != 100; ++i)
                DataMaker::makeCore(childOf(molecule, i), "new", "Atom");
            top->commAdd();
            QVERIFY(tree.watch.inserted.count() < 20);
            QCOMPARE(tree.watch.layouts.count(), 1);
            QCOMPARE(tree.watch.resets.count(), 0);
            QCOMPARE(tree.row("R50"), open);
            QVERIFY(open->isOpen() && tree.isExpanded(tree.rows()->indexOf(open)));
            QVERIFY(!tree.isExpanded(tree.rows()->indexOf(tree.row("R51"))));
            QCOMPARE(tree.currentItem(), current);
            QCOMPARE(tree.selected(), QStringList("R50a"));
            QCOMPARE(tree.rows()->rowCount(tree.rows()->indexOf(open)), descending ? 4 : 3);
        }
        tree.row("R50a")->setSelected(false);
        tree.rows()->sort(0, Qt::AscendingOrder);
        compareToHost(top);
    }

    void memoryThatRunsOutInManyInsertionsLeavesWholeRows() {
        Compound* const molecule = makeMolecule(40, 1);
        TreeView tree;
        auto* const top = new TreeItem(&tree, molecule);
        top->commAdd();
        for (int i = 0; i != 40; ++i)
            DataMaker::makeCore(childOf(molecule, i), "new", "Atom");
        int failures = 0;
        for (int granted = 0;; ++granted, ++failures) {
            {
                const FailingMemory memory(granted, 1, 0);
                try {
                    top->commAdd();
                } catch (const std::bad_alloc&) {
                }
                if (FailingMemory::refusals() == 0)
                    break;
            }
            QCOMPARE(top->childCount(), 40);
            for (int i = 0; i != 40; ++i)
                QCOMPARE(tree.rows()->rowCount(tree.rows()->indexOf(top->child(i))),
                         top->child(i)->childCount());
        }
        QVERIFY(failures >= 20);
        compareToHost(top);
    }

    void aHalfMillionScatteredRowsAreAddedInTime() {
        Compound* molecule = DataMaker::makeCore(space(), "M", "Molecule");
        std::vector<Compound*> later;
        for (int i = 0; i != 250000; ++i) {
            DataMaker::makeCore(molecule, "a", "Atom");
            later.push_back(memory_host::makeDetached("b", "Atom"));
        }
        TreeView tree;
        auto* const row = new TreeItem(&tree, molecule);
        row->commAdd();
        for (Compound* item : later)
            memory_host::attach(item, molecule);
        QElapsedTimer clock;
        clock.start();
        row->commAdd();
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(row->childCount(), 500000);
        for (int i = 1; i < row->childCount(); i += 997)
            QCOMPARE(row->child(i)->compare(row->child(i - 1), 0, true), 1);
    }

    void nullChildrenGetOneEmptyRowEachTimeTheyAreMet() {
        SpyLeaf a("a");
        SpyHolder residue("R");
        residue.hold(nullptr);
        residue.hold(&a);
        residue.hold(nullptr);
        ShownTree tree;
        TreeItem* row = tree.populate(&residue);
        QCOMPARE(takeMessages(), QStringList("In file TreeItem, line 61: Out of memory"));
        QCOMPARE(childNames(row), (QStringList{"", "a"}));
        row->commAdd();
        QCOMPARE(row->childCount(), 2);
    }

    void memoryThatRunsOutLeavesTheRowsAsTheyWere() {
        SpyHolder molecule("M"), first("R1"), second("R2");
        SpyLeaf a("a"), b("b");
        second.hold(&a);
        molecule.hold(&first);
        TreeView tree;
        auto* const top = new TreeItem(&tree, &molecule);
        top->commAdd();
        molecule.hold(&second);
        first.hold(&b);
        int failures = 0;
        for (int granted = 0;; ++granted, ++failures) {
            bool failed = false;
            const int before = top->childCount() + top->child(0)->childCount();
            {
                const FailingMemory memory(granted, 1, 0);
                try {
                    top->commAdd();
                } catch (const std::bad_alloc&) {
                    failed = true;
                }
                if (FailingMemory::refusals() == 0)
                    break;
            }
            QVERIFY(failed);
            // What lies below an older row comes first, and as a whole.
            const int after = top->childCount() + top->child(0)->childCount();
            QVERIFY(after == before || (after == 2 && top->child(0)->childCount() == 1));
        }
        QVERIFY(failures >= 6);
        QCOMPARE(childNames(top), (QStringList{"R1", "R2"}));
        compareToHost(top);
    }
};

REGISTER_TEST(TreeNewRowsTest)
#include "TreeNewRowsTest.moc"
