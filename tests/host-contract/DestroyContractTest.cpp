// Taking items out of the data space, with everything that hangs on them.
#include "ContractTools.h"
#include "TestSupport.h"

using namespace contract;
using namespace TAVIK;

class DestroyContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void aDestroyedItemIsNoLongerAmongItsParentsChildren();
    void destroyingACompositeDestroysAllThatItHolds();
    void destroyingTheFirstChildAgainAndAgainEmptiesTheSpace();
    void destroyingTheLastChildAgainAndAgainEmptiesTheSpace();
    void siblingsKeepTheirOrder();
    void itemsMadeAfterwardsComeLast();
    void bondsGoWithTheirAtoms();
    void atomsStayWhenTheirBondGoes();
    void aDestroyedMemberLeavesItsSets();
    void membersStayWhenTheirSetGoes();
    void whatStaysIsCountedAnew();
    void destroyingNullDoesNothing();
    void theSpaceItselfIsRefused();
    void gatheredItemsOfAKindCanBeDestroyedOneByOne();
};

void DestroyContractTest::aDestroyedItemIsNoLongerAmongItsParentsChildren() {
    const Chain chain(3);
    DataMaker::Destroy(chain.residues[1]);
    const Items left = childrenOf(chain.molecule);
    QVERIFY(std::find(left.begin(), left.end(), chain.residues[1]) == left.end());
    QVERIFY(std::find(left.begin(), left.end(), nullptr) == left.end());
    DataMaker::Destroy(chain.molecule);
    QVERIFY(!space()->HasChildren());
    QCOMPARE(faults(), QString());
}

void DestroyContractTest::destroyingACompositeDestroysAllThatItHolds() {
    const Chain chain(2);
    const Items all = chain.atoms;
    Compound* const set = DataMaker::makeSet(space(), "set", all);
    DataMaker::Destroy(chain.residues[0]);
    QCOMPARE(partsOf(set), Items(all.begin() + 4, all.end()));
    DataMaker::Destroy(chain.molecule);
    QVERIFY(partsOf(set).empty());
}

void DestroyContractTest::destroyingTheFirstChildAgainAndAgainEmptiesTheSpace() {
    for (int i = 0; i != 200; ++i)
        make(space(), i % 2 == 0 ? "Composite" : "Surface");
    const Chain chain(5);
    DataMaker::makeSet(space(), "set", chain.atoms);
    int destroyed = 0;
    while (space()->ChildBegin() != space()->ChildEnd()) {
        DataMaker::Destroy(*space()->ChildBegin());
        ++destroyed;
    }
    QCOMPARE(destroyed, 202);
    QVERIFY(!space()->HasChildren());
    QCOMPARE(faults(), QString());
}

void DestroyContractTest::destroyingTheLastChildAgainAndAgainEmptiesTheSpace() {
    for (int i = 0; i != 200; ++i)
        make(space(), "Composite");
    while (space()->ChildBegin() != space()->ChildEnd())
        DataMaker::Destroy(*(space()->ChildEnd() - 1));
    QVERIFY(!space()->HasChildren());
    QCOMPARE(faults(), QString());
}

void DestroyContractTest::siblingsKeepTheirOrder() {
    Items made;
    for (int i = 0; i != 100; ++i)
        made.push_back(make(space(), "Composite"));
    Items left;
    for (std::size_t i = 0; i != made.size(); ++i) {
        if (i % 3 == 1)
            DataMaker::Destroy(made[i]);
        else
            left.push_back(made[i]);
    }
    QCOMPARE(childrenOf(space()), left);
    QCOMPARE(faults(), QString());
}

void DestroyContractTest::itemsMadeAfterwardsComeLast() {
    Items made;
    for (int i = 0; i != 10; ++i)
        made.push_back(make(space(), "Composite"));
    DataMaker::Destroy(made[4]);
    DataMaker::Destroy(made[9]);
    made.erase(made.begin() + 9);
    made.erase(made.begin() + 4);
    for (int i = 0; i != 10; ++i)
        made.push_back(make(space(), "Surface"));
    QCOMPARE(childrenOf(space()), made);
}

