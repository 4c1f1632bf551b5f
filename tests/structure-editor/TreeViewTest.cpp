// The tree's widget: what it is made of, the current row, emptying it, and sorting by the header.
#include "TreeTools.h"

#include "DataAdder.h"

#include <QMetaMethod>
#include <QPointer>

using namespace tree_tools;

namespace {

const QStringList titlesInOrder = {"Object", "Show", "Select", "Partial"};

} // namespace

class TreeViewTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void aNewTreeIsEmptyAndHasItsColumns() {
        QWidget parent;
        const TreeView tree(&parent, "tree");
        QCOMPARE(tree.objectName(), "tree");
        QCOMPARE(tree.parentWidget(), &parent);
        QCOMPARE(tree.firstChild(), nullptr);
        QCOMPARE(tree.currentItem(), nullptr);
        QCOMPARE(tree.itemAt({5, 5}), nullptr);
        QStringList titles;
        for (int column = 0; column != tree.model()->columnCount(); ++column)
            titles << tree.model()->headerData(column, Qt::Horizontal).toString();
        QCOMPARE(titles, titlesInOrder);
        QVERIFY(TreeView().objectName().isEmpty());
    }

    void itsMetaObjectNamesOneSlotForOpeningAndOneSignalForDeleting() {
        const QMetaObject& meta = TreeView::staticMetaObject;
        QCOMPARE(meta.className(), "TreeView");
        QCOMPARE(meta.superClass()->className(), "QTreeView");
        QVERIFY(meta.indexOfSlot("Expansion(QModelIndex)") >= meta.methodOffset());
        QVERIFY(meta.indexOfSignal("killBranch(TreeItem*)") >= meta.methodOffset());
        QVERIFY(meta.indexOfSignal("selectionChanged()") >= meta.methodOffset());
    }

    void theViewIsSetUpForManyRows() {
        const TreeView tree;
        QVERIFY(tree.uniformRowHeights());
        QVERIFY(!tree.isAnimated());
        QVERIFY(!tree.hasAutoScroll());
        QVERIFY(!tree.rootIsDecorated());
        QCOMPARE(tree.indentation(), 20);
        QCOMPARE(tree.itemMargin(), 1);
        QCOMPARE(tree.selectionMode(), QAbstractItemView::NoSelection);
        QCOMPARE(tree.editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(!tree.header()->stretchLastSection());
        QVERIFY(!tree.header()->isSortIndicatorShown());
    }

    void theRowIsFoundByHeightAloneAlsoRightOfTheLastColumn() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        const int end = tree.header()->length();
        QVERIFY(end < tree.viewport()->width());
        const int y = tree.cell(top->child(1), 0).y();
        for (const int x : {0, 30, end - 1, end + 1, tree.viewport()->width() - 1})
            QCOMPARE(tree.itemAt({x, y}), top->child(1));
        QCOMPARE(tree.itemAt(tree.below()), nullptr);
    }

    // The current row, and emptying.

    void setCurrentItemChangesNeitherSelectionNorScrollPosition() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(200, 1));
        tree.row("R3")->setSelected(true);
        tree.verticalScrollBar()->setValue(33);
        tree.setCurrentItem(top->child(199));
        QApplication::processEvents();
        QCOMPARE(tree.current(), "R200");
        QCOMPARE(tree.verticalScrollBar()->value(), 33);
        QCOMPARE(tree.selected(), QStringList("R3"));
        QCOMPARE(tree.takeSelections(), 0);
        QVERIFY(!tree.selectionModel()->hasSelection());
        tree.setCurrentItem(nullptr);
        QCOMPARE(tree.current(), "R200");
    }

    void clearEmptiesTheTreeAndEmitsNothing() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 5));
        top->child(0)->setSelected(true);
        top->child(1)->setOpen(true);
        tree.clear();
        QCOMPARE(tree.firstChild(), nullptr);
        QCOMPARE(tree.currentItem(), nullptr);
        QCOMPARE(tree.itemAt({5, 5}), nullptr);
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.watch.removed.count(), 1);
        QCOMPARE(tree.watch.resets.count(), 0);
        tree.clear();
        QCOMPARE(tree.watch.removed.count(), 1);
        QVERIFY(!tree.grab().isNull());
    }

    void nothingOfAnOldTreeIsLeftInANewOne() {
        Compound* molecule = makeMolecule(3, 2);
        ShownTree tree;
        tree.populate(molecule);
        tree.row("R1")->setOpen(true);
        tree.click(tree.row("R3"));
        molecule->SetSelected(false);
        TreeItem* top = tree.populate(molecule);
        QCOMPARE(shownNames(tree), (QStringList{"M", "R1", "R2", "R3"}));
        QCOMPARE(tree.selected(), QStringList());
        QCOMPARE(tree.current(), "M");
        // Nor is there an anchor.
        tree.takeSelections();
        tree.click(top->child(0), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), QStringList());
        QCOMPARE(tree.takeSelections(), 0);
    }

    void theTreeMayBeClearedWhileASelectionIsTold() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 2));
        tree.handsOver = false;
        connect(&tree, qOverload<>(&TreeView::selectionChanged), &tree, [&] { tree.clear(); });
        const QPoint first = tree.cell(top->child(0), 0);
        const QPoint second = tree.cell(top->child(1), 0);
        tree.press(first);
        QCOMPARE(tree.firstChild(), nullptr);
        tree.drag(second);
        tree.release(second);
        tree.populate(*space()->ChildBegin());
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.firstChild(), nullptr);
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.takeSelections(), 2);
    }

    void theViewMayBeDeletedWithItsRows() {
        Compound* molecule = makeMolecule(10, 10);
        auto* const tree = new ShownTree;
        tree->populate(molecule)->child(0)->setOpen(true);
        const QPointer<TreeModel> model = tree->rows();
        delete tree;
        QVERIFY(!model);
    }

    // The header.

    void aClickOnTheHeaderSortsByIdAndReversesTheSortedColumn() {
        ShownTree tree;
        tree.populate(makeMolecule(3, 2));
        tree.row("R2")->setOpen(true);
        tree.setCurrentItem(tree.row("R2b"));
        const QStringList rising{"M", "R1", "R2", "R2a", "R2b", "R3"};
        const QStringList falling{"M", "R3", "R2", "R2b", "R2a", "R1"};
        const auto clickHeader = [&](int column) {
            const QPoint at(tree.header()->sectionViewportPosition(column) +
                                tree.header()->sectionSize(column) / 2,
                            tree.header()->height() / 2);
            QTest::mouseClick(tree.header()->viewport(), Qt::LeftButton, {}, at);
            return shownNames(tree);
        };
        QCOMPARE(shownNames(tree), rising);
        QCOMPARE(clickHeader(0), falling);
        QCOMPARE(clickHeader(0), rising);
        QCOMPARE(clickHeader(2), rising);
        QCOMPARE(clickHeader(2), falling);
        QCOMPARE(clickHeader(2), rising);
        QCOMPARE(clickHeader(2), falling);
        QCOMPARE(clickHeader(3), rising);
        QCOMPARE(clickHeader(0), rising);
        QCOMPARE(clickHeader(0), falling);
        QVERIFY(!tree.header()->isSortIndicatorShown());
        QCOMPARE(tree.current(), "R2b");
        QVERIFY(tree.isExpanded(tree.rows()->indexOf(tree.row("R2"))));
        QCOMPARE(tree.watch.resets.count(), 0);
        // What is on screen is what the rows say.
        int y = -1;
        for (const QString& name : falling) {
            const QRect rect = cellRect(tree, tree.row(name.toLatin1().constData()), 0);
            QVERIFY(rect.top() > y);
            y = rect.top();
        }
    }

    void rowsAddedToATreeSortedBackwardsStandInPlace() {
        Compound* molecule = makeMolecule(2, 1);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.rows()->sort(1, Qt::DescendingOrder);
        tree.watch.inserted.clear();
        {
            const DataAdder<Compound> guard(nullptr, molecule);
            DataMaker::makeCore(molecule, "R3", "Residue");
        }
        QCOMPARE(shownNames(tree), (QStringList{"M", "R3", "R2", "R1"}));
        QCOMPARE(tree.watch.inserted.count(), 1);
        QCOMPARE(tree.watch.inserted.at(0).at(1).toInt(), 0);
        QCOMPARE(tree.itemAt(tree.cell(top->child(0), 0))->text(0), "R3");
    }
};

REGISTER_TEST(TreeViewTest)
#include "TreeViewTest.moc"
