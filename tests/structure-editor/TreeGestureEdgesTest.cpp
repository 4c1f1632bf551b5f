// Gestures that end in another way than they began, and those at the edges of what is on screen.
#include "TreeTools.h"

using namespace tree_tools;

namespace {

int heightOf(const ShownTree& tree) {
    return cellRect(tree, tree.firstChild(), 0).height();
}

// With another button than the left one held.
void moveWithRightButton(const ShownTree& tree, const QPoint& to) {
    QMouseEvent move(QEvent::MouseMove, to, tree.viewport()->mapToGlobal(to), Qt::NoButton,
                     Qt::RightButton, Qt::NoModifier);
    QApplication::sendEvent(tree.viewport(), &move);
}

} // namespace

class TreeGestureEdgesTest : public SpyTestCase {
    Q_OBJECT

    // A tree of 200 residues, of which some are on screen.
    static void showMany(ShownTree& tree) {
        tree.resize(400, 200);
        tree.populate(makeMolecule(200, 1));
        QApplication::processEvents();
    }
    // Scrolls so that row `index` of the residues is the first on screen.
    static void scrollTo(const ShownTree& tree, int index) {
        tree.verticalScrollBar()->setValue((index + 1) * heightOf(tree));
        QCOMPARE(tree.itemAt({0, 0})->position(), index);
    }

    static Compound* makeTyped() {
        Compound* molecule = DataMaker::makeCore(space(), "M", "Molecule");
        for (const char* name : {"ASN 1", "SER 2", "ASP 3", "PRO 4"})
            DataMaker::makeCore(molecule, name, "Residue");
        return molecule;
    }

