// Which atoms have which charges: small structures, and real ones beside a plain count.
#include "AtomCharges.h"
#include "CommandCase.h"
#include "Traversal.h"
#include "files/Files.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <map>

using namespace command_case;
using electrostatics::AtomCharges;
using electrostatics::Charge;
using electrostatics::readCharges;

namespace {

struct PdbAtom {
    QByteArray name; ///< four columns
    QByteArray residue;
    int number;
    std::array<double, 3> at;
    QByteArray element;
    QByteArray charge = "  ";
    char alternative = ' ';
    QByteArray record = "ATOM  ";
};

QByteArray line(const PdbAtom& atom) {
    const auto column = [](double x) { return QByteArray::number(x, 'f', 3).rightJustified(8); };
    return atom.record + "    1 " + atom.name + atom.alternative + atom.residue.rightJustified(3) +
           " A" + QByteArray::number(atom.number).rightJustified(4) + "    " + column(atom.at[0]) +
           column(atom.at[1]) + column(atom.at[2]) + "  1.00 10.00          " +
           atom.element.rightJustified(2) + atom.charge + '\n';
}

QByteArray text(const std::vector<PdbAtom>& atoms) {
    QByteArray all;
    for (const PdbAtom& atom : atoms)
        all += line(atom);
    return all;
}

/// A carboxylate at (x, 0, 0) whose oxygens are called so.
std::vector<PdbAtom> acid(const QByteArray& residue, int number, double x,
                          const QByteArray& carbon = " CG ", const QByteArray& first = " OD1",
                          const QByteArray& second = " OD2") {
    return {{" CB ", residue, number, {x, -1.5, 0}, "C"},
            {carbon, residue, number, {x, 0, 0}, "C"},
            {first, residue, number, {x - 1.1, 0.6, 0}, "O"},
            {second, residue, number, {x + 1.1, 0.6, 0}, "O"}};
}

/// The charges by their positions, rounded.
std::map<std::array<double, 3>, double> byPlace(const AtomCharges& charges) {
    std::map<std::array<double, 3>, double> all;
    for (const Charge& one : charges.charges) {
        std::array<double, 3> place{};
        for (std::size_t axis = 0; axis != 3; ++axis)
            place[axis] = std::round(double(one.position[axis]) * 1000) / 1000;
        all[place] += double(one.charge);
    }
    return all;
}
using Places = std::map<std::array<double, 3>, double>;

/// An atom of a real file, as its text has it.
struct Written {
    QByteArray name;
    QByteArray residue;
    QByteArray chain;
    QByteArray number;
    std::array<double, 3> at{};
};
std::vector<Written> writtenAtoms(const QString& path) {
    QFile file(path);
    std::vector<Written> atoms;
    if (!file.open(QFile::ReadOnly))
        return atoms;
    for (const QByteArray& row : file.readAll().split('\n'))
        if (row.startsWith("ATOM  ") && (row[16] == ' ' || row[16] == 'A'))
            atoms.push_back({row.mid(12, 4).trimmed(),
                             row.mid(17, 3),
                             row.mid(21, 1),
                             row.mid(22, 5),
                             {row.mid(30, 8).toDouble(), row.mid(38, 8).toDouble(),
                              row.mid(46, 8).toDouble()}});
    return atoms;
}

} // namespace

class AtomChargesTest : public CommandCase {
    Q_OBJECT

    QTemporaryDir m_folder;

    void open(const QByteArray& content, const QString& name = "test.pdb") {
        QFile file(m_folder.filePath(name));
        QVERIFY(file.open(QFile::WriteOnly) && file.write(content) == content.size());
        file.close();
        memory_host::openFile(file.fileName().toStdString());
    }
    static AtomCharges chargesOfShown() { return readCharges({}); }

private slots:
    void acidsShareTheirChargeAmongTheirOxygens() {
        open(text(acid("ASP", 2, 0)) + text(acid("REA", 3, 20, " C15", " O1 ", " O2 ")));
        const AtomCharges charges = chargesOfShown();
        QCOMPARE(byPlace(charges), (Places{{{-1.1, 0.6, 0}, -0.5},
                                           {{1.1, 0.6, 0}, -0.5},
                                           {{18.9, 0.6, 0}, -0.5},
                                           {{21.1, 0.6, 0}, -0.5}}));
        QCOMPARE(charges.total, -2.0);
        QCOMPARE(charges.fromFile, std::size_t(0));
        QCOMPARE(charges.entry, std::string());
    }

    void anAcidWithItsHydrogenHasNone() {
        std::vector<PdbAtom> atoms = acid("ASP", 2, 0);
        atoms.push_back({" HD2", "ASP", 2, {1.9, 0.1, 0}, "H"});
        open(text(atoms));
        QVERIFY(chargesOfShown().charges.empty());
    }

