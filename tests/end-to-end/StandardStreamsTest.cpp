#include "Program.h"
#include "TestSupport.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace end_to_end;

/// Standard input, output and error, the log and the user's folders as a program may find them: it
/// works, and says in one line what it cannot do.
class StandardStreamsTest : public test_support::TestCase {
    Q_OBJECT

    /// Starts the workbench from a shell that first does what `redirect` says.
    static void start(Program& shell, const QString& redirect, const QStringList& arguments) {
        shell.start(QStringList{"-c", redirect + "; exec \"$0\" \"$@\"", WORKBENCH} + arguments);
    }
    static Ended run(const QString& redirect, const QStringList& arguments) {
        Program shell("/bin/sh");
        start(shell, redirect, arguments);
        return shell.finish();
    }
    static QStringList logOf(const Program& program) {
        QFile file(program.home() + "/state/structure-editor/workbench.log");
        QStringList lines;
        if (file.open(QIODevice::ReadOnly))
            lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
        return lines;
    }
    /// Waits until the program has its files open and answers the end of a session.
    static bool waitUntilItWorks(Program& program) {
        const QDeadlineTimer deadline(60'000);
        const QString status = "/proc/" + QString::number(program.pid()) + "/status";
        while (program.isRunning() && !deadline.hasExpired()) {
            QFile file(status);
            const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
            const qsizetype caught = text.indexOf("SigCgt:");
            const qulonglong mask = text.mid(caught + 7, 18).trimmed().toULongLong(nullptr, 16);
            if (caught >= 0 && text.startsWith("Name:\tworkbench") && mask >> (SIGTERM - 1) & 1)
                return true;
            usleep(10'000);
        }
        return false;
    }
    static Ended end(Program& program) {
        program.terminate();
        return program.finish();
    }

private slots:
    void helpAndVersionFailWhenTheyCannotBeWritten_data() {
        QTest::addColumn<QString>("redirect");
        QTest::addColumn<QString>("reason");
        QTest::newRow("full") << "exec >/dev/full"
                              << "No space left on device";
        QTest::newRow("closed") << "exec >&-"
                                << "Bad file descriptor";
        QTest::newRow("all closed but standard error") << "exec <&- >&-"
                                                       << "Bad file descriptor";
    }
    void helpAndVersionFailWhenTheyCannotBeWritten() {
        QFETCH(const QString, redirect);
        QFETCH(const QString, reason);
        for (const QString option : {"--help", "--version"}) {
            const Ended ended = run(redirect, {option});
            QVERIFY(ended.normally);
            QCOMPARE(ended.status, 1);
            QCOMPARE(ended.errors,
                     QStringList("workbench: standard output cannot be written: " + reason));
        }
    }

    void closedStreamsAreReplacedByWhatHoldsNothing_data() {
        QTest::addColumn<QString>("redirect");
        QTest::addColumn<QList<int>>("closed");
        QTest::newRow("input") << "exec <&-" << QList<int>{0};
        QTest::newRow("output") << "exec >&-" << QList<int>{1};
        QTest::newRow("error") << "exec 2>&-" << QList<int>{2};
        QTest::newRow("all") << "exec <&- >&- 2>&-" << QList<int>{0, 1, 2};
    }
    void closedStreamsAreReplacedByWhatHoldsNothing() {
        QFETCH(const QString, redirect);
        QFETCH(const QList<int>, closed);
        Program shell("/bin/sh");
        start(shell, redirect, {structure("1ubq.pdb"), "missing.pdb"});
        QVERIFY(waitUntilItWorks(shell));
        for (const int descriptor : closed) {
            const QString link = QString("/proc/%1/fd/%2").arg(shell.pid()).arg(descriptor);
            QCOMPARE(QFileInfo(link).symLinkTarget(), "/dev/null");
        }
        const Ended ended = end(shell);
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        // The log holds all of it, and that it was not to be read elsewhere.
        const QStringList log = logOf(shell);
        QCOMPARE(log.filter("missing.pdb").size(), 1);
        QCOMPARE(log.filter("Standard error cannot be written: Bad file descriptor").size(),
                 closed.contains(2) ? 1 : 0);
        QCOMPARE(ended.errors.filter("missing.pdb").size(), closed.contains(2) ? 0 : 1);
    }

    void theProgramOutlivesTheReaderOfStandardError() {
        Program shell("/bin/sh");
        const QString errors = shell.home() + "/errors";
        const QString go = shell.home() + "/go";
        for (const QString& pipe : {errors, go})
            QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        const int reader =
            open(QFile::encodeName(errors).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        QVERIFY(reader >= 0);
        start(shell, "exec 2>\"$HOME/errors\"; read line <\"$HOME/go\"",
              {"--verbose", structure("1ubq.pdb"), "missing.pdb", "missing too.pdb"});
        // The shell is at the second pipe when this opens, and has the first one open.
        const int starter = open(QFile::encodeName(go).constData(), O_WRONLY | O_CLOEXEC);
        close(reader);
        QCOMPARE(write(starter, "\n", 1), 1);
        close(starter);
        QVERIFY(waitUntilItWorks(shell));
        const Ended ended = end(shell);
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        const QStringList log = logOf(shell);
        QCOMPARE(log.filter("missing").size(), 2);
        QCOMPARE(log.filter("Standard error cannot be written: Broken pipe").size(), 1);
    }

    void theProgramOutlivesTheFileSizeLimit() {
        Program shell("/bin/sh");
        start(shell, "ulimit -f 0", {"--verbose", structure("1ubq.pdb"), "missing.pdb"});
        QVERIFY(shell.waitUntilStarted());
        const Ended ended = end(shell);
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors.filter("missing.pdb").size(), 1);
        QCOMPARE(ended.errors.filter("Log file").size(), 1);
        QCOMPARE(ended.errors.filter("it cannot be written: File too large").size(), 1);
    }

    void aLogThatIsAPipeKeepsNothingFromRunning() {
        Program program;
        const QString folder = program.home() + "/state/structure-editor";
        QVERIFY(QDir().mkpath(folder));
        const QString log = folder + "/workbench.log";
        QCOMPARE(mkfifo(QFile::encodeName(log).constData(), 0600), 0);
        program.start({"--verbose", structure("1ubq.pdb")});
        QVERIFY(program.waitUntilStarted());
        const Ended ended = end(program);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors.filter("Log file"),
                 QStringList("Log file " + log +
                             ": it cannot be written: it is no regular file; the log goes on "
                             "without it"));
    }

    void aHomeThatCannotBeWrittenIsOneLine() {
        Program program;
        const QString home = program.home() + "/home";
        QFile file(home);
        QVERIFY(file.open(QIODevice::WriteOnly)); // below a file there is no folder
        program.set("HOME", home);
        for (const QString folder : {"XDG_STATE_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
            program.set(folder, QString());
        program.start({structure("1ubq.pdb")});
        QVERIFY(waitUntilItWorks(program));
        const Ended ended = end(program);
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors,
                 QStringList("Log file " + home +
                             "/.local/state/structure-editor/workbench.log: it cannot be written: "
                             "Not a directory; the log goes on without it"));
    }
};

REGISTER_TEST(StandardStreamsTest)
#include "StandardStreamsTest.moc"
