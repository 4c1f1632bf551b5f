// Lines that do not keep to the columns of PDB records: nothing in them becomes a false number.
#include "DataMaker.h"
#include "DataPointBase.h"
#include "FileTestCase.h"
#include "Space.h"

#include <QFile>

using namespace file_testing;

namespace {

const QString accepted =
    QStringLiteral("; accepted are PDB files of whole ATOM and HETATM records, with coordinates in "
                   "columns 31 to 54");

const QString acceptedRow =
    QStringLiteral("; accepted are whole records with coordinates in columns 31 to 54");

// The line of an atom with a text put over its columns from this one on.
QByteArray lineWith(int column, const QByteArray& text) {
    return atomAt(" CA ", -12.345F, 6.789F, 123.456F).replace(column - 1, text.size(), text);
}

QByteArray goodLines(int count) {
    QByteArray text;
    for (int i = 0; i < count; ++i) {
        PdbAtom atom;
        atom.name = " N  ";
        atom.element = "N";
        atom.x = static_cast<float>(3 * i);
        atom.y = 100.0F;
        text += line(atom);
    }
    return text;
}

} // namespace

class PdbColumnsTest : public FileTestCase {
    Q_OBJECT

    QString refused(const QByteArray& text) {
        const std::string file = m_folder.write("test.pdb", text);
        return refusal(file).mid(static_cast<qsizetype>(file.size()));
    }

private slots:
    void aLineThatIsNotWhatItSeemsIsRemarkedAndHasNoPosition_data() {
        QTest::addColumn<QByteArray>("bad");
        QTest::addColumn<QString>("what");
        const auto row = [](const char* name, const QByteArray& bad, const char* what) {
            QTest::newRow(name) << bad << QString::fromLatin1(what);
        };
        row("a letter before the coordinates", lineWith(29, "x"),
            "columns 28 to 30 hold \" x \", and are blank in PDB records");
        row("a digit before the coordinates", lineWith(30, "1"),
            "columns 28 to 30 hold \"  1\", and are blank in PDB records");
        row("a number before the coordinates", lineWith(28, "1.5"),
            "columns 28 to 30 hold \"1.5\", and are blank in PDB records");
        row("a letter behind the serial number", lineWith(12, "x"),
            "the columns up to 12 hold \"1x\", which is no serial number");
        row("words in place of the serial number", lineWith(6, "12 N AL"),
            "the columns up to 12 hold \"12 N AL\", which is no serial number");
        row("a gap in the residue number", lineWith(23, "1  2"),
            "columns 23 to 26 hold \"1  2\", which is no residue number");
        row("a tabulator", lineWith(28, "\t"), "the record has a tabulator in its columns");
        row("a tabulator behind the record's name", lineWith(5, "\t"),
            "the record has a tabulator in its columns");
        row("nothing behind the residue", lineWith(28, "\n").left(28),
            "the record ends in column 26, before its coordinates");
        row("no column 21 and a wide number",
            lineWith(23, "1234").replace(30, 8, "  12.345").remove(20, 1),
            "the residue number and the coordinates stand to the left of their columns");
        for (const int missing : {7, 12, 17})
            row(("no column " + std::to_string(missing)).c_str(),
                lineWith(7, " 1000").replace(30, 8, "  12.345").remove(missing - 1, 1),
                "the residue number and the coordinates stand to the left of their columns");
        row("two columns fewer", lineWith(31, "  12.345   6.789  23.456").remove(15, 2),
            "the residue number and the coordinates stand to the left of their columns");
        row("no chain, two columns fewer and a number of three digits",
            lineWith(31, "  12.345   6.789  23.456").replace(21, 5, "  123").remove(20, 2),
            "the residue number and the coordinates stand to the left of their columns");
        row("no line end", lineWith(1, "ATOM").trimmed() + lineWith(1, "HETATM"),
            "another record follows in the same line");
    }
    void aLineThatIsNotWhatItSeemsIsRemarkedAndHasNoPosition() {
        QFETCH(QByteArray, bad);
        QFETCH(QString, what);
        const auto file = opened(m_folder.write("test.pdb", goodLines(1) + bad + goodLines(1)),
                                 {path() + ":2: " + what + ": the atom \"" +
                                  bad.mid(12, 4).trimmed() + "\" has no position" + acceptedRow});
        const std::vector<TAVIK::Atom*> all = atoms(item("/test"));
        QCOMPARE(all.size(), 3U);
        int positions = 0;
        for (const TAVIK::Atom* atom : all)
            positions += atom->GetPosition().isValid() ? 1 : 0;
        QCOMPARE(positions, 2);
    }

