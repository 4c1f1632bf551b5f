// Side chains of real residues turned into every rotamer: what turns, and what stays as it was.
#include "Conformation.h"
#include "Residues.h"
#include "TestSupport.h"
#include "files/Files.h"

#include <cmath>

using namespace rotamer_testing;
using rotamer::Conformation;
using rotamer::Point;
using rotamer::Rotamer;
using rotamer::SideChain;

namespace {

/// Whether two atoms are bonded, by distance.
bool areBonded(const rotamer::ConformationAtom& a, const rotamer::ConformationAtom& b) {
    const bool isHydrogen = a.element == "H" || b.element == "H";
    return distance(a.position, b.position) < (isHydrogen ? 1.3 : 2.0);
}

SideChain sideChain(const std::string& type, const std::vector<AtomSpec>& atoms) {
    std::vector<rotamer::ResidueAtom> all;
    for (const AtomSpec& atom : atoms)
        all.push_back({atom.name, atom.element == "H", atom.place});
    return {type, all};
}

} // namespace

class SideChainTest : public test_support::TestCase {
    Q_OBJECT

    // Lengths, angles and torsions of one residue in all of its rotamers.
    void check(const Conformation& conformation) {
        const SideChain chain = sideChainOf(conformation);
        const auto& atoms = conformation.atoms;
        for (const Rotamer& rotamer : chain.rotamers()) {
            const std::vector<Point> points = chain.turned(rotamer);
            std::map<std::string, Point> places;
            for (std::size_t i = 0; i != atoms.size(); ++i) {
                places[atoms[i].name] = points[i];
                if (!chain.isTurned(i))
                    QVERIFY(points[i] == atoms[i].position);
            }
            const std::vector<double> chis = chisOf(conformation.type, places);
            QCOMPARE(int(chis.size()), rotamer.angles);
            for (std::size_t chi = 0; chi != chis.size(); ++chi)
                QVERIFY(turnBetween(chis[chi], rotamer.chi[chi]) < 1e-4);
            for (std::size_t b = 0; b != atoms.size(); ++b)
                for (std::size_t a = 0; a != atoms.size(); ++a) {
                    if (a == b || !areBonded(atoms[a], atoms[b]))
                        continue;
                    QVERIFY(std::abs(distance(points[a], points[b]) -
                                     distance(atoms[a].position, atoms[b].position)) < 1e-4);
                    for (std::size_t c = 0; c != a; ++c)
                        if (c != b && areBonded(atoms[c], atoms[b]))
                            QVERIFY(std::abs(bondAngle(points[a], points[b], points[c]) -
                                             bondAngle(atoms[a].position, atoms[b].position,
                                                       atoms[c].position)) < 1e-4);
                }
            m_checked[conformation.type] += 1;
        }
    }

    std::map<std::string, int> m_checked; ///< rotamers by residue

private slots:
    void init() override {
        TestCase::init();
        m_checked.clear();
    }

    void lengthsAndAnglesStayAndChisAreTheTables_data() {
        QTest::addColumn<QString>("file");
        QTest::newRow("without hydrogens") << "1tii.pdb";
        QTest::newRow("with hydrogens and alternatives") << "1ejg.pdb";
    }
    void lengthsAndAnglesStayAndChisAreTheTables() {
        QFETCH(const QString, file);
        memory_host::openFile(structure(file).toStdString());
        for (Compound* item : residuesOf(TAVIK::Space::instance()))
            if (!rotamer::rotamersOf(typeOf(item)).empty())
                check(rotamer::readConformation(item));
        if (file == "1tii.pdb") {
            for (const Rotamer& rotamer : rotamer::allRotamers())
                QVERIFY(rotamer.residue == "PRO" || m_checked[std::string(rotamer.residue)] > 0);
            QVERIFY(!m_checked.contains("PRO"));
        }
    }

    void hydrogensTurnWithWhatTheyAreBondedTo() {
        memory_host::openFile(structure("1ejg.pdb").toStdString());
        Compound* const item = residue("ILE 33");
        QVERIFY(item);
        const Conformation conformation = rotamer::readConformation(item);
        const SideChain chain = sideChainOf(conformation);
        QStringList turned;
        QStringList still;
        for (std::size_t i = 0; i != conformation.atoms.size(); ++i)
            (chain.isTurned(i) ? turned : still)
                << QString::fromStdString(conformation.atoms[i].name);
        turned.sort();
        still.sort();
        QCOMPARE(turned.join(u' '), "CD1 CG1 CG2 HB HD11 HD12 HD13 HG12 HG13 HG21 HG22 HG23");
        QCOMPARE(still.join(u' '), "C CA CB H HA N O");
    }

