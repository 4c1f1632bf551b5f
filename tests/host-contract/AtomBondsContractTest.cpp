// The bonds of an atom.
#include "AtomBonds.h"
#include "ContractTools.h"
#include "TestSupport.h"

#include <algorithm>

using namespace contract;
using namespace TAVIK;

namespace {

Items bondsOf(Compound* atom) {
    std::vector<Bond*> bonds;
    GetBonds(dynamic_cast<Atom*>(atom), bonds);
    Items items(bonds.begin(), bonds.end());
    std::sort(items.begin(), items.end());
    return items;
}

Items sorted(Items items) {
    std::sort(items.begin(), items.end());
    return items;
}

} // namespace

class AtomBondsContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void anAtomHasTheBondsWhoseEndItIs() {
        const Chain chain(3);
        for (Compound* atom : chain.atoms) {
            Items expected;
            for (Compound* bond : chain.bonds)
                if (const Items ends = partsOf(bond);
                    std::find(ends.begin(), ends.end(), atom) != ends.end())
                    expected.push_back(bond);
            QCOMPARE(bondsOf(atom), sorted(expected));
        }
        QVERIFY(bondsOf(chain.atoms[1]).size() > 1);
    }

    void bondsAreFoundWhereverTheyHang() {
        Compound* const a = atom(space());
        Compound* const b = atom(make(space(), "Residue"));
        Bond* const outside = DataMaker::makeBond(space(), a, b);
        Bond* const inside = DataMaker::makeBond(make(space(), "Composite"), b, a);
        QCOMPARE(bondsOf(a), sorted({outside, inside}));
        QCOMPARE(bondsOf(b), sorted({outside, inside}));
    }

    void bondsAreAppended() {
        Compound* const a = atom(space());
        Bond* const bond = DataMaker::makeBond(space(), a, atom(space()));
        std::vector<Bond*> bonds = {nullptr};
        GetBonds(dynamic_cast<Atom*>(a), bonds);
        QCOMPARE(bonds, (std::vector<Bond*>{nullptr, bond}));
    }

    void whatIsDestroyedIsNoneAnyMore() {
        const Items atoms = {atom(space()), atom(space()), atom(space()), atom(space())};
        Items bonds;
        for (const std::size_t end : {1, 2, 3})
            bonds.push_back(DataMaker::makeBond(space(), atoms[0], atoms[end]));
        DataMaker::Destroy(bonds[1]);
        QCOMPARE(bondsOf(atoms[0]), sorted({bonds[0], bonds[2]}));
        QCOMPARE(bondsOf(atoms[2]), Items());
        DataMaker::Destroy(atoms[3]);
        QCOMPARE(bondsOf(atoms[0]), Items{bonds[0]});
        QCOMPARE(faults(), QString());
    }

    void whatIsNoAtomHasNone() {
        std::vector<Bond*> bonds;
        GetBonds(nullptr, bonds);
        GetBonds(dynamic_cast<Atom*>(atom(space())), bonds);
        QVERIFY(bonds.empty());
    }
};

REGISTER_TEST(AtomBondsContractTest)
#include "AtomBondsContractTest.moc"
