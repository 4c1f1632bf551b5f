// Finding an item again when the host may have destroyed it.
#include "data/ItemRef.h"

#include "DataMaker.h"
#include "Space.h"
#include "TestSupport.h"
#include "WindowTools.h"

using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

class ItemRefTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void anItemIsFoundAmongItsSiblingsOnly() {
        Compound* entry = addStructure("1abc");
        addStructure("2abc");
        QCOMPARE(ItemRef(entry).among(Space::instance()), entry);
        Compound* chain = itemAt(entry, {"A"});
        QCOMPARE(ItemRef(chain).among(Space::instance()), nullptr);
        QCOMPARE(ItemRef(chain).among(entry), chain);
    }

    void anItemIsFoundAtAnyDepthBelow() {
        Compound* entry = addStructure("1abc");
        Compound* other = addStructure("2abc");
        for (const QStringList& path :
             {QStringList{"A"}, QStringList{"A", "Bonds"}, QStringList{"A", "Groups", "HOH 2", "O"},
              QStringList{"A", "Groups", "MET 1", "Side chain", "SD"}}) {
            const ItemRef item(itemAt(entry, path));
            QVERIFY(item.below(entry));
            QCOMPARE(item.below(entry), itemAt(entry, path));
            QCOMPARE(item.below(other), nullptr);
        }
        QCOMPARE(ItemRef(entry).below(entry), nullptr);
    }

    void aDestroyedItemIsNotFoundWhateverTookItsPlace() {
        Compound* entry = addStructure("1abc");
        bool reused = false;
        for (int turn = 0; turn < 100; ++turn) {
            Compound* const before = addAtomTo(entry, "CA");
            const ItemRef atom(before);
            TAVIK::DataMaker::Destroy(before);
            const Compound* const after = addAtomTo(entry, "CA");
            reused = reused || after == before;
            QCOMPARE(atom.among(entry), nullptr);
            QCOMPARE(atom.below(Space::instance()), nullptr);
        }
#ifndef __SANITIZE_ADDRESS__
        QVERIFY(reused); // else the identifier was never asked
#endif
    }

    void nullIsNeverFound() {
        addStructure("1abc");
        QCOMPARE(ItemRef(nullptr).among(Space::instance()), nullptr);
        QCOMPARE(ItemRef(nullptr).below(Space::instance()), nullptr);
    }
};

REGISTER_TEST(ItemRefTest)
#include "ItemRefTest.moc"
