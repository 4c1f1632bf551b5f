// Collecting items by kind, and applying functions to them.
#include "ContractTools.h"
#include "SpyItem.h"
#include "TestSupport.h"
#include "Traversal.h"

#include <functional>

using namespace contract;
using namespace TAVIK;

class TraversalContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    // GetItems
    void nothingBelowAnUnselectedRootIsVisited();
    void allItemsBelowAnUnselectedRootAreCollected();
    void unselectedBranchesAreNotEntered();
    void nullChildrenArePassedOver();
    void childrenThatHoldNothingArePassedOver();
    void aCollectedItemIsNotLookedInto();
    void aSelectedGroupIsReturnedAndNotVisited();
    void aPartlySelectedGroupIsNeitherReturnedNorVisited();
    void theRootIsNeverCollected();
    void theOrderIsDepthFirstByChildren();
    void selectedAtomsOfAPartlySelectedResidueAreCollected();
    void whatWasCollectedBeforeStays();
    void partsOfARootThatIsNoCompositeAreCollectedOnDemand();
    void partsOfACompositeAreNot();
    void partsFurtherDownAreNot();
    void onlySelectedPartsAreCollectedOnDemand();
    void aNullRootHoldsNothing();
    void everyKindCanBeCollected();

    // GetAtoms, GetGroups, GetResidues, GetSelected
    void atomsGroupsAndResiduesAreCollectedAtOrBelowTheRoot();
    void onlySelectedOnesAreCollectedOnDemand();
    void collectingAppends();
    void collectingFromNullAppendsNothing();
    void theTopmostSelectedItemsAreTheSelectedOnes();
    void selectedBondsAreAmongTheSelectedOnes();
    void theRootItselfIsNotAmongTheSelectedOnes();

    // ForAtoms, ForGroups, ForResidues
    void everyAtomIsVisitedAlsoWhenItIsUnselectedMeanwhile();
    void everyGatheredAtomIsVisitedWhateverBecomesOfTheOthers();
    void aPlainFunctionCanBeApplied();
    void aMemberFunctionCanBeApplied();
    void aBoundPredicateCanBeApplied();
    void theFunctorComesBackAsItStands();
    void groupsAndResiduesAreVisitedInOrder();
    void onlySelectedOnesAreVisitedOnDemand();
};

namespace {

template <class T> Items collect(Compound* root, bool all, bool parts = false) {
    Items items;
    GetItems<T>(root, items, all, nullptr, parts);
    return items;
}

Items atomsOf(Compound* root, bool all) {
    Items items;
    GetAtoms(root, items, all);
    return items;
}

Items selectedOf(Compound* root) {
    Items items;
    GetSelected(root, items);
    return items;
}

} // namespace

void TraversalContractTest::nothingBelowAnUnselectedRootIsVisited() {
    Spy<Molecule> molecule;
    Spy<Group> group(true);
    molecule.m_children = {&group};
    QVERIFY(collect<Group>(&molecule, false).empty());
    QCOMPARE(molecule.m_asked, 0);
    QCOMPARE(group.m_entered, 0);
}

void TraversalContractTest::allItemsBelowAnUnselectedRootAreCollected() {
    Spy<Molecule> molecule;
    Spy<Group> group;
    molecule.m_children = {&group};
    QCOMPARE(collect<Group>(&molecule, true), (Items{&group}));
}

void TraversalContractTest::unselectedBranchesAreNotEntered() {
    Spy<Molecule> molecule(false, true);
    Spy<Residue> unselected;
    Spy<Residue> partly(false, true);
    SpyAtom atom(true);
    SpyAtom never(true);
    unselected.m_children = {&never};
    partly.m_children = {&atom};
    molecule.m_children = {&unselected, &partly};
    QCOMPARE(collect<Atom>(&molecule, false), (Items{&atom}));
    QCOMPARE(unselected.m_asked, 0);
    QCOMPARE(partly.m_asked, 1);
}

void TraversalContractTest::nullChildrenArePassedOver() {
    Spy<Molecule> molecule;
    Spy<Residue> residue;
    SpyAtom atom;
    residue.m_children = {nullptr, &atom, nullptr};
    molecule.m_children = {nullptr, &residue, nullptr};
    QCOMPARE(collect<Atom>(&molecule, true), (Items{&atom}));
}

void TraversalContractTest::childrenThatHoldNothingArePassedOver() {
    Spy<Molecule> molecule;
    Spy<Surface> surface;
    Spy<Compound> other;
    SpyAtom inside;
    // What is no composite is not entered, whatever it says of children.
    other.m_children = {&inside};
    molecule.m_children = {&surface, &other};
    QVERIFY(collect<Atom>(&molecule, true).empty());
    QCOMPARE(other.m_asked, 0);
}

