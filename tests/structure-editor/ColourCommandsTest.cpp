// The commands that colour items: what all of them have in common, "Default color" and "Colour
// Atoms by Residue".
#include "ColourTestCase.h"
#include "FailingMemory.h"
#include "Space.h"
#include "data/Colouring.h"
#include "items/Building.h"
#include "items/SpaceLock.h"

#include <optional>
#include <stdexcept>

using namespace colour_tools;
using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

class ColourCommandsTest : public ColourTestCase {
    Q_OBJECT

private slots:
    // -- all of them

    void theLineIsWrittenAlsoWithoutATreeAndNothingElseHappens_data() { addCommandRows(); }
    void theLineIsWrittenAlsoWithoutATreeAndNothingElseHappens() {
        QFETCH(int, index);
        Compound* shown = addWarm("1abc", {0});
        shown->SetSelected(true);
        itemAt(shown, {"A", "Groups", "UNL 1"})->SetColor(red);
        paint(atomsOf(shown), teal);
        openWindow();
        OtherPlugin other;
        const memory_host::SpaceLock lock; // a guard would be refused, and that said
        run(commands[index]);
        QCOMPARE(takeMessages(), QStringList{commands[index].line});
        QCOMPARE(atomsOf(shown)[0]->GetColor(), teal);
        QCOMPARE(selectedNames(shown), "C");
        QCOMPARE(other.updates, 0);
    }

    void withNothingSelectedNothingIsColoured_data() { addCommandRows(); }
    void withNothingSelectedNothingIsColoured() {
        QFETCH(int, index);
        Compound* shown = addWarm("1abc", {0, 60});
        itemAt(shown, {"A", "Groups", "UNL 1"})->SetColor(red);
        const std::vector<Color> before = coloursOf(itemsOf(shown));
        showWindow();
        OtherPlugin other;
        run(commands[index]);
        QCOMPARE(coloursOf(itemsOf(shown)), before);
        QCOMPARE(other.updates, 1);
        QCOMPARE(takeMessages(), QStringList{commands[index].line});
    }

    void aRefusedCommandChangesNothingAndSaysSoOnce_data() { addCommandRows(); }
    void aRefusedCommandChangesNothingAndSaysSoOnce() {
        QFETCH(int, index);
        Compound* shown = addWarm("1abc", {0, 60});
        shown->SetSelected(true);
        itemAt(shown, {"A", "Groups", "UNL 1"})->SetColor(red);
        paint(atomsOf(shown), seeThrough);
        const std::vector<Color> before = coloursOf(itemsOf(shown));
        showWindow();
        OtherPlugin other;
        {
            const memory_host::SpaceLock lock;
            QCOMPARE(run(commands[index]), index == 0);
        }
        QCOMPARE(takeMessages(), (QStringList{commands[index].line, refused}));
        QCOMPARE(coloursOf(itemsOf(shown)), before);
        QCOMPARE(selectedNames(shown), "C C");
        QCOMPARE(other.updates + other.adds + other.deletes, 0);
        run(commands[index]);
        QVERIFY(coloursOf(itemsOf(shown)) != before);
        QCOMPARE(other.updates, 1);
        takeMessages();
    }

    void theWindowIsRefreshedBeforeOthersHear_data() { addCommandRows(); }
    void theWindowIsRefreshedBeforeOthersHear() {
        QFETCH(int, index);
        addWarm("1abc", {0, 60})->SetSelected(true);
        Compound* second = addLine("2abc", {0});
        showWindow();
        second->SetVisible(false); // nobody is told
        OtherPlugin other;
        QStringList seen;
        other.onUpdate = [&] { seen = entries(*m_window); };
        run(commands[index]);
        QCOMPARE(seen, (QStringList{&commands[index] == &defaultColor ? " _ 1abc" : " X 1abc",
                                    "O_ 2abc"}));
        QCOMPARE(other.updates, 1);
        takeMessages();
    }

    void aWindowThatAHandlerEndsIsNoHarm_data() { addCommandRows(); }
    void aWindowThatAHandlerEndsIsNoHarm() {
        QFETCH(int, index);
        addWarm("1abc", {0, 60})->SetSelected(true);
        showWindow();
        OtherPlugin other;
        other.onUpdate = [&] { m_window.reset(); };
        run(commands[index]);
        QVERIFY(!m_window);
        takeMessages();
    }

    // -- "Default color"

    void everyKindGetsItsOwnDefaultColourBackAndTheSelectionIsCleared() {
        Compound* shown = addChain(
            "1abc", {{"R 1", {{"C1", "C", {}}, {"O1", "O", {}}}}, {"R 2", {{"C2", "C", {}}}}});
        const std::vector<Compound*> items = itemsOf(shown);
        const std::vector<Color> original = coloursOf(items);
        paint(items, teal);
        itemAt(shown, {"A", "Groups", "R 1"})->SetSelected(true);
        itemAt(shown, {"A", "Bonds"})->SetSelected(true);
        std::vector<bool> selected;
        for (const Compound* item : items)
            selected.push_back(item->IsSelected());
        showWindow();
        QVERIFY(!run(defaultColor));
        for (std::size_t i = 0; i != items.size(); ++i)
            QCOMPARE(items[i]->GetColor(), selected[i] ? original[i] : teal);
        QVERIFY(!shown->HasSelected());
        QVERIFY(!isMarked(*m_window, {"1abc", "A", "Groups", "R 1"}));
        QCOMPARE(entries(*m_window), QStringList{" _ 1abc"});
        QCOMPARE(takeMessages(), QStringList{defaultColor.line});
    }

