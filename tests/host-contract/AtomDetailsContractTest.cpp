// Atoms made with all of their values, bonds between them, and atoms moved or put into other
// models.
#include "AtomDetails.h"
#include "ContractTools.h"
#include "DataPointBase.h"
#include "TestSupport.h"

#include <limits>

using namespace contract;
using namespace TAVIK;

namespace {

Atom* atomOf(Compound* item) {
    return dynamic_cast<Atom*>(item);
}

Atom* made(Compound* parent, unsigned int model, const char* name = "CA") {
    return DataMaker::makeAtom(
        parent, {.name = name, .type = "C", .position = Vertex(1, 2, 3, true), .model = model});
}

QString namesOfVisible(const Items& atoms) {
    QString names;
    for (const Compound* atom : atoms)
        if (atom->IsVisible())
            names += QString::fromLatin1(atom->GetName());
    return names;
}

} // namespace

class AtomDetailsContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void anAtomHasTheValuesThatItIsMadeOf() {
        Compound* const residue = make(space(), "Residue");
        AtomValues values;
        values.name = "FE/1";
        values.type = "Fe";
        values.position = Vertex(1.5F, -2.0F, 3.25F, true);
        values.temperature = 12.5F;
        values.model = 2;
        values.partial = {0.5F, 1.25F, true};
        values.details = {.occupancy = 0.35F,
                          .serial = 1234567,
                          .formalCharge = -3,
                          .alternative = 'B',
                          .isHetero = true};
        const Atom* const atom = DataMaker::makeAtom(residue, values);
        QVERIFY(atom);
        QCOMPARE(atom->GetName(), std::string("FE_1"));
        QCOMPARE(atom->GetType(), std::string("Fe"));
        QVERIFY(atom->GetPosition().isValid());
        QCOMPARE(atom->GetPosition()[2], 3.25F);
        QCOMPARE(atom->GetTemperature(), 12.5F);
        QCOMPARE(atom->GetModelNumber(), std::string("2"));
        QCOMPARE(GetPartialCharge(atom).radius, 1.25F);
        QVERIFY(GetAtomDetails(atom) == values.details);
        QCOMPARE(childrenOf(residue), (Items{const_cast<Atom*>(atom)}));
        QCOMPARE(faults(), QString());
    }

    void whatNobodyGaveIsAsInAPlainFile() {
        for (const Atom* atom :
             {static_cast<const Atom*>(nullptr), static_cast<const Atom*>(made(space(), 0)),
              static_cast<const Atom*>(atomOf(make(space(), "Atom")))}) {
            const AtomDetails details = GetAtomDetails(atom);
            QCOMPARE(details.occupancy, 1.0F);
            QCOMPARE(details.serial, AtomDetails::noSerial);
            QCOMPARE(int(details.formalCharge), 0);
            QCOMPARE(details.alternative, '\0');
            QVERIFY(!details.isHetero);
        }
    }

    void whatHoldsNothingGetsNoAtomAndNoBond() {
        Compound* const a = made(space(), 0);
        Compound* const b = made(space(), 0);
        QVERIFY(!DataMaker::makeAtom(a, {.name = "X", .type = "X", .position = {}}));
        QVERIFY(!DataMaker::makeAtom(nullptr, {.name = "X", .type = "X", .position = {}}));
        QVERIFY(!DataMaker::makeBond(a, a, b));
        QVERIFY(!DataMaker::makeBond(nullptr, a, b));
        QCOMPARE(takeMessages().size(), 4);
        QCOMPARE(childrenOf(space()), (Items{a, b}));
    }

    void aBondIsBetweenTwoDifferentAtoms() {
        Compound* const a = made(space(), 0);
        Compound* const b = made(space(), 0);
        Compound* const chain = make(space(), "Molecule");
        Bond* const bond = DataMaker::makeBond(chain, a, b);
        QVERIFY(bond);
        QCOMPARE(partsOf(bond), (Items{a, b}));
        QCOMPARE(childrenOf(chain), (Items{bond}));
        for (const auto& [first, second] :
             {std::pair(a, a), {a, chain}, {static_cast<Compound*>(nullptr), b}})
            QVERIFY(!DataMaker::makeBond(chain, first, second));
        QCOMPARE(takeMessages().size(), 3);
        DataMaker::Destroy(a);
        QVERIFY(!chain->HasChildren());
        QCOMPARE(faults(), QString());
    }

    void aNewBondToAHiddenAtomIsHidden() {
        Compound* const a = made(space(), 0);
        Compound* const b = made(space(), 0);
        b->SetVisible(false);
        Bond* const bond = DataMaker::makeBond(space(), a, b);
        QVERIFY(!bond->IsVisible());
        b->SetVisible(true);
        QVERIFY(bond->IsVisible());
        QCOMPARE(faults(), QString());
    }

    void anAtomIsMoved() {
        Atom* const atom = made(space(), 0);
        QStringList heard;
        const Listener listener(heard);
        {
            const DataPointBase guard(nullptr, Publisher::Update);
            SetAtomPosition(atom, Vertex(-7.5F, 0.25F, 1e6F, true));
            SetAtomPosition(nullptr, Vertex(1, 1, 1, true));
        }
        QCOMPARE(heard, QStringList("a update"));
        QVERIFY(atom->GetPosition().isValid());
        QCOMPARE(atom->GetPosition()[0], -7.5F);
        QCOMPARE(atom->GetPosition()[2], 1e6F);
    }

    void aPositionThatIsNoneLeavesNone() {
        constexpr float nan = std::numeric_limits<float>::quiet_NaN();
        constexpr float infinity = std::numeric_limits<float>::infinity();
        for (const Vertex& none : {Vertex(), Vertex(1, 2, 3, false), Vertex(nan, 0, 0, true),
                                   Vertex(0, 0, infinity, true)}) {
            Atom* const atom = made(space(), 0);
            SetAtomPosition(atom, none);
            QVERIFY(!atom->GetPosition().isValid());
            SetAtomPosition(atom, Vertex(0, 0, 0, true));
            QVERIFY(atom->GetPosition().isValid());
            const Atom* const other =
                DataMaker::makeAtom(space(), {.name = "X", .type = "X", .position = none});
            QVERIFY(!other->GetPosition().isValid());
        }
    }

    void anAtomGoesIntoAnotherModel() {
        Compound* const residue = make(space(), "Residue");
        Compound* const group = make(residue, "Group");
        const Items atoms = {made(group, 0, "s"), made(group, 1, "a"), made(group, 1, "b"),
                             made(residue, 2, "c")};
        Bond* const bond = DataMaker::makeBond(space(), atoms[0], atoms[2]);
        QCOMPARE(namesOfVisible(atoms), "sab");
        SetAtomModel(atomOf(atoms[2]), 2);
        QCOMPARE(atomOf(atoms[2])->GetModelNumber(), std::string("2"));
        QCOMPARE(namesOfVisible(atoms), "sa");
        QVERIFY(!bond->IsVisible());
        residue->NextModel();
        QCOMPARE(namesOfVisible(atoms), "sbc");
        QVERIFY(bond->IsVisible());
        SetAtomModel(atomOf(atoms[1]), 0);
        QCOMPARE(namesOfVisible(atoms), "sabc");
        SetAtomModel(atomOf(atoms[0]), 1);
        QCOMPARE(namesOfVisible(atoms), "abc");
        SetAtomModel(nullptr, 1);
        QCOMPARE(faults(), QString());
    }

    void theLastAtomOfTheActiveModelMakesAnotherOneActive() {
        Compound* const residue = make(space(), "Residue");
        const Items atoms = {made(residue, 1, "a"), made(residue, 3, "b"), made(residue, 3, "c")};
        QCOMPARE(namesOfVisible(atoms), "a");
        SetAtomModel(atomOf(atoms[0]), 0);
        QCOMPARE(namesOfVisible(atoms), "abc");
        SetAtomModel(atomOf(atoms[1]), 0);
        SetAtomModel(atomOf(atoms[2]), 0);
        QCOMPARE(namesOfVisible(atoms), "abc");
        SetAtomModel(atomOf(atoms[2]), 5); // the first one of a residue that has none
        QCOMPARE(namesOfVisible(atoms), "abc");
        QCOMPARE(faults(), QString());
    }

    void whatIsHiddenStaysHiddenInAnotherModel() {
        Compound* const residue = make(space(), "Residue");
        const Items atoms = {made(residue, 1, "a"), made(residue, 2, "b")};
        atoms[1]->SetVisible(false);
        SetAtomModel(atomOf(atoms[1]), 1);
        QCOMPARE(namesOfVisible(atoms), "a");
        atoms[1]->SetVisible(true);
        QCOMPARE(namesOfVisible(atoms), "ab");
        QCOMPARE(faults(), QString());
    }

    void aModelOutsideOfAResidueHidesNothing() {
        Atom* const atom = made(space(), 0);
        SetAtomModel(atom, 7);
        QCOMPARE(atom->GetModelNumber(), std::string("7"));
        QVERIFY(atom->IsVisible());
        SetAtomModel(atom, std::numeric_limits<unsigned int>::max());
        QCOMPARE(atom->GetModelNumber(), std::string("65535"));
        QCOMPARE(faults(), QString());
    }

    void detailsSurviveChangesOfState() {
        AtomValues values{.name = "CA", .type = "C", .position = Vertex(1, 2, 3, true)};
        values.details.serial = 17;
        Atom* const atom = DataMaker::makeAtom(make(space(), "Residue"), values);
        space()->SetSelected(true);
        space()->SetVisible(false);
        atom->SetColor(Color(1U));
        SetAtomModel(atom, 2);
        SetAtomPosition(atom, Vertex());
        QVERIFY(GetAtomDetails(atom) == values.details);
        QVERIFY(atom->IsSelected() && !atom->IsVisible());
        QCOMPARE(faults(), QString());
    }

    void whatNoFileNamedHasNoLabelIds() {
        const Chain chain(1);
        for (const Compound* item : Items{nullptr, space(), chain.molecule, chain.residues[0],
                                          chain.groups[0], chain.atoms[0], chain.bonds[0]}) {
            QVERIFY(GetLabelIds(item).chain.empty());
            QVERIFY(GetLabelIds(item).number.empty());
        }
    }
};

REGISTER_TEST(AtomDetailsContractTest)
#include "AtomDetailsContractTest.moc"
