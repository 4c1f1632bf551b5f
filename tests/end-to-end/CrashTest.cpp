#include "Program.h"
#include "TestSupport.h"
#include "VirtualScreen.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>

using namespace end_to_end;

/// What comes back of a program that was killed.
class CrashTest : public test_support::TestCase {
    Q_OBJECT

    /// The folders with a journal of a program's user.
    static QStringList journals(const Program& program) {
        const QDir all(program.home() + "/state/structure-editor/journal");
        QStringList folders = all.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        folders.removeIf([&all](const QString& folder) {
            return !QFile::exists(all.filePath(folder + "/journal"));
        });
        return folders;
    }
    /// Selects atoms by the find box, and waits until that is in the journal.
    static bool selectSome(const VirtualScreen& screen, const Program& program) {
        screen.key("ctrl+f");
        screen.type("@CA");
        const QDeadlineTimer deadline(60'000);
        while (journals(program).isEmpty() && !deadline.hasExpired()) {
            screen.key("ctrl+Return"); // There may be no hits yet.
            QTest::qSleep(1500);
        }
        return !journals(program).isEmpty();
    }
    static void kill(Program& program) {
        ::kill(static_cast<pid_t>(program.pid()), SIGKILL);
        QVERIFY(!program.finish().normally);
    }
    static int run(const QStringList& arguments, QByteArray& output) {
        QProcess program;
        program.start(CRASH_SESSION, arguments);
        program.waitForFinished(120'000);
        output = program.readAllStandardOutput().trimmed();
        return program.exitCode();
    }

private slots:
    void sessionsThatAreKilledComeBackAsTheyWere_data() {
        QTest::addColumn<int>("seed");
        for (const int seed : {1, 2, 3})
            QTest::addRow("seed %d", seed) << seed;
    }
    void sessionsThatAreKilledComeBackAsTheyWere() {
        QFETCH(const int, seed);
        const QTemporaryDir folder;
        QStringList files{folder.filePath("1ejg.pdb"), folder.filePath("sample.pdb")};
        QVERIFY(QFile::copy(structure("1ejg.pdb"), files[0]));
        QVERIFY(QFile::copy(SOURCE_DIR "/data/sample.pdb", files[1]));
        Program session(CRASH_SESSION);
        session.start(QStringList{"run", folder.path(), QString::number(seed), "0.05"} + files);
        // Until the journal was written a few times.
        QFile log(folder.filePath("log"));
        const QDeadlineTimer deadline(60'000);
        for (int written = 0; written < 3 * seed; QTest::qSleep(10)) {
            QVERIFY(session.isRunning() && !deadline.hasExpired());
            if (log.isOpen() || log.open(QIODevice::ReadOnly))
                written += static_cast<int>(log.readAll().count("written"));
        }
        kill(session);
        const QString end = QString::number(QDateTime::currentMSecsSinceEpoch());
        QByteArray output;
        const int status = run({"recover", folder.path(), end}, output);
        QCOMPARE(output, QByteArray("brought back"));
        QCOMPARE(status, 0);
    }

    void theProgramAsksAtItsNextStart() {
        const VirtualScreen screen;
        const QTemporaryDir folder;
        const QString file = folder.filePath("own.pdb");
        QVERIFY(QFile::copy(SOURCE_DIR "/data/sample.pdb", file));
        Program program;
        screen.show(program);
        QVERIFY(QDir().mkpath(program.home() + "/config/structure-editor"));
        QFile settings(program.home() + "/config/structure-editor/settings.ini");
        QVERIFY(settings.open(QIODevice::WriteOnly));
        settings.write("[Journal]\nSeconds = 1\n");
        settings.close();
        program.start({file});
        const qint64 window = screen.waitForWindow("own - Workbench", program);
        QVERIFY(window);
        screen.focus(window);
        QVERIFY(selectSome(screen, program));
        kill(program);
        const QStringList first = journals(program);
        program.start({file});
        const qint64 question = screen.waitForWindow("Changes that were not closed", program);
        QVERIFY(question);
        screen.focus(question);
        screen.key("Return");
        // The file is not opened once more, and the selection is there: it is in the new journal.
        QVERIFY(screen.waitForWindow("own - Workbench", program));
        const QDeadlineTimer deadline(60'000);
        while (journals(program).size() != 1 || journals(program) == first)
            QVERIFY(!deadline.hasExpired());
        // That alone is nothing that would have to be saved.
        program.terminate();
        QVERIFY(program.finish().normally);
        QCOMPARE(journals(program), QStringList());
    }
};

REGISTER_TEST(CrashTest)
#include "CrashTest.moc"
