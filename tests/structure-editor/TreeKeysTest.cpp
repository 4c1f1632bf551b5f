// What the keys do in the tree: moving, selecting, opening and closing, and typing a name.
#include "TreeTools.h"

using namespace tree_tools;

class TreeKeysTest : public SpyTestCase {
    Q_OBJECT

private slots:
    void theArrowKeysMoveAndSelectTheRowAlone() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        top->child(0)->setOpen(true);
        tree.setCurrentItem(top->child(0));
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.selected().contains("R1a"), true);
        QCOMPARE(tree.current(), "R1a");
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.current(), "R2");
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.selected(), (QStringList{"R3", "R3a"}));
        QCOMPARE(tree.takeSelections(), 3);
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.takeSelections(), 0);
        tree.key(Qt::Key_Up);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R2a"}));
        QCOMPARE(tree.takeSelections(), 1);
        tree.setCurrentItem(top);
        tree.key(Qt::Key_Up);
        QCOMPARE(tree.takeSelections(), 0);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R2a"}));
    }

    void ctrlMovesTheCurrentRowOnly() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.click(top->child(0));
        tree.takeSelections();
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_End,
                                  Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home})
            tree.key(key, Qt::ControlModifier);
        QCOMPARE(tree.current(), "M");
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a"}));
        QCOMPARE(tree.takeSelections(), 0);
    }

    void shiftExtendsOverTheRowsOnScreen() {
        SpyMolecule spies;
        ShownTree tree;
        TreeItem* top = tree.populate(&spies.molecule);
        tree.handsOver = false;
        tree.click(top->child(1));
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3", "R4"}));
        QCOMPARE(tree.takeSelections(), 3);
        tree.key(Qt::Key_Up, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3"}));
        tree.key(Qt::Key_Home, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"M", "R1", "R2"}));
        tree.key(Qt::Key_End, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3", "R4", "R5"}));
        top->CheckSelection();
        QCOMPARE(takeHandedOver(), (QStringList{"R1 off", "R2 on", "R3 on", "R4 on", "R5 on"}));
    }

    void shiftWithoutAnAnchorSelectsTheNewRowAlone() {
        for (const bool adds : {false, true}) {
            Compound* molecule = makeMolecule(3, 0);
            ShownTree tree;
            TreeItem* top = tree.populate(molecule);
            childOf(molecule, 2)->SetSelected(true);
            top->UpdateSelection();
            tree.key(Qt::Key_Down, adds ? Qt::ShiftModifier | Qt::ControlModifier
                                        : Qt::KeyboardModifiers(Qt::ShiftModifier));
            QCOMPARE(tree.selected(), adds ? QStringList({"R1", "R3"}) : QStringList("R1"));
            QCOMPARE(tree.takeSelections(), 1);
            // From there on ranges have an anchor.
            tree.key(Qt::Key_Down, Qt::ShiftModifier);
            QCOMPARE(tree.selected(), (QStringList{"R1", "R2"}));
        }
    }

    void shiftMovesKeepBranchesWhole() {
        Compound* molecule = makeMolecule(4, 2);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.click(top->child(0));
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b", "R2", "R2a", "R2b"}));
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        tree.key(Qt::Key_Up, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b", "R2", "R2a", "R2b"}));
    }

    void shiftMovesUnselectWhatIsNotInTheRange() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.click(top->child(4));
        tree.click(top->child(0), Qt::ControlModifier);
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R2"}));
        tree.click(top->child(4), Qt::ControlModifier);
        tree.key(Qt::Key_Up, Qt::ShiftModifier | Qt::ControlModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R2", "R4", "R5"}));
    }

    void onlyRowsThatChangeAreHandedOverByKeys() {
        SpyMolecule spies;
        ShownTree tree;
        SpyLeaf c("R1c");
        spies.residues[0]->hold(&c);
        tree.populate(&spies.molecule);
        tree.row("R1")->setOpen(true);
        tree.click(tree.row("R1a"));
        takeHandedOver();
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(takeHandedOver(), QStringList("R1b on"));
        tree.key(Qt::Key_Up, Qt::ShiftModifier);
        QCOMPARE(takeHandedOver(), QStringList("R1b off"));
        tree.key(Qt::Key_Down);
        QCOMPARE(takeHandedOver(), (QStringList{"R1a off", "R1b on"}));
        tree.clear();
    }

    void aMoveSetsTheAnchor() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(5, 0));
        tree.click(top->child(0));
        tree.key(Qt::Key_Down);
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3"}));
        tree.click(top->child(4), Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R2", "R3", "R4", "R5"}));
    }

    void ctrlASelectsAllRowsInClosedBranchesToo() {
        SpyMolecule spies;
        ShownTree tree;
        TreeItem* top = tree.populate(&spies.molecule);
        tree.handsOver = false;
        tree.setCurrentItem(top->child(1));
        tree.key(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(tree.selected(), allNames(tree));
        QCOMPARE(tree.takeSelections(), 1);
        QCOMPARE(tree.current(), "R2");
        tree.key(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(tree.takeSelections(), 0);
        top->CheckSelection();
        QCOMPARE(takeHandedOver(), QStringList("M on"));
    }

    void spaceTogglesTheCurrentRow() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.click(top->child(0));
        tree.key(Qt::Key_Down, Qt::ControlModifier);
        for (const Qt::KeyboardModifier modifier : {Qt::NoModifier, Qt::ControlModifier}) {
            tree.takeSelections();
            tree.key(Qt::Key_Space, modifier);
            QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R2", "R2a"}));
            tree.key(Qt::Key_Space, modifier);
            QCOMPARE(tree.selected(), (QStringList{"R1", "R1a"}));
            QCOMPARE(tree.takeSelections(), 2);
        }
    }

    void rightOpensThenGoesToTheFirstChildAndLeftComesBack() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 2));
        tree.setCurrentItem(top->child(0));
        tree.key(Qt::Key_Right);
        QVERIFY(top->child(0)->isOpen());
        QCOMPARE(tree.current(), "R1");
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b"}));
        QCOMPARE(tree.takeSelections(), 1);
        tree.key(Qt::Key_Right);
        QCOMPARE(tree.current(), "R1a");
        QCOMPARE(tree.selected(), QStringList("R1a"));
        tree.key(Qt::Key_Right);
        QCOMPARE(tree.current(), "R1a");
        QCOMPARE(tree.takeSelections(), 1);
        tree.key(Qt::Key_Left);
        QCOMPARE(tree.current(), "R1");
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b"}));
        QCOMPARE(tree.takeSelections(), 1);
        tree.key(Qt::Key_Left);
        QVERIFY(!top->child(0)->isOpen());
        QCOMPARE(tree.current(), "R1");
        tree.key(Qt::Key_Left);
        QCOMPARE(tree.current(), "M");
        tree.key(Qt::Key_Left);
        QVERIFY(!top->isOpen());
        tree.key(Qt::Key_Left);
        QCOMPARE(tree.current(), "M");
    }

    void plusAndMinusOpenAndClose() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(2, 2));
        tree.setCurrentItem(top->child(1));
        tree.key(Qt::Key_Plus);
        QVERIFY(top->child(1)->isOpen());
        tree.key(Qt::Key_Plus);
        QVERIFY(top->child(1)->isOpen());
        QCOMPARE(tree.current(), "R2");
        tree.key(Qt::Key_Minus);
        QVERIFY(!top->child(1)->isOpen());
        tree.key(Qt::Key_Minus);
        QCOMPARE(tree.current(), "R2");
        QCOMPARE(tree.takeSelections(), 2);
    }

    void aKeyThatOpensOrClosesSelectsTheRowAsAPlainMove_data() {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("+") << Qt::Key_Plus;
        QTest::newRow("-") << Qt::Key_Minus;
        QTest::newRow("Left") << Qt::Key_Left;
        QTest::newRow("Right") << Qt::Key_Right;
    }
    void aKeyThatOpensOrClosesSelectsTheRowAsAPlainMove() {
        QFETCH(Qt::Key, key);
        const bool opens = key == Qt::Key_Plus || key == Qt::Key_Right;
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(4, 1));
        tree.click(top->child(0));
        tree.key(Qt::Key_Down, Qt::ControlModifier);
        top->child(1)->setOpen(!opens);
        tree.takeSelections();
        tree.key(key);
        QCOMPARE(top->child(1)->isOpen(), opens);
        QCOMPARE(tree.current(), "R2");
        QCOMPARE(tree.selected(), (QStringList{"R2", "R2a"}));
        QCOMPARE(tree.takeSelections(), 1);
        tree.click(top->child(2), Qt::ShiftModifier); // it set the anchor, too
        QCOMPARE(tree.selected(), (QStringList{"R2", "R2a", "R3", "R3a"}));
        // Ctrl moves only.
        tree.key(Qt::Key_Down, Qt::ControlModifier);
        top->child(3)->setOpen(!opens);
        tree.takeSelections();
        tree.key(key, Qt::ControlModifier);
        QCOMPARE(top->child(3)->isOpen(), opens);
        QCOMPARE(tree.takeSelections(), 0);
        QVERIFY(!tree.row("R4")->isSelected());
    }

    // Many keyboards have these characters only with Shift: a range it does not select.
    void shiftWithPlusOrMinusSelectsTheRowAlone() {
        for (const Qt::Key key : {Qt::Key_Plus, Qt::Key_Minus}) {
            ShownTree tree;
            Compound* molecule = makeMolecule(4, 1);
            TreeItem* top = tree.populate(molecule);
            tree.click(top->child(0));
            top->child(2)->setOpen(key == Qt::Key_Minus);
            tree.setCurrentItem(top->child(2));
            tree.takeSelections();
            tree.key(key, Qt::ShiftModifier);
            QCOMPARE(top->child(2)->isOpen(), key == Qt::Key_Plus);
            QCOMPARE(tree.selected(), (QStringList{"R3", "R3a"}));
            QCOMPARE(tree.takeSelections(), 1);
            tree.clear();
            DataMaker::Destroy(molecule);
        }
    }

    void theAsteriskOpensNothing() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 1));
        tree.key(Qt::Key_Asterisk);
        for (int i = 0; i != 3; ++i)
            QVERIFY(!top->child(i)->isOpen());
        QCOMPARE(tree.takeSelections(), 0);
    }

    void homeEndAndPagesReachRowsAndScrollToThem() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(200, 1));
        QApplication::processEvents();
        const auto isSeen = [&] {
            return tree.viewport()->rect().contains(
                tree.visualRect(tree.rows()->indexOf(tree.currentItem())).adjusted(0, 0, -1, 0));
        };
        tree.key(Qt::Key_End);
        QCOMPARE(tree.current(), "R200");
        QVERIFY(isSeen());
        tree.key(Qt::Key_Home);
        QCOMPARE(tree.current(), "M");
        QVERIFY(isSeen());
        const int rowHeight = tree.visualRect(tree.rows()->indexOf(top)).height();
        const int page = tree.viewport()->height() / rowHeight;
        int last = 0;
        for (int i = 0; i != 4; ++i) {
            tree.key(Qt::Key_PageDown);
            const int at = tree.currentItem()->position();
            QVERIFY(at - last >= page - 2 && at - last <= page + 1);
            last = at;
            QVERIFY(isSeen());
        }
        for (int i = 0; i != 30; ++i)
            tree.key(Qt::Key_PageDown);
        QCOMPARE(tree.current(), "R200");
        for (int i = 0; i != 4; ++i) {
            tree.key(Qt::Key_PageUp);
            QVERIFY(isSeen());
        }
        QVERIFY(tree.currentItem()->position() <= 200 - 3 * (page - 2));
        for (int i = 0; i != 30; ++i)
            tree.key(Qt::Key_PageUp);
        QCOMPARE(tree.current(), "M");
        QCOMPARE(tree.selected().first(), "M");
    }

    void withoutACurrentRowAKeyMakesTheFirstOneCurrent() {
        ShownTree tree;
        Compound* molecule = makeMolecule(2, 1);
        new TreeItem(&tree, molecule);
        tree.selectionModel()->clearCurrentIndex();
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.current(), "M");
        QCOMPARE(tree.takeSelections(), 0);
        tree.clear();
        tree.key(Qt::Key_Down);
        tree.key(Qt::Key_A, Qt::ControlModifier);
        tree.key(Qt::Key_Space);
        QCOMPARE(tree.takeSelections(), 0);
    }

    void aCurrentRowInAClosedBranchStandsForTheBranch() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(3, 2));
        tree.setCurrentItem(tree.row("R2b"));
        tree.key(Qt::Key_Down);
        QCOMPARE(tree.current(), "R3");
        tree.setCurrentItem(tree.row("R2b"));
        tree.key(Qt::Key_Up);
        QCOMPARE(tree.current(), "R1");
        // So does an anchor that was closed away.
        top->child(0)->setOpen(true);
        tree.click(tree.row("R1b"));
        top->child(0)->setOpen(false);
        tree.key(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(tree.selected(), (QStringList{"R1", "R1a", "R1b", "R2", "R2a", "R2b"}));
    }

    void keysFollowTheOrderShown() {
        ShownTree tree;
        tree.populate(makeMolecule(3, 1));
        tree.rows()->sort(0, Qt::DescendingOrder);
        tree.row("R2")->setOpen(true);
        tree.key(Qt::Key_Home);
        QStringList visited;
        for (int i = 0; i != 4; ++i) {
            tree.key(Qt::Key_Down);
            visited << tree.current();
        }
        QCOMPARE(visited, (QStringList{"R3", "R2", "R2a", "R1"}));
    }

    void typingGoesToTheNextRowWhoseNameStartsSo() {
        Compound* molecule = DataMaker::makeCore(TAVIK::Space::instance(), "1ubq", "Molecule");
        for (const char* name : {"ALA 1", "GLY 2", "ALA 3", "gly 4", "ARG 5"})
            DataMaker::makeCore(DataMaker::makeCore(molecule, name, "Residue"), "ALX", "Atom");
        ShownTree tree;
        tree.populate(molecule);
        QTest::keyClicks(&tree, QStringLiteral("gLY"));
        QCOMPARE(tree.current(), "GLY 2");
        QCOMPARE(tree.selected(), (QStringList{"GLY 2", "ALX"}));
        tree.key(Qt::Key_Home); // ends what was typed
        QTest::keyClicks(&tree, QStringLiteral("al"));
        QCOMPARE(tree.current(), "ALA 1");
        QTest::keyClicks(&tree, QStringLiteral("x"));
        QCOMPARE(tree.current(), "ALA 1");
        tree.key(Qt::Key_Down);
        QTest::keyClicks(&tree, QStringLiteral("ar"));
        QCOMPARE(tree.current(), "ARG 5");
        tree.key(Qt::Key_Up);
        tree.key(Qt::Key_Down);
        QTest::keyClicks(&tree, QStringLiteral("a"));
        QCOMPARE(tree.current(), "ALA 1"); // round the end
        const int told = tree.takeSelections();
        tree.key(Qt::Key_Up);
        tree.takeSelections();
        QTest::keyClicks(&tree, QStringLiteral("q"));
        QCOMPARE(tree.takeSelections(), 0);
        QVERIFY(told > 0);
    }

    void afterAPauseTypingStartsAnew() {
        Compound* molecule = DataMaker::makeCore(TAVIK::Space::instance(), "M", "Molecule");
        for (const char* name : {"ab", "bb", "aa"})
            DataMaker::makeCore(molecule, name, "Residue");
        const int interval = QApplication::keyboardInputInterval();
        QApplication::setKeyboardInputInterval(0);
        ShownTree tree;
        tree.populate(molecule);
        QTest::keyClicks(&tree, QStringLiteral("a"));
        QCOMPARE(tree.current(), "ab");
        QTest::qSleep(2);
        QTest::keyClicks(&tree, QStringLiteral("a"));
        QCOMPARE(tree.current(), "aa");
        QTest::qSleep(2);
        QTest::keyClicks(&tree, QStringLiteral("b"));
        QCOMPARE(tree.current(), "bb");
        QApplication::setKeyboardInputInterval(interval);
    }

    // What was typed before the pause and after it leads, as one text, to where one is.
    void aLetterAfterAPauseIsNotTheNextOfTheOneBefore() {
        Compound* molecule = DataMaker::makeCore(TAVIK::Space::instance(), "M", "Molecule");
        for (const char* name : {"ASN 1", "SER 2", "ASP 3"})
            DataMaker::makeCore(molecule, name, "Residue");
        const int interval = QApplication::keyboardInputInterval();
        QApplication::setKeyboardInputInterval(0);
        ShownTree tree;
        tree.populate(molecule);
        QTest::keyClicks(&tree, QStringLiteral("a"));
        QTest::qSleep(2);
        QTest::keyClicks(&tree, QStringLiteral("s"));
        const QString afterPause = tree.current();
        QApplication::setKeyboardInputInterval(10'000);
        tree.key(Qt::Key_Home);
        QTest::keyClicks(&tree, QStringLiteral("as"));
        QApplication::setKeyboardInputInterval(interval);
        QCOMPARE(afterPause, "SER 2");
        QCOMPARE(tree.current(), "ASN 1");
    }

    void spaceScrollsToItsRow() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(200, 1));
        QApplication::processEvents();
        for (const int index : {150, 0}) {
            TreeItem* row = top->child(index);
            tree.setCurrentItem(row);
            QVERIFY(!tree.viewport()->rect().intersects(cellRect(tree, row, 0)));
            tree.key(Qt::Key_Space);
            QVERIFY(row->isSelected());
            const QRect seen = cellRect(tree, row, 0);
            QVERIFY(seen.top() >= 0 && seen.bottom() < tree.viewport()->height());
        }
    }

    void otherKeysAreLeftToTheWindow() {
        QWidget window;
        auto* const tree = new TreeView(&window);
        auto* const row = new TreeItem(tree, makeMolecule(1, 1));
        tree->setCurrentItem(row);
        window.show();
        for (const int key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Delete,
                              Qt::Key_Backspace, Qt::Key_F5}) {
            QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
            QApplication::sendEvent(tree, &event);
            QVERIFY2(!event.isAccepted(), qPrintable(QKeySequence(key).toString()));
        }
        QKeyEvent copy(QEvent::KeyPress, Qt::Key_C, Qt::ControlModifier, QStringLiteral("c"));
        QApplication::sendEvent(tree, &copy);
        QVERIFY(!copy.isAccepted());
        QVERIFY(!row->isSelected());
    }
};

REGISTER_TEST(TreeKeysTest)
#include "TreeKeysTest.moc"
