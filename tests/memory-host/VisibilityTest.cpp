// What is visible: own marks, hidden atoms of bonds, composites by what they hold.
#include "Sample.h"
#include "TestSupport.h"

using namespace memory_host;
using namespace TAVIK;

class VisibilityTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void cleanup() override;
    void aCompositeIsVisibleWhenAnythingInItIs();
    void anEmptyCompositeIsVisibleByItsOwnMark();
    void hidingGoesDownToEveryLeaf();
    void showingOneAtomShowsItAlone();
    void aBondIsVisibleOnlyWithBothItsAtoms();
    void aHiddenBondStaysHiddenWhenItsAtomsAreShown();
    void aBondRemembersItsOwnMarkWhileAnAtomIsHidden();
    void aBondBetweenHiddenAtomsIsHiddenFromTheStart();
    void hidingAllAtomsHidesTheCompositeOfBonds();
    void attachingAHiddenBranchCounts();
    void destroyingTheLastVisibleItemHidesItsParents();
    void everyAtomOfAHubIsCounted();
};

void VisibilityTest::cleanup() {
    QCOMPARE(faults(), QString());
    TestCase::cleanup();
}

void VisibilityTest::aCompositeIsVisibleWhenAnythingInItIs() {
    const Sample sample;
    for (Compound* atom : sample.atoms) {
        QVERIFY(sample.chain->IsVisible());
        atom->SetVisible(false);
    }
    for (Compound* item : {space(), sample.entry, sample.chain, sample.residues[0]})
        QVERIFY(!item->IsVisible());
    sample.atoms[5]->SetVisible(true);
    for (Compound* item : {space(), sample.entry, sample.chain, sample.residues[1]})
        QVERIFY(item->IsVisible());
    QVERIFY(!sample.residues[0]->IsVisible());
}

void VisibilityTest::anEmptyCompositeIsVisibleByItsOwnMark() {
    Compound* const outer = make(space(), "Composite");
    Compound* const inner = make(outer, "Composite");
    inner->SetVisible(false);
    QVERIFY(!inner->IsVisible());
    QVERIFY(!outer->IsVisible());
    makeAtom(inner);
    QVERIFY(outer->IsVisible());
}

void VisibilityTest::hidingGoesDownToEveryLeaf() {
    const Sample sample;
    sample.entry->SetVisible(false);
    for (const Items& items : {sample.residues, sample.groups, sample.atoms, sample.bonds})
        for (Compound* item : items)
            QVERIFY(!item->IsVisible());
    sample.entry->SetVisible(true);
    for (const Items& items : {sample.residues, sample.groups, sample.atoms, sample.bonds})
        for (Compound* item : items)
            QVERIFY(item->IsVisible());
}

void VisibilityTest::showingOneAtomShowsItAlone() {
    const Sample sample;
    sample.entry->SetVisible(false);
    sample.atoms[1]->SetVisible(true);
    for (std::size_t i = 0; i != sample.atoms.size(); ++i)
        QCOMPARE(sample.atoms[i]->IsVisible(), i == 1);
    QVERIFY(!sample.bondsBox->IsVisible());
}

void VisibilityTest::aBondIsVisibleOnlyWithBothItsAtoms() {
    const Sample sample;
    Compound* const bond = sample.bonds[0]; // from atom 0 to atom 1
    for (const bool first : {false, true})
        for (const bool second : {false, true}) {
            sample.atoms[0]->SetVisible(first);
            sample.atoms[1]->SetVisible(second);
            QCOMPARE(bond->IsVisible(), first && second);
        }
}

void VisibilityTest::aHiddenBondStaysHiddenWhenItsAtomsAreShown() {
    const Sample sample;
    sample.bonds[0]->SetVisible(false);
    sample.groupsBox->SetVisible(false);
    sample.groupsBox->SetVisible(true);
    QVERIFY(!sample.bonds[0]->IsVisible());
    QVERIFY(sample.bonds[1]->IsVisible());
}

void VisibilityTest::aBondRemembersItsOwnMarkWhileAnAtomIsHidden() {
    const Sample sample;
    Compound* const bond = sample.bonds[0];
    sample.atoms[0]->SetVisible(false);
    bond->SetVisible(false);
    bond->SetVisible(true);
    QVERIFY(!bond->IsVisible());
    sample.atoms[0]->SetVisible(true);
    QVERIFY(bond->IsVisible());
}

void VisibilityTest::aBondBetweenHiddenAtomsIsHiddenFromTheStart() {
    Compound* const a = makeAtom(space());
    Compound* const b = makeAtom(space());
    b->SetVisible(false);
    Compound* const box = make(space(), "Composite");
    Compound* const bond = addBond(box, a, b);
    QVERIFY(!bond->IsVisible());
    QVERIFY(!box->IsVisible());
    b->SetVisible(true);
    QVERIFY(box->IsVisible());
}

void VisibilityTest::hidingAllAtomsHidesTheCompositeOfBonds() {
    const Sample sample;
    sample.groupsBox->SetVisible(false);
    QVERIFY(!sample.bondsBox->IsVisible());
    // The atom has no visible neighbour: its bonds stay hidden.
    sample.atoms[0]->SetVisible(true);
    QVERIFY(!sample.bondsBox->IsVisible());
    sample.atoms[1]->SetVisible(true);
    QVERIFY(sample.bondsBox->IsVisible());
}

void VisibilityTest::attachingAHiddenBranchCounts() {
    Compound* const branch = makeDetached("branch", "Composite");
    makeAtom(branch)->SetVisible(false);
    Compound* const box = make(space(), "Composite");
    attach(branch, box);
    QVERIFY(!box->IsVisible());
    QVERIFY(!space()->IsVisible());
}

void VisibilityTest::destroyingTheLastVisibleItemHidesItsParents() {
    const Sample sample;
    sample.entry->SetVisible(false);
    sample.atoms[1]->SetVisible(true);
    QVERIFY(sample.entry->IsVisible());
    DataMaker::Destroy(sample.atoms[1]);
    QVERIFY(!sample.entry->IsVisible());
}

void VisibilityTest::everyAtomOfAHubIsCounted() {
    // An atom with many bonds: each keeps its own place in the atom's list.
    Compound* const hub = makeAtom(space());
    Items others, bonds;
    for (int i = 0; i != 50; ++i) {
        others.push_back(makeAtom(space()));
        bonds.push_back(i % 2 == 0 ? addBond(space(), hub, others.back())
                                   : addBond(space(), others.back(), hub));
    }
    hub->SetVisible(false);
    for (Compound* bond : bonds)
        QVERIFY(!bond->IsVisible());
    for (std::size_t i = 0; i < bonds.size(); i += 3)
        DataMaker::Destroy(bonds[i]);
    QCOMPARE(faults(), QString());
    hub->SetVisible(true);
    for (std::size_t i = 0; i != bonds.size(); ++i)
        if (i % 3 != 0)
            QVERIFY(bonds[i]->IsVisible());
    DataMaker::Destroy(hub);
    QCOMPARE(childrenOf(space()), others);
}

REGISTER_TEST(VisibilityTest)
#include "VisibilityTest.moc"
