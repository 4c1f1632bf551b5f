// The state of items that plug-ins change: selection, visibility, colour, alternative models, sets.
#include "ContractTools.h"
#include "DataPointBase.h"
#include "TestSupport.h"
#include "Traversal.h"

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <QWidget>

using namespace contract;
using namespace TAVIK;

class StateContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void selectingACompositeSelectsAllThatItHolds();
    void selectingTheSpaceSelectsEverything();
    void selectingAnAtomSelectsNothingElse();
    void anItemWithAnythingSelectedInItIsPartlySelected();
    void anItemIsSelectedWhenAllItsAtomsAre();
    void anEmptyCompositeIsSelectedByItself();
    void togglingFlipsTheSelection_data();
    void togglingFlipsTheSelection();
    void selectingLeavesVisibilityAndColourAlone();
    void hidingACompositeHidesAllThatItHolds();
    void showingOneAtomMakesWhatHoldsItVisible();
    void togglingFlipsTheVisibility_data() { togglingFlipsTheSelection_data(); }
    void togglingFlipsTheVisibility();
    void hidingLeavesTheSelectionAlone();
    void aColourIsTheItemsOwn();
    void aColourKeepsItsAlpha();
    void restoringGivesTheDefaultColourBack();
    void atomsOfDifferentElementsStartInDifferentColours();
    void aResidueWithoutModelsIgnoresModelSwitches();
    void onlyOneModelOfAResidueIsShown();
    void theFirstModelIsReachedFromAnywhere();
    void previousUndoesNext();
    void atomsOfAllModelsStayShown();
    void switchingModelsNeverShowsWhatWasHidden();
    void switchingModelsInWhatIsNoResidueDoesNothing();
    void aSetHasItsMembersAsParts();
    void aSetLeavesOutNullAndRepeatedMembers();
    void aSetMayHaveNoMembers();
    void aSetActsOnItsMembers();
    void aSetAddsNothingToTheStateOfTheCompositeThatItStandsIn();
    void whatIsDoneToACompositePassesTheMembersOfItsSetsBy();
    void aSetIsNotAmongItsMembersParents();
    void theMenuOfAnItemOpensAndCloses();
    void theMenuOutlivesItsItem();
};

void StateContractTest::selectingACompositeSelectsAllThatItHolds() {
    const Chain chain(2);
    chain.residues[0]->SetSelected(true);
    QVERIFY(chain.residues[0]->IsSelected());
    for (const std::size_t i : {0, 1})
        QVERIFY(chain.groups[i]->IsSelected());
    for (std::size_t i = 0; i != chain.atoms.size(); ++i)
        QCOMPARE(chain.atoms[i]->IsSelected(), i < 4);
    QVERIFY(!chain.residues[1]->HasSelected());
    chain.residues[0]->SetSelected(false);
    QVERIFY(!chain.molecule->HasSelected());
    QCOMPARE(faults(), QString());
}

void StateContractTest::selectingTheSpaceSelectsEverything() {
    const Chain chain(2);
    Compound* const surface = make(space(), "Surface");
    space()->SetSelected(true);
    for (const Items& items : {chain.residues, chain.groups, chain.atoms, chain.bonds,
                               Items{space(), chain.molecule, surface}})
        for (Compound* item : items)
            QVERIFY(item->IsSelected());
    space()->SetSelected(false);
    QVERIFY(!space()->HasSelected());
}

void StateContractTest::selectingAnAtomSelectsNothingElse() {
    const Chain chain(1);
    chain.atoms[1]->SetSelected(true);
    for (std::size_t i = 0; i != chain.atoms.size(); ++i)
        QCOMPARE(chain.atoms[i]->IsSelected(), i == 1);
    for (Compound* bond : chain.bonds)
        QVERIFY(!bond->IsSelected());
    QVERIFY(!chain.groups[0]->IsSelected());
}

void StateContractTest::anItemWithAnythingSelectedInItIsPartlySelected() {
    const Chain chain(2);
    chain.atoms[0]->SetSelected(true);
    for (Compound* item :
         {space(), chain.molecule, chain.residues[0], chain.groups[0], chain.atoms[0]}) {
        QVERIFY(item->HasSelected());
        QCOMPARE(item->IsSelected(), item == chain.atoms[0]);
    }
    for (Compound* item : {chain.groups[1], chain.residues[1], chain.atoms[1]})
        QVERIFY(!item->HasSelected());
}

