// Named sets: what they list, what they say of it, and that nothing in them ever dangles.
#include "DataPointBase.h"
#include "History.h"
#include "Sample.h"
#include "TestSupport.h"

using namespace memory_host;
using namespace TAVIK;

class SetsTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void cleanup() override;
    void aSetIsSelectedWhenAllItsMembersAre();
    void aSetIsVisibleWhenAnyMemberIs();
    void aSetAddsNothingToWhatHoldsIt();
    void aCompositeThatHoldsSetsAloneHasAMarkOfItsOwn();
    void actingOnWhatHoldsASetPassesItsMembersBy();
    void anEmptySetIsALeaf();
    void clearingTheSelectionReachesEmptySets();
    void aSetThatLosesItsLastMemberIsALeaf();
    void nestedSetsFollowTheirMembers();
    void aSetMayListWhatItStandsIn();
    void aSetThatListsWhatItStandsInComesBackAsItWas();
    void aSetMayListTheSpace();
    void manySetsMayListOneItem();
    void aDestroyedMemberIsGoneFromEverySet();
    void aDestroyedSetLeavesItsMembersFree();
    void aSetGoesWithTheCompositeThatHoldsIt();
    void aSetMayGoBeforeOrAfterItsMembersInOneBranch();
    void theLastSetsOfADyingItemAreCountedRight();
    void bondsThatGoWithTheirAtomsLeaveTheirSets();
    void hiddenModelsAreToldToSets();
    void theOrderOfMembersIsKept();
    void readingBetweenDestructionsSeesNoHoles();
};

void SetsTest::cleanup() {
    QCOMPARE(faults(), QString());
    TestCase::cleanup();
}

void SetsTest::aSetIsSelectedWhenAllItsMembersAre() {
    const Sample sample;
    Compound* const set = DataMaker::makeSet(space(), "set", {sample.atoms[0], sample.groups[2]});
    sample.atoms[0]->SetSelected(true);
    QVERIFY(!set->IsSelected());
    QVERIFY(set->HasSelected());
    sample.atoms[4]->SetSelected(true);
    sample.atoms[5]->SetSelected(true);
    QVERIFY(!set->IsSelected());
    sample.atoms[6]->SetSelected(true);
    QVERIFY(set->IsSelected());
    space()->SetSelected(false);
    QVERIFY(!set->HasSelected());
    set->ToggleSelected();
    QVERIFY(sample.atoms[0]->IsSelected() && sample.groups[2]->IsSelected());
    // A set that is made later starts with the state of its members.
    QVERIFY(DataMaker::makeSet(space(), "later", {sample.groups[2]})->IsSelected());
}

void SetsTest::aSetIsVisibleWhenAnyMemberIs() {
    const Sample sample;
    Compound* const set = DataMaker::makeSet(space(), "set", {sample.atoms[0], sample.bonds[2]});
    sample.atoms[0]->SetVisible(false);
    QVERIFY(set->IsVisible());
    // The bond is hidden by its atom, and the set hears of it.
    sample.atoms[3]->SetVisible(false);
    QVERIFY(!set->IsVisible());
    set->SetVisible(true);
    QVERIFY(set->IsVisible());
    QVERIFY(!sample.bonds[2]->IsVisible());
    set->ToggleVisible();
    QVERIFY(!sample.atoms[0]->IsVisible());
}

void SetsTest::aSetAddsNothingToWhatHoldsIt() {
    const Sample sample;
    Compound* const box = make(space(), "Composite");
    Compound* const surface = make(box, "Surface");
    DataMaker::makeSet(box, "set", {sample.chain});
    sample.chain->SetSelected(true);
    QVERIFY(!box->HasSelected());
    surface->SetSelected(true);
    QVERIFY(box->IsSelected());
    surface->SetVisible(false);
    QVERIFY(!box->IsVisible());
}