void TraversalContractTest::aCollectedItemIsNotLookedInto() {
    Spy<Molecule> molecule;
    Spy<Group> outer;
    Spy<Group> inner;
    outer.m_children = {&inner};
    molecule.m_children = {&outer};
    QCOMPARE(collect<Group>(&molecule, true), (Items{&outer}));
    QCOMPARE(outer.m_asked, 0);
}

void TraversalContractTest::aSelectedGroupIsReturnedAndNotVisited() {
    Spy<Molecule> molecule(false, true);
    Spy<Group> group(true);
    Spy<Group> inner(true);
    group.m_children = {&inner};
    molecule.m_children = {&group};
    QCOMPARE(collect<Group>(&molecule, false), (Items{&group}));
    QCOMPARE(group.m_asked, 0);
}

void TraversalContractTest::aPartlySelectedGroupIsNeitherReturnedNorVisited() {
    Spy<Molecule> molecule(false, true);
    Spy<Group> group(false, true);
    Spy<Group> inner(true);
    group.m_children = {&inner};
    molecule.m_children = {&group};
    QVERIFY(collect<Group>(&molecule, false).empty());
    QCOMPARE(group.m_asked, 0);
}

void TraversalContractTest::theRootIsNeverCollected() {
    const Chain chain(1);
    QVERIFY(collect<Molecule>(chain.molecule, true).empty());
    QVERIFY(collect<Atom>(chain.atoms[0], true, true).empty());
    Compound* const outer = make(space(), "Molecule");
    Compound* const inner = make(outer, "Molecule");
    QCOMPARE(collect<Molecule>(outer, true), (Items{inner}));
}

void TraversalContractTest::theOrderIsDepthFirstByChildren() {
    const Chain chain(3);
    QCOMPARE(collect<Atom>(space(), true), chain.atoms);
    QCOMPARE(collect<Group>(space(), true), chain.groups);
    QCOMPARE(collect<Residue>(space(), true), chain.residues);
    QCOMPARE(collect<Bond>(space(), true), chain.bonds);
    // A direct child that comes after a branch is collected after what the branch holds.
    Compound* const late = atom(chain.residues[0]);
    Items expected = chain.atoms;
    expected.insert(expected.begin() + 4, late);
    QCOMPARE(collect<Atom>(space(), true), expected);
}

void TraversalContractTest::selectedAtomsOfAPartlySelectedResidueAreCollected() {
    const Chain chain(3);
    for (const std::size_t i : {1, 3, 11})
        chain.atoms[i]->SetSelected(true);
    QCOMPARE(collect<Atom>(space(), false),
             (Items{chain.atoms[1], chain.atoms[3], chain.atoms[11]}));
    QCOMPARE(collect<Atom>(chain.residues[0], false), (Items{chain.atoms[1], chain.atoms[3]}));
    QVERIFY(collect<Atom>(chain.residues[1], false).empty());
    QVERIFY(collect<Residue>(space(), false).empty());
    QCOMPARE(collect<Group>(space(), false), (Items{chain.groups[1], chain.groups[5]}));
}

void TraversalContractTest::whatWasCollectedBeforeStays() {
    const Chain chain(1);
    Items items{chain.molecule, nullptr};
    GetItems<Group>(space(), items, true, nullptr, false);
    QCOMPARE(items, (Items{chain.molecule, nullptr, chain.groups[0], chain.groups[1]}));
}

void TraversalContractTest::partsOfARootThatIsNoCompositeAreCollectedOnDemand() {
    const Chain chain(2);
    Compound* const bond = chain.bonds[1];
    QCOMPARE(collect<Atom>(bond, true, true), (Items{chain.atoms[1], chain.atoms[2]}));
    QVERIFY(collect<Atom>(bond, true, false).empty());
    // A part that is a composite is entered.
    Compound* const set =
        DataMaker::makeSet(space(), "set", {chain.atoms[7], chain.residues[0], bond});
    QCOMPARE(collect<Atom>(set, true, true), (Items{chain.atoms[7], chain.atoms[0], chain.atoms[1],
                                                    chain.atoms[2], chain.atoms[3]}));
    QCOMPARE(collect<Bond>(set, true, true), (Items{bond}));
}

void TraversalContractTest::partsOfACompositeAreNot() {
    const Chain chain(1);
    QCOMPARE(collect<Atom>(chain.molecule, true, true), chain.atoms);
    QVERIFY(collect<Atom>(make(space(), "Composite"), true, true).empty());
}

void TraversalContractTest::partsFurtherDownAreNot() {
    const Chain chain(1);
    Compound* const box = make(space(), "Composite");
    Compound* const set = DataMaker::makeSet(box, "set", chain.atoms);
    QVERIFY(collect<Atom>(box, true, true).empty());
    Compound* const outer = DataMaker::makeSet(space(), "outer", {set, box});
    QVERIFY(collect<Atom>(outer, true, true).empty());
}

