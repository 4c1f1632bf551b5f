#include "Building.h"
#include "DataPointBase.h"
#include "FileTesting.h"
#include "Space.h"
#include "Subscriber.h"
#include "TestSupport.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <thread>

using namespace file_testing;
using memory_host::FileError;
using memory_host::OpenedFile;
using TAVIK::Compound;

namespace {

// The atoms of a PDB file straight from the columns of its lines.
std::vector<std::vector<std::string>> atomsOfLines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s cannot be read", qPrintable(path));
    std::vector<std::vector<std::string>> models(1);
    while (!file.atEnd()) {
        const QByteArray text = file.readLine();
        if (text.startsWith("ENDMDL"))
            models.emplace_back();
        if (!text.startsWith("ATOM  ") && !text.startsWith("HETATM"))
            continue;
        const auto columns = [&text](int first, int last) {
            return text.mid(first - 1, last - first + 1).trimmed();
        };
        QByteArray element = columns(77, 78).toLower();
        element[0] = static_cast<char>(std::toupper(element[0]));
        const QByteArray chain = columns(22, 22);
        models.back().push_back(AtomText{chain.isEmpty() ? "_" : chain.toStdString(),
                                         columns(23, 27).toStdString(),
                                         columns(13, 16).toStdString(), element.toStdString(),
                                         static_cast<float>(columns(31, 38).toDouble()),
                                         static_cast<float>(columns(39, 46).toDouble()),
                                         static_cast<float>(columns(47, 54).toDouble()),
                                         static_cast<float>(columns(61, 66).toDouble())}
                                    .text());
    }
    if (models.back().empty())
        models.pop_back();
    for (std::vector<std::string>& model : models)
        std::sort(model.begin(), model.end());
    return models;
}

QByteArray atomAt(const QByteArray& name, float x, float y = 0.0F, float z = 0.0F) {
    PdbAtom atom;
    atom.name = name;
    atom.x = x;
    atom.y = y;
    atom.z = z;
    return line(atom);
}

class Listener : public Subscriber {
public:
    void commUpdate() override { calls << "update"; }
    void commAdd() override {
        calls << "add";
        seen = childNames(TAVIK::Space::instance());
    }
    void commDelete() override { calls << "delete"; }

    QStringList calls;
    QStringList seen;
};

} // namespace

class PdbFileTest : public test_support::TestCase {
    Q_OBJECT

private:
    Folder m_folder;

    OpenedFile openText(const QByteArray& text, const QStringList& remarks = {},
                        const QString& name = QStringLiteral("test.pdb")) {
        return opened(m_folder.write(name, text), remarks);
    }
    QString path(const QString& name = QStringLiteral("test.pdb")) const {
        return m_folder.path() + u'/' + name;
    }

    static void addRealFiles() {
        QTest::addColumn<QString>("file");
        for (const char* name : {"1ubq.pdb", "1d3z.pdb", "1ejg.pdb", "1tii.pdb"})
            QTest::newRow(name) << structure(QString::fromLatin1(name));
        QTest::newRow("sample") << QStringLiteral(SOURCE_DIR "/data/sample.pdb");
    }

private slots:
    void everyAtomLineOfARealFileBecomesOneAtom_data() { addRealFiles(); }
    void everyAtomLineOfARealFileBecomesOneAtom() {
        QFETCH(QString, file);
        const auto expected = atomsOfLines(file);
        QVERIFY(!expected.front().empty());
        QVERIFY(sortedAtoms(opened(file.toStdString()).items) == expected);
    }

    void gemmiSeesTheSameAtoms_data() { addRealFiles(); }
    void gemmiSeesTheSameAtoms() {
        QFETCH(QString, file);
        auto expected = gemmiAtoms(file.toStdString());
        const auto found = sortedAtoms(opened(file.toStdString()).items);
        for (std::vector<std::string>& model : expected) {
            for (std::string& atom : model)
                if (atom.starts_with('|'))
                    atom.insert(0, "_");
            std::sort(model.begin(), model.end());
        }
        QVERIFY(found == expected);
    }