void SetsTest::aCompositeThatHoldsSetsAloneHasAMarkOfItsOwn() {
    const Sample sample;
    Compound* const box = make(space(), "Composite", "Sets");
    DataMaker::makeSet(box, "set", sample.atoms);
    QVERIFY(box->HasChildren());
    box->SetSelected(true);
    QVERIFY(box->IsSelected());
    QVERIFY(!sample.chain->HasSelected());
    space()->SetSelected(false);
    QVERIFY(!box->IsSelected());
}

void SetsTest::actingOnWhatHoldsASetPassesItsMembersBy() {
    const Sample sample;
    Compound* const box = make(space(), "Composite", "Sets");
    DataMaker::makeSet(box, "set", sample.atoms);
    box->SetVisible(false);
    QVERIFY(sample.chain->IsVisible());
    makeAtom(box)->SetSelected(true);
    box->SetSelected(true);
    QVERIFY(!sample.chain->HasSelected());
}

void SetsTest::anEmptySetIsALeaf() {
    Compound* const box = make(space(), "Composite");
    Compound* const set = DataMaker::makeSet(box, "set", {nullptr});
    QVERIFY(!set->IsSelected());
    QVERIFY(set->IsVisible());
    set->SetSelected(true);
    QVERIFY(set->IsSelected());
    QVERIFY(box->IsSelected());
    set->SetVisible(false);
    QVERIFY(!set->IsVisible());
    QVERIFY(!box->IsVisible());
    space()->SetVisible(true);
    QVERIFY(set->IsVisible());
}

void SetsTest::clearingTheSelectionReachesEmptySets() {
    Compound* const set = DataMaker::makeSet(space(), "set", {});
    space()->SetSelected(true);
    QVERIFY(set->IsSelected());
    space()->SetSelected(false);
    QVERIFY(!set->IsSelected());
}

void SetsTest::aSetThatLosesItsLastMemberIsALeaf() {
    Compound* const box = make(space(), "Composite");
    Compound* const atom = makeAtom(space());
    Compound* const set = DataMaker::makeSet(box, "set", {atom});
    atom->SetSelected(true);
    atom->SetVisible(false);
    DataMaker::Destroy(atom);
    QVERIFY(!set->IsSelected());
    QVERIFY(set->IsVisible());
    box->SetSelected(true);
    QVERIFY(set->IsSelected());
}

void SetsTest::nestedSetsFollowTheirMembers() {
    const Sample sample;
    Compound* const inner = DataMaker::makeSet(space(), "inner", {sample.atoms[0]});
    Compound* const middle =
        DataMaker::makeSet(space(), "middle", {inner, sample.atoms[1], sample.atoms[0]});
    Compound* const outer = DataMaker::makeSet(space(), "outer", {middle, inner});
    sample.atoms[0]->SetSelected(true);
    QVERIFY(inner->IsSelected());
    QVERIFY(!middle->IsSelected() && middle->HasSelected());
    QVERIFY(!outer->IsSelected() && outer->HasSelected());
    sample.atoms[1]->SetSelected(true);
    QVERIFY(outer->IsSelected());
    outer->SetVisible(false);
    QVERIFY(!sample.atoms[1]->IsVisible());
    sample.atoms[0]->SetVisible(true);
    QVERIFY(outer->IsVisible());
    DataMaker::Destroy(inner);
    QCOMPARE(partsOf(middle), (Items{sample.atoms[1], sample.atoms[0]}));
    QCOMPARE(partsOf(outer), (Items{middle}));
    DataMaker::Destroy(middle);
    QVERIFY(partsOf(outer).empty());
}

void SetsTest::aSetMayListWhatItStandsIn() {
    Compound* const box = make(space(), "Composite");
    Compound* const atom = makeAtom(box);
    Compound* const set = DataMaker::makeSet(box, "set", {box, atom});
    set->SetSelected(true);
    QVERIFY(box->IsSelected());
    box->SetSelected(false);
    QVERIFY(!set->HasSelected());
    DataMaker::Destroy(atom);
    QCOMPARE(partsOf(set), (Items{box}));
    set->SetVisible(false);
    QVERIFY(!box->IsVisible());
    DataMaker::Destroy(box);
    QVERIFY(!space()->HasChildren());
}