void StateContractTest::anItemIsSelectedWhenAllItsAtomsAre() {
    const Chain chain(1);
    for (const std::size_t i : {0, 1, 2})
        chain.atoms[i]->SetSelected(true);
    QVERIFY(chain.groups[0]->IsSelected());
    QVERIFY(!chain.residues[0]->IsSelected());
    chain.atoms[3]->SetSelected(true);
    QVERIFY(chain.residues[0]->IsSelected());
    chain.atoms[0]->SetSelected(false);
    QVERIFY(!chain.residues[0]->IsSelected());
    QVERIFY(!chain.groups[0]->IsSelected());
    QVERIFY(chain.groups[1]->IsSelected());
}

void StateContractTest::anEmptyCompositeIsSelectedByItself() {
    Compound* const empty = make(space(), "Composite");
    empty->SetSelected(true);
    QVERIFY(empty->IsSelected());
    QVERIFY(empty->HasSelected());
    QVERIFY(space()->HasSelected());
    space()->SetSelected(false);
    QVERIFY(!empty->IsSelected());
}

void StateContractTest::togglingFlipsTheSelection_data() {
    QTest::addColumn<QString>("kind");
    for (const char* kind :
         {"Composite", "Molecule", "Residue", "Group", "Atom", "Bond", "Surface", "Grid"})
        QTest::newRow(kind) << kind;
}

void StateContractTest::togglingFlipsTheSelection() {
    QFETCH(QString, kind);
    Compound* const item = make(space(), kind.toStdString());
    item->ToggleSelected();
    QVERIFY(item->IsSelected());
    item->ToggleSelected();
    QVERIFY(!item->IsSelected());
}

void StateContractTest::selectingLeavesVisibilityAndColourAlone() {
    const Chain chain(1);
    const Color before = chain.atoms[0]->GetColor();
    chain.atoms[0]->SetVisible(false);
    space()->SetSelected(true);
    QVERIFY(!chain.atoms[0]->IsVisible());
    QVERIFY(chain.atoms[1]->IsVisible());
    QVERIFY(chain.atoms[0]->GetColor() == before);
}

void StateContractTest::hidingACompositeHidesAllThatItHolds() {
    const Chain chain(2);
    chain.residues[0]->SetVisible(false);
    QVERIFY(!chain.residues[0]->IsVisible());
    for (std::size_t i = 0; i != chain.atoms.size(); ++i)
        QCOMPARE(chain.atoms[i]->IsVisible(), i >= 4);
    chain.molecule->SetVisible(false);
    QVERIFY(!chain.molecule->IsVisible());
    QVERIFY(!chain.atoms[7]->IsVisible());
    space()->SetVisible(true);
    for (Compound* item : chain.atoms)
        QVERIFY(item->IsVisible());
}

void StateContractTest::showingOneAtomMakesWhatHoldsItVisible() {
    const Chain chain(1);
    chain.molecule->SetVisible(false);
    chain.atoms[0]->SetVisible(true);
    for (Compound* item :
         {space(), chain.molecule, chain.residues[0], chain.groups[0], chain.atoms[0]})
        QVERIFY(item->IsVisible());
    QVERIFY(!chain.groups[1]->IsVisible());
}

void StateContractTest::togglingFlipsTheVisibility() {
    QFETCH(QString, kind);
    Compound* const item = make(space(), kind.toStdString());
    item->ToggleVisible();
    QVERIFY(!item->IsVisible());
    item->ToggleVisible();
    QVERIFY(item->IsVisible());
}

void StateContractTest::hidingLeavesTheSelectionAlone() {
    const Chain chain(1);
    chain.atoms[2]->SetSelected(true);
    chain.molecule->SetVisible(false);
    for (std::size_t i = 0; i != chain.atoms.size(); ++i)
        QCOMPARE(chain.atoms[i]->IsSelected(), i == 2);
}

void StateContractTest::aColourIsTheItemsOwn() {
    const Chain chain(1);
    const Color before = chain.atoms[0]->GetColor();
    chain.residues[0]->SetColor(Color(0xff102030U));
    QCOMPARE(chain.residues[0]->GetColor().rgba(), 0xff102030U);
    QVERIFY(chain.atoms[0]->GetColor() == before);
    QVERIFY(chain.groups[0]->GetColor().rgba() != 0xff102030U);
}

void StateContractTest::aColourKeepsItsAlpha() {
    Compound* const item = atom(space());
    item->SetColor(Color(0x40102030U));
    QCOMPARE(item->GetColor().rgba(), 0x40102030U);
    QCOMPARE(item->GetColor().toQColor().alpha(), 0x40);
}

