// Alternative models of residues: which is active, and what that hides.
#include "Sample.h"
#include "TestSupport.h"

using namespace memory_host;
using namespace TAVIK;

class ModelsTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void cleanup() override;
    void aResidueWithoutModelsHasNoActiveOne();
    void theFirstModelThatComesIsActive();
    void onlyTheActiveModelIsVisible();
    void nextAndPreviousGoRound();
    void gapsInTheNumbersArePassedOver();
    void firstGoesToTheLowestNumber();
    void modelsAreFoundInGroupsToo();
    void modelsOfABranchBuiltAsideAreMarkedWhenItIsAttached();
    void residuesSwitchEachForItself();
    void marksAreKeptWhileAModelIsNotActive();
    void showingAResidueShowsTheActiveModelOnly();
    void bondsToInactiveAtomsAreHidden();
    void switchingTellsTheCountersOfEveryLevel();
    void outsideOfAResidueEveryModelIsVisible();
    void aNewAtomOfAnotherModelIsHidden();
    void anAtomThatChangesItsModelIsCountedAnew();
    void whenTheActiveModelIsGoneTheFirstOneLeftIsActive();
    void whenAllModelsAreGoneTheNextToComeIsActive();
    void destroyingAGroupCountsItsModels();
    void hugeModelNumbersAreBounded();
};

void ModelsTest::cleanup() {
    QCOMPARE(faults(), QString());
    TestCase::cleanup();
}

namespace {

// A residue with one shared atom and one atom for each of the models given.
struct Alternatives {
    explicit Alternatives(const std::vector<unsigned int>& models,
                          Compound* where = make(space(), "Residue"))
        : residue(where), shared(makeAtom(where)) {
        for (const unsigned int model : models)
            atoms.push_back(makeAtom(where, model));
    }
    std::vector<bool> visible() const {
        std::vector<bool> all;
        for (const Compound* atom : atoms)
            all.push_back(atom->IsVisible());
        return all;
    }

    Compound* residue;
    Compound* shared;
    Items atoms;
};

using Visible = std::vector<bool>;

} // namespace

void ModelsTest::aResidueWithoutModelsHasNoActiveOne() {
    const Sample sample;
    QCOMPARE(activeModel(sample.residues[0]), 0U);
    sample.residues[0]->NextModel();
    QCOMPARE(activeModel(sample.residues[0]), 0U);
    QCOMPARE(activeModel(sample.chain), 0U);
    QCOMPARE(activeModel(sample.atoms[0]), 0U);
}

void ModelsTest::theFirstModelThatComesIsActive() {
    const Alternatives models({2, 1});
    QCOMPARE(activeModel(models.residue), 2U);
    QVERIFY(models.shared->IsVisible());
    QVERIFY(models.visible() == (Visible{true, false}));
}

void ModelsTest::onlyTheActiveModelIsVisible() {
    const Alternatives models({1, 2, 1, 3});
    QVERIFY(models.visible() == (Visible{true, false, true, false}));
    models.residue->NextModel();
    QVERIFY(models.visible() == (Visible{false, true, false, false}));
    QVERIFY(models.shared->IsVisible());
}

void ModelsTest::nextAndPreviousGoRound() {
    const Alternatives models({1, 2, 3});
    for (const unsigned int expected : {2U, 3U, 1U, 2U}) {
        models.residue->NextModel();
        QCOMPARE(activeModel(models.residue), expected);
    }
    for (const unsigned int expected : {1U, 3U, 2U, 1U, 3U}) {
        models.residue->PrevModel();
        QCOMPARE(activeModel(models.residue), expected);
    }
    models.residue->FirstModel();
    QCOMPARE(activeModel(models.residue), 1U);
}

