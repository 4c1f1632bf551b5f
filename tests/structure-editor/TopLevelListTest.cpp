// The list of top-level items: what its entries say, and what a mouse press on one does.
#include "DataMaker.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "files/Files.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <QScrollBar>
#include <QSignalSpy>

using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

class TopLevelListTest : public WindowTestCase {
    Q_OBJECT

    void listEvent(Qt::MouseButton button, QListWidgetItem* item) {
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "ListEvent", Q_ARG(int, button),
                                          Q_ARG(QListWidgetItem*, item),
                                          Q_ARG(QPoint, QPoint(0, 0))));
    }

private slots:
    void anEntrySaysWhetherItsItemIsHiddenAndWhatIsSelected() {
        addStructure("plain");
        selectElsewhere(addStructure("whole"), true);
        selectElsewhere(itemAt(addStructure("part"), {"A", "Groups", "HOH 2"}), true);
        showElsewhere(addStructure("hidden"), false);
        Compound* both = addStructure("both");
        selectElsewhere(both, true);
        showElsewhere(both, false);
        Compound* hiddenPart = addStructure("hidden part");
        selectElsewhere(itemAt(hiddenPart, {"A", "Groups", "HOH 2"}), true);
        showElsewhere(hiddenPart, false);
        openWindow();
        QCOMPARE(entries(*m_window), QStringList({" _ plain", " X whole", " / part", "O_ hidden",
                                                  "OX both", "O/ hidden part"}));
    }

    void namesAreLatin1AndStandAsTheyAre() {
        addEmpty("\xe9t\xe9 \xff");
        addEmpty("");
        addEmpty("  %1 &x <b>");
        openWindow();
        QCOMPARE(entries(*m_window), QStringList({QString::fromUtf8(" _ \u00e9t\u00e9 \u00ff"),
                                                  " _ ", " _   %1 &x <b>"}));
        for (const int index : {0, 1, 2}) // the name that is read back equals the item's
            clickEntry(*m_window, index, Qt::RightButton);
        QCOMPARE(entries(*m_window).at(0).left(3), "O_ ");
        QCOMPARE(takeMessages(), QStringList());
    }

    void aLeftPressShowsTheItem() {
        addStructure("1abc");
        addStructure("2abc");
        openWindow();
        clickEntry(*m_window, 1);
        QCOMPARE(rows(*m_window).front(), "2abc");
        QCOMPARE(highlighted(*m_window), 1);
        clickEntry(*m_window, 0);
        QCOMPARE(rows(*m_window).front(), "1abc");
        QCOMPARE(highlighted(*m_window), 0);
    }

    void aLeftPressOnTheShownEntryDoesNotRebuildTheTree() {
        addStructure("1abc");
        openWindow();
        clickEntry(*m_window, 0);
        treeOf(*m_window)->expand(rowAt(*m_window, {"1abc", "A"}));
        const QPersistentModelIndex row = rowAt(*m_window, {"1abc", "A", "Groups"});
        clickEntry(*m_window, 0);
        QVERIFY(row.isValid());
        QVERIFY(treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A"})));
        QCOMPARE(highlighted(*m_window), 0);
    }

    void aLeftPressOnTheSameEntryFillsATreeThatOthersEmptied() {
        for (const int entries : {1, 2}) {
            Compound* item = addStructure("1abc");
            if (entries == 2)
                addStructure("2abc");
            showWindow();
            destroyElsewhere(itemAt(item, {"A", "Groups", "HOH 2"}));
            QCOMPARE(takeMessages(), QStringList(deleted));
            QVERIFY(rows(*m_window).isEmpty());
            QCOMPARE(highlighted(*m_window), 0);
            clickEntry(*m_window, 0);
            QCOMPARE(rows(*m_window).value(0), "1abc");
            QVERIFY(rows(*m_window).filter("HOH 2").isEmpty());
            QCOMPARE(highlighted(*m_window), 0);
            m_window.reset();
            while (Space::instance()->HasChildren())
                TAVIK::DataMaker::Destroy(*Space::instance()->ChildBegin());
        }
    }

    void aPressBesideTheEntriesDoesNothing() {
        addStructure("1abc");
        openWindow();
        clickEntry(*m_window, 0);
        const QStringList shown = rows(*m_window);
        for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton})
            QTest::mouseClick(listOf(*m_window)->viewport(), button, {},
                              listOf(*m_window)->viewport()->rect().bottomLeft() + QPoint(9, -9));
        QCOMPARE(rows(*m_window), shown);
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        QCOMPARE(highlighted(*m_window), 0);
    }

    void aRightPressHidesAndUnselectsAndASecondShowsAgainUnselected() {
        Compound* entry = addStructure("1abc");
        selectElsewhere(entry, true);
        openWindow();
        OtherPlugin other;
        clickEntry(*m_window, 0, Qt::RightButton);
        QCOMPARE(entries(*m_window), QStringList("O_ 1abc"));
        QVERIFY(!entry->IsVisible());
        QVERIFY(!entry->HasSelected());
        QCOMPARE(other.updates, 1);
        clickEntry(*m_window, 0, Qt::RightButton);
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        QVERIFY(entry->IsVisible());
        QVERIFY(!entry->HasSelected());
        QCOMPARE(other.updates, 2);
    }

    void aRightPressKeepsTheSelectionOfAnItemThatItShows() {
        Compound* entry = addStructure("1abc");
        showElsewhere(entry, false);
        selectElsewhere(entry, true);
        openWindow();
        clickEntry(*m_window, 0, Qt::RightButton);
        QCOMPARE(entries(*m_window), QStringList(" X 1abc"));
    }

    void aRightPressIsInListAndTreeBeforeTheOthersHearOfIt() {
        addStructure("1abc");
        OtherPlugin other;
        openWindow();
        clickEntry(*m_window, 0);
        QStringList seen;
        other.onUpdate = [&] { seen = entries(*m_window) + cells(*m_window, {"1abc", "A"}); };
        clickEntry(*m_window, 0, Qt::RightButton);
        QCOMPARE(seen, QStringList({"O_ 1abc", "A", "No", "No", "No"}));
    }

    void whateverIsPressedTheHighlightStaysOnTheShownEntry() {
        for (const char* name : {"one", "two", "three"})
            addStructure(name);
        openWindow();
        clickEntry(*m_window, 2, Qt::RightButton);
        QCOMPARE(highlighted(*m_window), -1);
        clickEntry(*m_window, 0);
        clickEntry(*m_window, 2, Qt::RightButton);
        QCOMPARE(highlighted(*m_window), 0);
        clickEntry(*m_window, 1, Qt::BackButton);
        QCOMPARE(highlighted(*m_window), 0);
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 2, Qt::MiddleButton); },
                             [this](QMessageBox& question) {
                                 QCOMPARE(highlighted(*m_window), 2);
                                 pressCancel(question);
                             }));
        QCOMPARE(highlighted(*m_window), 0);
        QCOMPARE(rows(*m_window).front(), "one");
    }

    void aRefusedRightPressChangesNothingAndSaysSoOnce() {
        Compound* entry = addStructure("1abc");
        selectElsewhere(entry, true);
        openWindow();
        OtherPlugin other;
        {
            const memory_host::SpaceLock lock;
            clickEntry(*m_window, 0, Qt::RightButton);
        }
        QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
        QVERIFY(entry->IsVisible() && entry->IsSelected());
        QCOMPARE(entries(*m_window), QStringList(" X 1abc"));
        QCOMPARE(other.updates, 0);
        clickEntry(*m_window, 0, Qt::RightButton); // the refused guard has ended
        QVERIFY(!entry->IsVisible());
    }

    void theWindowMayEndWhileTheOthersHearOfItsChange() {
        addStructure("1abc");
        openWindow();
        OtherPlugin other;
        other.onUpdate = [this] { m_window.reset(); };
        clickEntry(*m_window, 0, Qt::RightButton);
        QVERIFY(!m_window);
    }

    void anItemAddedElsewhereLeavesTheHighlightOnItsIndex() {
        addStructure("1abc");
        addStructure("2abc");
        openWindow();
        clickEntry(*m_window, 1);
        addStructure("3abc");
        QCOMPARE(entries(*m_window), QStringList({" _ 1abc", " _ 2abc", " _ 3abc"}));
        QCOMPARE(highlighted(*m_window), 1);
        QCOMPARE(rows(*m_window).front(), "2abc");
        const QPersistentModelIndex row = rowAt(*m_window, {"2abc"});
        clickEntry(*m_window, 1);
        QVERIFY(row.isValid());
    }

    void anItemLostElsewhereLeavesNoHighlight() {
        addStructure("1abc");
        Compound* second = addStructure("2abc");
        openWindow();
        clickEntry(*m_window, 0);
        destroyElsewhere(second);
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        QCOMPARE(highlighted(*m_window), -1);
        clickEntry(*m_window, 0);
        QCOMPARE(rows(*m_window).front(), "1abc");
    }

    void anUnchangedNumberOfItemsRebuildsNothing() {
        Compound* entry = addStructure("1abc");
        openWindow();
        QSignalSpy resets(listOf(*m_window)->model(), &QAbstractItemModel::modelReset);
        entry->SetSelected(true); // under no guard: nobody is told
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "MakeList"));
        QCOMPARE(resets.size(), 0);
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "UpdateList"));
        QCOMPARE(resets.size(), 0);
        QCOMPARE(entries(*m_window), QStringList(" X 1abc"));
    }

    void aListThatFallsBehindTheHostWarnsAndGoesOn() {
        Compound* first = addStructure("1abc");
        addStructure("2abc");
        openWindow();
        clickEntry(*m_window, 0);
        memory_host::attach(memory_host::makeDetached("3abc", "Composite"), Space::instance());
        selectElsewhere(first, true);
        QCOMPARE(takeMessages(), QStringList("ASSERT: \"m_List->count() == items\" in Vuxo (400)"));
        QCOMPARE(entries(*m_window), QStringList({" X 1abc", " _ 2abc"}));
        QCOMPARE(highlighted(*m_window), 0);

        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "MakeList"));
        listOf(*m_window)->addItem(QStringLiteral(" _ nothing"));
        selectElsewhere(first, false);
        QCOMPARE(takeMessages(), QStringList("ASSERT: \"m_List->count() == items\" in Vuxo (400)"));
        QCOMPARE(entries(*m_window), QStringList({" _ 1abc", " _ 2abc", " _ 3abc", " _ nothing"}));

        // The last entry stands for nothing.
        clickEntry(*m_window, 3, Qt::RightButton);
        QCOMPARE(takeMessages(), QStringList("ASSERT: \"ch\" in Vuxo (453)"));
        QVERIFY(!withQuestion([&] { clickEntry(*m_window, 3, Qt::MiddleButton); }, pressOk));
        QCOMPARE(takeMessages(), QStringList("ASSERT: \"clump\" in Vuxo (468)"));
        QCOMPARE(highlighted(*m_window), 0);
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "MakeList"));
        QCOMPARE(entries(*m_window), QStringList({" _ 1abc", " _ 2abc", " _ 3abc"}));
        QCOMPARE(highlighted(*m_window), -1);
    }

    // What came unannounced keeps the number of entries as it is.
    void aDeletionLeavesNothingShownAlsoInAListThatFellBehind() {
        addStructure("1abc");
        openWindow();
        clickEntry(*m_window, 0);
        memory_host::attach(memory_host::makeDetached("2abc", "Composite"), Space::instance());
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); }, pressOk));
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(highlighted(*m_window), -1);
        clickEntry(*m_window, 0);
        QCOMPARE(rows(*m_window), QStringList("2abc"));
    }

    void anEntryWithAnotherNameThanItsItemWarnsAndGoesOn() {
        Compound* entry = addStructure("1abc");
        openWindow();
        listOf(*m_window)->item(0)->setText(" _ other");
        clickEntry(*m_window, 0, Qt::RightButton);
        QCOMPARE(takeMessages(), QStringList("ASSERT: \"ch->GetName() == Name\" in Vuxo (456)"));
        QVERIFY(!entry->IsVisible());
        QCOMPARE(entries(*m_window), QStringList("O_ 1abc"));
        listOf(*m_window)->item(0)->setText(" _ other");
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); },
                             [](QMessageBox& question) {
                                 QCOMPARE(question.text(), "Delete 1abc?");
                                 pressOk(question);
                             }));
        QCOMPARE(takeMessages(), QStringList("ASSERT: \"Name == clump->GetName()\" in Vuxo (471)"));
        QVERIFY(entries(*m_window).isEmpty());
    }

    void anEntryOfNoListWarnsAndChangesNothing() {
        addStructure("1abc");
        openWindow();
        QListWidgetItem stranger(" _ 1abc");
        listEvent(Qt::LeftButton, &stranger);
        QCOMPARE(takeMessages(), QStringList("ASSERT: \"-1 != index\" in Vuxo (436)"));
        listEvent(Qt::RightButton, &stranger);
        QCOMPARE(takeMessages(), QStringList({"ASSERT: \"-1 != index\" in Vuxo (436)",
                                              "ASSERT: \"ch\" in Vuxo (453)"}));
        listEvent(Qt::MiddleButton, &stranger);
        QCOMPARE(takeMessages(), QStringList({"ASSERT: \"-1 != index\" in Vuxo (436)",
                                              "ASSERT: \"clump\" in Vuxo (468)"}));
        listEvent(Qt::LeftButton, nullptr);
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        QVERIFY(rows(*m_window).isEmpty());
    }

    void anEnsembleIsListedModelByModel() {
        openWindow();
        memory_host::openFile(structure("1d3z.pdb").toStdString());
        QStringList models;
        for (int model = 1; model <= 10; ++model)
            models << QString(" _ 1d3z.%1").arg(model);
        QCOMPARE(entries(*m_window), models);
        clickEntry(*m_window, 4);
        clickEntry(*m_window, 6, Qt::RightButton);
        QCOMPARE(entries(*m_window).at(6), "O_ 1d3z.7");
        QCOMPARE(rows(*m_window).front(), "1d3z.5");
        QVERIFY(rowAt(*m_window, {"1d3z.5", "A", "Groups", "MET 1", "Backbone", "CA"}).isValid());
        QCOMPARE(highlighted(*m_window), 4);
    }

    // The keys lead the highlight away; what others change brings it back to the shown entry.
    void aRefreshHighlightsTheShownEntryAgain() {
        addStructure("1abc");
        Compound* second = addStructure("2abc");
        openWindow();
        clickEntry(*m_window, 0);
        QTest::keyClick(listOf(*m_window), Qt::Key_Down);
        QCOMPARE(highlighted(*m_window), 1);
        selectElsewhere(second, true);
        QCOMPARE(highlighted(*m_window), 0);
        QCOMPARE(listOf(*m_window)->currentRow(), 0);
        QTest::keyClick(listOf(*m_window), Qt::Key_Down);
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "UpdateList"));
        QCOMPARE(highlighted(*m_window), 0);
    }

    void aRefreshHighlightsNothingWhenNothingIsShown() {
        addStructure("1abc");
        openWindow();
        QTest::keyClick(listOf(*m_window), Qt::Key_Down);
        const int before = highlighted(*m_window);
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "UpdateList"));
        QCOMPARE(highlighted(*m_window), before);
    }

    void manyEntriesAreRefreshedInPlaceWithoutScrolling() {
        constexpr int count = 5000;
        for (int i = 0; i < count; ++i)
            memory_host::attach(
                memory_host::makeDetached("model." + std::to_string(i), "Composite"),
                Space::instance());
        openWindow();
        clickEntry(*m_window, 0);
        listOf(*m_window)->scrollToItem(listOf(*m_window)->item(count / 2));
        const int position = listOf(*m_window)->verticalScrollBar()->value();
        QVERIFY(position > 0);
        QSignalSpy changes(listOf(*m_window)->model(), &QAbstractItemModel::dataChanged);
        clickEntry(*m_window, count / 2, Qt::RightButton);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(listOf(*m_window)->item(count / 2)->text(), "O_ model.2500");
        QCOMPARE(listOf(*m_window)->verticalScrollBar()->value(), position);
        QCOMPARE(highlighted(*m_window), 0);
    }
};

REGISTER_TEST(TopLevelListTest)
#include "TopLevelListTest.moc"
