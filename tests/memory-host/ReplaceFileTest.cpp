// Saving replaces a file in one step: whatever fails, the old one is there as it was, and nothing
// else is left in its folder.
#include "DataMaker.h"
#include "DataPointBase.h"
#include "FailingMemory.h"
#include "FileTestCase.h"
#include "ItemOrigin.h"
#include "Sample.h"
#include "files/Saving.h"

#include <QDir>
#include <QFile>

#include <limits>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace file_testing;
using memory_host::SaveError;
using memory_host::saveFile;
using memory_host::SaveOptions;

namespace {

const QByteArray oldText = "REMARK old\n" + atomAt(" CA ", 1) + "END\n";

QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void overwrite(const QString& path, const QByteArray& text) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

QStringList filesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden |
                                  QDir::System);
}

// Files may have at most that many bytes.
class SizeLimit {
public:
    explicit SizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;
    ~SizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before{};
};

} // namespace

class ReplaceFileTest : public FileTestCase {
    Q_OBJECT

    QString m_here; ///< a folder of each function's own
    QString m_file; ///< in it

    // Saves all entries; what is said when that is refused.
    QString save(const QString& to, const SaveOptions& options = {}) {
        try {
            saveFile(childrenOf(space()), to.toStdString(), options);
        } catch (const SaveError& error) {
            m_reason = error.reason();
            return QString::fromLatin1(error.what());
        }
        return {};
    }
    void edit() {
        const DataPointBase guard(nullptr, Publisher::Add, "Add");
        QVERIFY(guard.m_good);
        TAVIK::DataMaker::makeAtom(item("/old/A/Groups/ALA 1"),
                                   {"CB", "C", TAVIK::Vertex(1, 2, 3, true)});
    }

    SaveError::Reason m_reason = SaveError::Reason::Other;

protected slots:
    void init() override {
        FileTestCase::init();
        m_here = m_folder.path() + u'/' + QTest::currentTestFunction();
        QDir().mkpath(m_here);
        m_file = m_here + "/old.pdb";
        overwrite(m_file, oldText);
        memory_host::openFile(m_file.toStdString());
        edit();
    }

private slots:
    void theFileIsReplacedAgainAndAgain() {
        QCOMPARE(save(m_file), QString());
        const QByteArray once = bytesOf(m_file);
        QVERIFY(once != oldText);
        edit();
        QCOMPARE(save(m_file), QString());
        QVERIFY(bytesOf(m_file).size() > once.size());
        QCOMPARE(filesIn(m_here), QStringList("old.pdb"));
    }
    void permissionsAndOwnerAreKept() {
        const QByteArray name = m_file.toUtf8();
        QCOMPARE(::chmod(name.constData(), 0640), 0);
        struct stat before {};
        struct stat after {};
        QCOMPARE(::stat(name.constData(), &before), 0);
        QCOMPARE(save(m_file), QString());
        QCOMPARE(::stat(name.constData(), &after), 0);
        QCOMPARE(after.st_mode, before.st_mode);
        QCOMPARE(after.st_uid, before.st_uid);
        QCOMPARE(after.st_gid, before.st_gid);
    }
    void aNewFileGetsTheUsualPermissions() {
        const mode_t mask = ::umask(027);
        QCOMPARE(save(m_here + "/new.pdb"), QString());
        ::umask(mask);
        struct stat state {};
        QCOMPARE(::stat((m_here + "/new.pdb").toUtf8().constData(), &state), 0);
        QCOMPARE(state.st_mode & 0777U, 0640U);
    }
    void aSymbolicLinkIsFollowed() {
        QDir().mkpath(m_here + "/far");
        QVERIFY(QFile::rename(m_file, m_here + "/far/real.pdb"));
        QVERIFY(QFile::link("far/real.pdb", m_file));
        QCOMPARE(save(m_file), QString());
        QVERIFY(QFileInfo(m_file).isSymLink());
        QVERIFY(bytesOf(m_here + "/far/real.pdb") != oldText);
        QCOMPARE(filesIn(m_here + "/far"), QStringList("real.pdb"));
    }