void ModelsTest::gapsInTheNumbersArePassedOver() {
    const Alternatives models({4, 9, 2});
    for (const unsigned int expected : {9U, 2U, 4U}) {
        models.residue->NextModel();
        QCOMPARE(activeModel(models.residue), expected);
    }
    for (const unsigned int expected : {2U, 9U, 4U}) {
        models.residue->PrevModel();
        QCOMPARE(activeModel(models.residue), expected);
    }
}

void ModelsTest::firstGoesToTheLowestNumber() {
    const Alternatives models({3, 1, 2});
    models.residue->FirstModel();
    QVERIFY(models.visible() == (Visible{false, true, false}));
    models.residue->FirstModel();
    QCOMPARE(activeModel(models.residue), 1U);
}

void ModelsTest::modelsAreFoundInGroupsToo() {
    Compound* const residue = make(space(), "Residue");
    Compound* const backbone = make(residue, "Group");
    Compound* const side = make(residue, "Group");
    Compound* const a = makeAtom(backbone, 1);
    Compound* const b = makeAtom(side, 2);
    QVERIFY(a->IsVisible() && !b->IsVisible());
    QVERIFY(!side->IsVisible());
    residue->NextModel();
    QVERIFY(!a->IsVisible() && b->IsVisible());
    QVERIFY(!backbone->IsVisible());
}

void ModelsTest::modelsOfABranchBuiltAsideAreMarkedWhenItIsAttached() {
    const Alternatives models({1, 2});
    Compound* const group = makeDetached("group", "Group");
    const Alternatives more({1, 2, 3}, group);
    QVERIFY(more.visible() == (Visible{true, true, true}));
    attach(group, models.residue);
    QVERIFY(more.visible() == (Visible{true, false, false}));
    models.residue->PrevModel();
    QVERIFY(more.visible() == (Visible{false, false, true}));
}

void ModelsTest::residuesSwitchEachForItself() {
    const Alternatives first({1, 2});
    const Alternatives second({1, 2});
    first.residue->NextModel();
    QVERIFY(first.visible() == (Visible{false, true}));
    QVERIFY(second.visible() == (Visible{true, false}));
}

void ModelsTest::marksAreKeptWhileAModelIsNotActive() {
    const Alternatives models({1, 2});
    models.atoms[1]->SetVisible(false);
    models.residue->NextModel();
    QVERIFY(models.visible() == (Visible{false, false}));
    models.residue->NextModel();
    // Hidden as a whole while another model was active: its own mark went, too.
    models.residue->SetVisible(false);
    models.residue->NextModel();
    QVERIFY(!models.residue->IsVisible());
    models.residue->SetVisible(true);
    QVERIFY(models.visible() == (Visible{false, true}));
    models.residue->NextModel();
    QVERIFY(models.visible() == (Visible{true, false}));
}

void ModelsTest::showingAResidueShowsTheActiveModelOnly() {
    const Alternatives models({1, 2});
    models.residue->SetVisible(true);
    space()->SetVisible(true);
    models.atoms[1]->SetVisible(true);
    QVERIFY(models.visible() == (Visible{true, false}));
}

void ModelsTest::bondsToInactiveAtomsAreHidden() {
    const Alternatives models({1, 2});
    Compound* const box = make(space(), "Composite");
    Compound* const first = addBond(box, models.shared, models.atoms[0]);
    Compound* const second = addBond(box, models.atoms[1], models.shared);
    QVERIFY(first->IsVisible() && !second->IsVisible());
    models.residue->NextModel();
    QVERIFY(!first->IsVisible() && second->IsVisible());
}

void ModelsTest::switchingTellsTheCountersOfEveryLevel() {
    Compound* const chain = make(space(), "Molecule");
    Compound* const residue = make(chain, "Residue");
    Compound* const a = makeAtom(residue, 1);
    makeAtom(residue, 2);
    a->SetVisible(false);
    QVERIFY(!chain->IsVisible());
    residue->NextModel();
    QVERIFY(chain->IsVisible());
    QVERIFY(space()->IsVisible());
    residue->NextModel();
    QVERIFY(!space()->IsVisible());
}