void SetsTest::aSetThatListsWhatItStandsInComesBackAsItWas() {
    const Sample sample;
    sample.entry->SetSelected(true);
    Compound* set = nullptr;
    {
        const DataPointBase guard(nullptr, Publisher::Add, "Make a set");
        set = DataMaker::makeSet(sample.bondsBox, "set", {sample.bonds[0], sample.bondsBox});
    }
    {
        const DataPointBase guard(nullptr, Publisher::Delete, "Close");
        DataMaker::Destroy(sample.entry);
    }
    QVERIFY(History::undo());
    QVERIFY(set->IsSelected());
    QVERIFY(sample.bondsBox->IsSelected());
    QCOMPARE(faults(), QString());
}

void SetsTest::aSetMayListTheSpace() {
    const Sample sample;
    Compound* const set = DataMaker::makeSet(sample.chain, "all", {space()});
    set->SetSelected(true);
    QVERIFY(sample.bonds[0]->IsSelected());
    QVERIFY(set->IsSelected());
    sample.atoms[0]->SetSelected(false);
    QVERIFY(!set->IsSelected());
    DataMaker::Destroy(sample.entry);
    QVERIFY(!space()->HasChildren());
}

void SetsTest::manySetsMayListOneItem() {
    const Sample sample;
    Items sets;
    for (int i = 0; i != 100; ++i)
        sets.push_back(DataMaker::makeSet(space(), "set", {sample.atoms[0], sample.residues[1]}));
    sample.atoms[0]->SetSelected(true);
    for (Compound* set : sets)
        QVERIFY(set->HasSelected());
    for (std::size_t i = 0; i < sets.size(); i += 2)
        DataMaker::Destroy(sets[i]);
    QCOMPARE(faults(), QString());
    DataMaker::Destroy(sample.atoms[0]);
    for (std::size_t i = 1; i < sets.size(); i += 2) {
        QVERIFY(!sets[i]->HasSelected());
        QCOMPARE(partsOf(sets[i]), (Items{sample.residues[1]}));
    }
}

void SetsTest::aDestroyedMemberIsGoneFromEverySet() {
    const Sample sample;
    Compound* const atoms = DataMaker::makeSet(space(), "atoms", sample.atoms);
    Compound* const mixed =
        DataMaker::makeSet(space(), "mixed", {sample.residues[0], sample.atoms[0], sample.entry});
    DataMaker::Destroy(sample.residues[0]);
    QCOMPARE(partsOf(atoms), Items(sample.atoms.begin() + 4, sample.atoms.end()));
    QCOMPARE(partsOf(mixed), (Items{sample.entry}));
    DataMaker::Destroy(sample.entry);
    QVERIFY(partsOf(atoms).empty());
    QVERIFY(partsOf(mixed).empty());
}

void SetsTest::aDestroyedSetLeavesItsMembersFree() {
    const Sample sample;
    Compound* const other = DataMaker::makeSet(space(), "other", {sample.atoms[1]});
    DataMaker::Destroy(DataMaker::makeSet(space(), "set", {sample.atoms[0], sample.atoms[1]}));
    QCOMPARE(faults(), QString());
    sample.atoms[0]->SetSelected(true);
    sample.atoms[1]->SetSelected(true);
    QVERIFY(other->IsSelected());
    DataMaker::Destroy(sample.atoms[0]);
    DataMaker::Destroy(sample.atoms[1]);
}

