// Showing only what is selected, and everything again.
#include "Showing.h"
#include "DataPoint.h"
#include "Geometry.h"
#include "MainWindowCase.h"
#include "StatusLine.h"
#include "TestData.h"
#include "Traversal.h"
#include "items/SpaceLock.h"

using workbench::Showing;

class ShowingTest : public test_support::MainWindowCase {
    Q_OBJECT

    using Items = std::vector<TAVIK::Compound*>;

    static Items shownAtoms() {
        Items atoms;
        TAVIK::GetAtoms(TAVIK::Space::instance(), atoms, true);
        std::erase_if(atoms, [](const TAVIK::Compound* atom) { return !atom->IsVisible(); });
        return atoms;
    }
    static void select(const Items& items) {
        const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
        TAVIK::Space::instance()->SetSelected(false);
        for (TAVIK::Compound* item : items)
            item->SetSelected(true);
    }

private slots:
    void whatIsNotSelectedIsHiddenWhateverHoldsIt() {
        const test_data::Chains chains(2, 3);
        const test_data::Chains others(1, 1);
        TAVIK::Compound* line = nullptr;
        TAVIK::Compound* set = nullptr;
        TAVIK::Compound* bond = nullptr;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::Space* const space = TAVIK::Space::instance();
            line = TAVIK::DataMaker::makePolyLine(space, "line", {TAVIK::Vertex(0, 0, 4, true)});
            set = TAVIK::DataMaker::makeSet(space, "set",
                                            {chains.atom(0, 1, 0), chains.atom(0, 0, 0)});
            bond = TAVIK::DataMaker::makeBond(chains.entry, chains.atom(0, 1, 0),
                                              chains.atom(0, 1, 1));
        }
        // A whole residue, and one atom of another one that was hidden.
        select({chains.residue(0, 1), chains.atom(1, 2, 1)});
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            chains.residue(1, 2)->SetVisible(false);
        }
        QCOMPARE(workbench::showOnlySelected(), Showing::Done);
        QCOMPARE(shownAtoms(),
                 (Items{chains.atom(0, 1, 0), chains.atom(0, 1, 1), chains.atom(1, 2, 1)}));
        QVERIFY(!line->IsVisible() && bond->IsVisible());
        select({line});
        QCOMPARE(workbench::showOnlySelected(), Showing::Done);
        QCOMPARE(shownAtoms(), Items());
        QVERIFY(line->IsVisible() && !bond->IsVisible() && set->GetName() == "set");
        QCOMPARE(workbench::showEverything(), Showing::Done);
        QCOMPARE(shownAtoms().size(), std::size_t(14));
        QVERIFY(line->IsVisible() && bond->IsVisible());
        QVERIFY(line->IsSelected());
    }

    void ofAlternativeModelsTheActiveOneIsShown() {
        open();
        m_window->openFiles({structure("1ejg.pdb")});
        const Items before = shownAtoms();
        select({TAVIK::Space::instance()});
        QCOMPARE(workbench::showOnlySelected(), Showing::Done);
        QCOMPARE(shownAtoms(), before);
        select({before.front()});
        QCOMPARE(workbench::showOnlySelected(), Showing::Done);
        QCOMPARE(shownAtoms(), Items{before.front()});
        QCOMPARE(workbench::showEverything(), Showing::Done);
        QCOMPARE(shownAtoms(), before);
        takeMessages();
    }

    void nothingChangesWithoutASelectionOrAGuard() {
        const test_data::Chains chains(1, 2);
        QCOMPARE(workbench::showOnlySelected(), Showing::NothingSelected);
        QCOMPARE(shownAtoms().size(), std::size_t(4));
        select({chains.residue(0, 0)});
        {
            const memory_host::SpaceLock lock;
            QCOMPARE(workbench::showOnlySelected(), Showing::Refused);
            QCOMPARE(shownAtoms().size(), std::size_t(4));
            QCOMPARE(workbench::showEverything(), Showing::Refused);
        }
        QCOMPARE(workbench::showOnlySelected(), Showing::Done);
        QCOMPARE(shownAtoms().size(), std::size_t(2));
    }

    void theMenuSaysWhatItDid() {
        open();
        const test_data::Chains chains(2, 3);
        entry("View", "Show Only Selected")->trigger();
        QCOMPARE(m_window->status().said(), "Nothing is selected that could be shown alone.");
        select({chains.residue(0, 1)});
        QTRY_COMPARE(m_window->status().state(), "2 atoms, 1 residue, 1 chain selected");
        QTest::keyClick(m_window.get(), Qt::Key_I, Qt::ControlModifier);
        QTRY_COMPARE(m_window->status().said(), "+10 atoms hidden");
        QTest::keyClick(m_window.get(), Qt::Key_I, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_COMPARE(m_window->status().said(), QChar(0x2212) + QString("10 atoms hidden"));
        const memory_host::SpaceLock lock;
        entry("View", "Show Only Selected")->trigger();
        QVERIFY(m_window->status().said().startsWith("Nothing is hidden"));
        entry("View", "Show Everything")->trigger();
        QVERIFY(m_window->status().said().startsWith("Nothing is shown"));
        QCOMPARE(shownAtoms().size(), std::size_t(12));
    }
};

REGISTER_TEST(ShowingTest)
#include "ShowingTest.moc"