    void whatCannotBeReplacedIsRefused_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("what");
        QTest::newRow("folder") << "folder.pdb"
                                << "is a folder";
        QTest::newRow("no folder") << "none/new.pdb"
                                   << "cannot be made in its folder: No such file or directory";
        QTest::newRow("file as folder") << "old.pdb/new.pdb"
                                        << "cannot be made in its folder: Not a directory";
        QTest::newRow("write-protected") << "protected.pdb"
                                         << "is write-protected";
        QTest::newRow("device") << "full.pdb"
                                << "is no regular file";
        QTest::newRow("link to itself") << "circle.pdb"
                                        << "is no name of a file";
        QTest::newRow("ending") << "new.xyz"
                                << "the ending of its name tells no format that can be saved";
        QTest::newRow("no ending") << "new"
                                   << "the ending of its name tells no format that can be saved";
    }
    void whatCannotBeReplacedIsRefused() {
        QFETCH(QString, name);
        QFETCH(QString, what);
        QDir().mkpath(m_here + "/folder.pdb");
        overwrite(m_here + "/protected.pdb", "as it was");
        QFile::setPermissions(m_here + "/protected.pdb", QFile::ReadOwner);
        QFile::link("/dev/full", m_here + "/full.pdb");
        QFile::link("circle.pdb", m_here + "/circle.pdb");
        const QStringList before = filesIn(m_here);
        const QString line = save(m_here + u'/' + name);
        QVERIFY2(line.startsWith(m_here + u'/' + name + ": " + what + "; accepted"),
                 qPrintable(line));
        QVERIFY(!line.contains(u'\n'));
        QCOMPARE(filesIn(m_here), before);
        QCOMPARE(bytesOf(m_here + "/protected.pdb"), QByteArray("as it was"));
        QCOMPARE(TAVIK::OriginOf(item("/old")), m_file);
        QFile::setPermissions(m_here + "/protected.pdb", QFile::ReadOwner | QFile::WriteOwner);
        QFile::remove(m_here + "/protected.pdb");
        QFile::remove(m_here + "/full.pdb");
        QFile::remove(m_here + "/circle.pdb");
    }
    void aFullDiskLeavesTheOldFile() {
        QString line;
        {
            const SizeLimit limit(100);
            line = save(m_file);
        }
        QVERIFY2(line.startsWith(m_file + ": cannot be written: File too large; accepted"),
                 qPrintable(line));
        QCOMPARE(bytesOf(m_file), oldText);
        QCOMPARE(filesIn(m_here), QStringList("old.pdb"));
        QCOMPARE(save(m_file), QString());
    }
    void aFileThatSomeoneElseChangedIsKept() {
        overwrite(m_file, "by someone else");
        const QString line = save(m_file);
        QVERIFY2(line.startsWith(m_file + ": was changed by someone else since it was read; "
                                          "accepted is replacing it"),
                 qPrintable(line));
        QCOMPARE(m_reason, SaveError::Reason::ChangedByOthers);
        QCOMPARE(bytesOf(m_file), QByteArray("by someone else"));
        // It is another name that is not guarded, and the same one on request.
        QCOMPARE(save(m_file, {.replaceChanged = true}), QString());
        QVERIFY(bytesOf(m_file).contains("REMARK old"));
        edit();
        QCOMPARE(save(m_file), QString());
    }
    void aFileThatIsGoneIsWrittenAnew() {
        QVERIFY(QFile::remove(m_file));
        QCOMPARE(save(m_file), QString());
        QVERIFY(bytesOf(m_file).contains("REMARK old"));
    }
    void savingThatIsStoppedLeavesTheOldFile() {
        const auto plan = memory_host::planSaving(childrenOf(space()), m_file.toStdString());
        std::stop_source stop;
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(SaveError, memory_host::writePlan(*plan, {}, stop.get_token()));
        QCOMPARE(bytesOf(m_file), oldText);
        QCOMPARE(filesIn(m_here), QStringList("old.pdb"));
        memory_host::markSaved(*plan);
        QCOMPARE(save(m_file), QString());
    }

    void withoutMemoryTheOldFileIsWholeOrTheNewOne_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("refuse");
        for (const char* name : {"old.pdb", "new.pdb.gz"}) {
            QTest::addRow("%s, one", name) << name << 1;
            QTest::addRow("%s, all that follow", name) << name << std::numeric_limits<int>::max();
        }
    }
    void withoutMemoryTheOldFileIsWholeOrTheNewOne() {
        QFETCH(QString, name);
        QFETCH(int, refuse);
        const QString target = m_here + u'/' + name;
        const std::string path = target.toStdString();
        const Items items = childrenOf(space());
        const bool isOld = target == m_file;
        QCOMPARE(save(m_here + "/whole" + name), QString());
        const QByteArray whole = bytesOf(m_here + "/whole" + name);
        QVERIFY(QFile::remove(m_here + "/whole" + name));
        QVERIFY(whole.size() > 80);
        int failures = 0;
        for (int granted = 0;; ++granted) {
            QString thrown;
            int refused = 0;
            {
                const FailingMemory memory(granted, refuse, 0);
                try {
                    saveFile(items, path);
                } catch (const SaveError& error) {
                    thrown = QString::fromLatin1(error.what());
                } catch (const std::bad_alloc&) {
                    thrown = QStringLiteral("std::bad_alloc");
                }
                refused = FailingMemory::refusals();
            }
            QCOMPARE(faults(), QString());
            if (refused == 0) {
                QCOMPARE(thrown, QString());
                break;
            }
            const QByteArray now = bytesOf(target);
            QVERIFY(now == (isOld ? oldText : QByteArray()) || now == whole);
            QCOMPARE(filesIn(m_here).size(), isOld || now.isEmpty() ? 1 : 2);
            // At the very beginning there is not even memory for the line.
            if (!thrown.isEmpty() && (granted > 10 || thrown != QLatin1String("std::bad_alloc")))
                QVERIFY2(thrown.startsWith(target + ": there is not enough memory to save it; "
                                                    "accepted is "),
                         qPrintable(thrown));
            failures += thrown.isEmpty() ? 0 : 1;
        }
        QVERIFY2(failures > 20, qPrintable(QString::number(failures)));
    }
};

REGISTER_TEST(ReplaceFileTest)
#include "ReplaceFileTest.moc"
