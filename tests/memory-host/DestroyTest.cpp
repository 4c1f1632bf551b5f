// What destroying costs and leaves: no work by the number of siblings, no holes that anybody sees.
#include "Sample.h"
#include "TestSupport.h"
#include "items/Holder.h"

using namespace memory_host;
using namespace TAVIK;

class DestroyTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void cleanup() override;
    void destroyingMovesNoSibling();
    void destroyingFromTheFrontMovesNothingEver();
    void holesAreClosedWhenTheChildrenAreRead();
    void holesAreClosedBeforeTheVectorGrows();
    void aVectorThatIsEmptiedAgainAndAgainStaysSmall();
    void aVectorThatIsUsedAsAQueueStaysSmall();
    void bondsOfADestroyedAtomMoveNoOtherBond();
    void aMillionSiblingsAreDestroyedOneByOneFromTheMiddle();
    void atomsAndBondsMayStandTogether();
    void aBranchMayHoldBondsBeforeOrAfterTheirAtoms();
    void bondsAcrossBranchesGo();
    void aDetachedBranchIsFreedWithItsBonds();
    void everyKindCanBeDestroyedInOneBranch();
};

void DestroyTest::cleanup() {
    QCOMPARE(faults(), QString());
    TestCase::cleanup();
}

namespace {

Holder& recordOf(Compound* composite) {
    return HostItem::of(composite).asHolder();
}

Items makeChildren(Compound* parent, int count) {
    Items made;
    for (int i = 0; i != count; ++i)
        made.push_back(make(parent, "Surface"));
    return made;
}

} // namespace

void DestroyTest::destroyingMovesNoSibling() {
    const Items made = makeChildren(space(), 1000);
    const Holder& record = recordOf(space());
    for (std::size_t i = 100; i != 900; i += 2)
        DataMaker::Destroy(made[i]);
    // Nothing has read the children since: each sibling still has the slot that it was made in.
    QCOMPARE(record.holes, 400U);
    for (std::size_t i = 0; i != made.size(); ++i) {
        const bool gone = i >= 100 && i < 900 && i % 2 == 0;
        QCOMPARE(record.children[record.begin + i], gone ? nullptr : made[i]);
    }
}

void DestroyTest::destroyingFromTheFrontMovesNothingEver() {
    const Items made = makeChildren(space(), 1000);
    const Holder& record = recordOf(space());
    Compound** const first = record.children;
    for (std::size_t i = 0; i != 999; ++i) {
        QCOMPARE(*space()->ChildBegin(), made[i]);
        DataMaker::Destroy(made[i]);
        QCOMPARE(record.holes, 0U);
        QCOMPARE(space()->ChildBegin(), first + i + 1);
    }
}

void DestroyTest::holesAreClosedWhenTheChildrenAreRead() {
    Items made = makeChildren(space(), 10);
    for (const std::size_t i : {7, 5, 4})
        DataMaker::Destroy(made[i]);
    for (const std::ptrdiff_t i : {7, 5, 4})
        made.erase(made.begin() + i);
    QVERIFY(space()->HasChildren());
    QCOMPARE(childrenOf(space()), made);
    QCOMPARE(recordOf(space()).holes, 0U);
    for (std::size_t i = 0; i != made.size(); ++i)
        QCOMPARE(HostItem::of(made[i]).position, static_cast<std::uint32_t>(i));
    // The end is asked for first.
    DataMaker::Destroy(made[3]);
    Compound** const end = space()->ChildEnd();
    QCOMPARE(end - space()->ChildBegin(), 6);
}

void DestroyTest::holesAreClosedBeforeTheVectorGrows() {
    Compound* const box = make(space(), "Composite");
    Items made = makeChildren(box, 64);
    QCOMPARE(recordOf(box).capacity, 64U);
    for (std::size_t i = 1; i != 60; ++i)
        DataMaker::Destroy(made[i]);
    made.erase(made.begin() + 1, made.begin() + 60);
    for (int i = 0; i != 59; ++i)
        made.push_back(make(box, "Surface"));
    QCOMPARE(recordOf(box).capacity, 64U);
    QCOMPARE(childrenOf(box), made);
}

void DestroyTest::aVectorThatIsEmptiedAgainAndAgainStaysSmall() {
    Compound* const box = make(space(), "Composite");
    for (int round = 0; round != 1000; ++round) {
        const Items made = makeChildren(box, 3);
        for (Compound* item : made)
            DataMaker::Destroy(item);
        QVERIFY(!box->HasChildren());
    }
    QVERIFY(recordOf(box).capacity <= 8);
}

void DestroyTest::aVectorThatIsUsedAsAQueueStaysSmall() {
    Compound* const box = make(space(), "Composite");
    Items queue = makeChildren(box, 3);
    for (int round = 0; round != 1000; ++round) {
        queue.push_back(make(box, "Surface"));
        DataMaker::Destroy(queue.front());
        queue.erase(queue.begin());
    }
    QCOMPARE(childrenOf(box), queue);
    QVERIFY(recordOf(box).capacity <= 16);
}

