// Rows: what their cells say, how they are ordered, and how they carry selection and new items.
#include "FailingMemory.h"
#include "TreeTools.h"

#include <QPersistentModelIndex>

#include <climits>
#include <optional>

using namespace tree_tools;

namespace {

Compound* space() {
    return TAVIK::Space::instance();
}

QStringList texts(const TreeItem* row) {
    return {row->text(0), row->text(1), row->text(2), row->text(3)};
}

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

class TreeItemTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void cleanup() override {
        QCOMPARE(takeHandedOver(), QStringList());
        TestCase::cleanup();
    }

    void aRowShowsNameVisibilitySelectionAndPartialSelection() {
        Compound* molecule = makeMolecule(2, 2);
        ShownTree tree;
        const TreeItem* row = tree.populate(molecule);
        QCOMPARE(texts(row), (QStringList{"M", "Yes", "No", "No"}));
        childOf(molecule, 1)->SetSelected(true);
        QCOMPARE(texts(row), (QStringList{"M", "Yes", "No", "Yes"}));
        molecule->SetSelected(true);
        molecule->SetVisible(false);
        QCOMPARE(texts(row), (QStringList{"M", "No", "Yes", "Yes"}));
    }

    void anAtomShowsItsModelNumberInsteadOfPartialSelection() {
        Compound* residue = DataMaker::makeCore(space(), "MET 1", "Residue");
        memory_host::addAtom(residue, {"CA", "C", {}, 0.0F, 2});
        memory_host::addAtom(residue, {"CB", "C", {}, 0.0F, 0});
        ShownTree tree;
        const TreeItem* row = tree.populate(residue);
        QCOMPARE(row->child(0)->text(3), "2");
        row->child(0)->compound()->SetSelected(true);
        QCOMPARE(row->child(0)->text(3), "2");
        QCOMPARE(row->child(1)->text(3), "0");
    }

    void aResidueWithOneSelectedAtomIsPartlySelected() {
        Compound* molecule = makeMolecule(1, 2);
        childOf(childOf(molecule, 0), 0)->SetSelected(true);
        ShownTree tree;
        const TreeItem* residue = tree.populate(molecule)->child(0);
        QCOMPARE(residue->text(2), "No");
        QCOMPARE(residue->text(3), "Yes");
    }

    void columnsThatAreNotThereAreEmpty() {
        ShownTree tree;
        const TreeItem* row = tree.populate(makeMolecule(1, 1));
        for (const int column : {4, 5, INT_MAX, -1, INT_MIN})
            QCOMPARE(row->text(column), QString());
    }

    void namesAreLatin1() {
        ShownTree tree;
        const TreeItem* row =
            tree.populate(DataMaker::makeCore(space(), "caf\xe9 \xb1", "Composite"));
        QCOMPARE(row->text(0), QString::fromLatin1("caf\xe9 \xb1"));
    }

    void textsFollowTheHostWithoutBeingTold() {
        Compound* molecule = makeMolecule(1, 1);
        ShownTree tree;
        const TreeItem* row = tree.populate(molecule);
        molecule->SetVisible(false);
        QCOMPARE(row->text(1), "No");
    }

    void theKeyIsTheIdInTenPaddedPlaces() {
        Compound* molecule = makeMolecule(1, 1);
        ShownTree tree;
        const TreeItem* row = tree.populate(molecule);
        const QString id = QString::number(molecule->GetId());
        for (const int column : {0, 1, 2, 3, 7})
            for (const bool ascending : {true, false})
                QCOMPARE(row->key(column, ascending), id.rightJustified(10));
    }

    void idsAreComparedAsNumbersInEveryColumnAndDirection() {
        Compound* molecule = makeMolecule(12, 0);
        ShownTree tree;
        const TreeItem* row = tree.populate(molecule);
        for (const int column : {0, 1, 2, 3})
            for (const bool ascending : {true, false})
                for (int i = 0; i != 12; ++i)
                    for (int j = 0; j != 12; ++j) {
                        const int expected = i == j ? 0 : i < j ? -1 : 1;
                        QCOMPARE(row->child(i)->compare(row->child(j), column, ascending),
                                 expected);
                        const int byText = row->child(i)
                                               ->key(column, ascending)
                                               .compare(row->child(j)->key(column, ascending));
                        QCOMPARE((byText > 0) - (byText < 0), expected);
                    }
    }