    int m_interval = 0;

private slots:
    // Nothing that is typed here comes after a pause, however busy the machine is.
    void init() override {
        SpyTestCase::init();
        m_interval = QApplication::keyboardInputInterval();
        QApplication::setKeyboardInputInterval(60'000);
    }
    void cleanup() override {
        QApplication::setKeyboardInputInterval(m_interval);
        SpyTestCase::cleanup();
    }

    void aPressWithAnotherButtonEndsADrag() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.press(tree.cell(top->child(1), 0));
        const QPoint besideR1(tree.viewport()->width() - 2, tree.cell(top->child(0), 0).y());
        QTest::mousePress(tree.viewport(), Qt::RightButton, {}, besideR1);
        tree.takeSelections();
        tree.drag(tree.cell(top->child(4), 0));
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.selected(), QStringList("R2"));
    }

    void aMarkStartsNoDragAlsoAfterAReleaseThatWasLost() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 1));
        tree.press(tree.cell(top->child(0), 0));
        tree.press(tree.mark(top->child(1)));
        tree.takeSelections();
        tree.drag(tree.cell(top->child(4), 0));
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a"}));
        QVERIFY(top->child(1)->isOpen());
    }

    void aMoveWithAnotherButtonDragsNothingWhenTheReleaseWasLost() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.press(tree.cell(top->child(1), 0));
        tree.takeSelections();
        moveWithRightButton(tree, tree.cell(top->child(4), 0));
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.current(), "R2");
        QCOMPARE(tree.selected(), QStringList("R2"));
    }

    void aKeyEndsADrag() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.press(tree.cell(top->child(0), 0));
        tree.key(Qt::Key_Down);
        tree.takeSelections();
        tree.drag(tree.cell(top->child(4), 0));
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.selected(), QStringList("R2"));
    }

    // However far outside the mouse is, the rows come one at a time.
    void aDragFarOutsideReachesTheNextRowBeyondTheEdge() {
        ShownTree tree;
        showMany(tree);
        scrollTo(tree, 50);
        const TreeItem* atBottom = tree.itemAt({0, tree.viewport()->height() - 1});
        const int lowest = atBottom->position();
        tree.press(tree.cell(tree.firstChild()->child(lowest - 2), 0));
        tree.drag({20, tree.viewport()->height() + 50 * heightOf(tree)});
        QVERIFY2(tree.currentItem()->position() - lowest <= 1, qPrintable(tree.current()));
        QVERIFY(tree.currentItem()->position() >= lowest);
        tree.release({20, 0});

        scrollTo(tree, 50);
        tree.press(tree.cell(tree.firstChild()->child(52), 0));
        tree.drag({20, -20 * heightOf(tree)});
        QCOMPARE(tree.currentItem()->position(), 49);
        QCOMPARE(tree.selected().first(), "R50");
        QVERIFY(tree.row("R53")->isSelected() && !tree.row("R54")->isSelected());
        tree.release({20, 0});
    }

    void aMarkIsFoundWhereTheContentsAreScrolledTo() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.resize(120, 300);
        QApplication::processEvents();
        constexpr int scrolled = 12;
        tree.horizontalScrollBar()->setValue(scrolled);
        QCOMPARE(tree.header()->offset(), scrolled);
        const int y = tree.cell(top->child(0), 0).y();
        // The mark takes the contents from 0 to 19.
        for (const int x : {0, 19 - scrolled}) {
            const bool isOpen = top->child(0)->isOpen();
            QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, {x, y});
            QCOMPARE(top->child(0)->isOpen(), !isOpen);
        }
        QCOMPARE(tree.takeSelections(), 0);
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, {20 - scrolled, y});
        QVERIFY(!top->child(0)->isOpen());
        QCOMPARE(tree.takeSelections(), 1);
    }

    // A column that the user made narrower than the indentation hides the mark.
    void whereAMarkWouldBeInAnotherColumnTheRowIsSelected() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(1, 0));
        DataMaker::makeCore(childOf(top->compound(), 0), "G", "Group");
        DataMaker::makeCore(childOf(childOf(top->compound(), 0), 0), "Ga", "Atom");
        top->commAdd();
        tree.row("R1")->setOpen(true);
        tree.header()->setMinimumSectionSize(10);
        tree.header()->resizeSection(0, 22);
        TreeItem* group = tree.row("G");
        const int y = tree.cell(group, 0).y();
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, {30, y});
        QVERIFY(!group->isOpen());
        QCOMPARE(tree.selected().contains("G"), true);
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, {21, y});
        QVERIFY(group->isOpen());
    }

    void aPageStartsAtACurrentRowThatIsOffScreen() {
        ShownTree tree;
        showMany(tree);
        TreeItem* top = tree.firstChild();
        scrollTo(tree, 0);
        tree.setCurrentItem(top->child(150));
        tree.key(Qt::Key_PageDown);
        QVERIFY2(tree.currentItem()->position() > 150, qPrintable(tree.current()));
        scrollTo(tree, 150);
        tree.setCurrentItem(top->child(50));
        tree.key(Qt::Key_PageUp);
        QVERIFY2(tree.currentItem()->position() < 50, qPrintable(tree.current()));
    }

    void openingByAKeyScrollsToTheRow() {
        ShownTree tree;
        showMany(tree);
        TreeItem* row = tree.firstChild()->child(150);
        for (const Qt::Key key : {Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Right, Qt::Key_Left}) {
            scrollTo(tree, 0);
            tree.setCurrentItem(row);
            tree.key(key);
            QCOMPARE(row->isOpen(), key == Qt::Key_Plus || key == Qt::Key_Right);
            const QRect seen = cellRect(tree, row, 0);
            QVERIFY(seen.top() >= 0 && seen.bottom() < tree.viewport()->height());
        }
    }

    void leftAndRightScrollWhereTheyLeadNoFurther() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(1, 1));
        top->child(0)->setOpen(true);
        tree.resize(120, 300);
        QApplication::processEvents();
        QVERIFY(tree.horizontalScrollBar()->maximum() > 0);
        tree.setCurrentItem(tree.row("R1a"));
        tree.key(Qt::Key_Right);
        QVERIFY(tree.horizontalScrollBar()->value() > 0);
        QCOMPARE(tree.current(), "R1a");
        tree.horizontalScrollBar()->setValue(tree.horizontalScrollBar()->maximum());
        top->setOpen(false);
        tree.setCurrentItem(top);
        tree.key(Qt::Key_Left);
        QVERIFY(tree.horizontalScrollBar()->value() < tree.horizontalScrollBar()->maximum());
    }

    void keysWithModifiersOrWithoutALetterAreNotTyped_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifier");
        QTest::addColumn<QString>("text");
        const auto add = [](const char* name, int key, Qt::KeyboardModifier modifier,
                            const char* text) {
            QTest::newRow(name) << key << int(modifier) << QString::fromLatin1(text);
        };
        add("Alt", Qt::Key_R, Qt::AltModifier, "r");
        add("Meta", Qt::Key_R, Qt::MetaModifier, "r");
        add("Ctrl", Qt::Key_R, Qt::ControlModifier, "r");
        add("Backspace", Qt::Key_Backspace, Qt::NoModifier, "\b");
        add("Delete", Qt::Key_Delete, Qt::NoModifier, "\x7f");
    }
    void keysWithModifiersOrWithoutALetterAreNotTyped() {
        QFETCH(int, key);
        QFETCH(int, modifier);
        QFETCH(QString, text);
        ShownTree tree;
        tree.populate(makeMolecule(2, 0));
        QKeyEvent event(QEvent::KeyPress, key, Qt::KeyboardModifier(modifier), text);
        QApplication::sendEvent(&tree, &event);
        QVERIFY(!event.isAccepted());
        QCOMPARE(tree.current(), "M");
        QCOMPARE(tree.takeSelections(), 0);
    }

    // Typing, where what was typed before would lead elsewhere.

    void allThatIsTypedInQuickSuccessionCounts() {
        ShownTree tree;
        tree.populate(makeTyped());
        QTest::keyClicks(&tree, QStringLiteral("asp"));
        QCOMPARE(tree.current(), "ASP 3");
    }

    // What was typed in the tree before belongs to its rows.
    void aNewTreeStartsWithNothingTyped() {
        Compound* molecule = makeTyped();
        ShownTree tree;
        tree.populate(molecule);
        QTest::keyClicks(&tree, QStringLiteral("a"));
        tree.populate(molecule);
        QTest::keyClicks(&tree, QStringLiteral("s"));
        QCOMPARE(tree.current(), "SER 2");
    }

    void otherKeysEndWhatWasTyped_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifier");
        QTest::newRow("Ctrl+A") << int(Qt::Key_A) << int(Qt::ControlModifier);
        QTest::newRow("Ctrl+Right") << int(Qt::Key_Right) << int(Qt::ControlModifier);
        QTest::newRow("Ctrl+Home") << int(Qt::Key_Home) << int(Qt::ControlModifier);
        QTest::newRow("Ctrl+Down") << int(Qt::Key_Down) << int(Qt::ControlModifier);
    }
    void otherKeysEndWhatWasTyped() {
        QFETCH(int, key);
        QFETCH(int, modifier);
        ShownTree tree;
        TreeItem* top = tree.populate(makeTyped());
        QTest::keyClicks(&tree, QStringLiteral("a"));
        QCOMPARE(tree.current(), "ASN 1");
        tree.key(Qt::Key(key), Qt::KeyboardModifier(modifier));
        tree.setCurrentItem(top->child(0));
        QTest::keyClicks(&tree, QStringLiteral("s"));
        QCOMPARE(tree.current(), "SER 2");
    }
};

REGISTER_TEST(TreeGestureEdgesTest)
#include "TreeGestureEdgesTest.moc"