    void aHandfulOfSuchLinesIsRemarkedAndMoreAreRefused() {
        const QByteArray bad = lineWith(29, "x");
        QStringList remarks;
        for (int i = 0; i < 10; ++i)
            remarks << QString(
                           "%1:%2: columns 28 to 30 hold \" x \", and are blank in PDB records: "
                           "the atom \"CA\" has no position%3")
                           .arg(path())
                           .arg(i + 101)
                           .arg(acceptedRow);
        openText(goodLines(100) + bad.repeated(10) + goodLines(100), remarks);
        QCOMPARE(
            refused(goodLines(100) + bad.repeated(11) + goodLines(100)),
            ":101: columns 28 to 30 hold \" x \", and are blank in PDB records, and 10 further "
            "lines are in a wrong form, too" +
                accepted);
    }

    void numbersThatOutgrowTheirColumnsAreRead_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("residue");
        const auto row = [](const char* name, const QByteArray& text, const char* residue) {
            QTest::newRow(name) << text << QString::fromLatin1(residue);
        };
        row("a serial number to the left", lineWith(6, "123456"), "ALA 1");
        row("a serial number behind the record", lineWith(5, "1234567"), "ALA 1");
        row("a serial number to the right", lineWith(7, "123456"), "ALA 1");
        row("a serial number of letters", lineWith(7, "A000f"), "ALA 1");
        row("a serial number of stars", lineWith(7, "*****"), "ALA 1");
        row("a serial number on the left", lineWith(7, "1    "), "ALA 1");
        row("no serial number", lineWith(7, "     "), "ALA 1");
        row("a residue number of five digits", lineWith(23, "12345"), "ALA 12345");
        row("a residue number of six digits", lineWith(23, "123456"), "ALA 123456");
        row("a residue number of seven digits", lineWith(23, "1234567"), "ALA 1234567");
        row("an insertion code", lineWith(23, "  52B"), "ALA 52B");
        row("a residue number on the left", lineWith(23, "7   "), "ALA 7");
    }
    void numbersThatOutgrowTheirColumnsAreRead() {
        QFETCH(QByteArray, text);
        QFETCH(QString, residue);
        openText(text);
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList(residue));
        QCOMPARE(atoms(item("/test")).front()->GetPosition()[0], -12.345F);
    }

    void aLineCutInsideItsCoordinatesHasNoPosition() {
        const QByteArray whole = lineWith(1, "ATOM");
        for (int cut = 31; cut < 54; ++cut) {
            const int end = static_cast<int>(whole.left(cut).trimmed().size());
            for (const bool isPadded : {false, true}) {
                const QByteArray line =
                    isPadded ? whole.left(cut).leftJustified(53) : whole.left(cut);
                const QString what =
                    end < 31 ? QString("the record ends in column %1, before its").arg(end)
                             : QString("the record ends in column %1, inside of its").arg(end);
                openText(goodLines(1) + line + '\n' + goodLines(1),
                         {path() + ":2: " + what + " coordinates: the atom \"CA\" has no position" +
                          acceptedRow},
                         "test.pdb");
                const TAVIK::Compound* const entry = *(TAVIK::Space::instance()->ChildEnd() - 1);
                QVERIFY(!atoms(const_cast<TAVIK::Compound*>(entry))[1]->GetPosition().isValid());
            }
        }
    }

    void aLineThatEndsWithItsCoordinatesIsWhole() {
        // Some programs write all coordinates one column to the left.
        openText(lineWith(1, "ATOM").left(54) + '\n' + lineWith(1, "ATOM").left(54).remove(28, 1) +
                 '\n');
        for (const TAVIK::Atom* atom : atoms(item("/test"))) {
            QCOMPARE(atom->GetPosition()[0], -12.345F);
            QCOMPARE(atom->GetPosition()[2], 123.456F);
        }
    }

    // Others leave three columns for the residue number.
    void aLineThatMissesAColumnBehindTheChainIsRead() {
        openText(lineWith(23, "  52").replace(30, 8, "  12.345").remove(22, 1));
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList("ALA 52"));
        QCOMPARE(atoms(item("/test")).front()->GetPosition()[0], 12.345F);
    }

    void numbersThatFillTheirColumnsAreRead_data() {
        QTest::addColumn<QByteArray>("position");
        for (const char* position :
             {"-123.456-234.567-345.678", "1234.5672345.6783456.789", "1234.56712345.67-345.678",
              "-234.5671234.56  345.678", "  12.345-234.5671234.567"})
            QTest::newRow(position) << QByteArray(position);
    }
    void numbersThatFillTheirColumnsAreRead() {
        QFETCH(QByteArray, position);
        const bool isAlike = !position.contains(".67-") && !position.contains(".56 ");
        const QByteArray text = lineWith(31, position + "100.00");
        openText(goodLines(1) + text,
                 isAlike ? QStringList()
                         : QStringList(path() + ":2: the coordinates \"" + position +
                                       "100.00\" run from one number's columns into the next "
                                       "one's: the atom \"CA\" has no position" +
                                       acceptedRow));
        TAVIK::Vertex found;
        for (const TAVIK::Atom* atom : atoms(item("/test")))
            if (atom->GetName() == "CA")
                found = atom->GetPosition();
        QCOMPARE(found.isValid(), isAlike);
        for (const std::size_t axis : {0, 1, 2})
            if (isAlike)
                QCOMPARE(found[axis], position.mid(static_cast<int>(8 * axis), 8).toFloat());
    }

    // However a row is moved: its numbers are read as they stand, or not at all.
    void coordinatesThatAreMovedAreNeverFalse() {
        const std::array<QByteArray, 3> numbers = {"-234.567", "12.345", "1234.567"};
        for (const QByteArray& x : numbers) {
            for (const QByteArray& y : numbers) {
                for (const QByteArray& z : numbers) {
                    for (int moved = -12; moved <= 12; ++moved) {
                        QByteArray text = lineWith(1, "ATOM").left(26).leftJustified(30 + moved);
                        text = text.left(30 + moved) + x.rightJustified(8) + y.rightJustified(8) +
                               z.rightJustified(8) + "  1.00 20.00\n";
                        const std::string file = m_folder.write("moved.pdb", goodLines(12) + text);
                        std::vector<TAVIK::Compound*> items;
                        try {
                            items = memory_host::openFile(file).items;
                        } catch (const memory_host::FileError&) {
                            continue;
                        }
                        for (const TAVIK::Atom* atom : atoms(items.front())) {
                            const TAVIK::Vertex position = atom->GetPosition();
                            if (!position.isValid() || position[1] == 100.0F)
                                continue;
                            QCOMPARE(position[0], x.toFloat());
                            QCOMPARE(position[1], y.toFloat());
                            QCOMPARE(position[2], z.toFloat());
                        }
                        const DataPointBase guard(nullptr, Publisher::Delete);
                        TAVIK::DataMaker::Destroy(items.front());
                    }
                }
            }
        }
    }

    void residueNamesOfFourLettersStayWhole_data() {
        QTest::addColumn<QByteArrayList>("columns"); ///< 18 to 22 of each line
        QTest::addColumn<QStringList>("chains");
        QTest::addColumn<QStringList>("residues"); ///< of all chains
        QTest::newRow("without a chain")
            << QByteArrayList{"TIP3 ", "POPC ", "GLNN "} << QStringList{"_"}
            << QStringList{"TIP3 1", "POPC 1", "GLNN 1"};
        QTest::newRow("with a chain")
            << QByteArrayList{"ALA A", "TIP3W", "POPEM"} << QStringList{"A", "W", "M"}
            << QStringList{"ALA 1", "TIP3 1", "POPE 1"};
        QTest::newRow("beside chains of two letters")
            << QByteArrayList{"ALAAB", "LIGAB", "HOHAC", "ZZZAC"} << QStringList{"AB", "AC"}
            << QStringList{"ALA 1", "LIG 1", "HOH 1", "ZZZ 1"};
        QTest::newRow("one column to the right")
            << QByteArrayList{" ALK "} << QStringList{"_"} << QStringList{"ALK 1"};
        QTest::newRow("short names and a chain of two letters")
            << QByteArrayList{" DAAB", "  UAB"} << QStringList{"AB"} << QStringList{"DA 1", "U 1"};
        QTest::newRow("a short name and a chain on the left")
            << QByteArrayList{"CA B "} << QStringList{"B"} << QStringList{"CA 1"};
    }
    void residueNamesOfFourLettersStayWhole() {
        QFETCH(QByteArrayList, columns);
        QFETCH(QStringList, chains);
        QFETCH(QStringList, residues);
        QByteArray text;
        for (const QByteArray& five : columns)
            text += lineWith(18, five);
        openText(text);
        QCOMPARE(childNames(item("/test")), chains);
        QStringList found;
        for (const QString& chain : chains)
            found += childNames(item("/test/" + chain + "/Groups"));
        QCOMPARE(found, residues);
    }

    void aRecordInSmallLettersAmongOthersIsRemarked() {
        openText(goodLines(1) + goodLines(1).toLower() + "atom is a word\n" + goodLines(1),
                 {path() +
                  ":2: \"atom\" is no record, as their names are in capital letters: this "
                  "line was not read" +
                  acceptedRow});
        QCOMPARE(atoms(item("/test")).size(), 2U);
    }
};

REGISTER_TEST(PdbColumnsTest)
#include "PdbColumnsTest.moc"