void DestroyContractTest::bondsGoWithTheirAtoms() {
    Compound* const a = atom(space());
    Compound* const b = atom(space());
    Compound* const c = atom(space());
    Compound* const box = make(space(), "Composite", "Bonds");
    DataMaker::makeBond(box, a, b);
    Compound* const kept = DataMaker::makeBond(box, b, c);
    DataMaker::makeBond(box, c, a);
    DataMaker::Destroy(a);
    QCOMPARE(childrenOf(box), (Items{kept}));
    QCOMPARE(partsOf(kept), (Items{b, c}));
    DataMaker::Destroy(c);
    QVERIFY(!box->HasChildren());
    QCOMPARE(faults(), QString());
}

void DestroyContractTest::atomsStayWhenTheirBondGoes() {
    Compound* const a = atom(space());
    Compound* const b = atom(space());
    Compound* const bond = DataMaker::makeBond(space(), a, b);
    DataMaker::Destroy(bond);
    QCOMPARE(childrenOf(space()), (Items{a, b}));
    Compound* const again = DataMaker::makeBond(space(), b, a);
    QCOMPARE(partsOf(again), (Items{b, a}));
}

void DestroyContractTest::aDestroyedMemberLeavesItsSets() {
    const Chain chain(2);
    Compound* const first = DataMaker::makeSet(space(), "first", chain.atoms);
    Compound* const second = DataMaker::makeSet(space(), "second", {first, chain.atoms[2]});
    DataMaker::Destroy(chain.atoms[2]);
    Items left = chain.atoms;
    left.erase(left.begin() + 2);
    QCOMPARE(partsOf(first), left);
    QCOMPARE(partsOf(second), (Items{first}));
    DataMaker::Destroy(chain.residues[1]);
    left.resize(3);
    QCOMPARE(partsOf(first), left);
    DataMaker::Destroy(first);
    QVERIFY(partsOf(second).empty());
    QCOMPARE(faults(), QString());
}

void DestroyContractTest::membersStayWhenTheirSetGoes() {
    const Chain chain(1);
    Compound* const set = DataMaker::makeSet(space(), "set", chain.atoms);
    DataMaker::Destroy(set);
    QCOMPARE(childrenOf(space()), (Items{chain.molecule}));
    space()->SetSelected(true);
    QVERIFY(chain.atoms[0]->IsSelected());
    DataMaker::Destroy(chain.molecule);
    QCOMPARE(faults(), QString());
}

void DestroyContractTest::whatStaysIsCountedAnew() {
    const Chain chain(2);
    chain.atoms[0]->SetSelected(true);
    DataMaker::Destroy(chain.atoms[0]);
    QVERIFY(!chain.molecule->HasSelected());
    for (const std::size_t i : {1, 2})
        chain.atoms[i]->SetSelected(true);
    DataMaker::Destroy(chain.atoms[3]);
    QVERIFY(chain.residues[0]->IsSelected());
    chain.residues[1]->SetVisible(false);
    DataMaker::Destroy(chain.residues[0]);
    QVERIFY(!chain.residues[1]->IsVisible());
    QVERIFY(!chain.molecule->IsVisible());
    QCOMPARE(faults(), QString());
}

void DestroyContractTest::destroyingNullDoesNothing() {
    const Chain chain(1);
    DataMaker::Destroy(nullptr);
    QCOMPARE(childrenOf(space()), (Items{chain.molecule}));
}

void DestroyContractTest::theSpaceItselfIsRefused() {
    const Chain chain(1);
    DataMaker::Destroy(space());
    QCOMPARE(takeMessages().size(), 1);
    QCOMPARE(childrenOf(space()), (Items{chain.molecule}));
}

void DestroyContractTest::gatheredItemsOfAKindCanBeDestroyedOneByOne() {
    const Chain chain(50);
    for (std::size_t i = 0; i < chain.bonds.size(); i += 2)
        DataMaker::Destroy(chain.bonds[i]);
    for (std::size_t i = 0; i < chain.atoms.size(); i += 2)
        DataMaker::Destroy(chain.atoms[i]);
    QCOMPARE(childrenOf(chain.molecule), chain.residues);
    Items left;
    for (Compound* group : chain.groups)
        for (Compound* item : childrenOf(group))
            left.push_back(item);
    QCOMPARE(left.size(), chain.atoms.size() / 2);
    QCOMPARE(faults(), QString());
}

REGISTER_TEST(DestroyContractTest)
#include "DestroyContractTest.moc"