void TraversalContractTest::onlySelectedPartsAreCollectedOnDemand() {
    const Chain chain(2);
    Compound* const set = DataMaker::makeSet(space(), "set", chain.atoms);
    QVERIFY(collect<Atom>(set, false, true).empty());
    chain.atoms[2]->SetSelected(true);
    QCOMPARE(collect<Atom>(set, false, true), (Items{chain.atoms[2]}));
}

void TraversalContractTest::aNullRootHoldsNothing() {
    QVERIFY(collect<Atom>(nullptr, true, true).empty());
    QVERIFY(collect<Atom>(nullptr, false, true).empty());
}

void TraversalContractTest::everyKindCanBeCollected() {
    const Chain chain(1);
    Compound* const surface = make(space(), "Surface");
    Compound* const grid = make(make(space(), "Composite"), "Grid");
    QCOMPARE(collect<Molecule>(space(), true), (Items{chain.molecule}));
    QCOMPARE(collect<Surface>(space(), true), (Items{surface}));
    QCOMPARE(collect<Grid>(space(), true), (Items{grid}));
    space()->SetSelected(true);
    QCOMPARE(collect<Molecule>(space(), false), (Items{chain.molecule}));
    QCOMPARE(collect<Bond>(space(), false), chain.bonds);
    QCOMPARE(collect<Grid>(space(), false), (Items{grid}));
}

void TraversalContractTest::atomsGroupsAndResiduesAreCollectedAtOrBelowTheRoot() {
    const Chain chain(2);
    QCOMPARE(atomsOf(space(), true), chain.atoms);
    QCOMPARE(atomsOf(chain.groups[1], true), (Items{chain.atoms[3]}));
    QCOMPARE(atomsOf(chain.atoms[3], true), (Items{chain.atoms[3]}));
    QVERIFY(atomsOf(chain.bonds[0], true).empty());
    Items groups;
    GetGroups(chain.residues[1], groups, true);
    QCOMPARE(groups, (Items{chain.groups[2], chain.groups[3]}));
    groups.clear();
    GetGroups(chain.groups[2], groups, true);
    QCOMPARE(groups, (Items{chain.groups[2]}));
    Items residues;
    GetResidues(chain.molecule, residues, true);
    QCOMPARE(residues, chain.residues);
    residues.clear();
    GetResidues(chain.residues[0], residues, true);
    QCOMPARE(residues, (Items{chain.residues[0]}));
}

void TraversalContractTest::onlySelectedOnesAreCollectedOnDemand() {
    const Chain chain(2);
    QVERIFY(atomsOf(space(), false).empty());
    chain.residues[1]->SetSelected(true);
    chain.atoms[0]->SetSelected(true);
    Items expected(chain.atoms.begin() + 4, chain.atoms.end());
    expected.insert(expected.begin(), chain.atoms[0]);
    QCOMPARE(atomsOf(space(), false), expected);
    QCOMPARE(atomsOf(chain.atoms[0], false), (Items{chain.atoms[0]}));
    QVERIFY(atomsOf(chain.atoms[1], false).empty());
    Items groups;
    GetGroups(space(), groups, false);
    QCOMPARE(groups, (Items{chain.groups[2], chain.groups[3]}));
    Items residues;
    GetResidues(space(), residues, false);
    QCOMPARE(residues, (Items{chain.residues[1]}));
}

void TraversalContractTest::collectingAppends() {
    const Chain chain(1);
    chain.residues[0]->SetSelected(true);
    Items items{nullptr};
    GetAtoms(space(), items, true);
    QCOMPARE(items.size(), std::size_t(5));
    GetGroups(space(), items, true);
    QCOMPARE(items.size(), std::size_t(7));
    GetResidues(space(), items, true);
    QCOMPARE(items.size(), std::size_t(8));
    GetSelected(space(), items);
    QVERIFY(items.size() > 8);
    QCOMPARE(items.front(), nullptr);
}

void TraversalContractTest::collectingFromNullAppendsNothing() {
    Items items;
    for (const bool all : {false, true}) {
        GetAtoms(nullptr, items, all);
        GetGroups(nullptr, items, all);
        GetResidues(nullptr, items, all);
    }
    GetSelected(nullptr, items);
    QVERIFY(items.empty());
}

void TraversalContractTest::theTopmostSelectedItemsAreTheSelectedOnes() {
    const Chain chain(3);
    QVERIFY(selectedOf(space()).empty());
    chain.residues[0]->SetSelected(true);
    chain.groups[2]->SetSelected(true);
    chain.atoms[9]->SetSelected(true);
    QCOMPARE(selectedOf(space()), (Items{chain.residues[0], chain.groups[2], chain.atoms[9]}));
    QCOMPARE(selectedOf(chain.residues[1]), (Items{chain.groups[2]}));
    chain.molecule->SetSelected(true);
    QCOMPARE(selectedOf(space()), (Items{chain.molecule}));
}

