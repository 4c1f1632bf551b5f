// What counts as selected, by the rules of this host.
#include "Sample.h"
#include "TestSupport.h"

using namespace memory_host;
using namespace TAVIK;

class SelectionTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void cleanup() override;
    void anItemWithAtomsIsSelectedWhenAllItsAtomsAre();
    void bondsDoNotDecideWhetherAnItemWithAtomsIsSelected();
    void aCompositeWithoutAtomsIsSelectedWhenAllItsLeavesAre();
    void emptyCompositesInACompositeCountAsLeaves();
    void anEmptyCompositeKeepsItsOwnMark();
    void theMarkOfAnEmptyCompositeEndsWithItsFirstChild();
    void whatHasBecomeEmptyIsNotSelected();
    void partlySelectedCountsBonds();
    void selectingOneAtomReachesEveryLevel();
    void attachingASelectedBranchCounts();
    void attachingAnUnselectedItemUnselectsItsParents();
    void destroyingTheOnlyUnselectedAtomSelectsItsParents();
    void theSelectedOnesAreTheTopmost();
    void theSelectedOnesLeaveSetsOut();
    void selectedGroupsAreFoundInPartlySelectedResidues();
    void selectingTwiceChangesNothing();
};

void SelectionTest::cleanup() {
    QCOMPARE(faults(), QString());
    TestCase::cleanup();
}

void SelectionTest::anItemWithAtomsIsSelectedWhenAllItsAtomsAre() {
    const Sample sample;
    for (std::size_t i = 0; i != sample.atoms.size(); ++i) {
        QVERIFY(!sample.chain->IsSelected());
        sample.atoms[i]->SetSelected(true);
        QCOMPARE(sample.residues[i / 4]->IsSelected(), i % 4 == 3);
    }
    for (Compound* item : {space(), sample.entry, sample.chain, sample.groupsBox})
        QVERIFY(item->IsSelected());
    QVERIFY(!sample.bondsBox->IsSelected());
}

void SelectionTest::bondsDoNotDecideWhetherAnItemWithAtomsIsSelected() {
    const Sample sample;
    sample.chain->SetSelected(true);
    sample.bonds[0]->SetSelected(false);
    QVERIFY(sample.chain->IsSelected());
    QVERIFY(!sample.bondsBox->IsSelected());
    sample.bondsBox->SetSelected(true);
    sample.groupsBox->SetSelected(false);
    QVERIFY(!sample.chain->IsSelected());
    QVERIFY(sample.bondsBox->IsSelected());
    // Selecting again selects the rest, bonds included.
    sample.bonds[0]->SetSelected(false);
    sample.chain->SetSelected(true);
    QVERIFY(sample.bonds[0]->IsSelected());
}

void SelectionTest::aCompositeWithoutAtomsIsSelectedWhenAllItsLeavesAre() {
    const Sample sample;
    for (Compound* bond : sample.bonds) {
        QVERIFY(!sample.bondsBox->IsSelected());
        bond->SetSelected(true);
    }
    QVERIFY(sample.bondsBox->IsSelected());
    Compound* const maps = make(space(), "Composite");
    Compound* const surface = make(maps, "Surface");
    Compound* const grid = make(maps, "Grid");
    surface->SetSelected(true);
    QVERIFY(!maps->IsSelected());
    grid->SetSelected(true);
    QVERIFY(maps->IsSelected());
}

void SelectionTest::emptyCompositesInACompositeCountAsLeaves() {
    Compound* const outer = make(space(), "Composite");
    Compound* const inner = make(outer, "Composite");
    Compound* const surface = make(outer, "Surface");
    surface->SetSelected(true);
    QVERIFY(!outer->IsSelected());
    QVERIFY(outer->HasSelected());
    inner->SetSelected(true);
    QVERIFY(outer->IsSelected());
    outer->SetSelected(false);
    QVERIFY(!inner->IsSelected());
    // Beside atoms, an empty composite does not decide.
    makeAtom(outer)->SetSelected(true);
    QVERIFY(outer->IsSelected());
}

void SelectionTest::anEmptyCompositeKeepsItsOwnMark() {
    Compound* const empty = make(space(), "Molecule");
    empty->SetSelected(true);
    QVERIFY(empty->IsSelected());
    QVERIFY(space()->IsSelected());
    empty->ToggleSelected();
    QVERIFY(!space()->HasSelected());
}

void SelectionTest::theMarkOfAnEmptyCompositeEndsWithItsFirstChild() {
    Compound* const composite = make(space(), "Composite");
    composite->SetSelected(true);
    Compound* const atom = makeAtom(composite);
    QVERIFY(!composite->IsSelected());
    QVERIFY(!composite->HasSelected());
    QVERIFY(!space()->HasSelected());
    atom->SetSelected(true);
    QVERIFY(composite->IsSelected());
}

