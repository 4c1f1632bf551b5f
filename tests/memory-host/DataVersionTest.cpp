// What counts as a change of an entry's data.
#include "items/DataVersion.h"
#include "AtomDetails.h"
#include "DataAdder.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "FileTesting.h"
#include "History.h"
#include "Sample.h"
#include "TestSupport.h"
#include "history/Steps.h"

using memory_host::dataVersion;
using memory_host::hasUnsavedData;

class DataVersionTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void whatWasReadIsAsInItsFile() {
        const auto file = file_testing::opened(structure("1ubq.pdb").toStdString());
        QCOMPARE(dataVersion(file.items.front()), std::uint64_t{0});
        QVERIFY(!hasUnsavedData(file.items.front()));
        QVERIFY(!hasUnsavedData(nullptr));
    }

    void atomsAndBondsThatAreMadeChangedOrDestroyedCount() {
        const Sample sample;
        std::uint64_t before = 0;
        const auto isNew = [&] {
            const std::uint64_t now = dataVersion(sample.entry);
            return std::exchange(before, now) != now && hasUnsavedData(sample.entry);
        };
        QVERIFY(!isNew());
        TAVIK::Compound* made = nullptr;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            made = makeAtom(sample.groups[1]);
        }
        QVERIFY(isNew());
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::makeBond(sample.bondsBox, made, sample.atoms[3]);
        }
        QVERIFY(isNew());
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::SetAtomPosition(static_cast<TAVIK::Atom*>(made), TAVIK::Vertex(3, 2, 1, true));
        }
        QVERIFY(isNew());
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::SetAtomModel(static_cast<TAVIK::Atom*>(made), 1);
        }
        QVERIFY(isNew());
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            memory_host::setAtom(made, {.name = {}, .type = "Fe", .position = {}});
        }
        QVERIFY(isNew());
        for (TAVIK::Compound* const item : {sample.bonds[0], sample.atoms[0], sample.residues[1]}) {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(item);
            QVERIFY(isNew());
        }
    }

    void whatIsOnlyLookedAtDoesNotCount() {
        const Sample sample;
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            sample.chain->SetSelected(true);
            sample.chain->SetVisible(false);
            sample.atoms[0]->SetColor(Color(0xff010203U));
            sample.residues[0]->NextModel();
        }
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::makeSet(sample.entry, "set", {sample.atoms[0]});
            make(sample.entry, "Composite", "empty");
        }
        QVERIFY(!hasUnsavedData(sample.entry));
        QCOMPARE(dataVersion(sample.entry), std::uint64_t{0});
    }

    void whatAnAtomHasAlreadyDoesNotCount() {
        const Sample sample;
        auto* const atom = static_cast<TAVIK::Atom*>(sample.atoms[0]);
        const TAVIK::AtomValues fe{
            .name = {}, .type = "Fe", .position = TAVIK::Vertex(1, 2, 3, true), .model = 2};
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            memory_host::setAtom(atom, fe);
        }
        const std::uint64_t before = dataVersion(sample.entry);
        QVERIFY(before != 0);
        const std::size_t steps = History::undoable().size();
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::SetAtomPosition(atom, fe.position);
            TAVIK::SetAtomModel(atom, fe.model);
            memory_host::setAtom(atom, fe);
        }
        QCOMPARE(History::undoable().size(), steps);
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            atom->SetColor(Color(0xff010203U));
            memory_host::setAtom(atom, fe);
        }
        QCOMPARE(dataVersion(sample.entry), before);
        QVERIFY(atom->GetColor() != Color(0xff010203U));
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::SetAtomPosition(atom, TAVIK::Vertex(1, 2, 3, false));
        }
        QVERIFY(dataVersion(sample.entry) != before);
    }

    void oneEntryIsChangedAndNotTheOther() {
        const Sample one;
        const Sample other;
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(one.atoms[0]);
        }
        QVERIFY(hasUnsavedData(one.entry));
        QVERIFY(!hasUnsavedData(other.entry));
    }

    void aBondThatGoesWithTheAtomOfAnotherEntryCounts() {
        const Sample one;
        const Sample other;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::makeBond(one.bondsBox, one.atoms[0], other.atoms[0]);
        }
        const std::uint64_t before = dataVersion(one.entry);
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(other.entry);
        }
        QVERIFY(dataVersion(one.entry) != before);
        QVERIFY(History::undo());
        QCOMPARE(dataVersion(one.entry), before);
        memory_host::forgetHistory();
        TAVIK::DataMaker::Destroy(other.entry); // without a guard
        QVERIFY(dataVersion(one.entry) != before);
    }

    void whatIsSavedIsUnsavedOnlyAfterTheNextChange() {
        const Sample sample;
        const auto destroy = [](TAVIK::Compound* item) {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(item);
        };
        memory_host::setDataSaved(sample.entry);
        destroy(sample.atoms[0]);
        QVERIFY(hasUnsavedData(sample.entry));
        memory_host::setDataSaved(sample.entry);
        QVERIFY(!hasUnsavedData(sample.entry));
        QVERIFY(dataVersion(sample.entry) != 0);
        destroy(sample.atoms[1]);
        QVERIFY(hasUnsavedData(sample.entry));
    }
};

REGISTER_TEST(DataVersionTest)
#include "DataVersionTest.moc"
