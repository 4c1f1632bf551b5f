#include "Program.h"
#include "TestFiles.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace end_to_end;
using test_support::contentOf;

/// Conversion from the command line, where there is no display.
class SaveCommandTest : public test_support::TestCase {
    Q_OBJECT

    QTemporaryDir m_folder;

    /// Runs without a display and without a word of which platform to draw on.
    Ended run(const QStringList& arguments) {
        Program program;
        for (const char* variable : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"})
            program.set(variable, QString());
        program.setWorkingFolder(m_folder.path());
        return program.run(arguments);
    }
    QString path(const QString& name) const { return m_folder.filePath(name); }
    static qsizetype atomRows(const QByteArray& text) {
        const QList<QByteArray> lines = text.split('\n');
        return std::count_if(lines.begin(), lines.end(), [](const QByteArray& line) {
            return line.startsWith("ATOM ") || line.startsWith("HETATM ");
        });
    }

private slots:
    void cleanup() override {
        for (const QString& name : QDir(m_folder.path()).entryList(QDir::Files))
            QFile::remove(path(name));
        TestCase::cleanup();
    }

    void theSameFormatIsTheSameFile() {
        const Ended ended = run({structure("1ubq.pdb"), "--save", "again.pdb"});
        QVERIFY(ended.normally);
        QCOMPARE(ended.errors, QStringList());
        QCOMPARE(ended.output, QStringList());
        QCOMPARE(ended.status, 0);
        QVERIFY(contentOf(path("again.pdb")) == contentOf(structure("1ubq.pdb")));
    }

    void anotherFormatHasTheSameAtoms() {
        const Ended ended = run({structure("1ubq.pdb"), "--save=1ubq.cif"});
        QCOMPARE(ended.status, 0);
        QCOMPARE(atomRows(contentOf(path("1ubq.cif"))), atomRows(contentOf(structure("1ubq.pdb"))));
    }

    void aMapIsConvertedAndItsRemarksAreOnStandardError() {
        Ended ended = run({structure("1jzv.ccp4"), "--save", "a.mrc"});
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors, QStringList());
        QCOMPARE(contentOf(path("a.mrc")).mid(208, 4), "MAP ");
        ended = run({"--save", "b.map", structure("griddata.dx")});
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors.size(), 1);
        QVERIFY(ended.errors.constFirst().startsWith("b.map: the map's points are on no lattice"));
        QCOMPARE(contentOf(path("b.map")).mid(208, 4), "MAP ");
    }

    void asShownOnlyTheActiveModelsAreSaved() {
        QCOMPARE(run({structure("1ejg.pdb"), "--save", "all.pdb"}).status, 0);
        QCOMPARE(run({structure("1ejg.pdb"), "--as-shown", "--save", "shown.pdb"}).status, 0);
        const auto alternatives = [](const QByteArray& text) {
            QSet<char> letters;
            for (const QByteArray& line : text.split('\n'))
                if (line.startsWith("ATOM  "))
                    letters << line[16];
            return letters;
        };
        const QByteArray shown = contentOf(path("shown.pdb"));
        QVERIFY(alternatives(contentOf(path("all.pdb"))).contains('B'));
        QVERIFY(!alternatives(shown).contains('B'));
        QVERIFY(atomRows(shown) > 0);
    }

    void whatCannotBeSavedIsOneLineAndStatus1_data() {
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("said");
        QTest::newRow("no such format") << "out.xyz"
                                        << "out.xyz: the ending of its name tells no format";
        QTest::newRow("another kind") << "out.map"
                                      << "out.map: CCP4/MRC files hold no structures; accepted are "
                                         "names that end in .pdb, .ent, .cif, .mmcif, each";
        QTest::newRow("no such folder") << "nowhere/out.pdb"
                                        << "nowhere/out.pdb: ";
        QTest::newRow("no folder") << "/dev/null/out.pdb"
                                   << "/dev/null/out.pdb: ";
    }
    void whatCannotBeSavedIsOneLineAndStatus1() {
        QFETCH(const QString, out);
        QFETCH(const QString, said);
        const Ended ended = run({structure("1ubq.pdb"), "--save", out});
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output, QStringList());
        QCOMPARE(ended.errors.size(), 1);
        QVERIFY2(ended.errors.constFirst().startsWith(said), qPrintable(ended.errors.constFirst()));
        QCOMPARE(QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList());
    }

    void aFullDiskLeavesTheOldFileWhole() {
        QFile old(path("old.pdb"));
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old\n") == 4);
        old.close();
        // Nobody may write more than a block: also for root, who may write anywhere.
        Program shell("/bin/bash");
        const Ended ended =
            shell.run({"-c", QString("trap '' XFSZ; ulimit -f 40; exec '%1' '%2' --save '%3'")
                                 .arg(WORKBENCH, structure("1ubq.pdb"), old.fileName())});
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors.filter(old.fileName()).size(), 1);
        QCOMPARE(contentOf(old.fileName()), "old\n");
        QCOMPARE(QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList("old.pdb"));
    }

    void unlessAllFilesOpenNothingIsSaved() {
        Ended ended = run({"missing.pdb", structure("1ubq.pdb"), "--save", "out.cif"});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors.size(), 2);
        QVERIFY(ended.errors[0].startsWith("missing.pdb: "));
        QCOMPARE(ended.errors[1],
                 "workbench: out.cif is not written: not every file could be opened");
        QVERIFY(!QFile::exists(path("out.cif")));
        ended = run({"missing.pdb", "--save", "out.cif"});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors.size(), 1);
    }

    void aWrongCommandLineIsOneLineAndStatus2_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("said");
        QTest::newRow("no name") << QStringList{"a.pdb", "--save"} << "--save needs a file";
        QTest::newRow("an empty name") << QStringList{"a.pdb", "--save="} << "--save needs a file";
        QTest::newRow("no file") << QStringList{"--save", "b.pdb"}
                                 << "--save needs a FILE to be saved";
        QTest::newRow("nothing to save")
            << QStringList{"a.pdb", "--as-shown"} << "--as-shown is for --save";
        QTest::newRow("two commands") << QStringList{"a.pdb", "--save=b.cif", "--picture=b.png"}
                                      << "--save and --picture are two commands";
    }
    void aWrongCommandLineIsOneLineAndStatus2() {
        QFETCH(const QStringList, arguments);
        QFETCH(const QString, said);
        const Ended ended = run(arguments);
        QCOMPARE(ended.status, 2);
        QCOMPARE(ended.errors, QStringList("workbench: " + said));
    }
};

REGISTER_TEST(SaveCommandTest)
#include "SaveCommandTest.moc"