void StateContractTest::restoringGivesTheDefaultColourBack() {
    const Chain chain(1);
    for (Compound* item : {chain.molecule, chain.residues[0], chain.atoms[0], chain.bonds[0]}) {
        const Color before = item->GetColor();
        item->SetColor(Color(0xff010203U));
        item->RestoreColor();
        QVERIFY(item->GetColor() == before);
    }
}

void StateContractTest::atomsOfDifferentElementsStartInDifferentColours() {
    Compound* const oxygen = DataMaker::makeAtom(space(), {"O", "O", {}, 0.0F, 0});
    Compound* const nitrogen = DataMaker::makeAtom(space(), {"N", "N", {}, 0.0F, 0});
    QVERIFY(!(oxygen->GetColor() == nitrogen->GetColor()));
}

void StateContractTest::aResidueWithoutModelsIgnoresModelSwitches() {
    const Chain chain(1);
    chain.atoms[1]->SetVisible(false);
    chain.residues[0]->FirstModel();
    chain.residues[0]->NextModel();
    chain.residues[0]->PrevModel();
    for (std::size_t i = 0; i != chain.atoms.size(); ++i)
        QCOMPARE(chain.atoms[i]->IsVisible(), i != 1);
}

namespace {

// A residue with an atom that all models share and one atom for each of three models.
struct Alternatives {
    Compound* residue = make(space(), "Residue");
    Compound* shared = atom(residue, 0.0F, "CA");
    Items atoms{atom(residue, 1.0F, "CB", 1), atom(residue, 2.0F, "CB", 2),
                atom(residue, 3.0F, "CB", 3)};

    /// The position of the only shown one; -1 when not exactly one is.
    int shown() const {
        int found = -1;
        for (std::size_t i = 0; i != atoms.size(); ++i)
            if (atoms[i]->IsVisible()) {
                if (found >= 0)
                    return -1;
                found = static_cast<int>(i);
            }
        return found;
    }
};

} // namespace

void StateContractTest::onlyOneModelOfAResidueIsShown() {
    const Alternatives models;
    QCOMPARE(dynamic_cast<Atom*>(models.atoms[2])->GetModelNumber(), std::string("3"));
    models.residue->FirstModel();
    QCOMPARE(models.shown(), 0);
    models.residue->NextModel();
    QCOMPARE(models.shown(), 1);
    models.residue->NextModel();
    QCOMPARE(models.shown(), 2);
    models.residue->NextModel();
    QVERIFY(models.shown() >= 0);
    QCOMPARE(faults(), QString());
}

void StateContractTest::theFirstModelIsReachedFromAnywhere() {
    const Alternatives models;
    models.residue->FirstModel();
    for (int steps = 0; steps != 4; ++steps) {
        for (int i = 0; i != steps; ++i)
            models.residue->NextModel();
        models.residue->FirstModel();
        QCOMPARE(models.shown(), 0);
    }
}

void StateContractTest::previousUndoesNext() {
    const Alternatives models;
    models.residue->FirstModel();
    models.residue->NextModel();
    models.residue->NextModel();
    models.residue->PrevModel();
    QCOMPARE(models.shown(), 1);
    models.residue->PrevModel();
    QCOMPARE(models.shown(), 0);
}

void StateContractTest::atomsOfAllModelsStayShown() {
    const Alternatives models;
    for (int i = 0; i != 3; ++i) {
        models.residue->NextModel();
        QVERIFY(models.shared->IsVisible());
    }
}

void StateContractTest::switchingModelsNeverShowsWhatWasHidden() {
    const Alternatives models;
    models.residue->FirstModel();
    models.residue->SetVisible(false);
    for (int i = 0; i != 3; ++i) {
        models.residue->NextModel();
        QVERIFY(!models.residue->IsVisible());
    }
    models.residue->SetVisible(true);
    QVERIFY(models.shown() >= 0);
}

void StateContractTest::switchingModelsInWhatIsNoResidueDoesNothing() {
    const Alternatives models;
    models.residue->FirstModel();
    for (Compound* item : {space(), models.atoms[0], make(space(), "Surface")}) {
        item->FirstModel();
        item->NextModel();
        item->PrevModel();
    }
    QCOMPARE(models.shown(), 0);
}

void StateContractTest::aSetHasItsMembersAsParts() {
    const Chain chain(2);
    const Items members{chain.atoms[5], chain.residues[0], chain.bonds[2]};
    Compound* const set = DataMaker::makeSet(space(), "site", members);
    QCOMPARE(set->GetName(), std::string("site"));
    QCOMPARE(partsOf(set), members);
    QVERIFY(!set->HasChildren());
    QVERIFY(dynamic_cast<Composite*>(set) == nullptr);
    QCOMPARE(childrenOf(space()).back(), set);
}

