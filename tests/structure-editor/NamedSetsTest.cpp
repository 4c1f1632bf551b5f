// "Define set": what is selected is kept under a name, as an item and a row of its own.
#include "CommandTools.h"
#include "DataDelete.h"
#include "DataMaker.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <QInputDialog>

#include <memory>
#include <optional>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

class NamedSetsTest : public WindowTestCase {
    Q_OBJECT

    void showWindow(int entry = 0) {
        m_window = std::make_unique<Vuxo>();
        m_window->resize(600, 600);
        m_window->show();
        if (entry >= 0)
            clickEntry(*m_window, entry);
    }
    bool defineSet(const std::function<void(QInputDialog&)>& answer) {
        return withDialog<QInputDialog>(
            [this] { trigger(*m_window, QStringLiteral("Add"), QStringLiteral("Define set")); },
            answer);
    }
    bool defineSet(const QString& name) {
        return defineSet([&](QInputDialog& dialog) {
            dialog.setTextValue(name);
            pressEnter(dialog);
        });
    }
    // The last child of `root`.
    static Compound* newest(Compound* root) { return *(root->ChildEnd() - 1); }
    static QString membersOf(Compound* set) {
        QStringList names;
        for (Compound** part = set->PartBegin(); part != set->PartEnd(); ++part)
            names << QString::fromLatin1((*part)->GetName());
        return names.join(u' ');
    }
    void rightClickCell(const QStringList& path, int column) {
        TreeView* tree = treeOf(*m_window);
        const QModelIndex index = rowAt(*m_window, path).siblingAtColumn(column);
        tree->scrollTo(index);
        QTest::mouseClick(tree->viewport(), Qt::RightButton, {}, tree->visualRect(index).center());
    }

private slots:
    void theDialogAsksAsItShouldAndAcceptingItMakesASetNamedSet() {
        Compound* shown = addLine("1abc", {0, 1, 2, 3});
        for (const std::size_t i : {0, 1, 2})
            atomsOf(shown)[i]->SetSelected(true);
        showWindow();
        QVERIFY(defineSet([](QInputDialog& dialog) {
            QCOMPARE(dialog.windowTitle(), "Set");
            QCOMPARE(dialog.labelText(), "Enter name for Set");
            QCOMPARE(dialog.textValue(), "Set");
            QCOMPARE(dialog.textEchoMode(), QLineEdit::Normal);
            QVERIFY(!dialog.parentWidget());
            pressEnter(dialog);
        }));
        QCOMPARE(takeHostLog(), QStringList{"Defined set 'Set' with 3 members."});
        QCOMPARE(newest(shown)->GetName(), std::string("Set"));
        QCOMPARE(membersOf(newest(shown)), "C0 C1 C2");
        QCOMPARE(rows(*m_window).back(), " Set");
        QCOMPARE(cells(*m_window, {"1abc", "Set"}), (QStringList{"Set", "Yes", "Yes", "Yes"}));
    }

    void aWhollySelectedItemIsOneMember() {
        Compound* shown = addLine("1abc", {0, 1});
        shown->SetSelected(true);
        showWindow();
        QVERIFY(defineSet("all"));
        QCOMPARE(takeHostLog(), QStringList{"Defined set 'all' with 1 members."});
        QCOMPARE(membersOf(newest(shown)), "A");
    }

    void whatIsSelectedElsewhereIsNoMember() {
        Compound* shown = addLine("1abc", {0, 1});
        Compound* other = addLine("2abc", {0, 1});
        atomsOf(shown)[1]->SetSelected(true);
        other->SetSelected(true);
        showWindow();
        QVERIFY(defineSet("mine"));
        QCOMPARE(takeHostLog(), QStringList{"Defined set 'mine' with 1 members."});
        QCOMPARE(membersOf(newest(shown)), "C1");
    }

