// Typing the start of a name in the tree: what belongs to the search, and when it has ended.
#include "TreeTools.h"

using namespace tree_tools;

class TreeTypingTest : public SpyTestCase {
    Q_OBJECT

    static Compound* makeResidues(const std::vector<const char*>& names) {
        Compound* molecule = DataMaker::makeCore(TAVIK::Space::instance(), "1ubq", "Molecule");
        for (const char* name : names)
            DataMaker::makeCore(molecule, name, "Residue");
        return molecule;
    }
    // Tests may be slow, and fingers are not.
    static void waitForKeys() { QApplication::setKeyboardInputInterval(3'600'000); }

    int m_interval = QApplication::keyboardInputInterval();

    void cleanup() override {
        QApplication::setKeyboardInputInterval(m_interval);
        SpyTestCase::cleanup();
    }

private slots:
    void aBlankInsideANameBelongsToTheSearch() {
        waitForKeys();
        ShownTree tree;
        tree.populate(makeResidues({"ASN 1", "ASN 14", "ASN 2"}));
        QTest::keyClicks(&tree, QStringLiteral("asn 14"));
        QCOMPARE(tree.current(), "ASN 14");
        QCOMPARE(tree.selected(), QStringList("ASN 14"));
        QTest::keyClicks(&tree, QStringLiteral("x")); // no such name: what was typed stays
        QCOMPARE(tree.current(), "ASN 14");
    }

    void aBlankWithWhichNoNameGoesOnToggles() {
        waitForKeys();
        ShownTree tree;
        tree.populate(makeResidues({"ASN 1", "HOH"}));
        QTest::keyClicks(&tree, QStringLiteral("hoh"));
        QCOMPARE(tree.selected(), QStringList("HOH"));
        tree.key(Qt::Key_Space);
        QCOMPARE(tree.selected(), QStringList());
        QCOMPARE(tree.current(), "HOH");
        // That ended the search.
        QTest::keyClicks(&tree, QStringLiteral("a"));
        QCOMPARE(tree.current(), "ASN 1");
        QTest::keyClick(&tree, Qt::Key_Space, Qt::ControlModifier); // typed by nobody
        QVERIFY(!tree.row("ASN 1")->isSelected());
    }

    void plusAndMinusInsideANameBelongToTheSearch() {
        waitForKeys();
        ShownTree tree;
        TreeItem* top = tree.populate(makeResidues({"ZN", "ZN+2", "ZN-x"}));
        QTest::keyClicks(&tree, QStringLiteral("zn+"));
        QCOMPARE(tree.current(), "ZN+2");
        tree.key(Qt::Key_Home);
        QTest::keyClicks(&tree, QStringLiteral("zn-"));
        QCOMPARE(tree.current(), "ZN-x");
        tree.key(Qt::Key_Home);
        tree.key(Qt::Key_Minus);
        QVERIFY(!top->isOpen());
    }

    void afterAPauseWhatWasTypedIsForgotten() {
        ShownTree tree;
        tree.populate(makeResidues({"ax", "b", "abc", "xb"}));
        QApplication::setKeyboardInputInterval(0);
        QTest::keyClicks(&tree, QStringLiteral("a"));
        QCOMPARE(tree.current(), "ax");
        QTest::qSleep(2);
        // "a" and "b" together would lead to "abc", and a blank to nothing.
        QTest::keyClicks(&tree, QStringLiteral("b"));
        QCOMPARE(tree.current(), "b");
        QTest::qSleep(2);
        // No name starts so; and what was typed before the pause does not come back with the next.
        QTest::keyClicks(&tree, QStringLiteral("q"));
        waitForKeys();
        QTest::keyClicks(&tree, QStringLiteral("x"));
        QCOMPARE(tree.current(), "xb");
    }

    void aShortcutWaitsUntilTheSearchHasEnded() {
        waitForKeys();
        QWidget window;
        auto* const tree = new TreeView(&window);
        QAction action(&window);
        action.setShortcut(Qt::Key_P);
        window.addAction(&action);
        QSignalSpy shortcuts(&action, &QAction::triggered);
        auto* const top = new TreeItem(tree, makeResidues({"ASP 1", "PRO 2"}));
        tree->setCurrentItem(top);
        top->commAdd();
        top->setOpen(true);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(tree, Qt::Key_P);
        QCOMPARE(shortcuts.count(), 1);
        QCOMPARE(tree->currentItem(), top);
        QTest::keyClicks(tree, QStringLiteral("asp"));
        QCOMPARE(shortcuts.count(), 1);
        QCOMPARE(tree->currentItem()->text(0), "ASP 1");
        QTest::keyClick(tree, Qt::Key_Up); // ends it
        QTest::keyClick(tree, Qt::Key_P);
        QCOMPARE(shortcuts.count(), 2);
        QCOMPARE(tree->currentItem(), top);
    }
};

REGISTER_TEST(TreeTypingTest)
#include "TreeTypingTest.moc"