void DestroyTest::bondsOfADestroyedAtomMoveNoOtherBond() {
    const Sample sample(100);
    const Holder& record = recordOf(sample.bondsBox);
    DataMaker::Destroy(sample.atoms[200]); // the first atom of residue 51, with two bonds
    QCOMPARE(record.holes, 2U);
    std::uint32_t unmoved = 0;
    for (std::size_t i = 0; i != sample.bonds.size(); ++i)
        unmoved += record.children[record.begin + i] == sample.bonds[i] ? 1 : 0;
    QCOMPARE(unmoved, static_cast<std::uint32_t>(sample.bonds.size()) - 2);
}

void DestroyTest::aMillionSiblingsAreDestroyedOneByOneFromTheMiddle() {
    Compound* const box = make(space(), "Composite");
    Items made = makeChildren(box, 1'000'000);
    // From the middle outwards: no end is ever reached before the last.
    for (std::size_t i = 1; i + 1 < made.size(); ++i)
        DataMaker::Destroy(made[i]);
    QCOMPARE(childrenOf(box), (Items{made.front(), made.back()}));
}

void DestroyTest::atomsAndBondsMayStandTogether() {
    for (const bool bondFirst : {false, true}) {
        Compound* const box = make(space(), "Composite");
        Compound* const aside = make(space(), "Composite");
        Compound* const a = makeAtom(box);
        Compound* const b = makeAtom(aside);
        if (bondFirst) {
            addBond(box, a, b);
            Compound* const c = makeAtom(box);
            addBond(box, c, a);
        } else {
            Compound* const c = makeAtom(box);
            makeAtom(box);
            addBond(box, c, a);
            addBond(box, a, b);
        }
        DataMaker::Destroy(box);
        QCOMPARE(faults(), QString());
        QCOMPARE(childrenOf(aside), (Items{b}));
        DataMaker::Destroy(aside);
    }
}

void DestroyTest::aBranchMayHoldBondsBeforeOrAfterTheirAtoms() {
    for (const bool bondsFirst : {false, true}) {
        Compound* const branch = make(space(), "Molecule");
        Compound* const first = make(branch, "Composite");
        Compound* const second = make(branch, "Composite");
        Compound* const bonds = bondsFirst ? first : second;
        Compound* const atoms = bondsFirst ? second : first;
        Items made;
        for (int i = 0; i != 20; ++i) {
            made.push_back(makeAtom(atoms));
            if (i > 0)
                addBond(bonds, made[made.size() - 2], made.back());
        }
        DataMaker::Destroy(branch);
        QVERIFY(!space()->HasChildren());
        QCOMPARE(faults(), QString());
    }
}

void DestroyTest::bondsAcrossBranchesGo() {
    const Sample sample(3);
    const std::size_t before = sample.bonds.size();
    DataMaker::Destroy(sample.residues[1]);
    // Three of its own, and the two to its neighbours.
    QCOMPARE(childrenOf(sample.bondsBox).size(), before - 5);
    for (Compound* bond : childrenOf(sample.bondsBox))
        QCOMPARE(partsOf(bond).size(), std::size_t(2));
}

void DestroyTest::aDetachedBranchIsFreedWithItsBonds() {
    const Sample sample;
    Compound* const branch = makeDetached("branch", "Composite");
    Compound* const atom = makeAtom(branch);
    addBond(branch, atom, makeAtom(branch));
    Compound* const across = addBond(sample.bondsBox, atom, sample.atoms[0]);
    QCOMPARE(childrenOf(sample.bondsBox).back(), across);
    DataMaker::Destroy(branch);
    QCOMPARE(childrenOf(sample.bondsBox), sample.bonds);
}

void DestroyTest::everyKindCanBeDestroyedInOneBranch() {
    Compound* const branch = make(space(), "Composite");
    Compound* parent = branch;
    for (const char* kind : {"Molecule", "Residue", "Group", "Composite"}) {
        parent = make(parent, kind);
        Compound* const a = makeAtom(parent, 1);
        Compound* const b = makeAtom(parent, 2);
        addBond(branch, a, b);
        for (const char* leaf : {"Atom", "Bond", "Surface", "Grid", "Molecule"})
            make(parent, leaf);
        DataMaker::makeGrid(parent, "grid", {{2, 2, 2}, {}, {}, std::vector<float>(8)});
        DataMaker::makePolyLine(parent, "line", {Vertex(1, 2, 3, true)});
        DataMaker::makeSet(parent, "set", {a, b, parent, branch});
    }
    QCOMPARE(faults(), QString());
    DataMaker::Destroy(branch);
    QVERIFY(!space()->HasChildren());
}

REGISTER_TEST(DestroyTest)
#include "DestroyTest.moc"
