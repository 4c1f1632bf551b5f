// Deleting a branch by a middle click on its row.
#include "DataAdder.h"
#include "DataMaker.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <memory>

using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

class KillBranchTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_entry = nullptr;
    const QStringList m_residue = {"1abc", "A", "Groups", "MET 1"};

    /// Middle-clicks the residue's row, and answers the question; returns whether there was one.
    bool kill(const std::function<void(QMessageBox&)>& answer) {
        return withQuestion([this] { clickRow(*m_window, m_residue, Qt::MiddleButton); }, answer);
    }

    Compound* residue() const { return itemAt(m_entry, {"A", "Groups", "MET 1"}); }

private slots:
    void init() override {
        TestCase::init();
        m_entry = addStructure("1abc");
        addStructure("2abc");
        openWindow();
        watchRows();
        clickEntry(*m_window, 0);
    }

    void cancelChangesNothing() {
        const QStringList before = rows(*m_window);
        OtherPlugin other;
        QVERIFY(kill([this](QMessageBox& question) {
            QCOMPARE(question.windowTitle(), "Warning");
            QCOMPARE(question.text(), "Delete MET 1?");
            QCOMPARE(question.parentWidget(), m_window.get());
            pressCancel(question);
        }));
        QVERIFY(residue());
        QCOMPARE(rows(*m_window), before);
        QVERIFY(treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A", "Groups"})));
        QCOMPARE(other.deletes, 0);
    }

    void okDeletesTheBranchAndShowsTheSameItemAgain() {
        OtherPlugin other;
        QStringList seen;
        other.onDelete = [&] { seen = rows(*m_window); };
        QVERIFY(kill(pressOk));
        QVERIFY(!residue());
        const QStringList shown = rows(*m_window);
        QCOMPARE(shown, QStringList({"1abc", " A", "  Groups", "   HOH 2", "    O", "  Bonds"}));
        QCOMPARE(seen, shown);
        QCOMPARE(other.deletes, 1);
        QVERIFY(treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc"})));
        QVERIFY(!treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A"})));
        QCOMPARE(treeOf(*m_window)->currentItem(), treeOf(*m_window)->firstChild());
        QCOMPARE(highlighted(*m_window), 0);
        QCOMPARE(entries(*m_window), QStringList({" _ 1abc", " _ 2abc"}));
        QCOMPARE(takeMessages(), QStringList());
    }

    void enterIsOkAndEscapeIsCancel() {
        QVERIFY(kill([](QMessageBox& question) { QTest::keyClick(&question, Qt::Key_Escape); }));
        QVERIFY(residue());
        QVERIFY(kill([](QMessageBox& question) { QTest::keyClick(&question, Qt::Key_Return); }));
        QVERIFY(!residue());
    }

    void theTopRowIsNotAskedFor() {
        QVERIFY(
            !withQuestion([this] { clickRow(*m_window, {"1abc"}, Qt::MiddleButton); }, pressOk));
        QCOMPARE(listOf(*m_window)->count(), 2);
    }

    void aRefusedDeletionIsSaidOnceAndChangesNothing() {
        const QStringList before = rows(*m_window);
        OtherPlugin other;
        {
            const memory_host::SpaceLock lock;
            QVERIFY(kill(pressOk));
        }
        QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
        QVERIFY(residue());
        QCOMPARE(rows(*m_window), before);
        QCOMPARE(other.deletes, 0);
        QVERIFY(kill(pressOk)); // the refused guard has ended
        QVERIFY(!residue());
    }

    void aRefusalThatComesWithTheQuestionOpenIsSaidToo() {
        std::unique_ptr<memory_host::SpaceLock> lock;
        QVERIFY(kill([&](QMessageBox& question) {
            lock = std::make_unique<memory_host::SpaceLock>();
            pressOk(question);
        }));
        lock.reset();
        QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
        QVERIFY(residue());
    }

    void aBranchThatIsDeletedDuringTheQuestionEndsItQuietly() {
        OtherPlugin other;
        QVERIFY(kill([&](QMessageBox& question) {
            destroyElsewhere(itemAt(m_entry, {"A", "Groups"}));
            pressOk(question);
        }));
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        QCOMPARE(other.deletes, 1);
        QVERIFY(itemAt(m_entry, {"A", "Bonds"}));
        QVERIFY(rows(*m_window).isEmpty());
    }

    void theShownItemDeletedDuringTheQuestionEndsItQuietly() {
        QVERIFY(kill([&](QMessageBox& question) {
            destroyElsewhere(m_entry);
            pressOk(question);
        }));
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        QCOMPARE(entries(*m_window), QStringList(" _ 2abc"));
        QVERIFY(rows(*m_window).isEmpty());
    }

    void aBranchThatTookTheDeletedOnesPlaceIsLeftAlone() {
        Compound* groups = itemAt(m_entry, {"A", "Groups"});
        for (int turn = 0; turn < 50; ++turn) {
            QVERIFY(kill([&](QMessageBox& question) {
                destroyElsewhere(residue());
                addAtomTo(TAVIK::DataMaker::makeCore(groups, "MET 1", "Residue"), "CA");
                pressOk(question);
            }));
            QVERIFY(residue());
            clickEntry(*m_window, 1); // the tree is empty: show the item again
            clickEntry(*m_window, 0);
        }
        QCOMPARE(takeMessages().size(), 50);
    }

    void anotherBranchDeletedDuringTheQuestionDoesNotStopIt() {
        // The rows are gone, the residue is not: what was asked for is done.
        QVERIFY(kill([&](QMessageBox& question) {
            destroyElsewhere(itemAt(m_entry, {"A", "Groups", "HOH 2"}));
            pressOk(question);
        }));
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        QCOMPARE(rows(*m_window), QStringList({"1abc", " A", "  Groups", "  Bonds"}));
    }

    void theWindowMayEndDuringTheQuestion() {
        QVERIFY(kill([&](QMessageBox&) {
            m_tester.reset();
            m_window.reset();
        }));
        QVERIFY(residue());
    }

    void deletingTheLastBranchLeavesOneClosedRow() {
        QVERIFY(withQuestion(
            [this] {
                clickRow(*m_window, {"1abc", "A"}, Qt::MiddleButton);
            },
            pressOk));
        QCOMPARE(rows(*m_window), QStringList("1abc"));
        QVERIFY(!m_entry->HasChildren());
    }

    // The list grows shorter, and the item that is shown stays all the same.
    void aDeletedAtomTakesATopLevelBondAlong() {
        {
            const DataAdder<Space> guard(nullptr, Space::instance());
            memory_host::addBond(Space::instance(),
                                 itemAt(m_entry, {"A", "Groups", "MET 1", "Backbone", "CA"}),
                                 itemAt(m_entry, {"A", "Groups", "HOH 2", "O"}));
        }
        QCOMPARE(listOf(*m_window)->count(), 3);
        QVERIFY(withQuestion(
            [this] {
                clickRow(*m_window, m_residue + QStringList({"Backbone", "CA"}), Qt::MiddleButton);
            },
            pressOk));
        QCOMPARE(entries(*m_window), QStringList({" _ 1abc", " _ 2abc"}));
        QCOMPARE(rows(*m_window).front(), "1abc");
        QVERIFY(!rows(*m_window).contains("     CA"));
        QCOMPARE(highlighted(*m_window), 0);
        clickEntry(*m_window, 1);
        QCOMPARE(rows(*m_window).front(), "2abc");
    }

    void aDeletedAtomTakesItsBondAlong() {
        QVERIFY(withQuestion(
            [this] {
                clickRow(*m_window, m_residue + QStringList({"Backbone", "CA"}), Qt::MiddleButton);
            },
            pressOk));
        QVERIFY(!itemAt(m_entry, {"A", "Bonds"})->HasChildren());
        QVERIFY(!rows(*m_window).contains("     CA"));
        QVERIFY(rows(*m_window).contains("     C"));
    }
};

REGISTER_TEST(KillBranchTest)
#include "KillBranchTest.moc"