    void anEmptySelectionMakesASetWithoutMembers() {
        Compound* shown = addLine("1abc", {0});
        showWindow();
        QVERIFY(defineSet("none"));
        QCOMPARE(takeHostLog(), QStringList{"Defined set 'none' with 0 members."});
        QCOMPARE(membersOf(newest(shown)), "");
    }

    void namesAreHandedOnInLatin1() {
        Compound* shown = addLine("1abc", {0});
        showWindow();
        QVERIFY(defineSet(QString::fromUtf8("é Ω")));
        QCOMPARE(newest(shown)->GetName(), std::string("\xe9 ?"));
        QCOMPARE(takeHostLog(),
                 QStringList{QString::fromUtf8("Defined set 'é ?' with 0 members.")});
    }

    void twoSetsMayHaveOneName() {
        Compound* shown = addLine("1abc", {0});
        showWindow();
        QVERIFY(defineSet("twice"));
        QVERIFY(defineSet("twice"));
        QCOMPARE(rows(*m_window).filter("twice").size(), 2);
        QVERIFY(newest(shown) != *(shown->ChildEnd() - 2));
        takeHostLog();
    }

    void anEmptyNameOrACancelMakesNothing() {
        Compound* shown = addLine("1abc", {0});
        showWindow();
        OtherPlugin other;
        QVERIFY(defineSet(QString()));
        QVERIFY(defineSet([](QInputDialog& dialog) { pressEscape(dialog); }));
        QCOMPARE(newest(shown)->GetName(), std::string("A"));
        QCOMPARE(other.adds, 0);
    }

    void withoutATreeNothingIsAsked() {
        addLine("1abc", {0});
        showWindow(-1);
        QVERIFY(!defineSet("never"));
    }

    void aRefusedGuardMakesAndLogsNothing() {
        Compound* shown = addLine("1abc", {0});
        showWindow();
        std::optional<memory_host::SpaceLock> lock;
        QVERIFY(defineSet([&](QInputDialog& dialog) {
            lock.emplace();
            pressEnter(dialog);
        }));
        QCOMPARE(takeMessages(), QStringList{"Cannot update CDB!"});
        QCOMPARE(newest(shown)->GetName(), std::string("A"));
        lock.reset();
        QVERIFY(defineSet("now"));
        QCOMPARE(takeHostLog(), QStringList{"Defined set 'now' with 0 members."});
    }

    void othersHearOfTheNewSetOnce() {
        addLine("1abc", {0});
        showWindow();
        OtherPlugin other;
        QVERIFY(defineSet("new"));
        QCOMPARE(other.adds, 1);
        QCOMPARE(other.updates + other.deletes, 0);
        takeHostLog();
    }

    void theCellsOfASetSelectShowAndHideItsMembers() {
        Compound* shown = addLine("1abc", {0, 1, 2});
        atomsOf(shown)[0]->SetSelected(true);
        atomsOf(shown)[2]->SetSelected(true);
        showWindow();
        QVERIFY(defineSet("ends"));
        takeHostLog();
        const QStringList set = {"1abc", "ends"};
        rightClickCell(set, 1);
        QCOMPARE(visibleNames(shown), "C1");
        QCOMPARE(cells(*m_window, set), (QStringList{"ends", "No", "Yes", "Yes"}));
        rightClickCell(set, 1);
        QCOMPARE(visibleNames(shown), "C0 C1 C2");
        rightClickCell(set, 2);
        QCOMPARE(selectedNames(shown), "");
        rightClickCell(set, 2);
        QCOMPARE(selectedNames(shown), "C0 C2");
        atomsOf(shown)[0]->SetSelected(false);
        QCOMPARE(cells(*m_window, set), (QStringList{"ends", "Yes", "No", "Yes"}));
        rightClickCell(set, 3);
        QCOMPARE(selectedNames(shown), "");
        rightClickCell(set, 3);
        QCOMPARE(selectedNames(shown), "C0 C2");
        // A left click on the row itself selects its members and nothing else.
        shown->SetSelected(false);
        m_window->commUpdate();
        clickRow(*m_window, set);
        QCOMPARE(selectedNames(shown), "C0 C2");
    }

