// What is counted after a change, and how it is told.
#include "StateCount.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "Geometry.h"
#include "Kinds.h"
#include "Space.h"
#include "StatusLine.h"
#include "TestData.h"
#include "TestSupport.h"

using namespace workbench;

class StateCountTest : public test_support::TestCase {
    Q_OBJECT

    static StateCount counted() {
        StateCounter counter;
        while (!counter.step())
            ;
        return counter.count();
    }
    template <class Change> static void change(Change apply) {
        const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
        QVERIFY(guard.m_good);
        apply();
    }

private slots:
    void nothingIsOpenAtFirst() { QCOMPARE(stateText(counted()), "nothing is open"); }

    void atomsResiduesAndChainsAreCounted() {
        const test_data::Chains chains(3, 4); // of 4 residues with 2 atoms each
        QCOMPARE(stateText(counted()), "nothing selected");
        QCOMPARE(counted().atoms, std::size_t{24});
        change([&] {
            chains.residue(0, 0)->SetSelected(true);
            chains.atom(1, 2, 1)->SetSelected(true);
            chains.atom(2, 0, 0)->SetVisible(false);
        });
        QCOMPARE(stateText(counted()), "3 atoms, 2 residues, 2 chains selected; 1 hidden");
        change([&] { TAVIK::Space::instance()->SetSelected(true); });
        QCOMPARE(stateText(counted()), "24 atoms, 12 residues, 3 chains selected; 1 hidden");
    }

    void whatAChangeDidIsTheDifference() {
        const StateCount none;
        const test_data::Chains chains(1, 700);
        const StateCount before = counted();
        QCOMPARE(changeText(none, before), "+1 entry, +1,400 atoms");
        change([&] { chains.chain(0)->SetSelected(true); });
        const StateCount all = counted();
        QCOMPARE(changeText(before, all), "+1,400 atoms selected");
        QCOMPARE(changeText(all, all), "nothing changed");
        change([&] {
            chains.atom(0, 0, 0)->SetSelected(false);
            chains.atom(0, 1, 0)->SetVisible(false);
        });
        QCOMPARE(changeText(all, counted()), QString::fromUtf8("−1 atom selected, +1 atom hidden"));
    }

