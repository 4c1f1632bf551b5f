// PQR files: the words of an atom's record between blanks, with charge and radius at the end.
#include "FileTestCase.h"
#include "PartialCharge.h"
#include "Space.h"

#include <QFile>

#include <algorithm>

using namespace file_testing;

namespace {

const QString accepted =
    QStringLiteral("; accepted are PQR files of whole ATOM and HETATM rows, with blanks around x, "
                   "y, z, charge and radius");

// A row with its words in columns of its own, as programs write it that know no PDB.
QByteArray row(int serial, const QByteArray& words) {
    QByteArray text = "ATOM " + QByteArray::number(serial).rightJustified(2);
    for (const QByteArray& word : words.simplified().split(' '))
        text += ' ' + word.leftJustified(6);
    return text + '\n';
}

// Alanine, numbers of five decimals.
QByteArray alanine() {
    return row(5, "N ALA 1 3.28800 4.39400 -0.20100 -0.30000 1.85000") +
           row(6, "HT1 ALA 1 2.28800 4.39400 -0.20100 0.33000 0.22450") +
           row(7, "CA ALA 1 -13.28800 104.39400 -0.20100 0.21000 2.27500") +
           row(8, "CB ALA 1 -8.39064 -9.24923 4.32389 -0.27000 2.06000") +
           row(9, "C ALA 1 17.68745 13.06904 -9.73239 0.34000 2.00000") + "TER\nEND\n";
}

// The same row in PDB's columns up to the coordinates.
QByteArray columns(const QByteArray& name, float x, float y, float z, const QByteArray& rest,
                   const QByteArray& residue = "ALA", const QByteArray& chain = " ",
                   const QByteArray& number = "1") {
    PdbAtom atom;
    atom.name = name;
    atom.x = x;
    atom.y = y;
    atom.z = z;
    atom.residue = residue;
    atom.chain = chain;
    atom.number = number;
    return line(atom).left(54) + rest + '\n';
}

QStringList charges(TAVIK::Compound* root) {
    QStringList texts;
    for (const TAVIK::Atom* atom : atoms(root)) {
        const TAVIK::PartialCharge partial = TAVIK::GetPartialCharge(atom);
        texts << (partial.isKnown ? QString("%1 %2 %3")
                                        .arg(QString::fromStdString(atom->GetName()))
                                        .arg(double(partial.charge))
                                        .arg(double(partial.radius))
                                  : QString::fromStdString(atom->GetName()));
    }
    return texts;
}

} // namespace

class PqrFileTest : public FileTestCase {
    Q_OBJECT

    QString refused(const QByteArray& text) {
        const std::string file = m_folder.write("test.pqr", text);
        return refusal(file).mid(static_cast<qsizetype>(file.size()));
    }

public:
    PqrFileTest() : FileTestCase(QStringLiteral("test.pqr")) {}

private slots:
    void everyRowIsAnAtomWithChargeAndRadius_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"test.pqr", "test.pdb", "test.ent", "test.txt", "test.pqr.gz"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void everyRowIsAnAtomWithChargeAndRadius() {
        QFETCH(QString, name);
        const QByteArray text = alanine();
        openText(name.endsWith(".gz") ? gzipped(text) : text, {}, name);
        const QString entry = name == "test.txt" ? "/test.txt" : "/test";
        std::vector<TAVIK::Atom*> all = atoms(item(entry + "/_/Groups/ALA 1"));
        QCOMPARE(all.size(), 5U);
        // Backbone and side chain have another order than the file.
        for (const QByteArray& written : text.split('\n')) {
            const QByteArrayList words = written.simplified().split(' ');
            if (words.size() < 10)
                continue;
            const auto found = std::ranges::find_if(all, [&](const TAVIK::Atom* atom) {
                return atom->GetName() == words[2].toStdString();
            });
            QVERIFY(found != all.end());
            for (const int axis : {0, 1, 2})
                QCOMPARE((*found)->GetPosition()[static_cast<std::size_t>(axis)],
                         words[5 + axis].toFloat());
            const TAVIK::PartialCharge partial = TAVIK::GetPartialCharge(*found);
            QVERIFY(partial.isKnown);
            QCOMPARE(partial.charge, words[8].toFloat());
            QCOMPARE(partial.radius, words[9].toFloat());
            QCOMPARE((*found)->GetTemperature(), 0.0F);
            QCOMPARE((*found)->GetType(), words[2].left(1).toStdString());
        }
    }