void SelectionTest::whatHasBecomeEmptyIsNotSelected() {
    Compound* const composite = make(space(), "Composite");
    composite->SetSelected(true);
    Compound* const atom = makeAtom(composite);
    atom->SetSelected(true);
    atom->SetVisible(false);
    DataMaker::Destroy(atom);
    QVERIFY(!composite->IsSelected());
    QVERIFY(composite->IsVisible());
    QVERIFY(!space()->HasSelected());
}

void SelectionTest::partlySelectedCountsBonds() {
    const Sample sample;
    sample.bonds[4]->SetSelected(true);
    for (Compound* item : {space(), sample.entry, sample.chain, sample.bondsBox})
        QVERIFY(item->HasSelected());
    QVERIFY(!sample.groupsBox->HasSelected());
    QVERIFY(!sample.chain->IsSelected());
}

void SelectionTest::selectingOneAtomReachesEveryLevel() {
    Compound* parent = space();
    Items levels;
    for (int depth = 0; depth != 100; ++depth) {
        parent = make(parent, "Composite");
        levels.push_back(parent);
    }
    Compound* const atom = makeAtom(parent);
    atom->SetSelected(true);
    for (Compound* level : levels)
        QVERIFY(level->IsSelected());
    makeAtom(levels[50]);
    for (std::size_t i = 0; i != levels.size(); ++i)
        QCOMPARE(levels[i]->IsSelected(), i > 50);
    space()->SetSelected(false);
    QVERIFY(!levels[99]->HasSelected());
}

void SelectionTest::attachingASelectedBranchCounts() {
    Compound* const branch = makeDetached("branch", "Composite");
    makeAtom(branch)->SetSelected(true);
    QVERIFY(branch->IsSelected());
    QVERIFY(!space()->HasSelected());
    attach(branch, make(space(), "Composite"));
    QVERIFY(space()->IsSelected());
    Compound* const empty = makeDetached("empty", "Composite");
    empty->SetSelected(true);
    Compound* const box = make(space(), "Composite");
    attach(empty, box);
    QVERIFY(box->IsSelected());
}

void SelectionTest::attachingAnUnselectedItemUnselectsItsParents() {
    const Sample sample;
    space()->SetSelected(true);
    makeAtom(sample.groups[0]);
    for (Compound* item : {space(), sample.chain, sample.residues[0], sample.groups[0]})
        QVERIFY(!item->IsSelected());
    QVERIFY(sample.residues[1]->IsSelected());
}

void SelectionTest::destroyingTheOnlyUnselectedAtomSelectsItsParents() {
    const Sample sample;
    space()->SetSelected(true);
    sample.atoms[2]->SetSelected(false);
    QVERIFY(!space()->IsSelected());
    DataMaker::Destroy(sample.atoms[2]);
    for (Compound* item : {space(), sample.chain, sample.residues[0], sample.groups[0]})
        QVERIFY(item->IsSelected());
}

void SelectionTest::theSelectedOnesAreTheTopmost() {
    const Sample sample(3);
    Compound* const surface = make(space(), "Surface");
    const auto selected = [] {
        Items items;
        GetSelected(space(), items);
        return items;
    };
    sample.groups[0]->SetSelected(true);
    sample.residues[2]->SetSelected(true);
    sample.bonds[1]->SetSelected(true);
    surface->SetSelected(true);
    QCOMPARE(selected(), (Items{sample.groups[0], sample.residues[2], sample.bonds[1], surface}));
    sample.groupsBox->SetSelected(true);
    // All atoms of the entry, though not all its bonds: the entry is what is selected.
    QCOMPARE(selected(), (Items{sample.entry, surface}));
}

void SelectionTest::theSelectedOnesLeaveSetsOut() {
    const Sample sample;
    Compound* const set = DataMaker::makeSet(space(), "set", {sample.atoms[0]});
    Compound* const empty = DataMaker::makeSet(space(), "empty", {});
    set->SetSelected(true);
    empty->SetSelected(true);
    Items items;
    GetSelected(space(), items);
    QCOMPARE(items, (Items{sample.atoms[0]}));
}

void SelectionTest::selectedGroupsAreFoundInPartlySelectedResidues() {
    const Sample sample;
    sample.groups[3]->SetSelected(true);
    sample.atoms[0]->SetSelected(true);
    Items groups;
    GetGroups(space(), groups, false);
    QCOMPARE(groups, (Items{sample.groups[3]}));
    Items residues;
    GetResidues(space(), residues, false);
    QVERIFY(residues.empty());
    Items atoms;
    GetAtoms(space(), atoms, false);
    QCOMPARE(atoms, (Items{sample.atoms[0], sample.atoms[7]}));
}

void SelectionTest::selectingTwiceChangesNothing() {
    const Sample sample;
    for (const bool on : {true, true, false, false}) {
        sample.atoms[0]->SetSelected(on);
        sample.groups[2]->SetSelected(on);
        QCOMPARE(sample.groups[2]->IsSelected(), on);
        QCOMPARE(sample.chain->HasSelected(), on);
        QCOMPARE(faults(), QString());
    }
}

REGISTER_TEST(SelectionTest)
#include "SelectionTest.moc"
