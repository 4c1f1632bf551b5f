// The tree's side of the window: showing an item, the user's selection on its way to the host, and
// what the host tells.
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <QSignalSpy>

using namespace window_tools;
using TAVIK::Compound;

class TreePanelTest : public WindowTestCase {
    Q_OBJECT

    void showWindow() {
        openWindow();
        watchRows();
    }

    bool isOpen(const QStringList& path) const {
        return treeOf(*m_window)->isExpanded(rowAt(*m_window, path));
    }

private slots:
    void anIndexOutOfRangeLeavesTheTreeAsItWas() {
        addStructure("1abc");
        addStructure("2abc");
        showWindow();
        const auto populate = [this](int index) {
            QVERIFY(QMetaObject::invokeMethod(m_window.get(), "Populate", Q_ARG(int, index)));
        };
        populate(-1);
        populate(2);
        QVERIFY(rows(*m_window).isEmpty());
        populate(1);
        const QStringList shown = rows(*m_window);
        QCOMPARE(shown.front(), "2abc");
        QSignalSpy resets(treeOf(*m_window)->model(), &QAbstractItemModel::modelReset);
        QSignalSpy removals(treeOf(*m_window)->model(), &QAbstractItemModel::rowsRemoved);
        for (const int index :
             {-1, 2, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
            populate(index);
        QCOMPARE(rows(*m_window), shown);
        QCOMPARE(resets.size() + removals.size(), 0);
    }

    void anItemWithoutSubItemsShowsOneClosedRow() {
        addEmpty("empty");
        addEmpty("plain", "Atom");
        showWindow();
        for (const int index : {0, 1}) {
            clickEntry(*m_window, index);
            const QStringList name = {index ? "plain" : "empty"};
            QCOMPARE(rows(*m_window), name);
            QVERIFY(!isOpen(name));
            QVERIFY(treeOf(*m_window)->currentItem());
            QCOMPARE(treeOf(*m_window)->currentItem(), treeOf(*m_window)->firstChild());
        }
    }

    void theTopRowOpensByItselfAndIsCurrentAndAllRowsBelowAreClosed() {
        addStructure("1abc");
        showWindow();
        QVERIFY(rows(*m_window).isEmpty());
        clickEntry(*m_window, 0);
        QCOMPARE(
            rows(*m_window),
            QStringList(
                {"1abc", " A", "  Groups", "   MET 1", "    Backbone", "     N", "     CA",
                 "     C", "    Side chain", "     CB", "     SD", "   HOH 2", "    O", "  Bonds",
                 "   " +
                     QString::fromLatin1(
                         (*itemAt(TAVIK::Space::instance(), {"1abc", "A", "Bonds"})->ChildBegin())
                             ->GetName())}));
        QVERIFY(isOpen({"1abc"}));
        for (const QStringList& path :
             {QStringList{"1abc", "A"}, QStringList{"1abc", "A", "Groups"},
              QStringList{"1abc", "A", "Groups", "MET 1"}})
            QVERIFY(!isOpen(path));
        QCOMPARE(treeOf(*m_window)->currentItem(), treeOf(*m_window)->firstChild());
        QCOMPARE(treeOf(*m_window)->currentIndex(), rowAt(*m_window, {"1abc"}));
    }

    void aClickOnARowSelectsInTheHostAndTellsTheOthersOnce() {
        Compound* entry = addStructure("1abc");
        Compound* residue = itemAt(entry, {"A", "Groups", "MET 1"});
        showWindow();
        clickEntry(*m_window, 0);
        OtherPlugin other;
        QStringList seen;
        other.onUpdate = [&] {
            // The window shows the change before any other subscriber hears of it.
            seen =
                cells(*m_window, {"1abc", "A", "Groups", "MET 1", "Backbone"}) + entries(*m_window);
        };
        clickRow(*m_window, {"1abc", "A", "Groups", "MET 1"});
        QVERIFY(residue->IsSelected());
        QCOMPARE(other.updates, 1);
        QCOMPARE(seen, QStringList({"Backbone", "Yes", "Yes", "Yes", " / 1abc"}));
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "MET 1"}));
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "MET 1", "Backbone", "CA"}));
        QVERIFY(!isMarked(*m_window, {"1abc", "A", "Groups", "HOH 2"}));
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
    }

    // What was refused is not made up for later: the update has taken its mark back.
    void aRefusedSelectionIsNotHandedOverWithTheNextOneAfterAnUpdate() {
        Compound* entry = addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        Compound* residue = itemAt(entry, {"A", "Groups", "MET 1"});
        {
            const memory_host::SpaceLock lock;
            clickRow(*m_window, {"1abc", "A", "Groups", "MET 1", "Backbone", "CA"});
        }
        QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
        selectElsewhere(itemAt(entry, {"A", "Bonds"}), false);
        clickRow(*m_window, {"1abc", "A", "Groups", "HOH 2"});
        QVERIFY(!residue->HasSelected());
        QVERIFY(itemAt(entry, {"A", "Groups", "HOH 2"})->IsSelected());
    }

    void aRefusedSelectionKeepsTheMarksAndChangesNothing() {
        Compound* entry = addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        OtherPlugin other;
        {
            const memory_host::SpaceLock lock;
            clickRow(*m_window, {"1abc", "A"});
        }
        QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
        QVERIFY(!entry->HasSelected());
        QCOMPARE(other.updates, 0);
        QVERIFY(isMarked(*m_window, {"1abc", "A"}));
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        // The guard has ended: the next change is granted, and hands the marks over.
        clickRow(*m_window, {"1abc", "A", "Groups"}, Qt::LeftButton, Qt::ControlModifier);
        QCOMPARE(other.updates, 1);
        QVERIFY(itemAt(entry, {"A"})->IsSelected());
    }

    void selectingInAnEmptyTreeChangesNothing() {
        Compound* entry = addStructure("1abc");
        entry->SetSelected(true);
        showWindow();
        OtherPlugin other;
        const memory_host::SpaceLock lock; // a guard would say that it is refused
        QTest::mouseClick(treeOf(*m_window)->viewport(), Qt::LeftButton, {}, QPoint(20, 20));
        QTest::keyClick(treeOf(*m_window), Qt::Key_A, Qt::ControlModifier);
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "SelectionChanged"));
        QVERIFY(entry->IsSelected());
        QCOMPARE(other.updates, 0);
    }

    void anUpdateElsewhereRefreshesRowsAndEntries() {
        Compound* entry = addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        selectElsewhere(itemAt(entry, {"A", "Groups", "HOH 2"}), true);
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "HOH 2"}));
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "HOH 2", "O"}));
        QCOMPARE(cells(*m_window, {"1abc", "A", "Groups"}),
                 QStringList({"Groups", "Yes", "No", "Yes"}));
        QCOMPARE(entries(*m_window), QStringList(" / 1abc"));
        showElsewhere(entry, false);
        QCOMPARE(cells(*m_window, {"1abc", "A"}), QStringList({"A", "No", "No", "Yes"}));
        QCOMPARE(entries(*m_window), QStringList("O/ 1abc"));
        selectElsewhere(entry, false);
        QVERIFY(!isMarked(*m_window, {"1abc", "A", "Groups", "HOH 2"}));
        QCOMPARE(entries(*m_window), QStringList("O_ 1abc"));
    }

    void anUpdateElsewhereTakesBackWhatARefusedSelectionMarked() {
        Compound* entry = addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        {
            const memory_host::SpaceLock lock;
            clickRow(*m_window, {"1abc", "A"});
        }
        takeMessages();
        QVERIFY(isMarked(*m_window, {"1abc", "A"}));
        showElsewhere(entry, true);
        QVERIFY(!isMarked(*m_window, {"1abc", "A"}));
    }

    void anAdditionElsewhereBringsOnlyTheNewRows() {
        Compound* entry = addStructure("1abc");
        Compound* residue = itemAt(entry, {"A", "Groups", "HOH 2"});
        showWindow();
        clickEntry(*m_window, 0);
        const QStringList met = {"1abc", "A", "Groups", "MET 1"};
        for (qsizetype depth = 2; depth <= met.size(); ++depth)
            treeOf(*m_window)->expand(rowAt(*m_window, met.first(depth)));
        clickRow(*m_window, met);
        const QStringList before = rows(*m_window);
        QSignalSpy insertions(treeOf(*m_window)->model(), &QAbstractItemModel::rowsInserted);
        QSignalSpy resets(treeOf(*m_window)->model(), &QAbstractItemModel::modelReset);
        QSignalSpy removals(treeOf(*m_window)->model(), &QAbstractItemModel::rowsRemoved);

        addAtomTo(residue, "H1");

        QCOMPARE(insertions.size(), 1);
        QCOMPARE(insertions.front().at(2).toInt() - insertions.front().at(1).toInt(), 0);
        QCOMPARE(resets.size() + removals.size(), 0);
        QStringList after = rows(*m_window);
        QVERIFY(after.removeOne("    H1"));
        QCOMPARE(after, before);
        QVERIFY(isOpen(met));
        QVERIFY(!isOpen({"1abc", "A", "Groups", "HOH 2"}));
        QVERIFY(isMarked(*m_window, met));
        QVERIFY(!isMarked(*m_window, {"1abc", "A", "Groups", "HOH 2", "H1"}));
    }

    void theTopRowOpensWhenItGetsItsFirstChild() {
        Compound* entry = addEmpty("empty");
        showWindow();
        clickEntry(*m_window, 0);
        QVERIFY(!isOpen({"empty"}));
        addAtomTo(entry, "CA");
        QCOMPARE(rows(*m_window), QStringList({"empty", " CA"}));
        QVERIFY(isOpen({"empty"}));
    }

    void anAdditionElsewhereOpensNoTopRowWithoutChildren() {
        addEmpty("empty");
        showWindow();
        clickEntry(*m_window, 0);
        addStructure("1abc");
        QVERIFY(!isOpen({"empty"}));
        QVERIFY(!treeOf(*m_window)->firstChild()->isOpen());
    }

    void anAdditionElsewhereOpensATopRowThatTheUserClosed() {
        Compound* entry = addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        treeOf(*m_window)->collapse(rowAt(*m_window, {"1abc"}));
        QVERIFY(!isOpen({"1abc"}));
        addAtomTo(itemAt(entry, {"A", "Groups", "HOH 2"}), "H1");
        QVERIFY(isOpen({"1abc"}));
    }

    void anAdditionOnAnEmptyTreeOnlyRenewsTheList() {
        addStructure("1abc");
        showWindow();
        addStructure("2abc");
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(entries(*m_window), QStringList({" _ 1abc", " _ 2abc"}));
    }

    void aDeletionElsewhereEmptiesTheTreeAndIsSaidOnceEachTime() {
        Compound* entry = addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        destroyElsewhere(itemAt(entry, {"A", "Groups", "MET 1"}));
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        destroyElsewhere(itemAt(entry, {"A", "Groups", "HOH 2"}));
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        // The item itself is still there, and still the one that was picked.
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        QCOMPARE(highlighted(*m_window), 0);
    }

    void rowsThatLeaveAreNotAskedForItemsThatAreGone() {
        Compound* entry = addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        const QAbstractItemModel* model = treeOf(*m_window)->model();
        bool asked = false;
        connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, this, [&] {
            asked = true;
            for (const int role : {Qt::DisplayRole, Qt::ForegroundRole, Qt::BackgroundRole})
                QCOMPARE(model->index(0, 1).data(role), QVariant());
        });
        destroyElsewhere(entry);
        QVERIFY(asked);
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
    }

    void afterADeletionElsewhereAnotherEntryFillsTheTreeAgain() {
        Compound* entry = addStructure("1abc");
        addEmpty("other");
        showWindow();
        clickEntry(*m_window, 0);
        destroyElsewhere(itemAt(entry, {"A", "Groups", "MET 1"}));
        takeMessages();
        clickEntry(*m_window, 1);
        QCOMPARE(rows(*m_window), QStringList("other"));
        clickEntry(*m_window, 0);
        QCOMPARE(rows(*m_window).front(), "1abc");
        QVERIFY(!rows(*m_window).contains("   MET 1"));
    }

    void whatIsDoneDuringANotificationIsShownToo() {
        Compound* entry = addStructure("1abc");
        OtherPlugin other; // hears of changes before the window does
        showWindow();
        clickEntry(*m_window, 0);
        other.onUpdate = [&] {
            if (entry->HasSelected())
                destroyElsewhere(itemAt(entry, {"A", "Groups", "HOH 2"}));
        };
        selectElsewhere(itemAt(entry, {"A", "Groups", "MET 1"}), true);
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(entries(*m_window), QStringList(" X 1abc"));
    }

    void aCellToggledInTheTreeComesBackThroughTheNotification() {
        Compound* entry = addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        TreeView* tree = treeOf(*m_window);
        const QModelIndex chain = rowAt(*m_window, {"1abc", "A"});
        const auto toggle = [&](int column) {
            QTest::mouseClick(tree->viewport(), Qt::RightButton, {},
                              tree->visualRect(chain.siblingAtColumn(column)).center());
        };
        toggle(2);
        QVERIFY(itemAt(entry, {"A"})->IsSelected());
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups"}));
        QCOMPARE(entries(*m_window), QStringList(" X 1abc"));
        toggle(1);
        QCOMPARE(cells(*m_window, {"1abc", "A"}), QStringList({"A", "No", "Yes", "Yes"}));
        QCOMPARE(entries(*m_window), QStringList("OX 1abc"));
    }
};

REGISTER_TEST(TreePanelTest)
#include "TreePanelTest.moc"