    void theDeviationIsTheLargestOfTheAngles() {
        const SideChain chain = sideChain("LEU", leucine()); // at -65 and 175
        for (const Rotamer& rotamer : chain.rotamers()) {
            const double expected =
                std::max(turnBetween(-65, rotamer.chi[0]), turnBetween(175, rotamer.chi[1]));
            QVERIFY(std::abs(chain.deviation(rotamer) - expected) < 1e-6);
        }
    }

    void theEndsOfASymmetricSideChainAreTheSame() {
        memory_host::openFile(structure("1tii.pdb").toStdString());
        const std::map<std::string, bool> symmetric = {
            {"ASP", true},  {"GLU", true},  {"PHE", true},  {"TYR", true}, {"ASN", false},
            {"GLN", false}, {"HIS", false}, {"TRP", false}, {"LEU", false}};
        std::set<std::string> seen;
        for (Compound* item : residuesOf(TAVIK::Space::instance())) {
            const auto found = symmetric.find(typeOf(item));
            if (found == symmetric.end())
                continue;
            const SideChain chain = sideChainOf(rotamer::readConformation(item));
            Rotamer rotamer = chain.rotamers()[0];
            for (int chi = 1; chi <= chain.angles(); ++chi)
                rotamer.chi[std::size_t(chi) - 1] = chain.angle(chi);
            QVERIFY(chain.deviation(rotamer) < 1e-9);
            rotamer.chi[std::size_t(chain.angles()) - 1] += 180;
            QVERIFY(std::abs(chain.deviation(rotamer) - (found->second ? 0 : 180)) < 1e-9);
            seen.insert(found->first);
        }
        QCOMPARE(seen.size(), symmetric.size());
    }

    void aSideChainInOneOfItsRotamersStaysWhereItIs() {
        const std::vector<AtomSpec> atoms = leucine();
        const SideChain chain = sideChain("LEU", atoms);
        for (const Rotamer& rotamer : chain.rotamers())
            if (rotamer.name == "mt") {
                const std::vector<Point> points = chain.turned(rotamer);
                for (std::size_t i = 0; i != points.size(); ++i)
                    QVERIFY(distance(points[i], atoms[i].place) < 1e-9);
                return;
            }
        QFAIL("there is no such rotamer");
    }

    void otherNamesOfAResidueAreTheSameSideChain() {
        const std::vector<AtomSpec> atoms = leucine();
        QCOMPARE(sideChain("LEU", atoms).rotamers().size(), 5U);
        QVERIFY(sideChain("HIE", atoms).fault() == sideChain("HIS", atoms).fault());
        QVERIFY(sideChain("MSE", atoms).fault() == "the atom SE is missing");
    }

    void whatCannotTurnHasAFault_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("without");
        QTest::addColumn<QString>("fault");
        QTest::newRow("no side chain") << "GLY"
                                       << ""
                                       << "its side chain has no angle to turn";
        QTest::newRow("a short one") << "ALA"
                                     << ""
                                     << "its side chain has no angle to turn";
        QTest::newRow("a ring") << "PRO"
                                << ""
                                << "its side chain is a ring, which has no angle to turn alone";
        QTest::newRow("a ligand") << "REA"
                                  << ""
                                  << "none are known for this kind of residue";
        QTest::newRow("no N") << "LEU"
                              << "N"
                              << "the atom N is missing";
        QTest::newRow("no CG") << "LEU"
                               << "CG"
                               << "the atom CG is missing";
        QTest::newRow("no branch") << "LEU"
                                   << "CD2"
                                   << "the atom CD2 is missing";
        QTest::newRow("another residue's") << "VAL"
                                           << ""
                                           << "the atom CG1 is missing";
        QTest::newRow("more than it has") << "SER"
                                          << ""
                                          << "the atom OG is missing";
    }
    void whatCannotTurnHasAFault() {
        QFETCH(const QString, type);
        QFETCH(const QString, without);
        QFETCH(const QString, fault);
        std::vector<AtomSpec> atoms = leucine();
        std::erase_if(atoms, [&](const AtomSpec& atom) {
            return QString::fromStdString(atom.name) == without;
        });
        const SideChain chain = sideChain(type.toStdString(), atoms);
        QCOMPARE(QString::fromStdString(chain.fault()), fault);
        QVERIFY(chain.rotamers().empty());
    }

    void anAtomThatIsNoneOfTheResidueIsAFault() {
        std::vector<AtomSpec> atoms = leucine();
        atoms.push_back({"CX", "C", {9, 9, 9}});
        QCOMPARE(sideChain("LEU", atoms).fault(),
                 std::string("the atom CX is none of such a residue"));
    }

    void atomsOnOneAnotherAreAFault() {
        std::vector<AtomSpec> atoms = leucine();
        atoms[5].place = atoms[4].place; // CG on CB
        QCOMPARE(sideChain("LEU", atoms).fault(),
                 std::string("its atoms lie on a line, or on one another"));
    }
};

REGISTER_TEST(SideChainTest)
#include "SideChainTest.moc"
