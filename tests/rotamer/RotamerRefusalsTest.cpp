// What has no rotamers, and what happens where they cannot be added: a line says so, and nothing is
// changed.
#include "Residues.h"
#include "Rotamers.h"
#include "TestSupport.h"
#include "files/Files.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"

#include <QApplication>
#include <QPushButton>
#include <QTimer>

using namespace rotamer_testing;

namespace {

std::vector<AtomSpec> without(std::vector<AtomSpec> atoms, const std::string& name) {
    std::erase_if(atoms, [&](const AtomSpec& atom) { return atom.name == name; });
    return atoms;
}

} // namespace

class RotamerRefusalsTest : public test_support::TestCase {
    Q_OBJECT

    /// Asks for rotamers of a residue that gets none, and returns why.
    QString refusal(const std::string& name) {
        Compound* const item = residue(name);
        if (!item)
            qFatal("there is no %s", name.c_str());
        const QStringList before = described(item);
        const QString line = addRotamers(item);
        const QString beginning = "No rotamers of " + QString::fromLatin1(name) + ": ";
        if (described(item) != before || !line.startsWith(beginning) || !line.endsWith(u'.'))
            return "changed: " + line;
        return line.sliced(beginning.size()).chopped(1);
    }

private slots:
    void cleanup() override {
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        TestCase::cleanup();
    }

    void residuesOfAProteinThatHaveNone() {
        memory_host::openFile(structure("1ejg.pdb").toStdString());
        QCOMPARE(refusal("ALA 9"), "its side chain has no angle to turn");
        QCOMPARE(refusal("GLY 20"), "its side chain has no angle to turn");
        QCOMPARE(refusal("PRO 5"), "its side chain is a ring, which has no angle to turn alone");
        QCOMPARE(refusal("CYS 3"), "its side chain is bonded to /1ejg/A/Groups/CYS 40/SG");
        QCOMPARE(refusal("PRO,SER 22"), "it is several residues in one place");
    }

    void ligandsAndWatersHaveNone() {
        memory_host::openFile(structure("1cbs.cif.gz").toStdString());
        QCOMPARE(refusal("REA 200"), "none are known for this kind of residue");
        QCOMPARE(refusal("HOH 301"), "none are known for this kind of residue");
    }

    void atomsMustBeThereOnceAndInAPlace() {
        std::vector<AtomSpec> twice = leucine(20);
        twice.push_back(twice.back());
        twice.back().place[2] += 3;
        addEntry("1abc", {{"LEU 1", without(leucine(), "CG")}, {"LEU 2", twice}, {"LEU 3", {}}});
        QCOMPARE(refusal("LEU 1"), "the atom CG is missing");
        QCOMPARE(refusal("LEU 2"), "it has several atoms CD2");
        QCOMPARE(refusal("LEU 3"), "it has no atoms");
        addEntry("2abc", {{"LEU 4", leucine()}});
        for (Compound* atom : atomsOf(residue("LEU 4")))
            if (atom->GetName() == "CD1")
                TAVIK::SetAtomPosition(dynamic_cast<TAVIK::Atom*>(atom), {});
        QCOMPARE(refusal("LEU 4"), "the atom CD1 has no position");
    }

    void aSideChainThatHoldsAnAtomElsewhereStays() {
        std::vector<AtomSpec> zinc = {{"ZN", "Zn", serine()[5].place}};
        zinc[0].place[0] -= 1.5;
        addEntry("1abc", {{"SER 1", without(serine(), "HG")}, {"ZN 2", zinc}});
        QCOMPARE(refusal("SER 1"), "its side chain is bonded to /1abc/A/Groups/ZN 2/ZN");
    }

    void modelsHaveNumbersUpToALimit() {
        std::vector<AtomSpec> atoms = leucine();
        atoms.back().model = 1;
        atoms.push_back(atoms.back());
        atoms.back().model = 65531;
        addEntry("1abc", {{"LEU 1", atoms}});
        QCOMPARE(refusal("LEU 1"), "it has as many models as there can be");
    }

    void aRefusedGuardChangesNothingAndIsSaid() {
        addEntry("1abc", {{"LEU 1", leucine()}});
        {
            const memory_host::SpaceLock lock;
            QCOMPARE(refusal("LEU 1"), "another change of the data is under way");
        }
        QVERIFY(addRotamers(residue("LEU 1")).startsWith("5 rotamers of LEU 1"));
    }

    // Work for seconds: many side chains in a crowd.
    void whoCancelsGetsNothing() {
        Compound* const entry = addEntry("1abc", {});
        std::vector<TAVIK::Residue*> residues;
        const auto addResidue = [entry](const std::string& name) {
            return TAVIK::DataMaker::makeCore(entry, name, "Residue");
        };
        const auto addAtom = [](Compound* to, const std::string& name, const rotamer::Point& at) {
            TAVIK::DataMaker::makeAtom(
                to, {.name = name,
                     .type = "C",
                     .position = {float(at[0]), float(at[1]), float(at[2]), true}});
        };
        for (int i = 0; i != 400; ++i) {
            Compound* const leu = addResidue("LEU " + std::to_string(i));
            for (const AtomSpec& atom : leucine())
                addAtom(leu, atom.name, atom.place);
            residues.push_back(dynamic_cast<TAVIK::Residue*>(leu));
        }
        Compound* const crowd = addResidue("UNL 1");
        for (int i = 0; i != 200'000; ++i)
            addAtom(crowd, "C", {0, 0, 3.2 + i * 1e-6});
        const QStringList before = described(entry);
        QTimer timer;
        bool isCancelled = false;
        connect(&timer, &QTimer::timeout, &timer, [&] {
            for (const QWidget* window : QApplication::topLevelWidgets())
                if (auto* const button = window->findChild<QPushButton*>();
                    button && window->isVisible() && !isCancelled) {
                    isCancelled = true;
                    QTest::mouseClick(button, Qt::LeftButton);
                }
        });
        timer.start(20);
        QCOMPARE(rotamer::addRotamers(residues).lines,
                 QStringList("No rotamers of 400 residues: cancelled."));
        QVERIFY(isCancelled);
        QCOMPARE(described(entry), before);
    }

    void aNameMayHaveAnyLetters() {
        addEntry("1abc", {{"caf\xe9 1", leucine()}});
        QCOMPARE(refusal("caf\xe9 1"), "none are known for this kind of residue");
    }

    // All atoms on one another, in one cell: the neighbours are many, and that is all.
    void manyAtomsInOnePlaceAreMerelyManyClashes() {
        Compound* const entry = addEntry("1abc", {{"LEU 1", leucine()}});
        // Not by addEntry(), which would bond them to each other.
        Compound* const crowd = TAVIK::DataMaker::makeCore(entry, "UNL 2", "Residue");
        for (int i = 0; i != 3000; ++i)
            TAVIK::DataMaker::makeAtom(crowd,
                                       {.name = "C", .type = "C", .position = {0, 0, 3.2F, true}});
        QString details;
        QVERIFY(addRotamers(residue("LEU 1"), &details).endsWith("with no clash."));
        // Both ends of one of them are in it.
        QVERIFY(details.contains("model 2, pp (1 %), with 6000 clashes, the worst of 1.39 "));
        QCOMPARE(details.count(" with no clash"), 4);
    }
};

REGISTER_TEST(RotamerRefusalsTest)
#include "RotamerRefusalsTest.moc"