void StateContractTest::aSetLeavesOutNullAndRepeatedMembers() {
    const Chain chain(1);
    Compound* const a = chain.atoms[0];
    Compound* const b = chain.atoms[1];
    Compound* const set = DataMaker::makeSet(space(), "set", {a, nullptr, b, a, nullptr, b});
    QCOMPARE(partsOf(set), (Items{a, b}));
}

void StateContractTest::aSetMayHaveNoMembers() {
    Compound* const set = DataMaker::makeSet(space(), "nothing", {});
    QVERIFY(set != nullptr);
    QVERIFY(set->PartBegin() == set->PartEnd());
    QVERIFY(!set->IsSelected());
}

void StateContractTest::aSetActsOnItsMembers() {
    const Chain chain(2);
    Compound* const set = DataMaker::makeSet(space(), "set", {chain.atoms[0], chain.residues[1]});
    set->SetSelected(true);
    QVERIFY(set->IsSelected());
    QVERIFY(chain.atoms[0]->IsSelected());
    QVERIFY(chain.residues[1]->IsSelected());
    QVERIFY(!chain.atoms[1]->IsSelected());
    set->SetVisible(false);
    QVERIFY(!set->IsVisible());
    QVERIFY(!chain.atoms[0]->IsVisible());
    QVERIFY(!chain.atoms[7]->IsVisible());
    QVERIFY(chain.atoms[1]->IsVisible());
    chain.atoms[0]->SetSelected(false);
    QVERIFY(!set->IsSelected());
    QVERIFY(set->HasSelected());
    QCOMPARE(faults(), QString());
}

void StateContractTest::aSetAddsNothingToTheStateOfTheCompositeThatItStandsIn() {
    const Chain chain(1);
    Compound* const box = make(space(), "Composite");
    Compound* const own = atom(box);
    DataMaker::makeSet(box, "set", {chain.atoms[0]});
    chain.atoms[0]->SetSelected(true);
    QVERIFY(!box->HasSelected());
    chain.atoms[0]->SetSelected(false);
    own->SetSelected(true);
    QVERIFY(box->IsSelected());
    own->SetVisible(false);
    QVERIFY(!box->IsVisible());
    chain.atoms[0]->SetSelected(true);
    Items selected;
    GetSelected(box, selected);
    QCOMPARE(selected, (Items{own}));
    QCOMPARE(faults(), QString());
}

void StateContractTest::whatIsDoneToACompositePassesTheMembersOfItsSetsBy() {
    const Chain chain(1);
    Compound* const box = make(space(), "Composite");
    Compound* const own = atom(box);
    DataMaker::makeSet(box, "set", {chain.atoms[0]});
    box->SetSelected(true);
    box->SetVisible(false);
    QVERIFY(own->IsSelected() && !own->IsVisible());
    QVERIFY(!chain.atoms[0]->IsSelected() && chain.atoms[0]->IsVisible());
    QCOMPARE(faults(), QString());
}

void StateContractTest::aSetIsNotAmongItsMembersParents() {
    const Chain chain(1);
    const std::string before = chain.atoms[0]->GetFQName();
    DataMaker::makeSet(space(), "set", {chain.atoms[0]});
    QCOMPARE(chain.atoms[0]->GetFQName(), before);
    QCOMPARE(childrenOf(chain.groups[0]).front(), chain.atoms[0]);
}

void StateContractTest::theMenuOfAnItemOpensAndCloses() {
    const Chain chain(1);
    for (Compound* item : {chain.molecule, chain.atoms[0], chain.bonds[0]}) {
        bool opened = false;
        QTimer::singleShot(0, this, [&] {
            QWidget* const menu = QApplication::activePopupWidget();
            opened = menu != nullptr;
            if (menu)
                menu->close();
        });
        item->ShowMenu();
        QVERIFY(opened);
        QVERIFY(!QApplication::activePopupWidget());
    }
}

void StateContractTest::theMenuOutlivesItsItem() {
    Compound* const item = atom(space());
    QTimer::singleShot(0, this, [&] {
        QPointer<QWidget> menu = QApplication::activePopupWidget();
        {
            const DataPointBase guard(nullptr, Publisher::Delete);
            QVERIFY(guard.m_good);
            DataMaker::Destroy(item);
        }
        if (menu)
            menu->close();
    });
    item->ShowMenu();
    QVERIFY(!space()->HasChildren());
}

REGISTER_TEST(StateContractTest)
#include "StateContractTest.moc"