    void theSelectionIsClearedInTheShownItemOnly() {
        addLine("1abc", {0})->SetSelected(true);
        Compound* other = addLine("2abc", {0});
        paint(atomsOf(other), teal);
        other->SetSelected(true);
        showWindow();
        run(defaultColor);
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " X 2abc"}));
        QCOMPARE(atomsOf(other)[0]->GetColor(), teal);
        QCOMPARE(takeMessages().size(), 1);
    }

    void withNothingSelectedTheTreeIsStillRefreshed() {
        Compound* shown = addLine("1abc", {0});
        Compound* other = addLine("2abc", {0});
        paint(atomsOf(shown), teal);
        showWindow();
        other->SetSelected(true); // nobody is told
        run(defaultColor);
        QCOMPARE(atomsOf(shown)[0]->GetColor(), teal);
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " X 2abc"}));
        QCOMPARE(takeMessages().size(), 1);
    }

    // -- "Colour Atoms by Residue"

    void allAtomsOfSelectedResiduesTakeTheResiduesColour() {
        const std::vector<AtomSpec> two = {{"C1", "C", {}}, {"C2", "C", {}}};
        Compound* shown = addChain("1abc", {{"R 1", two}, {"R 2", two}, {"R 3", two}});
        Compound* other = addChain("2abc", {{"R 1", two}});
        Compound* residues = itemAt(shown, {"A", "Groups"});
        residues->ChildBegin()[0]->SetColor(teal);
        residues->ChildBegin()[1]->SetColor(seeThrough);
        residues->ChildBegin()[2]->SetColor(red);
        itemAt(other, {"A", "Groups", "R 1"})->SetColor(red);
        residues->ChildBegin()[0]->SetSelected(true);
        residues->ChildBegin()[1]->SetSelected(true);
        atomsOf(shown)[4]->SetSelected(true); // one atom is not its residue
        other->SetSelected(true);
        showWindow();
        QVERIFY(!run(byResidue));
        QCOMPARE(coloursOf(atomsOf(shown)),
                 (std::vector<Color>{teal, teal, seeThrough, seeThrough, carbon, carbon}));
        QCOMPARE(coloursOf(atomsOf(other)), (std::vector<Color>{carbon, carbon}));
        QCOMPARE(itemAt(shown, {"A", "Groups", "R 1", "Group"})->GetColor(), white);
        QCOMPARE(takeMessages(), QStringList{byResidue.line});
    }

    // Which residues count as selected is the host's to say; of one that does, all atoms follow.
    void unselectedAtomsOfAResidueTakeItsColourToo() {
        Compound* shown = addLine("1abc", {0, 1, 2});
        Compound* residue = itemAt(shown, {"A", "Groups", "UNL 1"});
        atomsOf(shown)[1]->SetSelected(true);
        residue->SetColor(seeThrough);
        ColorGrp2Atom(residue);
        QCOMPARE(coloursOf(atomsOf(shown)), std::vector<Color>(3, seeThrough));
        QCOMPARE(residue->GetColor(), seeThrough);
        QCOMPARE(selectedNames(shown), "C1");
    }

    void highlightsAreOffOnlyWhileAtomsAreColouredByResidue_data() {
        QTest::addColumn<bool>("before");
        QTest::addColumn<QString>("how");
        for (const bool before : {true, false})
            for (const char* how : {"done", "refused", "without a tree", "nothing selected",
                                    "a handler throws", "a handler destroys the shown item",
                                    "a handler ends the window", "out of memory"})
                QTest::addRow("%s, %s", before ? "on" : "off", how) << before << how;
    }
    void highlightsAreOffOnlyWhileAtomsAreColouredByResidue() {
        QFETCH(bool, before);
        QFETCH(QString, how);
        Compound* shown = addLine("1abc", {0, 1});
        addEmpty(std::string(20'000, 'x'));
        shown->SetSelected(how != "nothing selected");
        if (how == "without a tree")
            openWindow();
        else
            showWindow();
        std::optional<memory_host::SpaceLock> lock;
        std::optional<FailingMemory> memory;
        OtherPlugin other;
        bool during = true;
        other.onUpdate = [&] {
            during = Space::GetShowSelection();
            if (how == "a handler throws")
                throw std::runtime_error("cannot take this");
            if (how == "a handler destroys the shown item")
                destroyElsewhere(shown);
            if (how == "a handler ends the window")
                m_window.reset();
        };
        const bool original = Space::GetShowSelection();
        Space::SetShowSelection(before);
        if (how == "refused")
            lock.emplace();
        if (how == "out of memory")
            memory.emplace(0, 1);
        run(byResidue);
        const bool after = Space::GetShowSelection();
        const bool failed = how == "out of memory" && FailingMemory::refusals() > 0;
        memory.reset();
        Space::SetShowSelection(original);
        QCOMPARE(after, before);
        QStringList expected{byResidue.line};
        if (how == "refused")
            expected << refused;
        if (how == "a handler destroys the shown item")
            expected << deleted;
        QCOMPARE(takeMessages(), expected);
        const bool changes = how != "refused" && how != "without a tree";
        QCOMPARE(other.updates, changes ? 1 : 0);
        QCOMPARE(during, !changes);
        const QStringList log = takeHostLog();
        QCOMPARE(failed, how == "out of memory");
        QCOMPARE(log.size(), failed || how == "a handler throws" ? 1 : 0);
        if (failed)
            QVERIFY2(log.front().contains(" SelectedColorGrp2Atom failed: "),
                     qPrintable(log.front()));
    }
};

REGISTER_TEST(ColourCommandsTest)
#include "ColourCommandsTest.moc"
