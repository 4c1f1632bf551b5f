// Rotamers while memory runs out: each allocation is refused once, alone and with all that follow.
// All residues get all of their rotamers or none.
#include "FailingMemory.h"
#include "Residues.h"
#include "Rotamers.h"
#include "TestSupport.h"
#include "items/Invariants.h"

#include <limits>
#include <new>

using namespace rotamer_testing;

namespace {

Items bondsOf(Compound* root) {
    Items bonds;
    TAVIK::GetItems<TAVIK::Bond>(root, bonds, true, nullptr, false);
    return bonds;
}

// A leucine with two conformers of the ends, so that a shared atom is parted, too; and a serine.
std::vector<TAVIK::Residue*> build() {
    std::vector<AtomSpec> atoms = leucine();
    for (std::size_t i = 6; i != 8; ++i) {
        atoms[i].model = 1;
        atoms.push_back(atoms[i]);
        atoms.back().model = 2;
        atoms.back().place[0] += 0.1;
    }
    addEntry("1abc", {{"LEU 1", atoms}, {"SER 2", serine(7)}});
    return {dynamic_cast<TAVIK::Residue*>(residue("LEU 1")),
            dynamic_cast<TAVIK::Residue*>(residue("SER 2"))};
}

} // namespace

class RotamerFaultTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void allResiduesGetTheirRotamersOrNone_data() {
        QTest::addColumn<int>("refused");
        QTest::newRow("one block") << 1;
        QTest::newRow("all blocks from then on") << std::numeric_limits<int>::max();
    }
    void allResiduesGetTheirRotamersOrNone() {
        QFETCH(const int, refused);
        int failed = 0;
        for (int granted = 0;; ++granted) {
            const std::vector<TAVIK::Residue*> residues = build();
            Compound* const entry = *TAVIK::Space::instance()->ChildBegin();
            const QStringList before = described(entry);
            const std::size_t bonds = bondsOf(entry).size();
            bool isThrown = false;
            QStringList lines;
            {
                const FailingMemory memory(granted, refused, 1, FailingMemory::Of::OwnCode);
                try {
                    lines = rotamer::addRotamers(residues).lines;
                } catch (const std::bad_alloc&) {
                    isThrown = true;
                }
            }
            const bool isRefused = FailingMemory::refusals() > 0;
            takeHostLog();
            QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
            if (described(entry) == before) {
                QVERIFY(isThrown || lines.value(0).startsWith("No rotamers of 2 residues"));
                QCOMPARE(bondsOf(entry).size(), bonds);
                ++failed;
                // And what failed once works the next time.
                QCOMPARE(rotamer::addRotamers(residues).lines.size(), 3);
            }
            QCOMPARE(modelsOf(residues[0]).size(), 7U);
            QCOMPARE(modelsOf(residues[1]).size(), 4U);
            TAVIK::DataMaker::Destroy(entry);
            if (!isRefused)
                break;
        }
        QVERIFY(failed > 200);
    }
};

REGISTER_TEST(RotamerFaultTest)
#include "RotamerFaultTest.moc"
