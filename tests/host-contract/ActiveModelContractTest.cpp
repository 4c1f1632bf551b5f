// Which of its models a residue shows, also where models come and go in an addition.
#include "ActiveModel.h"
#include "ContractTools.h"
#include "DataPointBase.h"
#include "TestSupport.h"

using namespace contract;
using namespace TAVIK;

class ActiveModelContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void whatHasNoModelsHasNoActiveOne() {
        const Chain chain(1);
        for (const Compound* item : Items{nullptr, space(), chain.molecule, chain.residues[0],
                                          chain.groups[0], chain.atoms[0], chain.bonds[0]})
            QCOMPARE(GetActiveModel(item), 0U);
        // The number is the residue's.
        Compound* const loose = atom(space(), 0, "CA", 3);
        QCOMPARE(GetActiveModel(loose), 0U);
    }

    void theNumberIsThatOfTheAtomsThatAreShown() {
        Compound* const residue = make(space(), "Residue");
        Compound* const group = make(residue, "Group");
        const Items atoms = {atom(group, 0, "a", 2), atom(group, 0, "b", 5), atom(residue, 0, "c")};
        QCOMPARE(GetActiveModel(residue), 2U);
        QCOMPARE(GetActiveModel(group), 0U);
        residue->NextModel();
        QCOMPARE(GetActiveModel(residue), 5U);
        QVERIFY(!atoms[0]->IsVisible() && atoms[1]->IsVisible() && atoms[2]->IsVisible());
        residue->NextModel();
        QCOMPARE(GetActiveModel(residue), 2U);
        residue->PrevModel();
        QCOMPARE(GetActiveModel(residue), 5U);
        residue->FirstModel();
        QCOMPARE(GetActiveModel(residue), 2U);
        QCOMPARE(faults(), QString());
    }

    // What was shared by all becomes the first model's own, and further models are made.
    void modelsAreMadeAndAtomsPutIntoThemInOneAddition() {
        Compound* const residue = make(space(), "Residue");
        auto* const old = dynamic_cast<Atom*>(atom(residue));
        QStringList heard;
        const Listener listener(heard);
        Atom* added = nullptr;
        {
            const DataPointBase guard(nullptr, Publisher::Add);
            QVERIFY(guard.m_good);
            SetAtomModel(old, 1);
            added = dynamic_cast<Atom*>(atom(residue, 5, "CA", 2));
            SetAtomPosition(added, Vertex(7, 8, 9, true));
        }
        QCOMPARE(heard, QStringList("a add"));
        QCOMPARE(GetActiveModel(residue), 1U);
        QVERIFY(old->IsVisible() && !added->IsVisible());
        QCOMPARE(added->GetPosition()[1], 8.0F);
        // And back again.
        {
            const DataPointBase guard(nullptr, Publisher::Add);
            DataMaker::Destroy(added);
            SetAtomModel(old, 0);
        }
        QVERIFY(old->IsVisible());
        QCOMPARE(old->GetModelNumber(), std::string("0"));
        QCOMPARE(faults(), QString());
    }
};

REGISTER_TEST(ActiveModelContractTest)
#include "ActiveModelContractTest.moc"