void SetsTest::aSetGoesWithTheCompositeThatHoldsIt() {
    const Sample sample;
    Compound* const box = make(space(), "Composite");
    Compound* const inner = DataMaker::makeSet(box, "inner", {sample.atoms[0], sample.entry});
    Compound* const outer = DataMaker::makeSet(space(), "outer", {inner, sample.atoms[1]});
    DataMaker::Destroy(box);
    QCOMPARE(partsOf(outer), (Items{sample.atoms[1]}));
    sample.atoms[0]->SetSelected(true);
    DataMaker::Destroy(sample.entry);
    QVERIFY(partsOf(outer).empty());
}

void SetsTest::aSetMayGoBeforeOrAfterItsMembersInOneBranch() {
    for (const bool setFirst : {false, true}) {
        Compound* const box = make(space(), "Composite");
        Compound* const first = make(box, "Composite");
        Compound* const second = make(box, "Composite");
        Compound* const atom = makeAtom(setFirst ? second : first);
        DataMaker::makeSet(setFirst ? first : second, "set", {atom, box, first, second});
        atom->SetSelected(true);
        DataMaker::Destroy(box);
        QVERIFY(!space()->HasChildren());
        QCOMPARE(faults(), QString());
    }
}

void SetsTest::theLastSetsOfADyingItemAreCountedRight() {
    // The set in the dying item empties, which changes the state of that item while the sets
    // outside are still to be told.
    Compound* const dying = make(space(), "Composite");
    make(dying, "Surface")->SetSelected(true);
    DataMaker::makeSet(dying, "inside", {dying});
    Compound* const outside =
        DataMaker::makeSet(space(), "outside", {dying, make(space(), "Grid")});
    QVERIFY(dying->IsSelected());
    QVERIFY(outside->HasSelected());
    DataMaker::Destroy(dying);
    QVERIFY(!outside->HasSelected());
    QVERIFY(outside->IsVisible());
}

void SetsTest::bondsThatGoWithTheirAtomsLeaveTheirSets() {
    const Sample sample;
    Compound* const set = DataMaker::makeSet(space(), "set", sample.bonds);
    set->SetSelected(true);
    DataMaker::Destroy(sample.atoms[1]);
    QCOMPARE(partsOf(set), Items(sample.bonds.begin() + 3, sample.bonds.end()));
    QVERIFY(set->IsSelected());
    DataMaker::Destroy(sample.groupsBox);
    QVERIFY(partsOf(set).empty());
}

void SetsTest::hiddenModelsAreToldToSets() {
    Compound* const residue = make(space(), "Residue");
    Compound* const first = makeAtom(residue, 1);
    Compound* const second = makeAtom(residue, 2);
    Compound* const set = DataMaker::makeSet(space(), "set", {second});
    QVERIFY(!set->IsVisible());
    residue->NextModel();
    QVERIFY(set->IsVisible());
    residue->NextModel();
    QVERIFY(!set->IsVisible());
    DataMaker::Destroy(first);
    QVERIFY(set->IsVisible());
}

void SetsTest::theOrderOfMembersIsKept() {
    const Sample sample(3);
    Items members(sample.atoms.rbegin(), sample.atoms.rend());
    Compound* const set = DataMaker::makeSet(space(), "set", members);
    QCOMPARE(partsOf(set), members);
    for (const std::size_t i : {7, 4, 0}) {
        DataMaker::Destroy(members[i]);
        members.erase(members.begin() + static_cast<std::ptrdiff_t>(i));
    }
    QCOMPARE(partsOf(set), members);
}

void SetsTest::readingBetweenDestructionsSeesNoHoles() {
    const Sample sample(3);
    Compound* const set = DataMaker::makeSet(space(), "set", sample.atoms);
    Compound* const other = DataMaker::makeSet(space(), "other", sample.atoms);
    Items left = sample.atoms;
    for (std::size_t i = 1; i < left.size(); ++i) {
        DataMaker::Destroy(left[i]);
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(i));
        QCOMPARE(partsOf(set), left);
        QCOMPARE(faults(), QString());
    }
    QCOMPARE(partsOf(other), left);
}

REGISTER_TEST(SetsTest)
#include "SetsTest.moc"
