// What the right and the middle mouse button do on each cell of the tree.
#include "TreeTools.h"

#include "DataDelete.h"
#include "items/SpaceLock.h"

#include <QMenu>
#include <QTimer>

using namespace tree_tools;

namespace {

// Answers the host's menu, once it is open, with `answer`.
template <class Answer> void whenMenuOpens(Answer answer) {
    QTimer::singleShot(0, [answer] {
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        answer(menu);
        menu->close();
    });
}

} // namespace

class TreeButtonsTest : public test_support::TestCase {
    Q_OBJECT

private slots:
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
};

REGISTER_TEST(TreeButtonsTest)
#include "TreeButtonsTest.moc"
