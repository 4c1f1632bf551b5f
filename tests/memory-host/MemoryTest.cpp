// How much heap the items need, and that it comes back.
#include "Ancestry.h"
#include "Sample.h"
#include "TestSupport.h"

#include <algorithm>
#include <malloc.h>
#include <random>

using namespace memory_host;
using namespace TAVIK;

// The address sanitizer keeps books of its own.
#ifdef __SANITIZE_ADDRESS__
#define SKIP_WHEN_SANITIZED QSKIP("the heap is the sanitizer's")
#else
#define SKIP_WHEN_SANITIZED
#endif

class MemoryTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void anAtomWithItsBondsNeedsNoMoreThan250Bytes();
    void onlyAtomsWithAPartialChargePayForIt();
    void memoryComesBackWhateverTheOrder();
    void memoryOfNamesComesBack();
    void memoryIsUsedAgain();
};

namespace {

std::size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Residues of two groups and eight atoms each, with a bond an atom, under one attached entry.
Compound* buildEntry(int residueCount) {
    Compound* const entry = makeDetached("entry", "Composite");
    Compound* const chain = make(entry, "Molecule", "A");
    Compound* const box = make(chain, "Composite", "Groups");
    Compound* const bonds = make(chain, "Composite", "Bonds");
    Compound* last = nullptr;
    for (int i = 0; i != residueCount; ++i) {
        Compound* const residue = make(box, "Residue", "LEU " + std::to_string(i + 1));
        Compound* const backbone = make(residue, "Group", "Backbone");
        Compound* const side = make(residue, "Group", "Side chain");
        for (const char* name : {"N", "CA", "C", "O", "CB", "CG", "CD1", "CD2"}) {
            Compound* const atom =
                makeAtom(name[1] == '\0' || name[1] == 'A' ? backbone : side, 0, name);
            if (last)
                addBond(bonds, last, atom);
            last = atom;
        }
    }
    attach(entry, space());
    return entry;
}

} // namespace

void MemoryTest::anAtomWithItsBondsNeedsNoMoreThan250Bytes() {
    SKIP_WHEN_SANITIZED;
    constexpr int residueCount = 12'500;
    const std::size_t before = heapInUse();
    buildEntry(residueCount);
    const std::size_t bytes = (heapInUse() - before) / (residueCount * 8);
    QVERIFY2(bytes <= 250, qPrintable(QString::number(bytes)));
}

void MemoryTest::onlyAtomsWithAPartialChargePayForIt() {
    SKIP_WHEN_SANITIZED;
    constexpr int count = 100'000;
    const auto bytesOf = [](const PartialCharge& partial) {
        const std::size_t before = heapInUse();
        Compound* const entry = makeDetached("entry", "Composite");
        for (int i = 0; i != count; ++i) {
            AtomValues record{"CA", "C", Vertex(0, 0, 0, true)};
            record.partial = partial;
            addAtom(entry, record);
        }
        attach(entry, space());
        return (heapInUse() - before) / count;
    };
    const std::size_t plain = bytesOf({});
    const std::size_t charged = bytesOf({0.5F, 1.5F, true});
    // An atom's record, its details, and its place in the list of children.
    QVERIFY2(plain <= 64 + sizeof(AtomDetails) + sizeof(void*) + 1,
             qPrintable(QString::number(plain)));
    QVERIFY2(charged <= plain + 2 * sizeof(float) + 1, qPrintable(QString::number(charged)));
}

void MemoryTest::memoryComesBackWhateverTheOrder() {
    SKIP_WHEN_SANITIZED;
    const std::size_t before = heapInUse();
    for (int round = 0; round != 3; ++round) {
        buildEntry(5000);
        Items atoms;
        GetAtoms(space(), atoms, true);
        const std::size_t full = heapInUse() - before;
        std::shuffle(atoms.begin(), atoms.end(), std::mt19937(7));
        if (round == 1)
            std::sort(atoms.begin(), atoms.end());
        for (Compound* atom : atoms)
            if (round < 2)
                DataMaker::Destroy(atom);
        while (space()->HasChildren())
            DataMaker::Destroy(*space()->ChildBegin());
        Items().swap(atoms);
        const std::size_t left = heapInUse() - std::min(before, heapInUse());
        QVERIFY2(left < full / 50, qPrintable(QString::number(left)));
        QCOMPARE(faults(), QString());
    }
}

void MemoryTest::memoryOfNamesComesBack() {
    SKIP_WHEN_SANITIZED;
    const std::size_t before = heapInUse();
    Compound* const kept = make(space(), "Composite", "kept");
    for (int round = 0; round != 3; ++round) {
        Compound* const box = make(space(), "Composite", "box");
        for (int i = 0; i != 100'000; ++i)
            make(box, "Surface",
                 "a name of its own, number " + std::to_string(round * 100'000 + i));
        const std::size_t full = heapInUse() - before;
        QVERIFY(full > 100'000 * 100);
        DataMaker::Destroy(box);
        const std::size_t left = heapInUse() - std::min(before, heapInUse());
        QVERIFY2(left < full / 50, qPrintable(QString::number(left)));
    }
    QCOMPARE(kept->GetName(), std::string("kept"));
}

void MemoryTest::memoryIsUsedAgain() {
    SKIP_WHEN_SANITIZED;
    DataMaker::Destroy(buildEntry(1000));
    buildEntry(1000);
    Items atoms;
    GetAtoms(space(), atoms, true);
    const std::size_t full = heapInUse();
    // Every third atom goes, and others come in their place, again and again.
    for (int round = 0; round != 20; ++round) {
        for (std::size_t i = static_cast<std::size_t>(round) % 3; i < atoms.size(); i += 3) {
            Compound* const parent = TAVIK::GetParent(atoms[i]);
            DataMaker::Destroy(atoms[i]);
            atoms[i] = makeAtom(parent);
        }
    }
    QVERIFY(heapInUse() <= full + full / 50);
    QCOMPARE(faults(), QString());
}

REGISTER_TEST(MemoryTest)
#include "MemoryTest.moc"
