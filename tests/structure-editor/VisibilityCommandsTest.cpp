// The commands that hide and show atoms, through their menu entries.
#include "CommandTools.h"
#include "Kinds.h"
#include "SlotTools.h"
#include "Space.h"
#include "Traversal.h"
#include "WindowTestCase.h"
#include "files/Files.h"
#include "items/Building.h"
#include "items/SpaceLock.h"

#include <algorithm>
#include <stdexcept>

using namespace command_tools;
using namespace slot_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

// Those that hide and show, and none that colour.
const std::vector<Entry> commands = [] {
    std::vector<Entry> entries = changingEntries("Display");
    std::erase_if(entries, [](const Entry& entry) {
        const QLatin1String label(entry.label);
        return !label.startsWith(QLatin1String("Hide")) && label != QLatin1String("Show");
    });
    return entries;
}();

void addCommandRows() {
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(commands.size()); ++i)
        QTest::newRow(commands[size_t(i)].label) << i;
}

// Hides and selects atoms by their places.
void hideAtoms(Compound* root, const std::vector<std::size_t>& places) {
    for (const std::size_t place : places)
        atomsOf(root)[place]->SetVisible(false);
}
void selectAtoms(Compound* root, const std::vector<std::size_t>& places) {
    for (const std::size_t place : places)
        atomsOf(root)[place]->SetSelected(true);
}

} // namespace

class VisibilityCommandsTest : public WindowTestCase {
    Q_OBJECT

    void display(const QString& label) { trigger(*m_window, QStringLiteral("Display"), label); }

private slots:
    void hideAndShowChangeTheSelectedAtomsOfTheShownItemOnly() {
        Compound* shown = addLine("1abc", {0, 1, 2, 3});
        Compound* other = addLine("2abc", {0, 1});
        selectAtoms(shown, {1, 2});
        hideAtoms(shown, {3});
        other->SetSelected(true);
        showWindow();
        display("Hide");
        QCOMPARE(visibleNames(shown), "C0");
        QCOMPARE(visibleNames(other), "C0 C1");
        display("Show");
        QCOMPARE(visibleNames(shown), "C0 C1 C2");
        QCOMPARE(selectedNames(shown), "C1 C2");
        QCOMPARE(selectedNames(other), "C0 C1");
    }

    void onlyAtomsAreHiddenAndShown() {
        Compound* shown = addLine("1abc", {0, 1});
        Compound* bonds = itemAt(shown, {"A", "Bonds"});
        bonds->SetSelected(true);
        showWindow();
        display("Hide");
        QVERIFY(bonds->IsVisible());
        bonds->SetVisible(false);
        display("Show");
        QVERIFY(!bonds->IsVisible());
    }

    void theyTakeBackWhatARefusedSelectionMarked() {
        Compound* shown = addLine("1abc", {0, 1});
        selectAtoms(shown, {0});
        showWindow();
        // Again and again: what the user changed was never handed over.
        for (int turn = 0; turn != 3; ++turn) {
            display("Hide"); // nothing is to be brought in line afterwards
            {
                const memory_host::SpaceLock lock;
                clickRow(*m_window, {"1abc", "A", "Groups"});
            }
            QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
            QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups"}));
            display("Show");
            QVERIFY(!isMarked(*m_window, {"1abc", "A", "Groups"}));
        }
        QCOMPARE(selectedNames(shown), "C0");
    }

