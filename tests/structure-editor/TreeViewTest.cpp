// The tree's widget: what each mouse button does on each cell, opening and closing, sorting by the
// header, the current row, and what is painted.
#include "TreeTools.h"

#include "DataAdder.h"
#include "DataDelete.h"

#include <QImage>
#include <QMenu>
#include <QMetaMethod>
#include <QPointer>
#include <QTimer>

using namespace tree_tools;

namespace {

Compound* space() {
    return TAVIK::Space::instance();
}

QStringList shownNames(const TreeView& tree) {
    QStringList names;
    for (const TreeItem* row = tree.firstChild(); row; row = row->itemBelow())
        names << row->text(0);
    return names;
}

// Answers the host's menu, once it is open, with `answer`.
template <class Answer> void whenMenuOpens(Answer answer) {
    QTimer::singleShot(0, [answer] {
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        answer(menu);
        menu->close();
    });
}

QImage picture(TreeView& tree) {
    return tree.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// How often a colour stands in a part of a picture.
int countOf(const QImage& image, const QRect& part, const QColor& color) {
    int count = 0;
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x)
            if (image.rect().contains(x, y) && image.pixel(x, y) == color.rgb())
                ++count;
    return count;
}

bool isPlain(const QImage& image, const QRect& part) {
    return countOf(image, part, image.pixelColor(part.topLeft())) == part.width() * part.height();
}

} // namespace

class TreeViewTest : public test_support::TestCase {
    Q_OBJECT

    static QRect cellRect(const ShownTree& tree, const TreeItem* row, int column) {
        return tree.visualRect(tree.rows()->indexOf(row, column));
    }
    // The last step of a row's indentation, where its branch mark stands.
    static QRect markRect(const ShownTree& tree, const TreeItem* row) {
        const QRect cell = cellRect(tree, row, 0);
        return {cell.left() - tree.indentation(), cell.top(), tree.indentation(), cell.height()};
    }

private slots:
    void aNewTreeIsEmptyAndHasFourColumns() {
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
        QCOMPARE(titles, (QStringList{"Object", "Show", "Select", "Partial"}));
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

    // Right button.

    void aRightClickOnTheNameOpensTheHostsMenuOfTheItem() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        QString title;
        whenMenuOpens([&](const QMenu* menu) {
            title = menu->actions().constFirst()->text();
            QCOMPARE(tree.current(), "R2");
        });
        tree.updates = 0;
        tree.clickCell(top->child(1), 0, Qt::RightButton);
        QVERIFY2(title.contains("R2"), qPrintable(title));
        QCOMPARE(tree.updates, 1);
        QCOMPARE(tree.takeSelections(), 0);
        QVERIFY(!top->child(1)->isOpen());
    }

    void whatIsChosenInTheMenuIsDoneAndShown() {
        Compound* molecule = makeMolecule(2, 1);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        whenMenuOpens([](const QMenu* menu) {
            for (QAction* action : menu->actions())
                if (action->text() == "Select")
                    QTest::mouseClick(const_cast<QMenu*>(menu), Qt::LeftButton, {},
                                      menu->actionGeometry(action).center());
        });
        tree.clickCell(top->child(0), 0, Qt::RightButton);
        QVERIFY(childOf(molecule, 0)->IsSelected());
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a"}));
    }