    void alternativesThatAreNotActiveAreNotHidden() {
        TAVIK::Compound* residue = nullptr;
        std::vector<TAVIK::Atom*> atoms;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            residue = TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), "SER 1", "Residue");
            for (const unsigned int model : {0U, 1U, 1U, 2U, 2U, 2U}) {
                TAVIK::AtomValues values;
                values.name = "CB";
                values.type = "C";
                values.model = model;
                atoms.push_back(TAVIK::DataMaker::makeAtom(residue, values));
            }
        }
        QCOMPARE(stateText(counted()), "nothing selected");
        change([&] { residue->NextModel(); });
        QCOMPARE(stateText(counted()), "nothing selected");
        change([&] { atoms[5]->SetVisible(false); });
        QCOMPARE(stateText(counted()), "nothing selected; 1 hidden");
        change([&] { atoms[0]->SetVisible(false); });
        QCOMPARE(stateText(counted()), "nothing selected; 2 hidden");
    }

    void atomsOutsideOfResiduesAreCounted() {
        const test_data::Chains chains(1, 2);
        TAVIK::Atom* loose = nullptr;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            loose = test_data::addAtom(chains.chain(0), "ZN", "Zn", 0, 0, 0);
        }
        QCOMPARE(counted().atoms, std::size_t{5});
        change([&] { loose->SetSelected(true); });
        QCOMPARE(stateText(counted()), "1 atom, 0 residues, 1 chain selected");
    }

    void bondsSetsSurfacesAndGridsAreCountedByKind() {
        using TAVIK::DataMaker;
        const test_data::Chains chains(1, 2);
        TAVIK::Compound* bond = nullptr;
        TAVIK::Compound* surface = nullptr;
        TAVIK::Compound* grid = nullptr;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::Compound* const bonds =
                DataMaker::makeCore(chains.chain(0), "Bonds", "Composite");
            bond = DataMaker::makeBond(bonds, chains.atom(0, 0, 0), chains.atom(0, 0, 1));
            DataMaker::makeBond(bonds, chains.atom(0, 1, 0), chains.atom(0, 1, 1));
            DataMaker::makeSet(chains.entry, "site", {chains.atom(0, 0, 0), chains.atom(0, 0, 1)});
            surface = DataMaker::makeSurface(TAVIK::Space::instance(), "skin", {});
            TAVIK::GridValues values;
            values.points = {1, 1, 1};
            values.values = {1.0F};
            grid = DataMaker::makeGrid(TAVIK::Space::instance(), "map", std::move(values));
        }
        QVERIFY(surface && grid);
        QCOMPARE(stateText(counted()), "nothing selected");
        change([&] { bond->SetSelected(true); });
        const StateCount one = counted();
        QCOMPARE(stateText(one), "1 bond selected");
        change([&] {
            surface->SetSelected(true);
            grid->SetSelected(true);
            chains.residue(0, 0)->SetSelected(true);
        });
        QCOMPARE(stateText(counted()),
                 "2 atoms, 1 residue, 1 chain, 1 bond, 1 set, 1 surface, 1 grid selected");
        QCOMPARE(changeText(one, counted()), "+2 atoms selected, +1 set selected, "
                                             "+1 surface selected, +1 grid selected");
        change([&] {
            TAVIK::Space::instance()->SetSelected(false);
            surface->SetVisible(false);
            chains.atom(0, 1, 0)->SetVisible(false);
        });
        QCOMPARE(stateText(counted()), "nothing selected; 1 atom, 1 surface hidden");
        // A bond of a hidden atom is hidden with it, and counts when it is hidden by itself.
        change([&] { bond->SetVisible(false); });
        QCOMPARE(stateText(counted()), "nothing selected; 1 atom, 1 bond, 1 surface hidden");
        change([&] { chains.chain(0)->SetVisible(false); });
        QCOMPARE(stateText(counted()), "nothing selected; 4 atoms, 1 set, 1 surface hidden");
        change([&] { chains.chain(0)->SetSelected(true); });
        QVERIFY(stateText(counted()).startsWith("4 atoms, 2 residues, 1 chain, 2 bonds, 1 set"));
    }

    // Far more than what is counted at once.
    void manyBondsAreCountedInPieces() {
        const test_data::Chains chains(1, 1);
        TAVIK::Compound* bonds = nullptr;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            bonds = TAVIK::DataMaker::makeCore(chains.entry, "Bonds", "Composite");
            for (int i = 0; i != 250'000; ++i)
                TAVIK::DataMaker::makeBond(bonds, chains.atom(0, 0, 0), chains.atom(0, 0, 1));
        }
        change([&] { bonds->SetSelected(true); });
        StateCounter counter;
        int steps = 1;
        while (!counter.step())
            ++steps;
        QCOMPARE(stateText(counter.count()), "250,000 bonds selected");
        QVERIFY(steps > 2);
    }

    void anotherSelectionOfTheSameSizeIsAChange() {
        const test_data::Chains chains(1, 2);
        change([&] { chains.residue(0, 0)->SetSelected(true); });
        const StateCount before = counted();
        change([&] {
            chains.residue(0, 0)->SetSelected(false);
            chains.residue(0, 1)->SetSelected(true);
        });
        QCOMPARE(changeText(before, counted()), "other items are selected");
        const StateCount selected = counted();
        change([&] { chains.atom(0, 0, 0)->SetColor(Color(0xff123456U)); });
        QCOMPARE(changeText(selected, counted()), "colours changed");
    }

    void theStatusLineSaysItAfterEveryChange() {
        StatusLine line(nullptr);
        QTRY_VERIFY(!line.isCounting());
        QCOMPARE(line.state(), "nothing is open");
        const test_data::Chains chains(1, 3);
        QTRY_COMPARE(line.said(), "+1 entry, +6 atoms");
        change([&] { chains.residue(0, 1)->SetSelected(true); });
        QTRY_COMPARE(line.said(), "+2 atoms selected");
        QCOMPARE(line.state(), "2 atoms, 1 residue, 1 chain selected");
        change([] {});
        QTRY_COMPARE(line.said(), "nothing changed");
        Messages::Show("Surface of 1,213 atoms");
        QCOMPARE(line.said(), "Surface of 1,213 atoms");
        QCOMPARE(takeHostLog(), QStringList("Surface of 1,213 atoms"));
    }

    void aCountInProgressEndsWithItsItems() {
        const test_data::Chains chains(3, 25'000); // more atoms than it counts at once
        StatusLine line(nullptr);
        QCoreApplication::processEvents();
        QVERIFY(line.isCounting());
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(chains.entry);
        }
        QTRY_VERIFY(!line.isCounting());
        QCOMPARE(line.state(), "nothing is open");
    }
};

REGISTER_TEST(StateCountTest)
#include "StateCountTest.moc"