    void theyBringRowsThatCameInLineWithTheirParents() {
        Compound* shown = addLine("1abc", {0, 1});
        Compound* group = itemAt(shown, {"A", "Groups", "UNL 1", "Group"});
        group->SetSelected(true);
        showWindow();
        display("Hide");
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "UNL 1"}));
        addAtomTo(group, "C9");
        display("Show");
        QVERIFY(!isMarked(*m_window, {"1abc", "A", "Groups", "UNL 1"}));
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "UNL 1", "Group", "C0"}));
        QVERIFY(!isMarked(*m_window, {"1abc", "A", "Groups", "UNL 1", "Group", "C9"}));
    }

    void hideAndShowRefreshTheWindowBeforeOthersHear() {
        Compound* shown = addLine("1abc", {0, 1});
        shown->SetSelected(true);
        showWindow();
        OtherPlugin other;
        QStringList seen;
        other.onUpdate = [&] {
            seen = entries(*m_window) + cells(*m_window, {"1abc", "A", "Groups", "UNL 1"});
        };
        display("Hide");
        QCOMPARE(seen, (QStringList{"OX 1abc", "UNL 1", "No", "Yes", "Yes"}));
        display("Show");
        QCOMPARE(seen, (QStringList{" X 1abc", "UNL 1", "Yes", "Yes", "Yes"}));
        QCOMPARE(other.updates, 2);
    }

    void withNothingSelectedHideAndShowChangeNothingButRefresh_data() {
        QTest::addColumn<QString>("label");
        QTest::newRow("hide") << "Hide";
        QTest::newRow("show") << "Show";
    }
    void withNothingSelectedHideAndShowChangeNothingButRefresh() {
        QFETCH(QString, label);
        Compound* shown = addLine("1abc", {0, 1});
        Compound* other = addLine("2abc", {0});
        hideAtoms(shown, {1});
        showWindow();
        other->SetVisible(false); // nobody is told
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " _ 2abc"}));
        display(label);
        QCOMPARE(visibleNames(shown), "C0");
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", "O_ 2abc"}));
    }

    void withNothingSelectedEveryAtomOfTheShownItemIsHidden() {
        Compound* shown = addLine("1abc", {0, 1});
        Compound* other = addLine("2abc", {0, 1});
        showWindow();
        display("Hide unselected");
        QCOMPARE(visibleNames(shown), "");
        QCOMPARE(visibleNames(other), "C0 C1");
    }

    void withEverythingSelectedNothingIsHidden_data() {
        QTest::addColumn<QString>("label");
        QTest::newRow("shown item") << "Hide unselected";
        QTest::newRow("whole space") << "Hide All unsels";
    }
    void withEverythingSelectedNothingIsHidden() {
        QFETCH(QString, label);
        Compound* shown = addLine("1abc", {0, 1});
        Compound* other = addLine("2abc", {0, 1});
        shown->SetSelected(true);
        other->SetSelected(true);
        hideAtoms(other, {0});
        showWindow();
        display(label);
        QCOMPARE(visibleNames(shown), "C0 C1");
        QCOMPARE(visibleNames(other), "C1");
    }

    void hidingTheUnselectedNeverShowsAnAtom_data() {
        withEverythingSelectedNothingIsHidden_data();
    }
    void hidingTheUnselectedNeverShowsAnAtom() {
        QFETCH(QString, label);
        Compound* shown = addLine("1abc", {0, 1, 2, 3});
        selectAtoms(shown, {0, 1});
        hideAtoms(shown, {0, 3});
        showWindow();
        display(label);
        QCOMPARE(visibleNames(shown), "C1");
        QCOMPARE(selectedNames(shown), "C0 C1");
    }

    void hidingAllUnselectedGoesBeyondTheShownItem() {
        Compound* shown = addLine("1abc", {0, 1});
        Compound* other = addLine("2abc", {0, 1});
        selectAtoms(shown, {0});
        selectAtoms(other, {1});
        showWindow();
        display("Hide unselected");
        QCOMPARE(visibleNames(shown), "C0");
        QCOMPARE(visibleNames(other), "C0 C1");
        display("Hide All unsels");
        QCOMPARE(visibleNames(shown), "C0");
        QCOMPARE(visibleNames(other), "C1");
    }

    // Others are told; the window itself waits for the next occasion.
    void hidingTheUnselectedDoesNotRefreshTheWindow_data() {
        withEverythingSelectedNothingIsHidden_data();
    }
    void hidingTheUnselectedDoesNotRefreshTheWindow() {
        QFETCH(QString, label);
        Compound* shown = addLine("1abc", {0, 1});
        showWindow();
        OtherPlugin other;
        display(label);
        QCOMPARE(visibleNames(shown), "");
        QCOMPARE(entries(*m_window), QStringList{" _ 1abc"});
        QCOMPARE(other.updates, 1);
        showElsewhere(shown, false);
        QCOMPARE(entries(*m_window), QStringList{"O_ 1abc"});
    }

    // What belongs to another model stays unseen, but keeps what it was told.
    void showingAnAtomOfAnotherModelWaitsForThatModel() {
        Compound* shown =
            addChain("1abc", {{"R 1", {{"N", "N", {}}, {"CA", "C", {}, 1}, {"CB", "C", {}, 2}}}});
        selectAtoms(shown, {2});
        showWindow();
        display("Show");
        QCOMPARE(visibleNames(shown), "N CA");
        display("Hide");
        Compound* residue = itemAt(shown, {"A", "Groups", "R 1"});
        residue->NextModel();
        QCOMPARE(visibleNames(shown), "N");
        display("Show");
        QCOMPARE(visibleNames(shown), "N CB");
    }

    void localCommandsDoNothingAtAllWithoutATree_data() { addCommandRows(); }
    void localCommandsDoNothingAtAllWithoutATree() {
        QFETCH(int, index);
        if (!commands[size_t(index)].isLocal())
            return;
        Compound* shown = addLine("1abc", {0, 1, 2});
        selectAtoms(shown, {0});
        hideAtoms(shown, {1});
        openWindow();
        OtherPlugin other;
        shown->SetVisible(true);
        hideAtoms(shown, {0, 1, 2});
        display(commands[size_t(index)].label);
        QCOMPARE(entries(*m_window), QStringList{" / 1abc"}); // nor a refresh
        QCOMPARE(other.updates, 0);
        const memory_host::SpaceLock lock; // a guard would be refused, and that said
        display(commands[size_t(index)].label);
        QCOMPARE(takeMessages(), QStringList());
    }

    void hidingAllUnselectedWorksWithoutATree() {
        Compound* shown = addLine("1abc", {0, 1});
        selectAtoms(shown, {0});
        openWindow();
        OtherPlugin other;
        display("Hide All unsels");
        QCOMPARE(visibleNames(shown), "C0");
        QCOMPARE(other.updates, 1);
    }

    void anEmptySpaceIsNoHarm_data() { addCommandRows(); }
    void anEmptySpaceIsNoHarm() {
        QFETCH(int, index);
        openWindow();
        display(commands[size_t(index)].label);
        QCOMPARE(entries(*m_window), QStringList());
    }

    void aShownItemWithoutAtomsIsNoHarm_data() { addCommandRows(); }
    void aShownItemWithoutAtomsIsNoHarm() {
        QFETCH(int, index);
        Compound* shown = addEmpty("empty");
        shown->SetSelected(true);
        showWindow();
        display(commands[size_t(index)].label);
        QVERIFY(shown->IsVisible());
    }

    void aRefusedCommandChangesNothingAndSaysSoOnce_data() { addCommandRows(); }
    void aRefusedCommandChangesNothingAndSaysSoOnce() {
        QFETCH(int, index);
        Compound* shown = addLine("1abc", {0, 1, 2, 3});
        selectAtoms(shown, {0, 1});
        hideAtoms(shown, {1, 3});
        Compound* second = addLine("2abc", {0});
        showWindow();
        second->SetVisible(false); // nobody is told
        OtherPlugin other;
        {
            const memory_host::SpaceLock lock;
            display(commands[size_t(index)].label);
        }
        QCOMPARE(takeMessages(), QStringList{"Cannot update CDB!"});
        QCOMPARE(visibleNames(shown), "C0 C2");
        QCOMPARE(entries(*m_window), (QStringList{" / 1abc", " _ 2abc"}));
        QCOMPARE(other.updates + other.adds + other.deletes, 0);
        // The guard has ended: the next time it goes through.
        display(commands[size_t(index)].label);
        QVERIFY(visibleNames(shown) != "C0 C2");
        QCOMPARE(other.updates, 1);
    }

    void aCommandThatAnotherOnesNotificationCallsIsDone() {
        Compound* shown = addLine("1abc", {0, 1});
        selectAtoms(shown, {0});
        showWindow();
        OtherPlugin other;
        other.onUpdate = [&] {
            other.onUpdate = {};
            display("Show");
        };
        display("Hide");
        QCOMPARE(visibleNames(shown), "C0 C1");
        QCOMPARE(entries(*m_window), QStringList{" / 1abc"});
    }

    void othersHearOnceWhateverTheyDo_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("deed");
        for (int i = 0; i < int(commands.size()); ++i)
            for (const char* deed : {"listens", "throws", "destroys the shown item",
                                     "destroys an atom", "ends the window"})
                QTest::addRow("%s, %s", commands[size_t(i)].label, deed) << i << deed;
    }
    void othersHearOnceWhateverTheyDo() {
        QFETCH(int, index);
        QFETCH(QString, deed);
        Compound* shown = addLine("1abc", {0, 1, 2, 3});
        selectAtoms(shown, {0, 1});
        hideAtoms(shown, {1, 3});
        addLine("2abc", {0});
        showWindow();
        OtherPlugin other;
        other.onUpdate = [&] {
            if (deed == "throws")
                throw std::runtime_error("cannot take this");
            if (deed == "destroys the shown item")
                destroyElsewhere(shown);
            if (deed == "destroys an atom")
                destroyElsewhere(atomsOf(shown)[0]);
            if (deed == "ends the window")
                m_window.reset();
        };
        const QLatin1String label(commands[size_t(index)].label);
        display(label);
        QCOMPARE(other.updates, 1);
        if (deed.startsWith("destroys")) {
            QCOMPARE(takeMessages(),
                     QStringList{"Vuxo::commDelete(): Did somebody killed my data?"});
            QCOMPARE(rows(*m_window), QStringList());
            QCOMPARE(entries(*m_window).size(), deed == "destroys an atom" ? 2 : 1);
        }
        if (deed == "throws")
            QCOMPARE(takeHostLog().size(), 1); // the host's line
        if (deed != "destroys the shown item") {
            const QString expected = label == QLatin1String("Show")   ? "C0 C1 C2"
                                     : label == QLatin1String("Hide") ? "C2"
                                                                      : "C0";
            QCOMPARE(visibleNames(shown), deed == "destroys an atom"
                                              ? QString(expected).remove("C0").trimmed()
                                              : expected);
        }
    }

    void theRestOfARealStructureIsHidden() {
        memory_host::openFile(structure("1cbs.cif.gz").toStdString());
        Compound* shown = *Space::instance()->ChildBegin();
        const std::vector<Compound*> atoms = atomsOf(shown);
        for (Compound* atom : atoms)
            atom->SetSelected(atom->GetFQName().find("/REA ") != std::string::npos);
        const auto countOf = [&](bool (Compound::*holds)() const) {
            return std::count_if(atoms.begin(), atoms.end(),
                                 [&](const Compound* atom) { return (atom->*holds)(); });
        };
        QCOMPARE(countOf(&Compound::IsSelected), 22);
        showWindow();
        display("Hide unselected");
        QCOMPARE(countOf(&Compound::IsVisible), 22);
        display("Hide");
        QCOMPARE(countOf(&Compound::IsVisible), 0);
        trigger(*m_window, "Select", "Invert");
        display("Show");
        QCOMPARE(countOf(&Compound::IsVisible), std::ptrdiff_t(atoms.size()) - 22);
        QCOMPARE(takeMessages(), QStringList{"Vuxo::InvertSelection"});
        QCOMPARE(entries(*m_window).front().left(3), " / ");
    }
};

REGISTER_TEST(VisibilityCommandsTest)
#include "VisibilityCommandsTest.moc"
