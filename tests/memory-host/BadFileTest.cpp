// Files that cannot be opened: each gets one line that says why.
#include "FileTesting.h"
#include "Space.h"
#include "TestSupport.h"

#include <QFile>
#include <QProcess>
#include <QtEndian>

#include <clocale>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace file_testing;

namespace {

const QString anyFile = QStringLiteral(
    "; accepted are PDB (.pdb, .ent), PQR (.pqr) and mmCIF files (.cif, .mmcif), and CCP4/MRC "
    "(.map, .mrc, .ccp4) and OpenDX maps (.dx), each also gzipped (.gz)");
const QString wholeRecords =
    QStringLiteral("; accepted are PDB files of whole ATOM and HETATM records, with coordinates in "
                   "columns 31 to 54");
const QString atomSite = QStringLiteral("; accepted are mmCIF files with an _atom_site category");

QByteArray atoms(int count) {
    QByteArray text;
    for (int i = 0; i < count; ++i) {
        PdbAtom atom;
        atom.x = static_cast<float>(3 * i);
        atom.element = "C";
        text += line(atom);
    }
    return text;
}

// A map of 2 x 2 x 2 points, with words of its header set: by number, to a value.
QByteArray map(std::initializer_list<std::pair<int, qint32>> words = {}, int valueBytes = 32) {
    QByteArray text(1024 + valueBytes, '\0');
    const auto set = [&text](int number, qint32 value) {
        qToLittleEndian(value, text.data() + 4 * (number - 1));
    };
    const auto real = [](float value) {
        qint32 word = 0;
        std::memcpy(&word, &value, 4);
        return word;
    };
    for (const int number : {1, 2, 3, 8, 9, 10})
        set(number, 2);
    set(4, 2);
    for (const int axis : {1, 2, 3}) {
        set(10 + axis, real(10.0F));
        set(13 + axis, real(90.0F));
        set(16 + axis, axis);
    }
    text.replace(208, 4, "MAP ").replace(212, 2, "DA");
    for (const auto& [number, value] : words)
        set(number, value);
    return text;
}

qint32 bitsOf(float value) {
    qint32 word = 0;
    std::memcpy(&word, &value, 4);
    return word;
}

} // namespace

class BadFileTest : public test_support::TestCase {
    Q_OBJECT

private:
    Folder m_folder;

    // What is said of a file behind its path.
    QString refused(const QByteArray& content, const QString& name = QStringLiteral("bad.pdb")) {
        const std::string path = m_folder.write(name, content);
        const QString text = refusal(path);
        if (!text.startsWith(QString::fromStdString(path) + u':'))
            QTest::qFail("the path is not in front", __FILE__, __LINE__);
        return text.mid(static_cast<qsizetype>(path.size()));
    }

private slots:
    void aFileThatIsNotThere() {
        const QString path = m_folder.path() + "/none.pdb";
        QCOMPARE(refusal(path.toStdString()),
                 path + ": cannot be read: No such file or directory" + anyFile);
        QCOMPARE(refusal(""), ": the name of the file is empty" + anyFile);
    }

    void aFolder() {
        QCOMPARE(refusal(m_folder.path().toStdString()),
                 m_folder.path() + ": is a folder" + anyFile);
    }

    void aFileThatNobodyMayRead() {
        const std::string path = m_folder.write("secret.pdb", atoms(1));
        QVERIFY(QFile::setPermissions(QString::fromStdString(path), {}));
        // Root may read everything, and so it becomes nobody meanwhile.
        const bool isRoot = ::geteuid() == 0;
        QCOMPARE(isRoot ? ::seteuid(65534) : 0, 0);
        const QString text = refusal(path);
        QCOMPARE(isRoot ? ::seteuid(0) : 0, 0);
        QCOMPARE(text,
                 QString::fromStdString(path) + ": cannot be read: Permission denied" + anyFile);
    }