void TraversalContractTest::selectedBondsAreAmongTheSelectedOnes() {
    const Chain chain(2);
    chain.bonds[3]->SetSelected(true);
    QCOMPARE(selectedOf(space()), (Items{chain.bonds[3]}));
}

void TraversalContractTest::theRootItselfIsNotAmongTheSelectedOnes() {
    const Chain chain(1);
    chain.residues[0]->SetSelected(true);
    QCOMPARE(selectedOf(chain.residues[0]), (Items{chain.groups[0], chain.groups[1]}));
    QVERIFY(selectedOf(chain.atoms[0]).empty());
}

void TraversalContractTest::everyAtomIsVisitedAlsoWhenItIsUnselectedMeanwhile() {
    const Chain chain(2);
    space()->SetSelected(true);
    Items visited;
    ForAtoms(space(), false, [&](Compound* item) {
        visited.push_back(item);
        item->SetSelected(false);
    });
    QCOMPARE(visited, chain.atoms);
    QVERIFY(atomsOf(space(), false).empty());
}

void TraversalContractTest::everyGatheredAtomIsVisitedWhateverBecomesOfTheOthers() {
    const Chain chain(2);
    space()->SetSelected(true);
    int visited = 0;
    ForAtoms(space(), false, [&](Compound*) {
        ++visited;
        space()->SetSelected(false);
        space()->SetVisible(false);
    });
    QCOMPARE(visited, 8);
    // And what becomes selected meanwhile is not visited.
    chain.atoms[0]->SetSelected(true);
    visited = 0;
    ForAtoms(space(), false, [&](Compound*) {
        ++visited;
        space()->SetSelected(true);
    });
    QCOMPARE(visited, 1);
}

namespace {

void hide(Compound* item) {
    item->SetVisible(false);
}

bool selectIfNamed(Compound* item, const std::string& name) {
    if (item->GetName() == name)
        item->SetSelected(true);
    return item->IsSelected();
}

struct Count {
    int m_count = 0;
    void operator()(Compound*) { ++m_count; }
};

} // namespace

void TraversalContractTest::aPlainFunctionCanBeApplied() {
    const Chain chain(1);
    ForAtoms(chain.groups[0], true, hide);
    QVERIFY(!chain.groups[0]->IsVisible());
    QVERIFY(chain.groups[1]->IsVisible());
    ForGroups(space(), true, hide);
    QVERIFY(!chain.groups[1]->IsVisible());
}

void TraversalContractTest::aMemberFunctionCanBeApplied() {
    const Chain chain(1);
    ForAtoms(space(), true, std::mem_fn(&Compound::ToggleSelected));
    QVERIFY(chain.molecule->IsSelected());
}

void TraversalContractTest::aBoundPredicateCanBeApplied() {
    const Chain chain(2);
    ForAtoms(space(), true, std::bind(selectIfNamed, std::placeholders::_1, std::string("CA")));
    QCOMPARE(atomsOf(space(), false), (Items{chain.atoms[1], chain.atoms[5]}));
}

void TraversalContractTest::theFunctorComesBackAsItStands() {
    const Chain chain(3);
    chain.residues[1]->SetSelected(true);
    QCOMPARE(ForAtoms(space(), true, Count()).m_count, 12);
    QCOMPARE(ForAtoms(space(), false, Count()).m_count, 4);
    QCOMPARE(ForGroups(space(), true, Count()).m_count, 6);
    QCOMPARE(ForResidues(space(), true, Count{10}).m_count, 13);
    QCOMPARE(ForResidues(make(space(), "Composite"), true, Count{10}).m_count, 10);
}

void TraversalContractTest::groupsAndResiduesAreVisitedInOrder() {
    const Chain chain(3);
    Items visited;
    const auto visit = [&](Compound* item) { visited.push_back(item); };
    ForGroups(space(), true, visit);
    QCOMPARE(visited, chain.groups);
    visited.clear();
    ForResidues(space(), true, visit);
    QCOMPARE(visited, chain.residues);
}

void TraversalContractTest::onlySelectedOnesAreVisitedOnDemand() {
    const Chain chain(3);
    chain.residues[2]->SetSelected(true);
    chain.groups[0]->SetSelected(true);
    Items visited;
    const auto visit = [&](Compound* item) { visited.push_back(item); };
    ForGroups(space(), false, visit);
    QCOMPARE(visited, (Items{chain.groups[0], chain.groups[4], chain.groups[5]}));
    visited.clear();
    ForResidues(space(), false, visit);
    QCOMPARE(visited, (Items{chain.residues[2]}));
}

REGISTER_TEST(TraversalContractTest)
#include "TraversalContractTest.moc"