    void rowsOfEveryUsualFormAreRead_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("residue"); ///< its qualified name
        QTest::addColumn<QStringList>("expected");
        const auto form = [](const char* name, const QByteArray& text, const char* residue,
                             const QStringList& expected) {
            QTest::newRow(name) << text << QString::fromLatin1(residue) << expected;
        };
        form("single blanks", "ATOM 1 C PRO 1 -3.00 0.00 0.00 1.00 2.00\n", "/test/_/Groups/PRO 1",
             {"C 1 2"});
        form("integers", "ATOM 1 C PRO 1 -3 0 0 1 2\n", "/test/_/Groups/PRO 1", {"C 1 2"});
        form("tabulators", "ATOM\t1\tC\tPRO\tB\t1\t-3.0\t0.0\t0.0\t1\t2\n", "/test/B/Groups/PRO 1",
             {"C 1 2"});
        form("a chain", "ATOM 1 C PRO B 12 -3.00 0.00 0.00 -0.5 2.00\n", "/test/B/Groups/PRO 12",
             {"C -0.5 2"});
        form("a chain with its number", "ATOM 1 C PRO B1234 -3.00 0.00 0.00 -0.5 2.00\n",
             "/test/B/Groups/PRO 1234", {"C -0.5 2"});
        form("an insertion code", "HETATM 1 C PRO B -12A -3.00 0.00 0.00 -0.5 2.00\n",
             "/test/B/Groups/PRO -12A", {"C -0.5 2"});
        form("a long serial number", "HETATM123456 C PRO B 1 -3.00 0.00 0.00 -0.5 2.00\n",
             "/test/B/Groups/PRO 1", {"C -0.5 2"});
        form("a name of four letters", "ATOM 1 C GLNN 1 -3.00 0.00 0.00 -0.5 2.00\n",
             "/test/_/Groups/GLNN 1", {"C -0.5 2"});
        form("four decimals in PDB's columns",
             columns(" N  ", 1, 2, 3, "  0.1592 1.8240") +
                 columns(" C  ", -1, 2, 3, " -0.1592 1.8240"),
             "/test/_/Groups/ALA 1", {"N 0.1592 1.824", "C -0.1592 1.824"});
        form("three decimals in PDB's columns",
             columns(" N  ", 1, 2, 3, " -0.300 1.800") + columns(" CA ", 1, 2, 3, " 0.350 0.800") +
                 columns(" C  ", 1, 2, 3, " 0.250 0.800"),
             "/test/_/Groups/ALA 1", {"N -0.3 1.8", "CA 0.35 0.8", "C 0.25 0.8"});
        form("coordinates that fill their columns",
             columns(" N  ", -100, -200, -300, " -0.1592 1.8240", "ALA", "A", "1000") +
                 columns(" C  ", -100, -200, -300, "  0.1592 1.8240", "ALA", "A", "1000"),
             "/test/A/Groups/ALA 1000", {"N -0.1592 1.824", "C 0.1592 1.824"});
        form("a name of four letters in PDB's columns",
             columns(" O  ", -100, -200, -300, " -0.8340 1.7680", "TIP", "3W", "1000"),
             "/test/W/Groups/TIP3 1000", {"O -0.834 1.768"});
        form("a number of six digits in PDB's columns",
             columns(" O  ", -100, -200, -300, " -0.8340 1.7680").replace(22, 6, "123456"),
             "/test/_/Groups/ALA 123456", {"O -0.834 1.768"});
    }
    void rowsOfEveryUsualFormAreRead() {
        QFETCH(QByteArray, text);
        QFETCH(QString, residue);
        QFETCH(QStringList, expected);
        openText(text);
        QVERIFY2(item(residue), qPrintable(childNames(item("/test")).join(' ')));
        QCOMPARE(charges(item(residue)), expected);
        const TAVIK::Vertex position = atoms(item(residue)).front()->GetPosition();
        const QByteArrayList words = text.simplified().split(' ');
        QVERIFY(position.isValid());
        if (words.size() < 12 && words.contains("-3.00"))
            QCOMPARE(position[0], -3.0F);
        if (text.contains("-200.000"))
            QCOMPARE(position[1], -200.0F);
    }

    void aPdbFileStaysOneWhateverItsEndingIs_data() {
        QTest::addColumn<QString>("file");
        for (const char* name : {"1ubq.pdb", "1tii.pdb", "1ejg.pdb"})
            QTest::newRow(name) << structure(QString::fromLatin1(name));
        QTest::newRow("sample") << QStringLiteral(SOURCE_DIR "/data/sample.pdb");
    }
    void aPdbFileStaysOneWhateverItsEndingIs() {
        QFETCH(QString, file);
        QFile source(file);
        QVERIFY(source.open(QIODevice::ReadOnly));
        const auto found = openText(source.readAll());
        auto expected = gemmiAtoms(file.toStdString());
        for (std::vector<std::string>& model : expected) {
            for (std::string& atom : model)
                if (atom.starts_with('|'))
                    atom = std::string("_").append(atom);
            std::sort(model.begin(), model.end());
        }
        QVERIFY(sortedAtoms(found.items) == expected);
        for (const TAVIK::Atom* atom : atoms(found.items.front()))
            QVERIFY(!TAVIK::GetPartialCharge(atom).isKnown);
    }

    void occupanciesThatLookLikeChargesStayInPdb() {
        QByteArray text;
        for (int i = 0; i < 20; ++i)
            text += columns(" CA ", float(3 * i), 2, 3, i % 2 ? "  0.35  1.80" : " -0.35  2.00",
                            "ALA", "A", QByteArray::number(i));
        openText(text, {}, "test.pdb");
        for (const TAVIK::Atom* atom : atoms(item("/test"))) {
            QVERIFY(!TAVIK::GetPartialCharge(atom).isKnown);
            QVERIFY(atom->GetTemperature() >= 1.8F);
        }
    }

    // In a PDB file that keeps to no columns, too.
    void occupanciesAreNoCharges() {
        const auto rows = [](const QByteArray& charge) {
            QByteArray text;
            for (int i = 0; i < 5; ++i)
                text += "ATOM  1  CA  ALA A 1   " + QByteArray::number(3 * i + 0.5) +
                        " 1.2345 2.3456 " + charge + " 2.00\n";
            return text;
        };
        const QString refused = refusal(m_folder.write("test.pdb", rows("1.00")));
        QVERIFY2(refused.contains("accepted are PDB files"), qPrintable(refused));
        for (const QString& name : {QString("test.pqr"), QString("ions.pdb")})
            QVERIFY(TAVIK::GetPartialCharge(
                        atoms(openText(rows(name == "test.pqr" ? "1.00" : "0.51"), {}, name)
                                  .items.front())
                            .front())
                        .isKnown);
    }

    void rowsThatCouldBeBothGoByTheEnding() {
        const auto rows = [](int count, const QByteArray& first) {
            QByteArray text = columns(" CA ", 0, 2, 3, first + "  2.00", "ALA", "A", "0");
            for (int i = 1; i < count; ++i)
                text += columns(" CA ", float(3 * i), 2, 3, "  1.00  1.80", "ALA", "A",
                                QByteArray::number(i));
            return text;
        };
        const auto isPqr = [this](const QByteArray& text, const QString& name) {
            return TAVIK::GetPartialCharge(atoms(openText(text, {}, name).items.front()).front())
                .isKnown;
        };
        QVERIFY(isPqr(rows(1, "  1.00"), "ion.pqr"));
        QVERIFY(!isPqr(rows(1, "  1.00"), "ion.pdb"));
        QVERIFY(isPqr(rows(100, " -1.00"), "molecule.pqr"));
        QVERIFY(!isPqr(rows(100, " -1.00"), "molecule.pdb"));
        // Occupancies are never negative, and all charges of a molecule are never positive.
        QVERIFY(!isPqr(rows(100, "  1.00"), "structure.pqr"));
    }

    void chargesStayWithTheirAtomsWhenTheyAreSorted() {
        QByteArray text;
        for (int i = 0; i < 12; ++i)
            text += QString("ATOM 1 C%1 LIG %2 %3 %4.0 0.0 0.0 -0.%5 1.%5\n")
                        .arg(i)
                        .arg(i % 3 == 0 ? "B" : "A")
                        .arg(i % 2)
                        .arg(5 * i)
                        .arg(i + 10)
                        .toLatin1();
        openText(text);
        const std::vector<TAVIK::Atom*> all = atoms(item("/test"));
        QCOMPARE(all.size(), 12U);
        for (const TAVIK::Atom* atom : all) {
            const QString number = QString::fromStdString(atom->GetName()).mid(1);
            const auto partial = TAVIK::GetPartialCharge(atom);
            QCOMPARE(atom->GetPosition()[0], 5 * number.toFloat());
            QCOMPARE(partial.charge, QString("-0.%1").arg(number.toInt() + 10).toFloat());
            QCOMPARE(partial.radius, QString("1.%1").arg(number.toInt() + 10).toFloat());
        }
    }

    void elementsComeFromTheNames_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("element");
        const auto words = [](const char* text, const char* element) {
            QTest::newRow(text) << "ATOM 1 " + QByteArray(text) + " 1 0.0 1.0 2.0 0.5 1.0\n"
                                << QString::fromLatin1(element);
        };
        words("CA ALA", "C");
        words("CA CA", "Ca");
        words("ZN ZN", "Zn");
        words("CA NTE", "C");
        words("HE1 NTE", "H");
        words("NE HSX", "N");
        words("FE HEX", "Fe");
        words("HO LIG", "H");
        words("SOD SOD", "Na");
        words("CL- CL-", "Cl");
        words("CL1 LIG", "Cl");
        words("1HB ALA", "H");
        words("HD21 ASN", "H");
        words("?? LIG", "X");
        QTest::newRow("a place in PDB's columns")
            << columns(" CO ", 1, 2, 3, "  0.1592 1.8240", "LIG") << "C";
        QTest::newRow("an ion in any of PDB's columns")
            << columns(" CA ", 1, 2, 3, "  0.1592 1.8240", "CA") << "Ca";
    }
    void elementsComeFromTheNames() {
        QFETCH(QByteArray, text);
        QFETCH(QString, element);
        openText(text);
        QCOMPARE(QString::fromStdString(atoms(item("/test")).front()->GetType()), element);
    }

    void aRowInAnotherFormHasNoPosition_data() {
        QTest::addColumn<QByteArray>("bad");
        QTest::newRow("too few words") << QByteArray("ATOM 2 C PRO 1 0.0 0.0 0.0 1.0");
        QTest::newRow("too many words") << QByteArray("ATOM 2 C PRO A 1 0.0 0.0 0.0 1.0 2.0 C");
        QTest::newRow("no residue number") << QByteArray("ATOM 2 C PRO x 0.0 0.0 0.0 1.0 2.0");
        // The chain is no residue number, and that is no coordinate.
        QTest::newRow("cut behind the charge") << QByteArray("ATOM 2 C PRO 1 52 0.1 0.2 0.3 1.0");
        QTest::newRow("prose") << QByteArray("ATOM is a word");
    }
    void aRowInAnotherFormHasNoPosition() {
        QFETCH(QByteArray, bad);
        openText(alanine() + bad + '\n' + alanine(),
                 {path() + ":8: \"" + bad.left(40) + (bad.size() > 40 ? " ..." : "") +
                  "\" is no row of a PQR file: the atom \"" + bad.mid(12, 4).trimmed() +
                  "\" has no position; accepted are rows of 10 words, or 11 with a chain"});
        int invalid = 0;
        for (TAVIK::Compound* entry : {item("/test.1"), item("/test.2")})
            for (const TAVIK::Atom* atom : atoms(entry))
                invalid += atom->GetPosition().isValid() ? 0 : 1;
        QCOMPARE(invalid, 1);
        const QByteArray many = alanine().repeated(5) + (bad + '\n').repeated(11);
        QCOMPARE(refused(many),
                 ":36: \"" + bad.left(40) + (bad.size() > 40 ? " ..." : "") +
                     "\" is no row of a PQR file, and 10 further lines are in a wrong form, too" +
                     accepted);
    }

    void numbersThatAreNoneAreTold() {
        openText(alanine() + "ATOM 1 C PRO 1 0.0 nan 0.0 1.0 2.0\n" +
                     "ATOM 2 C PRO 2 0.0 1.0 0.0 ***** 2.0\n",
                 {path() + ":8: the coordinates \"0.0 nan 0.0\" of the atom \"C\" are no numbers: "
                           "it has no position; accepted are numbers as x, y and z",
                  path() + ":9: the charge \"*****\" and the radius \"2.0\" of the atom \"C\" are "
                           "no numbers: it has neither; accepted are numbers"});
        QCOMPARE(charges(item("/test.2")), QStringList({"C 1 2", "C"}));
    }

    void modelsAndEndsOfMoleculesAreThoseOfPdb() {
        const QByteArray water = "HETATM 1 O HOH 1 0.0 1.0 2.0 -0.8 1.6\n";
        openText("MODEL 3\n" + water + "TER\n" + water + "ENDMDL\nMODEL 4\n" + water + "ENDMDL\n");
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"test.3", "test.4"}));
        QCOMPARE(childNames(item("/test.3/_/Groups")), QStringList({"HOH 1", "HOH 1"}));
    }

    void bondsAreListedBySerialNumbersAsInPdb() {
        openText("ATOM 7 C1 LIG 1 0.0 0.0 0.0 0.5 1.5\nATOM 9 C2 LIG 1 4.0 0.0 0.0 -0.5 1.5\n"
                 "CONECT    7    9\n");
        QCOMPARE(bondNames(item("/test")), QStringList("LIG 1 C1-C2"));
    }

    void aLastRowWithoutLineEndMayBeCut() {
        const QByteArray text = alanine().left(alanine().indexOf("TER"));
        openText(text.trimmed(), {path() + ":5: the last row has no line end: the file may have "
                                           "been cut"});
        QCOMPARE(refused(text.trimmed().chopped(12)),
                 ":5: the file is cut: this last line ends in column " +
                     QString::number(text.trimmed().chopped(12).size() -
                                     text.trimmed().lastIndexOf('\n') - 1) +
                     accepted);
    }

    void whatIsNeitherPdbNorPqrIsRefused() {
        QByteArray text;
        for (int i = 0; i < 100; ++i)
            text += QString("ATOM %1 C PRO %1 %1.00 0.00 1.00\n").arg(i).toLatin1();
        QVERIFY(refused(text).startsWith(":1: the columns up to 12 hold \"0 C PRO\", which is no "
                                         "serial number, and 10 further lines are in a wrong"));
        // Half of the rows are of one format, and half of the other.
        text = alanine().left(alanine().indexOf("TER")).repeated(20);
        PdbAtom atom;
        atom.element = "C";
        text += line(atom).repeated(90);
        QVERIFY(refused(text).contains("and 10 further lines are in a wrong form, too"));
    }
};

REGISTER_TEST(PqrFileTest)
#include "PqrFileTest.moc"
