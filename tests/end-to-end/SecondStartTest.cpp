#include "Pictures.h"
#include "Program.h"
#include "TestSupport.h"
#include "VirtualScreen.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

using namespace end_to_end;

/// What a second start brings to the program that runs, whatever that one is doing.
class SecondStartTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<VirtualScreen> m_screen;

    /// Starts the program again beside `first`, and waits for its end.
    Ended startAgain(const Program& first, const QStringList& files) {
        Program second;
        m_screen->show(second);
        second.set("XDG_RUNTIME_DIR", first.home());
        return second.run(files);
    }
    static void end(Program& program) {
        program.terminate();
        const Ended ended = program.finish();
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
    }

private slots:
    void initTestCase() { m_screen = std::make_unique<VirtualScreen>(); }
    void cleanupTestCase() { m_screen.reset(); }

    void filesThatComeWhilePluginsStartAreOpened() {
        const QTemporaryDir folder;
        // The build tree, with one plug-in more.
        QCOMPARE(QProcess::execute("cp", {"-r", STAGE_DIR "/.", folder.path()}), 0);
        const QString plugins =
            QString(STAGE_PLUGINS).replace(STAGE_DIR, folder.path()) + "/Calculate";
        QVERIFY(QDir().mkpath(plugins));
        QVERIFY(QFile::copy(TEST_PLUGINS "/libWaiting.so", plugins + "/libWaiting.so"));
        Program first(folder.filePath("bin/workbench"));
        m_screen->show(first);
        first.set("WAITS_FOR", folder.filePath("go"));
        first.start({structure("1ubq.pdb")});
        QVERIFY(first.waitForError("waiting"));
        QCOMPARE(startAgain(first, {structure("1ejg.pdb")}).status, 0);
        QFile go(folder.filePath("go"));
        QVERIFY(go.open(QIODevice::WriteOnly));
        go.close();
        QVERIFY(m_screen->waitForWindow("1ubq, 1ejg - Workbench", first));
        end(first);
    }

    void aFileThatCannotBeOpenedIsSaidInTheWindowThatRuns() {
        Program first;
        m_screen->show(first);
        first.start({structure("1ubq.pdb")});
        const qint64 window = m_screen->waitForWindow("1ubq - Workbench", first);
        QVERIFY(window);
        const QDeadlineTimer deadline(60'000);
        QImage before;
        do
            before = m_screen->picture(window);
        while (isEmpty(before) && !deadline.hasExpired());
        const Ended second = startAgain(first, {"/nowhere/none.pdb"});
        QCOMPARE(second.status, 0);
        QVERIFY(first.waitForError("/nowhere/none.pdb"));
        // The line takes room below the find box, at the cost of everything under it.
        const QRect below(10, 60, 300, 40);
        while (m_screen->picture(window).copy(below) == before.copy(below))
            QVERIFY(!deadline.hasExpired());
        end(first);
    }
};

REGISTER_TEST(SecondStartTest)
#include "SecondStartTest.moc"