    void aMetalTakesNoChargeFromAnAcid() {
        std::vector<PdbAtom> atoms = acid("ASP", 2, 0);
        atoms.push_back({"CA  ", " CA", 3, {2.2, 2.6, 0}, "CA", "  ", ' ', "HETATM"});
        open(text(atoms));
        QCOMPARE(chargesOfShown().total, 1.0);
        QCOMPARE(chargesOfShown().charges.size(), std::size_t(3));
    }

    void anEsterAndAnAmideHaveNone() {
        std::vector<PdbAtom> atoms = acid("ASN", 2, 0);
        atoms.back() = {" ND2", "ASN", 2, {1.1, 0.6, 0}, "N"};
        const std::vector<PdbAtom> ester = acid("LIG", 3, 20);
        atoms.insert(atoms.end(), ester.begin(), ester.end());
        atoms.push_back({" CM ", "LIG", 3, {22.4, 0, 0}, "C"});
        open(text(atoms));
        QVERIFY(chargesOfShown().charges.empty());
    }

    void phosphatesAndSulfatesByTheirEnds() {
        const auto around = [](const QByteArray& residue, int number, double x,
                               const QByteArray& element, const QByteArray& last) {
            const double d = 0.87;
            return std::vector<PdbAtom>{{' ' + element + "  ", residue, number, {x, 0, 0}, element},
                                        {" O1 ", residue, number, {x + d, d, d}, "O"},
                                        {" O2 ", residue, number, {x + d, -d, -d}, "O"},
                                        {" O3 ", residue, number, {x - d, d, -d}, "O"},
                                        {' ' + last + "4 ", residue, number, {x - d, -d, d}, last}};
        };
        const auto total = [this](const std::vector<PdbAtom>& atoms) {
            init();
            open(text(atoms));
            return chargesOfShown().total;
        };
        const auto close = [](double a, double b) { return std::abs(a - b) < 1e-9; };
        QVERIFY(close(total(around("PO4", 1, 0, "P", "O")), -2));
        QVERIFY(close(total(around("SO4", 1, 0, "S", "O")), -2));
        QVERIFY(close(total(around("MES", 1, 0, "S", "C")), -1));
        // A nucleotide's: two of the oxygens go on.
        std::vector<PdbAtom> diester = around("A", 1, 0, "P", "O");
        diester.push_back({" C3'", "A", 1, {-1.6, 1.6, -1.5}, "C"});
        diester.push_back({" C5'", "A", 1, {-1.6, -1.6, 1.5}, "C"});
        QVERIFY(close(total(diester), -1));
        diester.push_back({" CX ", "A", 1, {1.6, 1.6, 1.5}, "C"});
        QVERIFY(close(total(diester), 0));
    }

    void basesHaveTheirsAtTheirNitrogens() {
        open(text({{" NZ ", "LYS", 2, {0, 0, 0}, "N"},
                   {" CE ", "LYS", 2, {1.5, 0, 0}, "C"},
                   {" NH1", "ARG", 3, {10, 0, 0}, "N"},
                   {" CZ ", "ARG", 3, {11.3, 0, 0}, "C"},
                   {" NH2", "ARG", 3, {12, 1.1, 0}, "N"},
                   {" ND1", "HIS", 4, {20, 0, 0}, "N"},
                   {" NE2", "HIS", 4, {22, 0, 0}, "N"},
                   {" ND1", "HIP", 5, {30, 0, 0}, "N"},
                   {" NE2", "HIP", 5, {32, 0, 0}, "N"},
                   // A Schiff base.
                   {" NZ ", "LYS", 6, {40, 0, 0}, "N"},
                   {" CE ", "LYS", 6, {41.5, 0, 0}, "C"},
                   {" C15", "RET", 7, {38.7, 0, 0}, "C"}}));
        QCOMPARE(byPlace(chargesOfShown()), (Places{{{0, 0, 0}, 1},
                                                    {{10, 0, 0}, 0.5},
                                                    {{12, 1.1, 0}, 0.5},
                                                    {{30, 0, 0}, 0.5},
                                                    {{32, 0, 0}, 0.5}}));
    }

    void histidineWithBothHydrogensIsCharged() {
        open(text({{" ND1", "HIS", 4, {0, 0, 0}, "N"},
                   {" HD1", "HIS", 4, {-1, 0, 0}, "H"},
                   {" NE2", "HIS", 4, {2.2, 0, 0}, "N"},
                   {" HE2", "HIS", 4, {3.2, 0, 0}, "H"}}));
        QCOMPARE(chargesOfShown().total, 1.0);
    }