    void aChainHoldsGroupsAndBonds() {
        const OpenedFile file = opened(structure("1ubq.pdb").toStdString());
        QCOMPARE(file.items.size(), 1U);
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("1ubq"));
        QCOMPARE(childNames(item("/1ubq")), QStringList("A"));
        QVERIFY(dynamic_cast<TAVIK::Molecule*>(item("/1ubq/A")));
        QCOMPARE(childNames(item("/1ubq/A")), QStringList({"Groups", "Bonds"}));
        Compound* groups = item("/1ubq/A/Groups");
        QCOMPARE(groups->GetType(), "Composite");
        // 76 amino acids and 58 waters, which follow the end of the chain.
        QCOMPARE(groups->ChildEnd() - groups->ChildBegin(), 134);
        QCOMPARE(childNames(groups).first(), "MET 1");
        QCOMPARE(childNames(groups).last(), "HOH 134");
        QVERIFY(dynamic_cast<TAVIK::Residue*>(item("/1ubq/A/Groups/MET 1")));
    }

    void anAtomHasItsElementPositionAndTemperature() {
        opened(structure("1ubq.pdb").toStdString());
        auto* const atom = dynamic_cast<TAVIK::Atom*>(item("/1ubq/A/Groups/MET 1/SD"));
        QVERIFY(atom);
        QCOMPARE(atom->GetType(), "S");
        QCOMPARE(atom->GetPosition()[0], 23.930F);
        QCOMPARE(atom->GetPosition()[1], 23.959F);
        QCOMPARE(atom->GetPosition()[2], 5.904F);
        QCOMPARE(atom->GetTemperature(), 17.17F);
        QCOMPARE(atom->GetModelNumber(), "0");
    }

    void anAminoAcidHasABackboneAndASideChain() {
        opened(structure("1ubq.pdb").toStdString());
        Compound* residue = item("/1ubq/A/Groups/MET 1");
        QCOMPARE(atomPaths(residue),
                 QStringList(
                     {"/1ubq/A/Groups/MET 1/Backbone/N", "/1ubq/A/Groups/MET 1/Backbone/CA",
                      "/1ubq/A/Groups/MET 1/Backbone/C", "/1ubq/A/Groups/MET 1/Backbone/O",
                      "/1ubq/A/Groups/MET 1/Side chain/CB", "/1ubq/A/Groups/MET 1/Side chain/CG",
                      "/1ubq/A/Groups/MET 1/Side chain/SD", "/1ubq/A/Groups/MET 1/Side chain/CE"}));
        QVERIFY(dynamic_cast<TAVIK::Group*>(*residue->ChildBegin()));
        // Glycine has no side chain, and no empty group for it; water has atoms alone.
        QCOMPARE(childNames(item("/1ubq/A/Groups/GLY 10")), QStringList("Backbone"));
        QCOMPARE(childNames(item("/1ubq/A/Groups/HOH 101")), QStringList("O"));
    }

    void hydrogensGoWithTheAtomThatBearsThem() {
        opened(structure("1ejg.pdb").toStdString());
        const QStringList paths = atomPaths(item("/1ejg/A/Groups/THR 2"));
        for (const char* name : {"Backbone/H", "Backbone/HA", "Side chain/HB", "Side chain/HG1"})
            QVERIFY2(paths.contains("/1ejg/A/Groups/THR 2/" + QString::fromLatin1(name)), name);
        for (const QString& atom : paths)
            QVERIFY(atom.contains("/Backbone/H") == atom.endsWith("/H") || !atom.endsWith("/H"));
    }

    void hydrogensWithoutBondsGoByTheirNames() {
        QByteArray text;
        int place = 0;
        for (const char* name :
             {" N  ", " CA ", " CB ", " H  ", "1H  ", " HN ", " HA ", "HA2 ", "1HB ", "HG21"})
            text += atomAt(name, static_cast<float>(10 * ++place));
        openText(text);
        const QString residue = QStringLiteral("/test/A/Groups/ALA 1/");
        QStringList expected;
        for (const char* name : {"N", "CA", "H", "1H", "HN", "HA", "HA2"})
            expected << residue + "Backbone/" + name;
        for (const char* name : {"CB", "1HB", "HG21"})
            expected << residue + "Side chain/" + name;
        QCOMPARE(atomPaths(item("/test")), expected);
    }

    void aNucleotideHasPhosphateSugarAndBase() {
        QByteArray text;
        int place = 0;
        for (const char* name : {" P  ", " OP1", " O1P", " O5'", " C5'", " C1*", " O2'", " N1 ",
                                 " C2 ", " O4 ", " C7 "}) {
            PdbAtom atom;
            atom.name = name;
            atom.residue = "DT";
            atom.x = static_cast<float>(10 * ++place);
            text += line(atom);
        }
        openText(text);
        Compound* residue = item("/test/A/Groups/DT 1");
        QCOMPARE(childNames(residue), QStringList({"Phosphate", "Sugar", "Base"}));
        const QString prefix = QStringLiteral("/test/A/Groups/DT 1/");
        QCOMPARE(atomPaths(residue),
                 QStringList({prefix + "Phosphate/P", prefix + "Phosphate/OP1",
                              prefix + "Phosphate/O1P", prefix + "Sugar/O5'", prefix + "Sugar/C5'",
                              prefix + "Sugar/C1*", prefix + "Sugar/O2'", prefix + "Base/N1",
                              prefix + "Base/C2", prefix + "Base/O4", prefix + "Base/C7"}));
    }

    void anUnknownResidueWithABackboneIsAnAminoAcid() {
        QByteArray text;
        int place = 0;
        for (const char* name : {" N  ", " CA ", " C  ", " QX1"}) {
            PdbAtom atom;
            atom.name = name;
            atom.residue = "ZQX";
            atom.element = "C";
            atom.x = static_cast<float>(10 * ++place);
            text += line(atom);
        }
        openText(text);
        QCOMPARE(childNames(item("/test/A/Groups/ZQX 1")), QStringList({"Backbone", "Side chain"}));
    }

    void anEntryHasTheNameOfItsHeaderOrElseOfItsFile() {
        const QByteArray atom = atomAt(" CA ", 0);
        const QByteArray header = QByteArray("HEADER").leftJustified(62);
        openText(header + "9XYZ\n" + atom, {}, "other.pdb");
        openText(header + "XXXX\n" + atom, {}, "Mine.v2.pdb");
        openText(atom, {}, "pdb1abc.ent");
        openText(atom, {}, "noending");
        openText(gzipped(atom), {}, "packed.pdb.gz");
        QCOMPARE(childNames(TAVIK::Space::instance()),
                 QStringList({"9xyz", "Mine.v2", "pdb1abc", "noending", "packed"}));
    }

    void contentDecidesWhereTheEndingIsWrong() {
        openText(atomAt(" CA ", 0), {}, "a.cif");
        openText(mmcif({"CA C . ALA A 1 ? 1 2 3 1"}), {}, "b.pdb");
        openText(atomAt(" CA ", 0), {}, "c.map");
        openText(gzipped(atomAt(" CA ", 0)), {}, "d.pdb");
        openText(atomAt(" CA ", 0), {}, "e.pdb.gz");
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"a", "test", "c", "d", "e"}));
    }

    void severalModelsBecomeSeveralEntries() {
        const OpenedFile file = opened(structure("1d3z.pdb").toStdString());
        QStringList expected;
        for (int model = 1; model <= 10; ++model)
            expected << "1d3z." + QString::number(model);
        QCOMPARE(childNames(TAVIK::Space::instance()), expected);
        for (Compound* model : file.items)
            QCOMPARE(atoms(model).size(), 1231U);
    }

    void modelsKeepTheNumbersOfTheFile() {
        const QByteArray atom = atomAt(" CA ", 0);
        openText("MODEL        3\n" + atom + "ENDMDL\nMODEL        7\n" + atom + "ENDMDL\nEND\n");
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"test.3", "test.7"}));
    }

    void modelsWithoutNumbersOfTheirOwnAreCounted() {
        const QByteArray atom = atomAt(" CA ", 0);
        openText("MODEL        1\n" + atom + "ENDMDL\nMODEL        1\n" + atom + "ENDMDL\n", {},
                 "a.pdb");
        openText("MODEL\n" + atom + "ENDMDL\nMODEL\n" + atom + "ENDMDL\n", {}, "b.pdb");
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"a.1", "a.2", "b.1", "b.2"}));
    }

    void whatFollowsTheEndIsAnotherModel() {
        const QByteArray atom = atomAt(" CA ", 0);
        openText(atom + "END\n" + atom + atom + "END\n");
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"test.1", "test.2"}));
        QCOMPARE(atoms(item("/test.2")).size(), 2U);
    }

    void aSingleModelIsTheEntryWhateverItsNumber() {
        openText("MODEL        5\nENDMDL\nMODEL        6\n" + atomAt(" CA ", 0) + "ENDMDL\n");
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("test"));
    }

    void residueNumbersMayBeNegativeAndHaveInsertionCodes() {
        QByteArray text;
        for (const auto& [number, insertion] :
             {std::pair("-5", ' '), {"0", ' '}, {"52", ' '}, {"52", 'A'}, {"52", 'b'}}) {
            PdbAtom atom;
            atom.number = number;
            atom.insertion = insertion;
            text += line(atom);
        }
        openText(text);
        QCOMPARE(childNames(item("/test/A/Groups")),
                 QStringList({"ALA -5", "ALA 0", "ALA 52", "ALA 52A", "ALA 52b"}));
    }

    void residueNumbersBeyond9999AreDecoded() {
        QByteArray text;
        for (const char* number : {"9999", "A000", "A001", "ZZZZ", "a000", "12x4"}) {
            PdbAtom atom;
            atom.number = number;
            text += line(atom);
        }
        openText(text);
        QCOMPARE(childNames(item("/test/A/Groups")),
                 QStringList({"ALA 9999", "ALA 10000", "ALA 10001", "ALA 1223055", "ALA 1223056",
                              "ALA 12x4"}));
    }

    void chainsMayHaveTwoLettersOrNone() {
        QByteArray text;
        for (const char* chain : {"A", "AB", " ", "A"}) {
            PdbAtom atom;
            atom.chain = chain;
            atom.name = text.isEmpty() ? " CA " : " CB ";
            text += line(atom);
        }
        openText(text);
        QCOMPARE(childNames(item("/test")), QStringList({"A", "AB", "_"}));
        QCOMPARE(atoms(item("/test/A")).size(), 2U);
    }

    void missingNamesAreShownAsSuch() {
        PdbAtom atom;
        atom.name = "    ";
        atom.residue = "";
        atom.number = "";
        atom.element = "C";
        openText(line(atom));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList("_"));
        QCOMPARE(childNames(item("/test/A/Groups/_")), QStringList("_"));
    }

    void numbersThatBeginAgainStartNewResidues() {
        QByteArray text;
        const QList<QByteArray> numbers = {"1", "2", "1", "2"};
        for (const QByteArray& number : numbers) {
            for (const char* name : {" OW ", " HW1", " HW2"}) {
                PdbAtom atom;
                atom.name = name;
                atom.residue = "SOL";
                atom.number = number;
                atom.x = static_cast<float>(text.size());
                text += line(atom);
            }
        }
        openText(text);
        QCOMPARE(childNames(item("/test/A/Groups")),
                 QStringList({"SOL 1", "SOL 2", "SOL 1", "SOL 2"}));
    }

    void atomsOfAResidueNeedNotStandTogether() {
        PdbAtom atom;
        atom.residue = "GLY";
        const QByteArray first = line(atom);
        atom.number = "2";
        const QByteArray second = line(atom);
        atom.number = "1";
        atom.name = " HA2";
        openText(first + second + line(atom));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList({"GLY 1", "GLY 2"}));
        QCOMPARE(atoms(item("/test/A/Groups/GLY 1")).size(), 2U);
    }

    void residuesOfOtherSegmentsAreOthers() {
        PdbAtom atom;
        atom.segment = "P1";
        const QByteArray first = line(atom);
        atom.segment = "P2";
        openText(first + line(atom));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList({"ALA 1", "ALA 1"}));
    }

    void conformersCountFromOneInTheOrderOfTheFile() {
        QByteArray text;
        for (const auto& [name, alternative] :
             {std::pair(" N  ", ' '), {" CA ", 'B'}, {" CA ", 'A'}, {" CB ", 'A'}, {" CB ", 'B'}}) {
            PdbAtom atom;
            atom.name = name;
            atom.alternative = alternative;
            text += line(atom);
        }
        PdbAtom next;
        next.number = "2";
        next.alternative = 'C';
        openText(text + line(next));
        QStringList models;
        for (const TAVIK::Atom* atom : atoms(item("/test")))
            models << QString::fromStdString(atom->GetName() + atom->GetModelNumber());
        QCOMPARE(models, QStringList({"N0", "CA1", "CA2", "CB2", "CB1", "CA1"}));
        QCOMPARE(memory_host::activeModel(item("/test/A/Groups/ALA 1")), 1U);
    }

    void aPositionWithSeveralResidueNamesIsOneResidue() {
        opened(structure("1ejg.pdb").toStdString());
        const QStringList names = childNames(item("/1ejg/A/Groups"));
        QCOMPARE(names.size(), 46);
        QCOMPARE(names[21], "PRO,SER 22");
        QCOMPARE(names[24], "LEU,ILE 25");
        Compound* residue = item("/1ejg/A/Groups/PRO,SER 22");
        QCOMPARE(childNames(residue), QStringList({"Backbone", "Side chain"}));
        const auto visible = [residue](const char* name) {
            const std::vector<TAVIK::Atom*> all = atoms(residue);
            return std::any_of(all.begin(), all.end(), [name](TAVIK::Atom* atom) {
                return atom->IsVisible() && atom->GetName() == name;
            });
        };
        // The first conformer is the proline, the next one the serine; the nitrogen is shared.
        QVERIFY(visible("CD") && !visible("OG") && visible("N"));
        residue->NextModel();
        QVERIFY(!visible("CD") && visible("OG") && visible("N"));
    }

    void severalNamesWithoutAlternativesAreSeveralResidues() {
        PdbAtom protein;
        PdbAtom water;
        water.residue = "HOH";
        water.name = " O  ";
        openText(line(protein) + line(water));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList({"ALA 1", "HOH 1"}));
    }

    void bondsJoinResiduesAndLeaveWatersAlone() {
        opened(structure("1ubq.pdb").toStdString());
        const QStringList bonds = bondNames(item("/1ubq"));
        QVERIFY(bonds.contains("MET 1 N-CA"));
        QVERIFY(bonds.contains("MET 1 C - GLN 2 N"));
        QVERIFY(std::none_of(bonds.begin(), bonds.end(),
                             [](const QString& name) { return name.contains("HOH"); }));
        // 602 atoms without the waters are all connected, and there are seven rings.
        QCOMPARE(bonds.size(), 608);
        QCOMPARE(childNames(item("/1ubq")), QStringList("A"));
    }

    void bondsBetweenChainsStandInTheEntry() {
        opened(SOURCE_DIR "/data/sample.pdb");
        QCOMPARE(childNames(item("/sample")), QStringList({"A", "B", "C", "Bonds"}));
        QCOMPARE(bondNames(item("/sample/Bonds")), QStringList("ASN 349 ND2 - NAG 1 C1"));
    }

    void alternativesAreNotBondedToEachOther() {
        opened(structure("1ejg.pdb").toStdString());
        std::vector<Compound*> bonds;
        const Compound* const* end = item("/1ejg/A/Bonds")->ChildEnd();
        int inAlternatives = 0;
        for (Compound** bond = item("/1ejg/A/Bonds")->ChildBegin(); bond != end; ++bond) {
            auto* const a = dynamic_cast<TAVIK::Atom*>((*bond)->PartBegin()[0]);
            auto* const b = dynamic_cast<TAVIK::Atom*>((*bond)->PartBegin()[1]);
            QVERIFY(!(a->GetType() == "H" && b->GetType() == "H"));
            if (memory_host::parentOf(memory_host::parentOf(a)) !=
                    memory_host::parentOf(memory_host::parentOf(b)) ||
                a->GetModelNumber() == "0" || b->GetModelNumber() == "0")
                continue;
            ++inAlternatives;
            QCOMPARE(a->GetModelNumber(), b->GetModelNumber());
        }
        QVERIFY(inAlternatives > 50);
        QVERIFY(bondNames(item("/1ejg/A/Bonds")).contains("CYS 3 SG - CYS 40 SG"));
    }

    void elementsComeFromTheirColumnsOrFromTheName() {
        const auto elementOf = [this](const QByteArray& name, const QByteArray& residue,
                                      const QByteArray& element = {}) {
            PdbAtom atom;
            atom.name = name;
            atom.residue = residue;
            atom.element = element;
            const OpenedFile file = openText(line(atom));
            return atoms(file.items.front()).front()->GetType();
        };
        QCOMPARE(elementOf(" CA ", "ALA", "C"), "C");
        QCOMPARE(elementOf("CA  ", "CA", "CA"), "Ca");
        QCOMPARE(elementOf("CU  ", "CU", "cu"), "Cu");
        QCOMPARE(elementOf(" Q1 ", "LIG", "X"), "X");
        QCOMPARE(elementOf(" CA ", "ALA"), "C");
        QCOMPARE(elementOf("CA  ", "CA"), "Ca");
        QCOMPARE(elementOf("CA  ", "ALA"), "C"); // not where the format wants it
        QCOMPARE(elementOf("FE  ", "HEM"), "Fe");
        QCOMPARE(elementOf("HG21", "VAL"), "H");
        QCOMPARE(elementOf("1HB ", "ALA"), "H");
        QCOMPARE(elementOf("C210", "LIG"), "C");
        QCOMPARE(elementOf("SE  ", "MSE"), "Se");
        QCOMPARE(elementOf(" D1 ", "ALA"), "D");
        QCOMPARE(elementOf(" ?? ", "LIG"), "X");
    }

    void lineNumbersInOldFilesAreNoCharges() {
        PdbAtom atom;
        atom.segment = "1ABC";
        QByteArray text = line(atom);
        text.chop(3);
        openText(text + "  57\n" + text + "  58\n");
        QCOMPARE(atoms(item("/test")).size(), 2U);
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList("ALA 1"));
    }

    void blankCoordinatesAreNoPosition() {
        PdbAtom atom;
        atom.position = " ";
        const QByteArray blank = line(atom);
        const QByteArray cutOff = blank.left(27) + '\n';
        openText(
            atomAt(" N  ", 1) + blank + cutOff,
            {path() + ":2: the atom \"CA\" has no coordinates; accepted are numbers in columns "
                      "31 to 54",
             path() + ":3: the atom \"CA\" has no coordinates; accepted are numbers in columns "
                      "31 to 54"});
        const std::vector<TAVIK::Atom*> all = atoms(item("/test"));
        QCOMPARE(all.size(), 3U);
        QVERIFY(all[0]->GetPosition().isValid());
        QVERIFY(!all[1]->GetPosition().isValid());
        QVERIFY(!all[2]->GetPosition().isValid());
    }

    void coordinatesThatAreNoNumbersAreToldByTheirLine_data() {
        QTest::addColumn<QByteArray>("position");
        for (const char* position :
             {"     nan   0.000   0.000", "   0.000     inf   0.000", "   0.000   0.000********",
              "   0.000   0.000   1.2.3", "   0.000           0.000", "   0.000   0.000   1e300",
              "   0.000   0.000    0x10", "   0.000   0.000    1,50"})
            QTest::newRow(position) << QByteArray(position);
    }
    void coordinatesThatAreNoNumbersAreToldByTheirLine() {
        QFETCH(QByteArray, position);
        PdbAtom atom;
        atom.position = position;
        openText(atomAt(" N  ", 1) + line(atom),
                 {path() + ":2: the coordinates \"" + position +
                  "\" of the atom \"CA\" are no numbers: it has no position; accepted are numbers "
                  "in columns 31 to 54"});
        QVERIFY(!atoms(item("/test"))[1]->GetPosition().isValid());
    }

    void manyOddLinesBecomeFewRemarks() {
        PdbAtom atom;
        atom.position = " ";
        QByteArray text = atomAt(" N  ", 1);
        for (int i = 0; i < 500; ++i)
            text += line(atom);
        const std::string file = m_folder.write("test.pdb", text);
        const OpenedFile result = memory_host::openFile(file);
        QCOMPARE(result.remarks.size(), 11U);
        QCOMPARE(result.remarks.back(), file + ": 490 more atoms without coordinates");
    }

    void aTemperatureThatIsNoNumberIsTold() {
        PdbAtom atom;
        atom.temperature = "******";
        openText(line(atom),
                 {path() + ":1: the temperature factor \"******\" is no number, and was read as 0; "
                           "accepted are numbers in columns 61 to 66"});
        QCOMPARE(atoms(item("/test")).front()->GetTemperature(), 0.0F);
    }

    void absurdButFiniteCoordinatesStay() {
        PdbAtom atom;
        atom.position = "    1e30   -1e30   0.000";
        openText(atomAt(" N  ", 1) + line(atom));
        QCOMPARE(atoms(item("/test"))[1]->GetPosition()[0], 1e30F);
    }

    void slashesAndControlCharactersInNamesAreReplaced() {
        PdbAtom atom;
        atom.name = " A/B";
        atom.element = "C";
        PdbAtom other = atom;
        other.name = " \x01X ";
        openText(line(atom) + line(atom) + line(other),
                 {path() + ": the name \"A/B\" of 2 items became \"A_B\"; accepted are Latin-1 "
                           "characters but \"/\" and control characters",
                  path() + ": the name \" X\" of 1 item became \"_X\"; accepted are Latin-1 "
                           "characters but \"/\" and control characters"});
        QCOMPARE(childNames(item("/test/A/Groups/ALA 1/A_B") ? item("/test/A/Groups/ALA 1")
                                                             : TAVIK::Space::instance()),
                 QStringList("Side chain"));
    }

    void namesInLatin1StayAndNamesInUtf8BecomeLatin1() {
        PdbAtom latin;
        latin.name = " C\xe4 ";
        latin.element = "C";
        PdbAtom utf = latin;
        utf.name = "C\xc3\xa4 ";
        PdbAtom foreign = latin;
        foreign.name = "C\xe2\x82\xac";
        const std::string file =
            m_folder.write("test.pdb", line(latin) + line(utf) + line(foreign));
        const OpenedFile result = memory_host::openFile(file);
        QCOMPARE(result.remarks.size(), 2U);
        const std::vector<TAVIK::Atom*> all = atoms(item("/test"));
        QCOMPARE(all[0]->GetName(), "C\xe4");
        QCOMPARE(all[1]->GetName(), "C\xe4");
        QCOMPARE(all[2]->GetName(), "C_");
    }

    void aResidueOf100000AtomsOpensWithARemark() {
        QByteArray text;
        for (int i = 0; i < 100000; ++i)
            text +=
                atomAt(" C" + QByteArray::number(i % 100).leftJustified(2),
                       static_cast<float>(i % 50) * 1.5F, static_cast<float>(i / 50 % 50) * 1.5F,
                       static_cast<float>(i / 2500) * 1.5F);
        openText(text, {path() + ": residue ALA 1 of chain A has 100000 atoms"});
        QCOMPARE(atoms(item("/test/A/Groups/ALA 1")).size(), 100000U);
    }

    void atomsThatAreTooCloseHaveNoBondsAndARemark() {
        QByteArray text;
        for (int i = 0; i < 1000; ++i)
            text += atomAt(" CA ", 0);
        openText(text, {path() +
                        ": 1000 atoms stand closer together than matter does, and have no bonds; "
                        "accepted are coordinates in Angstrom"});
        QCOMPARE(bondNames(item("/test")), QStringList());
    }

    void lineEndsOfAnySystemAreRead_data() {
        QTest::addColumn<QByteArray>("end");
        QTest::newRow("LF") << QByteArray("\n");
        QTest::newRow("CR LF") << QByteArray("\r\n");
        QTest::newRow("CR") << QByteArray("\r");
    }
    void lineEndsOfAnySystemAreRead() {
        QFETCH(QByteArray, end);
        QByteArray text = "HEADER\n" + atomAt(" N  ", 1) + atomAt(" CA ", 2) + "END\n";
        openText(text.replace("\n", end));
        QCOMPARE(atoms(item("/test")).size(), 2U);
    }

    void aLastLineWithoutEndIsReadWhereItIsWhole_data() {
        QTest::addColumn<QByteArray>("last");
        QByteArray atom = atomAt(" CA ", 2);
        atom.chop(1);
        QTest::newRow("an atom") << atom;
        QTest::newRow("END") << QByteArray("END");
        QTest::newRow("TER") << QByteArray("TER");
        QTest::newRow("ENDMDL") << QByteArray("ENDMDL");
        QTest::newRow("blanks") << QByteArray("   ");
        QTest::newRow("CONECT") << QByteArray("CONECT    1");
    }
    void aLastLineWithoutEndIsReadWhereItIsWhole() {
        QFETCH(QByteArray, last);
        openText(atomAt(" N  ", 1) + last);
        QCOMPARE(atoms(item("/test")).size(), last.startsWith("ATOM") ? 2U : 1U);
    }

    void aModelWithoutItsEndIsTold() {
        openText("MODEL        1\n" + atomAt(" N  ", 1),
                 {path() + ":1: this model has no ENDMDL record: the file may have been cut"});
    }

    void aByteOrderMarkIsNoPartOfTheText() {
        openText("\xef\xbb\xbf" + atomAt(" N  ", 1));
        QCOMPARE(atoms(item("/test")).size(), 1U);
    }

    void gzippedFilesOfSeveralPartsAreRead() {
        openText(gzipped(atomAt(" N  ", 1)) + gzipped(atomAt(" CA ", 2)) + QByteArray(64, '\0'), {},
                 "test.pdb.gz");
        QCOMPARE(atoms(item("/test")).size(), 2U);
    }

    void openingIsToldOnceWhenEverythingIsThere() {
        Listener listener;
        opened(structure("1d3z.pdb").toStdString());
        QCOMPARE(listener.calls, QStringList("add"));
        QCOMPARE(listener.seen.size(), 10);
    }

    void nothingIsAddedWhileTheSpaceIsInUse() {
        openText(atomAt(" N  ", 1), {}, "first.pdb");
        const std::string file = m_folder.write("second.pdb", atomAt(" N  ", 1));
        {
            const memory_host::SpaceLock lock;
            QCOMPARE(refusal(file), QString::fromStdString(file) +
                                        ": the data space is in use, so that nothing can be added; "
                                        "accepted is trying again when the change in progress is "
                                        "done");
        }
        const DataPointBase guard(nullptr, Publisher::Update);
        QVERIFY(guard.m_good);
        QVERIFY(refusal(file).contains("in use"));
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("first"));
    }

    void aParsedFileOpensOnce() {
        const auto file = memory_host::parseFile(m_folder.write("test.pdb", atomAt(" N  ", 1)));
        memory_host::openParsed(*file, {});
        try {
            memory_host::openParsed(*file, {});
            QFAIL("it was opened again");
        } catch (const FileError& error) {
            QVERIFY(QString::fromLatin1(error.what()).contains("was opened already"));
        }
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("test"));
    }

    void filesAreParsedOnManyThreadsAtOnce() {
        const std::string path = structure("1ejg.pdb").toStdString();
        std::vector<memory_host::ParsedFilePtr> files(4);
        std::vector<std::thread> threads;
        for (memory_host::ParsedFilePtr& file : files)
            threads.emplace_back([&file, &path] { file = memory_host::parseFile(path); });
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList());
        std::vector<std::vector<std::string>> expected;
        for (memory_host::ParsedFilePtr& file : files) {
            const auto found = sortedAtoms(memory_host::openParsed(*file, {}).items);
            if (expected.empty())
                expected = found;
            QVERIFY(found == expected);
        }
    }

    void progressRisesAndIsToldOftenEnough() {
        const auto file = memory_host::parseFile(structure("1d3z.pdb").toStdString());
        std::vector<double> fractions;
        QStringList stages;
        memory_host::openParsed(*file, [&](const std::string& stage, double fraction) {
            fractions.push_back(fraction);
            stages << QString::fromStdString(stage);
        });
        QVERIFY(fractions.size() >= 5);
        QVERIFY(fractions.size() < 300);
        QVERIFY(std::is_sorted(fractions.begin(), fractions.end()));
        QVERIFY(fractions.front() >= 0.0 && fractions.back() <= 1.0 && fractions.back() > 0.7);
        stages.removeDuplicates();
        QCOMPARE(stages, QStringList("building the atoms"));
    }

    void anExceptionInTheProgressLeavesTheSpaceAsItWas() {
        const auto file = memory_host::parseFile(structure("1ubq.pdb").toStdString());
        QVERIFY_EXCEPTION_THROWN(
            memory_host::openParsed(
                *file, [](const std::string&, double) { throw std::runtime_error("stopped"); }),
            FileError);
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList());
    }
};

REGISTER_TEST(PdbFileTest)
#include "PdbFileTest.moc"
