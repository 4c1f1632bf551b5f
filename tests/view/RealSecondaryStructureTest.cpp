// Secondary structure of real proteins, against an independent program and the files' own records.
#include "Backbones.h"
#include "TestSupport.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <map>

using view_testing::Proteins;
using view_testing::proteins;

namespace {

/// The letters of mkdssp (Debian package dssp) by chain, number and insertion code, as "A 12".
std::map<std::string, char> independentLetters(const QString& path) {
    QProcess program;
    program.start("mkdssp", {"--quiet", "--output-format=dssp", path});
    if (!program.waitForFinished(120'000) || program.exitCode() != 0)
        qFatal("mkdssp: %s", program.readAllStandardError().constData());
    std::map<std::string, char> letters;
    bool isTable = false;
    for (const QByteArray& line : program.readAllStandardOutput().split('\n')) {
        if (isTable && line.size() > 16 && line[13] != '!')
            // P is a stretch of polyproline, a class that is not in the paper, in place of coil.
            letters[(line.mid(11, 1) + ' ' + line.mid(5, 6).trimmed()).toStdString()] =
                line[16] == ' ' || line[16] == 'P' ? '-' : line[16];
        isTable = isTable || line.startsWith("  #  RESIDUE");
    }
    return letters;
}

/// The atoms of a file's first conformers and nothing else: mkdssp refuses files with an unusual
/// date in them, and leaves out residues whose conformers have different names.
QString atomsOf(const QString& path, const QTemporaryDir& folder) {
    if (!path.endsWith(".pdb"))
        return path;
    QFile file(path);
    QFile atoms(folder.filePath("atoms.pdb"));
    if (!file.open(QFile::ReadOnly) || !atoms.open(QFile::WriteOnly))
        qFatal("cannot copy %s", qPrintable(path));
    atoms.write("HEADER    ATOMS                                   01-JAN-00   1XXX\n");
    for (const QByteArray& line : file.readAll().split('\n'))
        if ((line.startsWith("ATOM") && (line[16] == ' ' || line[16] == 'A')) ||
            line.startsWith("TER") || line.startsWith("CRYST1"))
            atoms.write(line + '\n');
    return atoms.fileName();
}

} // namespace

class RealSecondaryStructureTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void lettersAreThoseOfAnIndependentProgram_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<std::size_t>("residues");
        QTest::newRow("1ubq") << "1ubq.pdb" << std::size_t(76);
        QTest::newRow("1ejg") << "1ejg.pdb" << std::size_t(46);
        QTest::newRow("1cbs") << "1cbs.cif.gz" << std::size_t(137);
        QTest::newRow("1tii") << "1tii.pdb" << std::size_t(712);
        QTest::newRow("2nwl") << "2nwl-opm.pdb" << std::size_t(1206);
        QTest::newRow("3o21") << "3o21.pdb" << std::size_t(1489);
    }

    void lettersAreThoseOfAnIndependentProgram() {
        QFETCH(QString, file);
        QFETCH(std::size_t, residues);
        if (QStandardPaths::findExecutable("mkdssp").isEmpty())
            QSKIP("the program mkdssp is not installed");
        const QTemporaryDir folder;
        const QString path = structure(file);
        const Proteins read = proteins(path.toStdString());
        const std::map<std::string, char> expected = independentLetters(atomsOf(path, folder));
        QCOMPARE(read.residues.size(), residues);
        QCOMPARE(expected.size(), residues);
        QByteArray letters;
        for (const std::string& name : read.names)
            letters += expected.at(name);
        QCOMPARE(view_testing::letters(read.residues), letters);
    }

    // Authors mostly take their records from the program that follows the paper, and change ends as
    // they like; those of 1ubq, of 1987, are older than that habit.
    void helicesAndStrandsAreThoseOfTheFiles_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<double>("least"); // of all residues
        QTest::newRow("1ubq") << "1ubq.pdb" << 0.80;
        QTest::newRow("1ejg") << "1ejg.pdb" << 0.90;
        QTest::newRow("1cbs") << "1cbs.cif.gz" << 0.95;
        QTest::newRow("1tii") << "1tii.pdb" << 0.95;
        QTest::newRow("6zu5") << "6zu5.cif" << 0.90;
    }

    void helicesAndStrandsAreThoseOfTheFiles() {
        QFETCH(QString, file);
        QFETCH(double, least);
        const Proteins read = proteins(structure(file).toStdString());
        const QByteArray found = view_testing::letters(read.residues);
        int equal = 0;
        int recorded = 0;
        int opposite = 0; // a helix where the file has a strand, or the other way round
        for (qsizetype i = 0; i < found.size(); ++i) {
            const char letter = found[i];
            const char kind = letter == 'G' || letter == 'I'   ? 'H'
                              : letter == 'H' || letter == 'E' ? letter
                                                               : '-';
            equal += kind == read.recorded[i];
            recorded += read.recorded[i] != '-';
            opposite += kind != '-' && read.recorded[i] != '-' && kind != read.recorded[i];
        }
        QVERIFY(recorded > 20);
        QVERIFY2(equal >= least * static_cast<double>(found.size()),
                 qPrintable(QString::number(equal)));
        QVERIFY(opposite <= 1);
    }
};

REGISTER_TEST(RealSecondaryStructureTest)
#include "RealSecondaryStructureTest.moc"