    void ionsByTheirNamesAndWaterNever() {
        open(text({{"MG  ", " MG", 1, {0, 0, 0}, "MG", "  ", ' ', "HETATM"},
                   {"CL  ", " CL", 2, {10, 0, 0}, "CL", "  ", ' ', "HETATM"},
                   {"ZN  ", " ZN", 3, {20, 0, 0}, "ZN", "  ", ' ', "HETATM"},
                   {"XE  ", " XE", 4, {30, 0, 0}, "XE", "  ", ' ', "HETATM"},
                   {" O  ", "HOH", 5, {40, 0, 0}, "O", "2-", ' ', "HETATM"}}));
        QCOMPARE(byPlace(chargesOfShown()),
                 (Places{{{0, 0, 0}, 2}, {{10, 0, 0}, -1}, {{20, 0, 0}, 2}}));
    }

    void whatTheFileSaysGoesFirst() {
        std::vector<PdbAtom> atoms = acid("ASP", 2, 0);
        atoms[3].charge = "1-";
        atoms.push_back({" NZ ", "LYS", 3, {20, 0, 0}, "N"});
        open(text(atoms));
        const AtomCharges charges = chargesOfShown();
        QCOMPARE(byPlace(charges), (Places{{{1.1, 0.6, 0}, -1}, {{20, 0, 0}, 1}}));
        QCOMPARE(charges.fromFile, std::size_t(1));
    }

    void partialChargesGoBeforeAll() {
        open("ATOM 1 OD1 ASP A 1 1.0 0.0 0.0 -0.55 1.7\nATOM 2 OD2 ASP A 1 3.0 0.0 0.0 0.0 1.7\n"
             "ATOM 3 NZ LYS A 2 9.0 0.0 0.0 0.33 1.8\n",
             "test.pqr");
        const AtomCharges charges = chargesOfShown();
        QCOMPARE(charges.charges.size(), std::size_t(2));
        QVERIFY(std::abs(charges.total + 0.22) < 1e-6);
        QCOMPARE(charges.fromFile, std::size_t(2));
    }

    void theFirstResidueOfAChainHasAChargeAtItsNitrogen() {
        const auto residue = [](int number, double x) {
            return std::vector<PdbAtom>{{" N  ", "ALA", number, {x, 0, 0}, "N"},
                                        {" CA ", "ALA", number, {x + 1.4, 0, 0}, "C"},
                                        {" C  ", "ALA", number, {x + 2.6, 0.9, 0}, "C"},
                                        {" O  ", "ALA", number, {x + 2.6, 2.1, 0}, "O"}};
        };
        std::vector<PdbAtom> atoms = residue(5, 0);
        for (const PdbAtom& atom : residue(9, 30)) // after a gap
            atoms.push_back(atom);
        open(text(atoms));
        QCOMPARE(byPlace(chargesOfShown()), (Places{{{0, 0, 0}, 1}}));
        // The end of the chain where it is.
        init();
        atoms.push_back({" OXT", "ALA", 9, {33.7, 0.3, 0}, "O"});
        open(text(atoms));
        QCOMPARE(byPlace(chargesOfShown()),
                 (Places{{{0, 0, 0}, 1}, {{32.6, 2.1, 0}, -0.5}, {{33.7, 0.3, 0}, -0.5}}));
        // An acetyl group before it leaves none.
        init();
        atoms = {{" C  ", "ACE", 4, {-1.3, 0, 0}, "C", "  ", ' ', "HETATM"},
                 {" O  ", "ACE", 4, {-1.9, 1.1, 0}, "O", "  ", ' ', "HETATM"}};
        for (const PdbAtom& atom : residue(5, 0))
            atoms.push_back(atom);
        open(text(atoms));
        QVERIFY(chargesOfShown().charges.empty());
    }

    void ofAlternativesTheShownOneCounts() {
        std::vector<PdbAtom> atoms = {{" CE ", "LYS", 2, {1.5, 0, 0}, "C"},
                                      {" NZ ", "LYS", 2, {0, 0, 0}, "N", "  ", 'A'},
                                      {" NZ ", "LYS", 2, {0, 0, 1}, "N", "  ", 'B'}};
        open(text(atoms));
        QCOMPARE(byPlace(chargesOfShown()), (Places{{{0, 0, 0}, 1}}));
        std::vector<Compound*> residues;
        TAVIK::GetResidues(space(), residues, true);
        residues.at(0)->NextModel();
        QCOMPARE(byPlace(chargesOfShown()), (Places{{{0, 0, 1}, 1}}));
    }