    void aComparisonWithNoRowIsReportedAndPutsItFirst() {
        ShownTree tree;
        const TreeItem* row = tree.populate(makeMolecule(1, 1));
        QCOMPARE(row->compare(nullptr, 0, true), 1);
        QCOMPARE(takeMessages(), QStringList("TreeItem::compare( QListViewItem )"));
    }

    void theNameIsColouredByDepthDownToTheFifthLevel() {
        Compound* item = DataMaker::makeCore(space(), "0", "Composite");
        ShownTree tree;
        for (int depth = 1; depth != 8; ++depth)
            item = DataMaker::makeCore(item, std::to_string(depth), "Composite");
        const TreeItem* row = tree.populate(*space()->ChildBegin());
        const std::vector<QColor> expected = {Qt::darkMagenta, Qt::magenta, Qt::darkGreen,
                                              Qt::darkBlue,    Qt::red,     QColor(),
                                              QColor(),        QColor()};
        int depth = 0;
        for (; row; row = row->firstChild(), ++depth) {
            QCOMPARE(row->depth(), depth);
            QCOMPARE(row->textColor(0), expected.at(static_cast<std::size_t>(depth)));
            for (const int column : {1, 2, 3})
                QVERIFY(!row->textColor(column).isValid());
        }
        QCOMPARE(depth, 8);
    }

    void theSecondColumnIsColouredAsTheItem() {
        Compound* molecule = makeMolecule(1, 1);
        ShownTree tree;
        const TreeItem* row = tree.populate(molecule);
        molecule->SetColor(Color(QColor(1, 2, 3)));
        QCOMPARE(row->cellColor(1), QColor(1, 2, 3));
        molecule->SetColor(Color(QColor(1, 2, 3, 40)));
        QCOMPARE(row->cellColor(1), QColor(1, 2, 3));
        for (const int column : {0, 2, 3})
            QVERIFY(!row->cellColor(column).isValid());
    }

    void aNewRowIsSelectedAsItsItemAndNotDirty() {
        Compound* molecule = makeMolecule(2, 2);
        childOf(molecule, 0)->SetSelected(true);
        ShownTree tree;
        tree.populate(molecule);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b"}));
        QCOMPARE(tree.dirty(), QStringList());
    }

