// Rows: what their cells say, how they are ordered and coloured, and how they stand to one another.
#include "TreeTools.h"

#include <climits>

using namespace tree_tools;

namespace {

QStringList texts(const TreeItem* row) {
    return {row->text(0), row->text(1), row->text(2), row->text(3)};
}

} // namespace

class TreeItemTest : public SpyTestCase {
    Q_OBJECT

private slots:
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
        for (const int column :
             {int(TreeModel::Columns), TreeModel::Columns + 1, INT_MAX, -1, INT_MIN})
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

    void everyRowTakesLittleMemory() { QVERIFY(sizeof(TreeItem) <= 48); }
};

REGISTER_TEST(TreeItemTest)
#include "TreeItemTest.moc"