    // The members' rows are unselected by the same press, and handed over before the set's.
    void aPressAgainOnASelectedSetKeepsItsMembersSelected() {
        Compound* shown = addLine("1abc", {0, 1, 2, 3});
        atomsOf(shown)[0]->SetSelected(true);
        atomsOf(shown)[2]->SetSelected(true);
        showWindow();
        QVERIFY(defineSet("ends"));
        takeHostLog();
        const QStringList set = {"1abc", "ends"};
        for (int turn = 0; turn < 2; ++turn) {
            clickRow(*m_window, set);
            QCOMPARE(selectedNames(shown), "C0 C2");
            QCOMPARE(cells(*m_window, set), (QStringList{"ends", "Yes", "Yes", "Yes"}));
            QVERIFY(isMarked(*m_window, set));
        }
        atomsOf(shown)[1]->SetSelected(true);
        m_window->commUpdate();
        QTest::keyClick(treeOf(*m_window), Qt::Key_End);
        QCOMPARE(selectedNames(shown), "C0 C2");
        clickRow(*m_window, set, Qt::LeftButton, Qt::ControlModifier);
        QCOMPARE(selectedNames(shown), "");
    }

    void aSetSurvivesTheDeletionOfItsMembers() {
        Compound* shown = addLine("1abc", {0, 1, 2});
        atomsOf(shown)[0]->SetSelected(true);
        atomsOf(shown)[2]->SetSelected(true);
        showWindow();
        QVERIFY(defineSet("ends"));
        takeHostLog();
        Compound* set = newest(shown);
        atomsOf(shown)[2]->SetSelected(false);
        trigger(*m_window, QStringLiteral("Delete"), QStringLiteral("Atom"));
        QCOMPARE(membersOf(set), "C2");
        QCOMPARE(cells(*m_window, {"1abc", "ends"}), (QStringList{"ends", "Yes", "No", "No"}));
        set->SetSelected(true);
        trigger(*m_window, QStringLiteral("Delete"), QStringLiteral("Atom"));
        QCOMPARE(membersOf(set), "");
        QCOMPARE(rows(*m_window).back(), " ends");
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
    }

    void deletingASetLeavesItsMembers() {
        Compound* shown = addLine("1abc", {0, 1});
        shown->SetSelected(true);
        showWindow();
        QVERIFY(defineSet("all"));
        takeHostLog();
        QVERIFY(withQuestion(
            [this] {
                clickRow(*m_window, {"1abc", "all"}, Qt::MiddleButton);
            },
            pressOk));
        QCOMPARE(rows(*m_window).filter("all").size(), 0);
        QCOMPARE(selectedNames(shown), "C0 C1");
    }

    void theShownItemDestroyedWhileTheNameIsAskedEndsTheCommand() {
        Compound* shown = addLine("1abc", {0});
        addLine("2abc", {0});
        showWindow();
        QVERIFY(defineSet([&](QInputDialog& dialog) {
            destroyElsewhere(shown);
            // Another one may stand at the same address by now.
            addLine("3abc", {0});
            pressEnter(dialog);
        }));
        QCOMPARE(entries(*m_window), (QStringList{" _ 2abc", " _ 3abc"}));
        for (Compound* item :
             {Space::instance()->ChildBegin()[0], Space::instance()->ChildBegin()[1]})
            QCOMPARE(newest(item)->GetName(), std::string("A"));
        QCOMPARE(takeMessages(), QStringList{"Vuxo::commDelete(): Did somebody killed my data?"});
    }

    void aWindowThatGoesWhileTheNameIsAskedIsNoHarm() {
        Compound* shown = addLine("1abc", {0});
        showWindow();
        QVERIFY(defineSet([&](QInputDialog& dialog) {
            m_window.reset();
            pressEnter(dialog);
        }));
        QCOMPARE(newest(shown)->GetName(), std::string("A"));
    }
};

REGISTER_TEST(NamedSetsTest)
#include "NamedSetsTest.moc"