    void foreignFilesAreNamed_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("what");
        const auto row = [](const char* name, const QByteArray& bytes, const char* what) {
            QTest::newRow(name) << bytes
                                << QString::fromLatin1(what) + ": unpack it first" + anyFile;
        };
        row("Z", "\x1f\x9d\x90 and more", ": is compressed with compress (.Z)");
        row("Z, the older way", "\x1f\xa0 and more", ": is compressed with compress (.Z)");
        row("7z", "7z\xbc\xaf\x27\x1c and more", ": is a 7-Zip archive (.7z)");
        row("zst", "\x28\xb5\x2f\xfd and more", ": is compressed with zstd (.zst)");
        row("bz2", "BZh91AY&SY", ": is compressed with bzip2 (.bz2)");
        row("xz", QByteArray("\xfd\x37zXZ\0\0\4", 8), ": is compressed with xz (.xz)");
        row("zip", QByteArray("PK\3\4\n\0\0", 7), ": is a ZIP archive (.zip)");
        row("tar", "1ubq.pdb" + QByteArray(249, '\0') + "ustar" + QByteArray(300, '\0'),
            ": is a tar archive");
        const QString text = QStringLiteral("; accepted is text in ASCII, Latin-1 or UTF-8");
        QTest::newRow("UTF-16, little end first") << QByteArray("\xff\xfe"
                                                                "A\0T\0O\0M\0 \0",
                                                                12)
                                                  << ": is text in UTF-16" + text;
        QTest::newRow("UTF-16, big end first")
            << QByteArray("\xfe\xff\0A\0T\0O\0M", 10) << ": is text in UTF-16" + text;
        QTest::newRow("UTF-32, little end first")
            << QByteArray("\xff\xfe\0\0A\0\0\0T\0\0\0", 12) << ": is text in UTF-32" + text;
        QTest::newRow("UTF-32, big end first")
            << QByteArray("\0\0\xfe\xff\0\0\0A\0\0\0T", 12) << ": is text in UTF-32" + text;
        QTest::newRow("UTF-16 without a mark")
            << QByteArray("A\0T\0O\0M\0 \0", 10) << ": is text in UTF-16" + text;
    }
    void foreignFilesAreNamed() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, what);
        QCOMPARE(refused(bytes), what);
        QCOMPARE(refused(bytes + QByteArray(2'000'000, '\1'), "large.cif"), what);
        QCOMPARE(refused(gzipped(bytes), "twice.gz"), what);
    }

    void aFileThatIsGzippedTwiceIsNamed() {
        QCOMPARE(refused(gzipped(gzipped(atomAt(" CA ", 0))), "twice.gz"),
                 ": is compressed with gzip twice: unpack it first" + anyFile);
    }

    void aSocketIsNoFile() {
        const std::string path = m_folder.path().toStdString() + "/socket";
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        QVERIFY(path.size() < sizeof address.sun_path);
        std::strcpy(address.sun_path, path.c_str());
        const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
        QCOMPARE(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        QVERIFY(refusal(path).contains(": cannot be read: "));
        ::close(socket);
    }

    void numbersHaveAPointInEveryLocale() {
        // The environment may have no such locale, and then one is made.
        QTemporaryDir folder;
        QProcess localedef;
        localedef.start("localedef",
                        {"-i", "de_DE", "-f", "UTF-8", folder.filePath("de_DE.UTF-8")});
        QVERIFY(localedef.waitForFinished(-1));
        QVERIFY2(QFile::exists(folder.filePath("de_DE.UTF-8/LC_NUMERIC")),
                 "the package locales is not there");
        qputenv("LOCPATH", folder.path().toLocal8Bit());
        QVERIFY(std::setlocale(LC_NUMERIC, "de_DE.UTF-8"));
        QCOMPARE(std::localeconv()->decimal_point, ",");
        const QString text = refused(map({{11, bitsOf(-5.25F)}}), "bad.map");
        std::setlocale(LC_NUMERIC, "C");
        qunsetenv("LOCPATH");
        QVERIFY2(text.startsWith(": the map's cell has a length of -5.25; accepted"),
                 qPrintable(text));
    }

    void anEmptyFile() {
        QCOMPARE(refused(""), ": is empty" + anyFile);
        QCOMPARE(refused(gzipped(""), "empty.pdb.gz"), ": is empty when it is unpacked" + anyFile);
    }

    void aFileBeyondFourGigabytes() {
        const std::string path = m_folder.write("large.pdb", "x");
        QVERIFY(QFile::resize(QString::fromStdString(path), (qint64(4) << 30) + 1));
        QCOMPARE(refusal(path), QString::fromStdString(path) +
                                    ": is too large: 4294967297 bytes; accepted are files of up to "
                                    "4 GiB, also when they are unpacked");
    }

    void aPathWithLineBreaksIsStillOneLine() {
        QVERIFY(refusal("/no\nsuch\r\nfile").startsWith("/no such  file: cannot be read"));
    }

    void textThatIsNoStructure_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("prose") << QByteArray("Atoms are small.\nThe end.\n");
        QTest::newRow("a page") << QByteArray("<!DOCTYPE html>\n<html><body>404</body></html>\n");
        QTest::newRow("a header") << QByteArray("HEADER    PROTEIN\nREMARK   1\nEND\n");
        QTest::newRow("line breaks") << QByteArray("\n\n\n");
        QTest::newRow("Latin-1") << QByteArray("\xe4\xf6\xfc");
    }
    void textThatIsNoStructure() {
        QFETCH(QByteArray, text);
        QCOMPARE(refused(text), ": is no structure: it has no ATOM or HETATM record" + anyFile);
    }

    void binaryData() {
        QByteArray bytes("\x7f"
                         "ELF",
                         4);
        for (int i = 0; i < 10000; ++i)
            bytes += static_cast<char>(i * 7919 >> 3);
        QCOMPARE(refused(bytes), ": holds binary data of an unknown kind" + anyFile);
        QCOMPARE(refused(bytes, "bad.cif"), ": holds binary data of an unknown kind" + anyFile);
        QCOMPARE(refused(bytes, "bad.map"),
                 ": is no CCP4/MRC map: it has no \"MAP \" from byte 209 on" + anyFile);
    }

    void aByteZeroInText() {
        QByteArray text = atoms(100);
        text[text.size() - 100] = '\0';
        QCOMPARE(refused(text), ":99: has a byte 0 in its text: it is damaged" + anyFile);
    }

    void aPdbFileCutInTheMiddleOfALine_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("column");
        const QByteArray whole = atoms(3);
        const auto row = [](const char* name, const QByteArray& text) {
            QTest::newRow(name) << text
                                << static_cast<int>(text.size() - text.lastIndexOf('\n') - 1);
        };
        row("in the coordinates", whole.chopped(40));
        row("behind the coordinates", whole.chopped(3));
        row("in the record's name", whole + "ATO");
        row("in another record's name", whole + "HETAT");
        row("in the number", whole + "ATOM      ");
        row("before a model", whole + "ENDMDL\nMODEL");
        row("in an ENDMDL", whole + "ENDMD");
        row("in an ANISOU",
            whole + "ANISOU    1  CA  ALA A   1     1000   1000   1000    100    100    100\n" +
                whole + "ANISOU    1  CA  ALA A   1     1000   1000");
    }
    void aPdbFileCutInTheMiddleOfALine() {
        QFETCH(QByteArray, text);
        QFETCH(int, column);
        QCOMPARE(refused(text), u':' + QString::number(text.count('\n') + 1) +
                                    ": the file is cut: this last line ends in column " +
                                    QString::number(column) + wholeRecords);
    }

    void aRealPdbFileCutAnywhereInALineOfAnAtom() {
        QFile file(structure("1ubq.pdb"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray text = file.readAll();
        const qsizetype start = text.indexOf("\nATOM    100 ") + 1;
        const qsizetype length = text.indexOf('\n', start) - start + 1;
        for (qsizetype cut = 1; cut < length - 1; ++cut) {
            const QString what = refused(text.left(start + cut));
            QVERIFY2(what.contains("the file is cut"), qPrintable(what));
        }
    }

    void aPdbFileWithoutAnyCoordinates_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("what");
        PdbAtom atom;
        atom.position = "   0.000     nan   0.000";
        QTest::newRow("no numbers") << "REMARK\n" + line(atom)
                                    << ":2: no atom of the file has coordinates that are numbers";
        atom.position = " ";
        QTest::newRow("blanks") << "REMARK\n" + line(atom) + line(atom)
                                << ":2: no atom of the file has a position";
        QTest::newRow("the records' beginnings")
            << line(atom).left(20) + "\n" + line(atom).left(27) + "\n"
            << ":1: the record ends in column 20, before its coordinates, and no atom of the file "
               "has a position";
        QTest::newRow("words behind a record's name")
            << QByteArray("REMARK\nATOM 1 CA ALA A 1 and some more words that are none\n")
            << ":2: the columns up to 12 hold \"1 CA AL\", which is no serial number, and no atom "
               "of the file has a position";
        QTest::newRow("prose") << QByteArray("On atoms.\nATOM is the word for what cannot be cut, "
                                             "as the philosophers of old say.\n")
                               << ":2: the columns up to 12 hold \"is the\", which is no serial "
                                  "number, and no atom of the file has a position";
    }
    void aPdbFileWithoutAnyCoordinates() {
        QFETCH(QByteArray, text);
        QFETCH(QString, what);
        QCOMPARE(refused(text), what + wholeRecords);
    }

    void recordsInSmallLetters() {
        const QByteArray small = "header\n" + atoms(3).toLower();
        QCOMPARE(refused(small),
                 ":2: is no structure: \"atom\" is no record, as their names are in "
                 "capital letters" +
                     anyFile);
        QCOMPARE(refused(QByteArray(small).replace("atom  ", "Hetatm ")),
                 ":2: is no structure: \"Hetatm\" is no record, as their names are in capital "
                 "letters" +
                     anyFile);
    }

    void aTruncatedGzippedFile() {
        const QByteArray whole = gzipped(atoms(1000));
        for (const qsizetype size :
             {qsizetype(2), qsizetype(10), whole.size() / 2, whole.size() - 9, whole.size() - 1})
            QCOMPARE(refused(whole.left(size), "bad.pdb.gz"),
                     ": the gzipped data end too early: the file is cut; accepted are whole .gz "
                     "files");
    }

    void aDamagedGzippedFile() {
        QByteArray damaged = gzipped(atoms(1000));
        damaged[damaged.size() / 2] = static_cast<char>(damaged[damaged.size() / 2] ^ 0x55);
        QVERIFY(refused(damaged, "bad.pdb.gz").startsWith(": the gzipped data are damaged: "));
        QByteArray wrongSum = gzipped(atoms(10));
        wrongSum[wrongSum.size() - 6] = static_cast<char>(wrongSum[wrongSum.size() - 6] ^ 1);
        QCOMPARE(refused(wrongSum, "bad.pdb.gz"),
                 ": the gzipped data are damaged: incorrect data check; accepted are whole .gz "
                 "files");
    }

    void mmcifThatIsNoCif_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("what");
        const QByteArray whole = mmcif({"N N . ALA A 1 ? 1 2 3 1", "CA C . ALA A 1 ? 2 2 3 1"});
        QTest::newRow("no block") << QByteArray("Some words\n")
                                  << ":1: is no valid mmCIF: expected a data block (data_NAME) "
                                     "before \"Some\"";
        QTest::newRow("an open quote") << whole + "_x 'abc\n"
                                       << ":18: is no valid mmCIF: unterminated 'string'";
        QTest::newRow("an open text") << whole + "_x\n;abc\nabc\n"
                                      << ":21: is no valid mmCIF: unterminated text field";
        QTest::newRow("a tag alone") << whole + "_x\n_y 1\n"
                                     << ":19: a tag has no value";
        QTest::newRow("words without a tag")
            << "data_x\nabc def\n" + whole << ":2: is no valid mmCIF: \"abc\" cannot stand here";
        QTest::newRow("a byte beyond ASCII")
            << QByteArray(whole).replace("CA C", "C\xe4 C")
            << QString::fromLatin1(
                   ":16: is no valid mmCIF: the word \"C\xe4\" has bytes outside of ASCII, "
                   "and stands in no quotes");
    }
    void mmcifThatIsNoCif() {
        QFETCH(QByteArray, text);
        QFETCH(QString, what);
        QCOMPARE(refused(text, "bad.cif"), what + atomSite);
    }

    void mmcifWithoutADataBlock() {
        QByteArray text = mmcif({"N N . ALA A 1 ? 1 2 3 1"});
        text = "# no block\n" + text.mid(text.indexOf("loop_"));
        const QString what = ":2: is no valid mmCIF: expected a data block (data_NAME) before "
                             "\"loop_\"";
        QCOMPARE(refused(text, "bad.cif"), what + atomSite);
        QCOMPARE(refused(text, "bad.txt"), what + atomSite);
        QCOMPARE(refused("_atom_site.id 1\n"),
                 ":1: is no valid mmCIF: expected a data block (data_NAME) before "
                 "\"_atom_site.id\"" +
                     atomSite);
    }

    void mmcifWithARepeatedTag_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("what");
        const QByteArray whole = mmcif({"N N . ALA A 1 ? 1 2 3 1"});
        QTest::newRow("of coordinates in one loop")
            << QByteArray(whole).replace("_atom_site.Cartn_y", "_atom_site.Cartn_x")
            << ":12: the tag \"_atom_site.Cartn_x\"";
        QTest::newRow("of coordinates that are all there")
            << QByteArray(whole).replace("pdbx_PDB_ins_code", "Cartn_z").replace("? 1", "9 1")
            << ":13: the tag \"_atom_site.Cartn_z\"";
        QTest::newRow("in other letters")
            << QByteArray(whole).replace("_atom_site.Cartn_y", "_ATOM_SITE.cartn_X")
            << ":12: the tag \"_ATOM_SITE.cartn_X\"";
        QTest::newRow("in a further loop") << whole + "loop_\n_atom_site.Cartn_x\n1\n"
                                           << ":18: the tag \"_atom_site.Cartn_x\"";
        QTest::newRow("outside of loops")
            << "data_x\n_entry.id 1\n_entry.id 2\n" + whole << ":3: the tag \"_entry.id\"";
        QTest::newRow("in a save frame")
            << "data_x\nsave_f\n_a.b 1\n_a.b 2\nsave_\n" + whole << ":4: the tag \"_a.b\"";
    }
    void mmcifWithARepeatedTag() {
        QFETCH(QByteArray, text);
        QFETCH(QString, what);
        QCOMPARE(refused(text, "bad.cif"), what + " stands twice in one data block" + atomSite);
    }

    void mmcifCutInTheMiddleOfARow() {
        const QByteArray whole = mmcif({"N N . ALA A 1 ? 1 2 3 1", "CA C . ALA A 1 ? 2 2 3 1"});
        QCOMPARE(refused(whole.chopped(8), "bad.cif"),
                 ":16: is no valid mmCIF: a loop ends in the middle of a row, after 8 of 11 "
                 "values: the file is cut or "
                 "damaged" +
                     atomSite);
    }

    void mmcifWithoutAtoms() {
        QCOMPARE(refused("data_x\n_entry.id x\n", "bad.cif"),
                 ": is no structure: it has no atoms in an _atom_site category" + anyFile);
        QCOMPARE(
            refused("data_x\nloop_\n_atom_site_label\n_atom_site_fract_x\nC1 0.5\n", "bad.cif"),
            ": has fractional coordinates, and no atoms in an _atom_site category" + anyFile);
    }

    void mmcifWithoutAColumnThatIsNeeded() {
        const QByteArray whole = mmcif({"N N . ALA A 1 ? 1 2 3 1"});
        QCOMPARE(refused(QByteArray(whole).replace("Cartn_y", "other_y"), "bad.cif"),
                 ":15: the _atom_site category has no cartn_y" + atomSite);
        QCOMPARE(refused(QByteArray(whole).replace("auth_asym_id", "other"), "bad.cif"),
                 ":15: the _atom_site category has no label_asym_id" + atomSite);
    }

    void mmcifWithoutAnyCoordinates() {
        QCOMPARE(refused(mmcif({"N N . ALA A 1 ? ? ? ? 1", "CA C . ALA A 1 ? . . . 1"}), "bad.cif"),
                 ":15: no atom of the file has a position" + atomSite);
        QCOMPARE(refused(mmcif({"N N . ALA A 1 ? a b c 1"}), "bad.cif"),
                 ":15: no atom of the file has coordinates that are numbers" + atomSite);
    }

    void aMapThatPromisesWhatTheFileLacks() {
        QCOMPARE(
            refused(map().chopped(1), "bad.map"),
            ": the map's header promises 2 x 2 x 2 points, which take 1056 bytes, and the file "
            "has 1055: it is cut or damaged; accepted are whole maps");
        QCOMPARE(refused(map({{1, 1000}, {2, 1000}, {3, 1000}}), "bad.map"),
                 ": the map's header promises 1000 x 1000 x 1000 points, which take 4000001024 "
                 "bytes, and the file has 1056: it is cut or damaged; accepted are whole maps");
        QCOMPARE(
            refused(map({{24, 80}}), "bad.map"),
            ": the map's header promises 2 x 2 x 2 points, which take 1136 bytes, and the file "
            "has 1056: it is cut or damaged; accepted are whole maps");
        QCOMPARE(refused(map().left(1000), "bad.map"),
                 ": the map ends within its header of 1024 bytes: it is cut; accepted are whole "
                 "maps");
    }

    void aMapOfAbsurdDimensions_data() {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");
        QTest::addColumn<int>("z");
        const int most = std::numeric_limits<int>::max();
        QTest::newRow("none") << 0 << 2 << 2;
        QTest::newRow("negative") << 2 << -2 << 2;
        QTest::newRow("two negative ones") << -2 << -2 << 2;
        QTest::newRow("overflowing 64 bits") << most << most << most;
        QTest::newRow("overflowing 32 bits") << 65536 << 65536 << 1;
        QTest::newRow("more than memory holds") << 65536 << 32768 << 1;
        QTest::newRow("the least number") << std::numeric_limits<int>::min() << 1 << 1;
    }
    void aMapOfAbsurdDimensions() {
        QFETCH(int, x);
        QFETCH(int, y);
        QFETCH(int, z);
        QCOMPARE(refused(map({{1, x}, {2, y}, {3, z}}), "bad.map"),
                 QString(": the map's header promises %1 x %2 x %3 points; accepted are at least 1 "
                         "along each axis and at most 1073741824 in all")
                     .arg(x)
                     .arg(y)
                     .arg(z));
    }

    void aMapThatStartsAbsurdlyFarAway() {
        constexpr int limit = 1073741824;
        for (const int start :
             {limit, -limit, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
            for (const int word : {5, 6, 7})
                QCOMPARE(refused(map({{word, start}}), "bad.map"),
                         QString(": the map starts at point %1 of an axis; accepted are numbers "
                                 "between -1073741824 and 1073741824")
                             .arg(start));
        opened(m_folder.write("far.map", map({{5, limit - 1}, {6, 1 - limit}})));
    }

    void aMapOfAnotherMode() {
        for (const int mode : {3, 4, -1, 101})
            QCOMPARE(
                refused(map({{4, mode}}), "bad.map"),
                QString(": the map's values are of mode %1; accepted are CCP4/MRC maps of modes "
                        "0, 1, 2 and 6")
                    .arg(mode));
    }

    void aMapWithWrongAxes() {
        QCOMPARE(refused(map({{17, 0}}), "bad.map"),
                 ": the map's header names the axes 0, 2 and 3; accepted are 1, 2 and 3 in any "
                 "order");
        QCOMPARE(refused(map({{17, 2}}), "bad.map"),
                 ": the map's header names an axis twice; accepted are 1, 2 and 3 in any order");
    }

    void aMapWithAnAbsurdCell() {
        QVERIFY(refused(map({{11, bitsOf(-5.0F)}}), "bad.map")
                    .startsWith(": the map's cell has a length of -5; accepted"));
        QVERIFY(refused(map({{11, bitsOf(0.0F)}}), "bad.map")
                    .startsWith(": the map's cell has a length of 0; accepted"));
        QVERIFY(refused(map({{12, 0x7fc00000}}), "bad.map")
                    .startsWith(": the map's cell has a length of nan; accepted"));
        QVERIFY(refused(map({{14, bitsOf(180.0F)}}), "bad.map")
                    .startsWith(": the map's cell has an angle of 180; accepted"));
        QVERIFY(refused(map({{14, bitsOf(170.0F)}, {15, bitsOf(10.0F)}}), "bad.map")
                    .startsWith(": the map's cell has angles that make no cell; accepted"));
        QVERIFY(refused(map({{11, bitsOf(4.0e-6F)}}), "bad.map")
                    .startsWith(": the map's cell has a length of 4e-06; accepted"));
        QVERIFY(refused(map({{8, -3}}), "bad.map")
                    .startsWith(": the map's cell is divided into -3 parts; accepted"));
    }

    void aMapWhoseCellIsFlat() {
        for (const int word : {14, 15, 16})
            for (const float angle : {4.0e-6F, 1.0e-45F})
                QVERIFY(refused(map({{word, bitsOf(angle)}}), "bad.map")
                            .startsWith(": the map's cell has an angle of " +
                                        QString(angle < 1.0e-6F ? "1e-45" : "4e-06")));
    }

    void aMapWithAbsurdSymmetryRecords() {
        for (const int bytes : {-80, 81, 2000000000})
            QVERIFY(refused(map({{24, bytes}}), "bad.map")
                        .startsWith(": the map's header promises " + QString::number(bytes) +
                                    " bytes of symmetry records; accepted"));
    }

    void whatIsOpenStaysWhenAFileIsRefused() {
        opened(m_folder.write("good.pdb", atoms(2)));
        refused(atoms(3).chopped(40));
        refused(map().chopped(1), "bad.map");
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("good"));
    }
};

REGISTER_TEST(BadFileTest)
#include "BadFileTest.moc"