    void theRowAndItsItemMayBeGoneWhenTheMenuCloses() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        whenMenuOpens([&](const QMenu*) {
            const DataDelete<Compound> guard(nullptr, *space()->ChildBegin());
            tree.clear();
            DataMaker::Destroy(*space()->ChildBegin());
        });
        tree.clickCell(top->child(0), 0, Qt::RightButton);
        QCOMPARE(tree.firstChild(), nullptr);
    }

    void aRightClickOnTheIndentationOnlyMakesTheRowCurrent() {
        ShownTree tree;
        tree.populate(makeMolecule(2, 1));
        tree.row("R1")->setOpen(true);
        const TreeItem* atom = tree.row("R1a");
        QCOMPARE(atom->depth(), 2);
        const int y = tree.cell(atom, 0).y();
        tree.updates = 0;
        // Two steps of indentation and the margin: 41 is the last pixel without a menu.
        for (const int x : {0, 19, 20, 39, 40, 41}) {
            tree.setCurrentItem(tree.firstChild());
            QTest::mouseClick(tree.viewport(), Qt::RightButton, {}, {x, y});
            QCOMPARE(tree.current(), "R1a");
        }
        QCOMPARE(tree.updates, 0);
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.selected(), QStringList());
        QVERIFY(tree.row("R1")->isOpen());

        bool opened = false;
        whenMenuOpens([&](const QMenu*) { opened = true; });
        QTest::mouseClick(tree.viewport(), Qt::RightButton, {}, {42, y});
        QVERIFY(opened);
    }

    void theTopRowHasNoIndentationButTheMargin() {
        ShownTree tree;
        const TreeItem* top = tree.populate(makeMolecule(1, 1));
        const int y = tree.cell(top, 0).y();
        for (const int x : {0, 1})
            QTest::mouseClick(tree.viewport(), Qt::RightButton, {}, {x, y});
        bool opened = false;
        whenMenuOpens([&](const QMenu*) { opened = true; });
        QTest::mouseClick(tree.viewport(), Qt::RightButton, {}, {2, y});
        QVERIFY(opened);
    }

    void theIndentationIsMeasuredInTheScrolledContents() {
        ShownTree tree;
        tree.populate(makeMolecule(1, 1));
        tree.row("R1")->setOpen(true);
        tree.header()->resizeSection(0, 600);
        QApplication::processEvents();
        tree.horizontalScrollBar()->setValue(10);
        QCOMPARE(tree.header()->offset(), 10);
        const int y = tree.cell(tree.row("R1a"), 0).y();
        tree.setCurrentItem(tree.firstChild());
        QTest::mouseClick(tree.viewport(), Qt::RightButton, {}, {31, y});
        QCOMPARE(tree.current(), "R1a");
        bool opened = false;
        whenMenuOpens([&](const QMenu*) { opened = true; });
        QTest::mouseClick(tree.viewport(), Qt::RightButton, {}, {32, y});
        QVERIFY(opened);
    }

    void columnsAreFoundInTheScrolledContents() {
        Compound* molecule = makeMolecule(1, 1);
        ShownTree tree;
        const TreeItem* top = tree.populate(molecule);
        tree.header()->resizeSection(0, 600);
        QApplication::processEvents();
        tree.horizontalScrollBar()->setValue(tree.horizontalScrollBar()->maximum());
        QVERIFY(tree.header()->offset() > 0);
        tree.clickCell(top, 1, Qt::RightButton);
        QVERIFY(!molecule->IsVisible());
        QVERIFY(!molecule->IsSelected());
    }

    void aRightClickOnShowTogglesVisibilityAndTheHostTellsEverybody() {
        Compound* molecule = makeMolecule(2, 1);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.clickCell(top->child(0), 1, Qt::RightButton);
        QVERIFY(!childOf(molecule, 0)->IsVisible());
        QVERIFY(childOf(molecule, 1)->IsVisible());
        QCOMPARE(tree.hostUpdates, 1);
        QCOMPARE(tree.current(), "R1");
        tree.clickCell(top->child(0), 1, Qt::RightButton);
        QVERIFY(childOf(molecule, 0)->IsVisible());
        QCOMPARE(tree.selected(), QStringList());
        QCOMPARE(tree.takeSelections(), 0);
    }

    void aRightClickOnSelectTogglesTheSelection() {
        Compound* molecule = makeMolecule(2, 2);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.clickCell(top->child(1), 2, Qt::RightButton);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R2a", "R2b"}));
        QCOMPARE(tree.dirty(), QStringList());
        QCOMPARE(tree.hostUpdates, 1);
        tree.clickCell(top->child(1), 2, Qt::RightButton);
        QCOMPARE(tree.selected(), QStringList());
        QCOMPARE(tree.takeSelections(), 0);
    }

    void aRightClickOnPartialClearsWhatIsPartlySelectedAndSelectsWhatIsNot() {
        Compound* molecule = makeMolecule(2, 2);
        childOf(childOf(molecule, 1), 0)->SetSelected(true);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.clickCell(top, 3, Qt::RightButton);
        QVERIFY(!molecule->HasSelected());
        QCOMPARE(tree.selected(), QStringList());
        tree.clickCell(top, 3, Qt::RightButton);
        QVERIFY(molecule->IsSelected());
        QCOMPARE(tree.selected().count(), 7);
    }

    void aRefusedGuardChangesNothingAndIsReported() {
        Compound* molecule = makeMolecule(1, 1);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        const memory_host::SpaceLock lock;
        for (const int column : {1, 2, 3}) {
            tree.clickCell(top->child(0), column, Qt::RightButton);
            QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
            QCOMPARE(tree.current(), "R1");
            tree.setCurrentItem(top);
        }
        QVERIFY(molecule->IsVisible());
        QVERIFY(!molecule->HasSelected());
        QCOMPARE(tree.hostUpdates, 0);
    }

    void aRightClickRightOfTheLastColumnOnlyMakesTheRowCurrent() {
        Compound* molecule = makeMolecule(2, 1);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        top->child(0)->setSelected(true);
        const QPoint right(tree.viewport()->width() - 2, tree.cell(top->child(1), 0).y());
        QTest::mouseClick(tree.viewport(), Qt::RightButton, {}, right);
        QCOMPARE(tree.current(), "R2");
        QCOMPARE(tree.selected(), QStringList("R1"));
        QVERIFY(molecule->IsVisible());
        QCOMPARE(tree.hostUpdates, 0);
    }

    void aRightClickNeitherSelectsNorOpensNorDrags() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        QTest::mousePress(tree.viewport(), Qt::RightButton, {}, tree.cell(top->child(0), 1));
        const QPoint to = tree.cell(top->child(2), 1);
        QMouseEvent move(QEvent::MouseMove, to, tree.viewport()->mapToGlobal(to), Qt::NoButton,
                         Qt::RightButton, Qt::NoModifier);
        QApplication::sendEvent(tree.viewport(), &move);
        QTest::mouseRelease(tree.viewport(), Qt::RightButton, {}, to);
        QCOMPARE(tree.selected(), QStringList());
        QCOMPARE(tree.current(), "R1");
        QCOMPARE(tree.takeSelections(), 0);
    }

    void releasesOfTheOtherButtonsAreSwallowed() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        tree.click(top->child(0));
        tree.click(top->child(1), Qt::ControlModifier);
        tree.takeSelections();
        const QPoint at = tree.cell(top->child(0), 0);
        tree.press(at);
        for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
            QMouseEvent release(QEvent::MouseButtonRelease, at, tree.viewport()->mapToGlobal(at),
                                button, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(tree.viewport(), &release);
            QVERIFY(release.isAccepted());
        }
        QCOMPARE(tree.takeSelections(), 0);
        tree.release(at);
        QCOMPARE(tree.takeSelections(), 1);
    }

    void noContextMenuOfTheWindowFollowsARightClick() {
        QWidget window;
        bool asked = false;
        window.setContextMenuPolicy(Qt::CustomContextMenu);
        connect(&window, &QWidget::customContextMenuRequested, &window, [&] { asked = true; });
        auto* const tree = new TreeView(&window);
        window.show();
        QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, {5, 5});
        QApplication::sendEvent(tree->viewport(), &event);
        QVERIFY(!asked);
    }

    // Middle button.

    void aMiddleClickAsksForTheDeletionOfAnyRowButTheTopOne() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 1));
        tree.setCurrentItem(top->child(1));
        tree.clickCell(top, 0, Qt::MiddleButton);
        QVERIFY(tree.victims.empty());
        for (const int column : {0, 1, 2, 3})
            tree.clickCell(top->child(0), column, Qt::MiddleButton);
        QCOMPARE(tree.victims, std::vector<TreeItem*>(4, top->child(0)));
        QCOMPARE(tree.current(), "R2");
        QCOMPARE(tree.selected(), QStringList());
        QCOMPARE(tree.takeSelections(), 0);
    }

    void theRowMayBeDeletedWhileItsDeletionIsAskedFor() {
        Compound* molecule = makeMolecule(2, 1);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        connect(&tree, &TreeView::killBranch, &tree, [&](TreeItem* victim) {
            Compound* item = victim->compound();
            const DataDelete<Compound> guard(&tree, item);
            tree.clear();
            DataMaker::Destroy(item);
            tree.populate(molecule);
        });
        tree.clickCell(top->child(0), 0, Qt::MiddleButton);
        QCOMPARE(shownNames(tree), (QStringList{"M", "R2"}));
    }

    // Opening and closing.

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
        // The anchor, too, is the first row again.
        tree.takeSelections();
        tree.handsOver = false;
        tree.click(top->child(0), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"M", "R1"}));
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

    // Widths.

    void columnsGrowWithWhatComesOnScreenAndNeverShrink() {
        Compound* molecule = makeMolecule(300, 0);
        DataMaker::makeCore(molecule, "a residue with an uncommonly long name", "Residue");
        ShownTree tree;
        tree.populate(molecule);
        QVERIFY(!tree.grab().isNull());
        const int before = tree.columnWidth(0);
        QVERIFY(before < 200);
        tree.verticalScrollBar()->setValue(tree.verticalScrollBar()->maximum());
        const int after = tree.columnWidth(0);
        const int text = tree.fontMetrics().horizontalAdvance(
            QStringLiteral("a residue with an uncommonly long name"));
        QVERIFY(after >= text + tree.indentation());
        QVERIFY(after < text + tree.indentation() + 30);
        tree.verticalScrollBar()->setValue(0);
        QCOMPARE(tree.columnWidth(0), after);
    }

    void columnsAreAsWideAsTheirTitles() {
        const TreeView tree;
        for (int column = 0; column != 4; ++column)
            QVERIFY(tree.columnWidth(column) >=
                    tree.header()->fontMetrics().horizontalAdvance(
                        tree.model()->headerData(column, Qt::Horizontal).toString()));
    }

    void aWidthThatTheUserChoseStays() {
        Compound* molecule = DataMaker::makeCore(space(), "a rather long name", "Molecule");
        ShownTree tree;
        tree.header()->resizeSection(0, 40);
        tree.populate(molecule);
        QVERIFY(!tree.grab().isNull());
        QCOMPARE(tree.columnWidth(0), 40);
    }

    // Painting.

    void theSelectedRowIsHighlightedInTheFirstColumnAlone() {
        Compound* molecule = makeMolecule(2, 1);
        childOf(molecule, 0)->SetColor(Color(QColor(200, 250, 10)));
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.click(top->child(0));
        const QImage image = picture(tree);
        const QColor highlight = tree.palette().color(QPalette::Highlight);
        const QRect name = cellRect(tree, top->child(0), 0);
        QVERIFY(countOf(image, name, highlight) > name.width() * name.height() / 2);
        QCOMPARE(countOf(image, markRect(tree, top->child(0)), highlight), 0);
        for (const int column : {1, 2, 3})
            QCOMPARE(countOf(image, cellRect(tree, top->child(0), column), highlight), 0);
        const QRect show = cellRect(tree, top->child(0), 1);
        QVERIFY(countOf(image, show, QColor(200, 250, 10)) > show.width() * show.height() / 2);
        QCOMPARE(countOf(image, cellRect(tree, top->child(1), 0), highlight), 0);
    }

    void namesArePaintedInTheColourOfTheirDepth() {
        Compound* item = DataMaker::makeCore(space(), "MMMM", "Composite");
        for (int depth = 1; depth != 7; ++depth)
            item = DataMaker::makeCore(item, "MMMM", "Composite");
        ShownTree tree;
        QFont font = tree.font();
        font.setPixelSize(40);
        font.setStyleStrategy(QFont::NoAntialias);
        tree.setFont(font);
        tree.resize(600, 600);
        TreeItem* row = tree.populate(*space()->ChildBegin());
        for (TreeItem* open = row; open; open = open->firstChild())
            open->setOpen(true);
        tree.setCurrentItem(row);
        const QImage image = picture(tree);
        const QColor normal = tree.palette().color(QPalette::Text);
        for (const QColor& color :
             {QColor(Qt::darkMagenta), QColor(Qt::magenta), QColor(Qt::darkGreen),
              QColor(Qt::darkBlue), QColor(Qt::red), normal, normal}) {
            QVERIFY2(countOf(image, cellRect(tree, row, 0), color) > 50,
                     qPrintable(color.name() + " at depth " + QString::number(row->depth())));
            QVERIFY(countOf(image, cellRect(tree, row, 2), normal) > 20);
            row = row->firstChild();
        }
    }

    void onlyRowsSetUpWithChildrenShowAMark() {
        Compound* molecule = makeMolecule(3, 0);
        DataMaker::makeCore(childOf(molecule, 0), "a", "Atom");
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        // Lines between siblings would cross the cells of the marks.
        tree.setStyleSheet(QStringLiteral("QTreeView::branch { image: none; background: white; }"
                                          "QTreeView::branch:has-children { background: red; }"));
        const auto marked = [&](int child) {
            return countOf(picture(tree), markRect(tree, top->child(child)), Qt::red) > 0;
        };
        QVERIFY(marked(0));
        QVERIFY(!marked(1));
        QVERIFY(!marked(2));

        DataMaker::makeCore(childOf(molecule, 1), "b", "Atom");
        top->commAdd();
        QVERIFY(!marked(1));
        top->child(1)->setup();
        tree.triggerUpdate();
        QVERIFY(marked(1));
        // Opening sets a row up, too.
        DataMaker::makeCore(childOf(molecule, 2), "c", "Atom");
        top->commAdd();
        QVERIFY(!marked(2));
        tree.doubleClick(tree.cell(top->child(2), 0));
        QVERIFY(marked(2));
    }

    void theTopRowHasNoMark() {
        ShownTree tree;
        const TreeItem* top = tree.populate(makeMolecule(2, 1));
        QCOMPARE(cellRect(tree, top, 0).left(), 0);
        QCOMPARE(cellRect(tree, top->child(0), 0).left(), 20);
        const QImage image = picture(tree);
        QVERIFY(!isPlain(image, markRect(tree, top->child(0))));
    }

    void aChangeInTheHostIsSeenAfterTriggerUpdate() {
        Compound* molecule = makeMolecule(1, 1);
        ShownTree tree;
        const TreeItem* top = tree.populate(molecule);
        const QRect cell = cellRect(tree, top, 1);
        QVERIFY(countOf(picture(tree), cell, Qt::green) == 0);
        molecule->SetColor(Color(QColor(Qt::green)));
        tree.triggerUpdate();
        QVERIFY(countOf(picture(tree), cell, Qt::green) > 50);
    }
};

REGISTER_TEST(TreeViewTest)
#include "TreeViewTest.moc"