    void aNullItemWarnsWithTheLineOfItsConstructorAndGivesAnEmptyRow() {
        ShownTree tree;
        auto* const top = new TreeItem(&tree, nullptr);
        QCOMPARE(takeMessages(), QStringList("In file TreeItem, line 43: Out of memory"));
        auto* const below = new TreeItem(top, nullptr);
        QCOMPARE(takeMessages(), QStringList("In file TreeItem, line 61: Out of memory"));
        QVERIFY(FFF2(nullptr, top));
        QCOMPARE(takeMessages(), QStringList("In file TreeItem, line 61: Out of memory"));
        QCOMPARE(top->childCount(), 2);
        QCOMPARE(texts(below), (QStringList{"", "", "", ""}));
        QCOMPARE(below->key(0, true), "         0");

        top->setSelected(true);
        top->CheckSelection();
        top->UpdateSelection();
        top->commAdd();
        QVERIFY(!top->isSelected());
        tree.setCurrentItem(top);
        tree.clickCell(top, 1, Qt::RightButton);
        tree.clickCell(top, 0, Qt::RightButton);
        QVERIFY(!tree.grab().isNull());
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

    void theMarkIsDecidedBySetupAndSurvivesUntilTheNext() {
        Compound* molecule = makeMolecule(1, 0);
        TreeView tree;
        auto* const top = new TreeItem(&tree, molecule);
        top->commAdd();
        TreeItem* residue = top->child(0);
        residue->setup();
        QVERIFY(!residue->isExpandable());
        DataMaker::makeCore(childOf(molecule, 0), "a", "Atom");
        top->commAdd();
        QCOMPARE(residue->childCount(), 1);
        QVERIFY(!residue->isExpandable());
        residue->setup();
        QVERIFY(residue->isExpandable());
    }

    void setOpenOpensAndClosesTheRowInTheView() {
        ShownTree tree;
        tree.populate(makeMolecule(2, 2));
        TreeItem* residue = tree.row("R2");
        QVERIFY(!residue->isOpen());
        residue->setOpen(true);
        QVERIFY(residue->isOpen());
        QVERIFY(tree.isExpanded(tree.rows()->indexOf(residue)));
        QCOMPARE(tree.current(), "R2");
        residue->setOpen(true);
        residue->setOpen(false);
        QVERIFY(!residue->isOpen());
        QVERIFY(!tree.isExpanded(tree.rows()->indexOf(residue)));
    }

    void aRowWithoutChildrenCanBeOpenedBeforeTheyCome() {
        ShownTree tree;
        Compound* molecule = makeMolecule(2, 1);
        auto* const row = new TreeItem(&tree, molecule);
        row->setOpen(true);
        QVERIFY(row->isOpen());
        row->commAdd();
        QCOMPARE(row->itemBelow(), row->child(0));
        QVERIFY(tree.visualRect(tree.rows()->indexOf(row->child(1))).isValid());
    }

    void rowsAreWalkedDepthFirstThroughClosedBranchesInTheOrderShown() {
        ShownTree tree;
        tree.populate(makeMolecule(2, 2));
        const auto walk = [&] {
            QStringList names;
            for (TreeItemIterator it(&tree); it.current(); ++it)
                names << it.current()->text(0);
            return names;
        };
        QCOMPARE(walk(), (QStringList{"M", "R1", "R1a", "R1b", "R2", "R2a", "R2b"}));
        tree.rows()->sort(0, Qt::DescendingOrder);
        QCOMPARE(walk(), (QStringList{"M", "R2", "R2b", "R2a", "R1", "R1b", "R1a"}));
        TreeItemIterator from(tree.row("R2a"));
        ++from;
        QCOMPARE(from.current()->text(0), "R1");
        from.skipBelow();
        QCOMPARE(from.current(), nullptr);
        QCOMPARE(TreeItemIterator(static_cast<TreeItem*>(nullptr)).current(), nullptr);
        tree.clear();
        QCOMPARE(TreeItemIterator(&tree).current(), nullptr);
    }

    void rowsAboveAndBelowLeaveOutClosedBranches() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 2));
        tree.row("R1")->setOpen(true);
        for (const bool descending : {false, true}) {
            tree.rows()->sort(0, descending ? Qt::DescendingOrder : Qt::AscendingOrder);
            QStringList down, up;
            TreeItem* last = nullptr;
            for (TreeItem* row = top; row; row = row->itemBelow()) {
                down << row->text(0);
                last = row;
            }
            for (TreeItem* row = last; row; row = row->itemAbove())
                up.prepend(row->text(0));
            QCOMPARE(down, descending ? (QStringList{"M", "R3", "R2", "R1", "R1b", "R1a"})
                                      : (QStringList{"M", "R1", "R1a", "R1b", "R2", "R3"}));
            QCOMPARE(up, down);
        }
        QCOMPARE(tree.row("R2a")->shownRow(), tree.row("R2"));
        QCOMPARE(tree.row("R1a")->shownRow(), tree.row("R1a"));
        top->setOpen(false);
        QCOMPARE(tree.row("R1a")->shownRow(), top);
    }

    void childrenOutsideTheRangeAreNull() {
        ShownTree tree;
        const TreeItem* top = tree.populate(makeMolecule(2, 0));
        for (const int index : {-1, 2, INT_MAX, INT_MIN})
            QCOMPARE(top->child(index), nullptr);
        QCOMPARE(top->child(1)->nextSibling(), nullptr);
        QCOMPARE(top->nextSibling(), nullptr);
        QCOMPARE(top->parent(), nullptr);
        QCOMPARE(top->child(0)->firstChild(), nullptr);
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

    void everyRowTakesLittleMemory() { QVERIFY(sizeof(TreeItem) <= 48); }
};

REGISTER_TEST(TreeItemTest)
#include "TreeItemTest.moc"