void ModelsTest::outsideOfAResidueEveryModelIsVisible() {
    const Alternatives models({1, 2}, make(space(), "Composite"));
    QVERIFY(models.visible() == (Visible{true, true}));
    models.residue->NextModel();
    QVERIFY(models.visible() == (Visible{true, true}));
}

void ModelsTest::aNewAtomOfAnotherModelIsHidden() {
    const Alternatives models({1});
    Compound* const rotamer = makeAtom(models.residue, 2);
    QVERIFY(!rotamer->IsVisible());
    models.residue->NextModel();
    QVERIFY(rotamer->IsVisible());
}

void ModelsTest::anAtomThatChangesItsModelIsCountedAnew() {
    const Alternatives models({1, 2});
    setAtom(models.atoms[1], {"", "C", {}, 0.0F, 1});
    QVERIFY(models.visible() == (Visible{true, true}));
    QCOMPARE(faults(), QString());
    setAtom(models.atoms[0], {"", "C", {}, 0.0F, 0});
    models.residue->NextModel();
    QVERIFY(models.visible() == (Visible{true, true}));
    setAtom(models.atoms[1], {"", "C", {}, 0.0F, 5});
    QCOMPARE(activeModel(models.residue), 5U);
    setAtom(models.atoms[1], {"", "C", {}, 0.0F, 0});
    QCOMPARE(activeModel(models.residue), 0U);
    // As makeCore makes it, and then given its values.
    Compound* const atom = make(models.residue, "Atom");
    setAtom(atom, {"", "C", {}, 0.0F, 3});
    QCOMPARE(activeModel(models.residue), 3U);
    QVERIFY(atom->IsVisible());
}

void ModelsTest::whenTheActiveModelIsGoneTheFirstOneLeftIsActive() {
    const Alternatives models({1, 3, 2, 2});
    models.atoms[2]->SetVisible(false);
    DataMaker::Destroy(models.atoms[0]);
    QCOMPARE(activeModel(models.residue), 2U);
    QVERIFY(!models.atoms[1]->IsVisible());
    QVERIFY(!models.atoms[2]->IsVisible());
    QVERIFY(models.atoms[3]->IsVisible());
    DataMaker::Destroy(models.atoms[3]);
    QCOMPARE(activeModel(models.residue), 2U);
    DataMaker::Destroy(models.atoms[2]);
    QCOMPARE(activeModel(models.residue), 3U);
    QVERIFY(models.atoms[1]->IsVisible());
}

void ModelsTest::whenAllModelsAreGoneTheNextToComeIsActive() {
    const Alternatives models({1, 2});
    for (Compound* atom : models.atoms)
        DataMaker::Destroy(atom);
    QCOMPARE(activeModel(models.residue), 0U);
    Compound* const atom = makeAtom(models.residue, 7);
    QCOMPARE(activeModel(models.residue), 7U);
    QVERIFY(atom->IsVisible());
}

void ModelsTest::destroyingAGroupCountsItsModels() {
    Compound* const residue = make(space(), "Residue");
    Compound* const group = make(residue, "Group");
    makeAtom(group, 1);
    makeAtom(make(group, "Composite"), 1);
    Compound* const left = makeAtom(residue, 2);
    DataMaker::Destroy(group);
    QCOMPARE(activeModel(residue), 2U);
    QVERIFY(left->IsVisible());
}

void ModelsTest::hugeModelNumbersAreBounded() {
    const Alternatives models({1, 4'000'000'000U});
    QCOMPARE(dynamic_cast<Atom*>(models.atoms[1])->GetModelNumber(), std::string("65535"));
    models.residue->NextModel();
    QVERIFY(models.visible() == (Visible{false, true}));
    models.residue->NextModel();
    QVERIFY(models.visible() == (Visible{true, false}));
}

REGISTER_TEST(ModelsTest)
#include "ModelsTest.moc"
