// What the records of PDB files say of atoms, residues and models.
#include "FileTestCase.h"
#include "Space.h"

#include <QFile>

#include <algorithm>

using namespace file_testing;
using memory_host::OpenedFile;

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

} // namespace

class PdbFileTest : public FileTestCase {
    Q_OBJECT

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
                    atom = std::string("_").append(atom);
            std::sort(model.begin(), model.end());
        }
        QVERIFY(found == expected);
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

    void elementsWhereAllNamesBeginInOneColumn() {
        const QList<std::pair<QByteArray, QByteArray>> expected = {
            {"N", "N"},   {"CA", "C"},  {"HA", "H"},   {"CE1", "C"}, {"HE1", "H"}, {"HG2", "H"},
            {"HO", "H"},  {"NE2", "N"}, {"CD", "C"},   {"OH", "O"},  {"SE", "Se"}, {"CL1", "Cl"},
            {"BR", "Br"}, {"FE", "Fe"}, {"HE21", "H"}, {"ZN", "Zn"}};
        QByteArray text;
        for (const auto& [name, element] : expected) {
            PdbAtom atom;
            atom.name = name.leftJustified(4);
            atom.residue = "HIE";
            atom.x = static_cast<float>(4 * text.size());
            text += line(atom);
        }
        PdbAtom ion;
        ion.name = "CA  ";
        ion.residue = "CA";
        ion.number = "2";
        ion.x = -10.0F;
        openText(text + line(ion));
        QStringList found;
        for (const TAVIK::Atom* atom : atoms(item("/test")))
            found << QString::fromStdString(atom->GetName() + ' ' + atom->GetType());
        found.sort();
        QStringList wanted{"CA Ca"};
        for (const auto& [name, element] : expected)
            wanted << name + ' ' + element;
        wanted.sort();
        QCOMPARE(found, wanted);
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
        QCOMPARE(elementOf("CAAB", "LIG"), "C");
        QCOMPARE(elementOf("CLAB", "LIG"), "Cl");
        for (const char* name : {" SOD", "SOD "})
            QCOMPARE(elementOf(name, "SOD"), "Na");
        QCOMPARE(elementOf(" CLA", "CLA"), "Cl");
        QCOMPARE(elementOf("Na+ ", "Na+"), "Na");
        QCOMPARE(elementOf(" CL ", "CL"), "Cl");
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
             path() + ":3: the record ends in column 26, before its coordinates: the atom \"CA\" "
                      "has no position; accepted are whole records with coordinates in columns 31 "
                      "to 54"});
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

    void aTemperatureThatIsNoNumberIsTold() {
        PdbAtom atom;
        atom.temperature = "******";
        openText(line(atom),
                 {path() + ":1: the temperature factor \"******\" is no number, and was read as 0; "
                           "accepted are numbers in columns 61 to 66"});
        QCOMPARE(atoms(item("/test")).front()->GetTemperature(), 0.0F);
    }

    void absurdButFiniteCoordinatesStayAndAreTold() {
        PdbAtom atom;
        atom.position = "    1e30   -1e30   0.000";
        openText(atomAt(" N  ", 1) + line(atom),
                 {path() + ": 1 atom has coordinates beyond 1,000,000 Angstrom, no bonds, and may "
                           "not be seen; accepted are smaller coordinates"});
        QCOMPARE(atoms(item("/test"))[1]->GetPosition()[0], 1e30F);
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

    void lineEndsOfSeveralSystemsInOneFileLoseNoAtom_data() {
        QTest::addColumn<QByteArrayList>("ends");
        const QByteArrayList all = {"\n", "\r\n", "\r"};
        for (const QByteArray& first : all)
            for (const QByteArray& second : all)
                for (const QByteArray& third : all)
                    QTest::newRow((first + second + third).toHex().constData())
                        << QByteArrayList{first, second, third};
    }
    void lineEndsOfSeveralSystemsInOneFileLoseNoAtom() {
        QFETCH(QByteArrayList, ends);
        PdbAtom bad;
        bad.position = "   0.000     nan   0.000";
        QByteArray text;
        const QByteArrayList lines = {atomAt(" N  ", 1), "REMARK\n", atomAt(" CA ", 2),
                                      atomAt(" C  ", 3), line(bad),  "END\n"};
        for (qsizetype i = 0; i != lines.size(); ++i)
            text += lines[i].chopped(1) + ends[i % ends.size()];
        openText(text, {path() + ":5: the coordinates \"   0.000     nan   0.000\" of the atom "
                                 "\"CA\" are no numbers: it has no position; accepted are numbers "
                                 "in columns 31 to 54"});
        QCOMPARE(atoms(item("/test")).size(), 4U);
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
};

REGISTER_TEST(PdbFileTest)
#include "PdbFileTest.moc"