    void aSurfaceKnowsItsEntryWhichCountsWhetherItIsShownOrNot() {
        open(text({{" NZ ", "LYS", 2, {0, 0, 0}, "N"}}), "one.pdb");
        open(text({{" NZ ", "LYS", 2, {9, 0, 0}, "N"}, {" NH1", "ARG", 3, {20, 0, 0}, "N"}}),
             "two.pdb");
        const std::vector<Compound*> atoms = atomsIn(space()->ChildBegin()[1]);
        QCOMPARE(chargesOfShown().total, 3.0);
        atoms[0]->SetVisible(false);
        QCOMPARE(chargesOfShown().total, 2.0);
        SurfaceMesh mesh;
        mesh.atoms = {atoms[1]->GetId(), 4'000'000'000U, atoms[1]->GetId()};
        const AtomCharges ofEntry = readCharges(mesh);
        QCOMPARE(ofEntry.entry, std::string("two"));
        QCOMPARE(ofEntry.total, 2.0);
        // Atoms that are gone say nothing.
        mesh.atoms = {4'000'000'000U};
        QCOMPARE(readCharges(mesh).entry, std::string());
        QCOMPARE(readCharges(mesh).total, 2.0);
    }

    // By the names in the text alone: without bonds, and without what the host makes of it.
    void ubiquitinHasTheChargesOfItsNames() {
        const QString path = structure("1ubq.pdb");
        memory_host::openFile(path.toStdString());
        Places expected;
        const std::map<QByteArray, double> sites = {
            {"LYS NZ", 1},     {"ARG NH1", 0.5},  {"ARG NH2", 0.5},  {"ASP OD1", -0.5},
            {"ASP OD2", -0.5}, {"GLU OE1", -0.5}, {"GLU OE2", -0.5}, {"GLY OXT", -0.5}};
        const std::vector<Written> atoms = writtenAtoms(path);
        QCOMPARE(atoms.size(), std::size_t(602));
        for (const Written& atom : atoms) {
            if (const auto site = sites.find(atom.residue + ' ' + atom.name); site != sites.end())
                expected[atom.at] += site->second;
            if (atom.name == "N" && atom.number == "   1 ")
                expected[atom.at] += 1;
            if (atom.name == "O" && atom.number == "  76 ")
                expected[atom.at] -= 0.5;
        }
        QCOMPARE(byPlace(chargesOfShown()), expected);
        QVERIFY(std::abs(chargesOfShown().total) < 1e-9);
    }

    // Retinoic acid has no charge in the file.
    void theLigandOf1cbsIsAnAcid() {
        memory_host::openFile(structure("1cbs.cif.gz").toStdString());
        const AtomCharges all = chargesOfShown();
        for (Compound* const atom : atomsIn(space()))
            if (atom->GetFQName().find("/REA ") != std::string::npos)
                atom->SetVisible(false);
        QVERIFY(std::abs(all.total - chargesOfShown().total + 1) < 1e-6);
        QCOMPARE(all.charges.size(), chargesOfShown().charges.size() + 2);
    }

    // One for each phosphorus of its chains, but for chains that begin with one: these have 2.
    void theRibosomeHasAChargeForEachPhosphate() {
        memory_host::openFile(structure("6zu5.cif").toStdString());
        double phosphates = 0;
        std::size_t phosphorus = 0;
        std::vector<Compound*> residues;
        TAVIK::GetResidues(space(), residues, true);
        const AtomCharges charges = chargesOfShown();
        Places places = byPlace(charges);
        for (Compound* const residue : residues) {
            double inResidue = 0;
            bool hasPhosphorus = false;
            for (Compound* const atom : atomsIn(residue)) {
                const std::string name = atom->GetName();
                hasPhosphorus = hasPhosphorus || name == "P";
                std::array<double, 3> place{};
                for (std::size_t axis = 0; axis != 3; ++axis)
                    place[axis] =
                        std::round(double(atom->GetPosition()[static_cast<int>(axis)]) * 1000) /
                        1000;
                if (name.starts_with("OP") || (name.size() == 3 && name.ends_with('P'))) // OP1, O1P
                    if (const auto found = places.find(place); found != places.end())
                        inResidue += found->second;
            }
            if (!hasPhosphorus)
                continue;
            ++phosphorus;
            phosphates += inResidue;
            QVERIFY2(std::abs(inResidue + 1) < 1e-3 || std::abs(inResidue + 2) < 1e-3,
                     (residue->GetFQName() + ' ' + std::to_string(inResidue)).c_str());
        }
        QVERIFY(phosphorus > 3000);
        QVERIFY(phosphates < -double(phosphorus) + 0.5);
        QVERIFY(phosphates > -double(phosphorus) - 10);
    }
};

REGISTER_TEST(AtomChargesTest)
#include "AtomChargesTest.moc"
