#include "Program.h"
#include "TestFiles.h"
#include "TestSupport.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstring>
#include <memory>

using namespace end_to_end;
using test_support::contentOf;

namespace {

/// Overwrites a little-endian word of a map's header.
void setWord(QByteArray& map, int word, qint32 value) {
    std::memcpy(map.data() + 4 * word, &value, sizeof value);
}

} // namespace

/// Files that are not what they should be, given to the program as a user would.
class BadInputTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString write(const QString& name, const QByteArray& content) {
        const QString path = m_folder->filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("%s cannot be written", qPrintable(path));
        return path;
    }

    /// The files of the table below by the names of its rows.
    QString badFile(const QString& kind) {
        if (kind == "missing")
            return m_folder->filePath("missing.pdb");
        if (kind == "folder")
            return m_folder->path();
        if (kind == "empty")
            return write("empty.pdb", {});
        if (kind == "text")
            return write("text.pdb", "Dear diary,\nno atoms today.\n");
        if (kind == "text without an ending")
            return write("notes", "Dear diary,\nno atoms today.\n");
        if (kind == "cut in a line") {
            const QByteArray whole = contentOf(structure("1ubq.pdb"));
            return write("cut.pdb", whole.left(whole.indexOf("\nATOM    500") + 30));
        }
        if (kind == "truncated gz")
            return write("cut.cif.gz", contentOf(structure("1cbs.cif.gz")).left(20'000));
        if (kind == "gz of nothing")
            return write("none.pdb.gz", "\x1f\x8b no more");
        QByteArray map = contentOf(structure("1jzv.ccp4"));
        if (kind == "map cut short")
            return write("cut.ccp4", map.left(100'000));
        if (kind == "map header cut short")
            return write("header.ccp4", map.left(100));
        if (kind == "absurd map") {
            for (int axis = 0; axis < 3; ++axis)
                setWord(map, axis, 2'000'000'000);
            return write("absurd.ccp4", map);
        }
        qFatal("no file of the kind %s", qPrintable(kind));
    }

private slots:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }

    void isOneClearLineAndStatus1_data() {
        QTest::addColumn<QString>("says");
        QTest::newRow("missing") << "missing.pdb";
        QTest::newRow("folder") << "folder";
        QTest::newRow("empty") << "empty";
        QTest::newRow("text") << "text.pdb";
        QTest::newRow("text without an ending") << "PDB";
        QTest::newRow("cut in a line") << "cut.pdb:";
        QTest::newRow("truncated gz") << "cut.cif.gz";
        QTest::newRow("gz of nothing") << "none.pdb.gz";
        QTest::newRow("map cut short") << "cut.ccp4";
        QTest::newRow("map header cut short") << "header.ccp4";
        QTest::newRow("absurd map") << "absurd.ccp4";
    }
    void isOneClearLineAndStatus1() {
        QFETCH(const QString, says);
        const QString file = badFile(QTest::currentDataTag());
        Program program;
        const Ended ended = program.run({file});
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output, QStringList());
        QCOMPARE(ended.errors.size(), 1);
        QVERIFY(ended.errors.constFirst().contains(file));
        QVERIFY2(ended.errors.constFirst().contains(says), qPrintable(ended.errors.constFirst()));
    }

    void eachBadFileHasItsLine() {
        Program program;
        const Ended ended = program.run({badFile("missing"), badFile("empty"), badFile("text")});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors.size(), 3);
        QVERIFY(ended.errors.at(0).contains("missing.pdb"));
        QVERIFY(ended.errors.at(1).contains("empty.pdb"));
        QVERIFY(ended.errors.at(2).contains("text.pdb"));
    }

    void theGoodFilesBesideABadOneAreOpened() {
        Program program;
        program.start(
            {"--verbose", structure("1ubq.pdb"), badFile("truncated gz"), structure("1ejg.pdb")});
        QVERIFY(program.waitUntilStarted());
        program.terminate();
        const Ended ended = program.finish();
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors.filter("cut.cif.gz").size(), 1);
    }

    void aNameThatDrivesTerminalsIsWrittenHarmlessly() {
        Program program;
        const Ended ended = program.run({m_folder->filePath("a\x1b[31m\nb.pdb")});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors.size(), 1);
        QVERIFY(!ended.errors.constFirst().contains(u'\x1b'));
    }

    void aRelativePathIsLookedUpInTheWorkingFolder() {
        QVERIFY(QFile::copy(structure("1ubq.pdb"), m_folder->filePath("here.pdb")));
        Program program;
        program.setWorkingFolder(m_folder->path());
        program.start({"--verbose", "here.pdb"});
        QVERIFY(program.waitUntilStarted());
        program.terminate();
        QCOMPARE(program.finish().status, 0);
    }
};

REGISTER_TEST(BadInputTest)
#include "BadInputTest.moc"
