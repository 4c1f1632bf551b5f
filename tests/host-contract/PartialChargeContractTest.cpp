// Partial charges and radii of atoms, which few files give.
#include "ContractTools.h"
#include "DataPointBase.h"
#include "PartialCharge.h"
#include "TestSupport.h"

using namespace contract;
using namespace TAVIK;

class PartialChargeContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void anAtomHasTheChargeAndTheRadiusThatItWasGiven();
    void anAtomThatWasGivenNoneHasNone();
    void chargesSurviveSelectingHidingAndColouring();
    void chargesGoWithTheirAtoms();
};

namespace {

Atom* charged(Compound* parent, float charge, float radius) {
    AtomValues values{"CA", "C", Vertex(1, 2, 3, true)};
    values.partial = {charge, radius, true};
    return DataMaker::makeAtom(parent, values);
}

} // namespace

void PartialChargeContractTest::anAtomHasTheChargeAndTheRadiusThatItWasGiven() {
    for (const auto& [charge, radius] : {std::pair(-0.5F, 1.85F), {0.0F, 0.0F}, {2.0F, 1.0e3F}}) {
        const Atom* const atom = charged(space(), charge, radius);
        QVERIFY(atom);
        const PartialCharge partial = GetPartialCharge(atom);
        QVERIFY(partial.isKnown);
        QCOMPARE(partial.charge, charge);
        QCOMPARE(partial.radius, radius);
        // All else is as it is of any atom.
        QCOMPARE(atom->GetName(), "CA");
        QCOMPARE(atom->GetType(), "C");
        QCOMPARE(atom->GetPosition()[2], 3.0F);
    }
}

void PartialChargeContractTest::anAtomThatWasGivenNoneHasNone() {
    QVERIFY(!GetPartialCharge(nullptr).isKnown);
    QVERIFY(!GetPartialCharge(dynamic_cast<Atom*>(atom(space()))).isKnown);
    QVERIFY(!GetPartialCharge(dynamic_cast<Atom*>(make(space(), "Atom"))).isKnown);
    QCOMPARE(host_under_test::faults(), std::vector<std::string>());
}

void PartialChargeContractTest::chargesSurviveSelectingHidingAndColouring() {
    Compound* const entry = make(space(), "Composite");
    Atom* const atom = charged(entry, -0.5F, 1.85F);
    {
        const DataPointBase guard(nullptr, Publisher::Update);
        QVERIFY(guard.m_good);
        entry->SetSelected(true);
        entry->SetVisible(false);
        atom->SetColor(Color(qRgb(1, 2, 3)));
    }
    QVERIFY(GetPartialCharge(atom).isKnown);
    QCOMPARE(GetPartialCharge(atom).charge, -0.5F);
    QCOMPARE(GetPartialCharge(atom).radius, 1.85F);
    QCOMPARE(host_under_test::faults(), std::vector<std::string>());
}

void PartialChargeContractTest::chargesGoWithTheirAtoms() {
    Compound* const entry = make(space(), "Composite");
    Atom* const first = charged(entry, 1.0F, 1.0F);
    Atom* const second = charged(entry, 2.0F, 2.0F);
    DataMaker::makeBond(entry, first, second);
    DataMaker::Destroy(first);
    QCOMPARE(GetPartialCharge(second).charge, 2.0F);
    // A new atom may stand where the other one stood.
    for (int i = 0; i < 1000; ++i)
        QVERIFY(!GetPartialCharge(dynamic_cast<Atom*>(atom(entry))).isKnown);
    QCOMPARE(GetPartialCharge(second).charge, 2.0F);
    QCOMPARE(host_under_test::faults(), std::vector<std::string>());
}

REGISTER_TEST(PartialChargeContractTest)
#include "PartialChargeContractTest.moc"
