#include "Pictures.h"
#include "Program.h"
#include "TestSupport.h"
#include "VirtualScreen.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

using namespace end_to_end;

namespace {

const QString editor = "Structure Editor";
const QString progressTitle = "Opening files";

/// Places in the Structure Editor's window, which opens 400 wide and 600 high.
constexpr QPoint firstEntry{20, 27};
constexpr QPoint fileMenu{15, 10};
/// Places in the window for all.
constexpr QPoint panelBar{60, 62};
constexpr QRect firstRows{114, 112, 100, 24}; // of the tree
constexpr QRect inView{450, 110, 400, 560};
constexpr QRect treeRows{200, 60, 200, 60};
constexpr QRect entry{2, 20, 60, 14};
constexpr QRect lastOfManyEntries = entry.translated(0, 7 * 14);

} // namespace

/// The program on a screen of its own, driven by mouse and keyboard like a user's: with --windows,
/// where the Structure Editor has a window of its own, and then with one window for all.
class WindowOnScreenTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<VirtualScreen> m_screen;

    /// A file that is open at once, and as much of large ones that it takes a while.
    static QStringList manyFiles() {
        return QStringList(structure("1ubq.pdb")) + QStringList(7, structure("6zu5.cif"));
    }

    /// Waits for the Structure Editor's window, until something is drawn in it.
    qint64 waitForEditor(Program& program) {
        const qint64 window = m_screen->waitForWindow(editor, program);
        const QDeadlineTimer deadline(60'000);
        while (window && isEmpty(m_screen->picture(window).copy(entry))) {
            if (deadline.hasExpired())
                return 0;
        }
        return window;
    }

    /// Waits until a part of the window looks different; returns how it looks then, null if it
    /// never does.
    QImage changedPart(qint64 window, QRect part, const QImage& before) {
        const QDeadlineTimer deadline(60'000);
        while (!deadline.hasExpired()) {
            const QImage now = m_screen->picture(window).copy(part);
            if (now != before)
                return now;
        }
        return {};
    }

private slots:
    void initTestCase() { m_screen = std::make_unique<VirtualScreen>(); }
    void cleanupTestCase() { m_screen.reset(); }

    void aRealFileIsShownClickedAndClosed() {
        // The Structure Editor alone, so that its end is that of the program.
        const QTemporaryDir plugins;
        QDir(plugins.path()).mkdir("Edit");
        QVERIFY(
            QFile::copy(STAGE_PLUGINS "/Edit/libVuxo.so.0", plugins.filePath("Edit/libVuxo.so.0")));
        Program program;
        m_screen->show(program);
        program.start({"--windows", "--plugins", plugins.path(), structure("1ubq.pdb")});
        const qint64 window = waitForEditor(program);
        QVERIFY(window);

        // The tree is empty until its entry in the list is clicked.
        const QImage empty = m_screen->picture(window).copy(treeRows);
        QVERIFY(!empty.isNull());
        m_screen->click(window, firstEntry);
        QVERIFY(!changedPart(window, treeRows, empty).isNull());

        // A right click on the entry hides the item, another one shows it again.
        const QImage shown = m_screen->picture(window).copy(entry);
        m_screen->click(window, firstEntry, Qt::RightButton);
        const QImage hidden = changedPart(window, entry, shown);
        QVERIFY(!hidden.isNull());
        // Elsewhere in between, or the two would be one double click.
        m_screen->click(window, treeRows.bottomRight());
        m_screen->click(window, firstEntry, Qt::RightButton);
        QCOMPARE(changedPart(window, entry, hidden), shown);

        // "File" / "Exit", the only entry of the menu.
        m_screen->click(window, fileMenu);
        m_screen->key("Down");
        m_screen->key("Return");
        const Ended ended = program.finish();
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.output, QStringList());
        QCOMPARE(ended.errors, QStringList());
    }

    void whatTakesLongToOpenShowsItsProgressBeforeTheWindow() {
        Program program;
        m_screen->show(program);
        program.start(QStringList("--windows") + manyFiles());
        QVERIFY(m_screen->waitForWindow(progressTitle, program));
        QCOMPARE(m_screen->findWindow(editor), 0);
        const qint64 window = waitForEditor(program);
        QVERIFY(window);
        QCOMPARE(m_screen->findWindow(progressTitle), 0);
        QVERIFY(!isEmpty(m_screen->picture(window).copy(lastOfManyEntries)));
        program.terminate();
        QCOMPARE(program.finish().status, 0);
    }

    void whatWasOpenedBeforeACancelIsShown() {
        Program program;
        m_screen->show(program);
        program.start(QStringList("--windows") + manyFiles());
        const qint64 progress = m_screen->waitForWindow(progressTitle, program);
        QVERIFY(progress);
        m_screen->key("Escape", progress);
        const qint64 window = waitForEditor(program);
        QVERIFY(window);
        QVERIFY(isEmpty(m_screen->picture(window).copy(lastOfManyEntries)));
        program.terminate();
        const Ended ended = program.finish();
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors, QStringList(structure("6zu5.cif") + ": opening was cancelled"));
    }

    void f1ShowsTheHelpPageOfTheDefaultSettings() {
        Program program;
        m_screen->show(program);
        program.start({"--windows", structure("1ubq.pdb")});
        const qint64 window = waitForEditor(program);
        QVERIFY(window);
        // A click gives the window the focus.
        m_screen->click(window, firstEntry);
        m_screen->key("F1");
        QVERIFY(m_screen->waitForWindow("Help: Structure Editor", program));
        program.terminate();
        const Ended ended = program.finish();
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors, QStringList());
    }

    void oneWindowHoldsAllAndItsEndIsThatOfTheProgram() {
        Program program;
        m_screen->show(program);
        program.start({structure("1ubq.pdb")});
        const qint64 window = m_screen->waitForWindow("1ubq - Workbench", program);
        QVERIFY(window);
        QCOMPARE(m_screen->findWindow(editor), 0);
        // Typed in the find box, hits appear below it.
        QImage before;
        const QDeadlineTimer deadline(60'000);
        do
            before = m_screen->picture(window);
        while (isEmpty(before) && !deadline.hasExpired());
        QVERIFY(before.width() > 800 && !isEmpty(before));
        // The first entry is in the tree, and drawn, before anybody clicks.
        for (const QRect part : {firstRows, inView})
            while (isEmpty(m_screen->picture(window).copy(part)))
                QVERIFY(!deadline.hasExpired());
        m_screen->click(window, QPoint(before.width() / 2, before.height() - 8));
        m_screen->key("ctrl+f");
        for (const QString key : {"w", "a", "t", "e", "r"})
            m_screen->key(key);
        QVERIFY(
            !changedPart(window, QRect(10, 80, 200, 60), before.copy(10, 80, 200, 60)).isNull());
        m_screen->key("Escape");
        m_screen->key("ctrl+q");
        const Ended ended = program.finish();
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.output, QStringList());
        QCOMPARE(ended.errors, QStringList());
    }

    void aSecondStartHandsItsFilesToTheFirst() {
        Program first;
        m_screen->show(first);
        first.start({structure("1ubq.pdb")});
        QVERIFY(m_screen->waitForWindow("1ubq - Workbench", first));
        Program second;
        m_screen->show(second);
        second.set("XDG_RUNTIME_DIR", first.home());
        const Ended ended = second.run({structure("1ejg.pdb")});
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors, QStringList());
        QVERIFY(m_screen->waitForWindow("1ubq, 1ejg - Workbench", first));
        // One that is to be new is.
        Program third;
        m_screen->show(third);
        third.set("XDG_RUNTIME_DIR", first.home());
        third.start({"--new", structure("1ejg.pdb")});
        QVERIFY(m_screen->waitForWindow("1ejg - Workbench", third));
        third.terminate();
        QCOMPARE(third.finish().status, 0);
        first.terminate();
        QCOMPARE(first.finish().status, 0);
    }

    void aPanelFloatsWithTheLettersOfItsMenus() {
        Program program;
        m_screen->show(program);
        program.start({structure("1ubq.pdb")});
        const qint64 window = m_screen->waitForWindow("1ubq - Workbench", program);
        QVERIFY(window);
        const QDeadlineTimer deadline(60'000);
        while (isEmpty(m_screen->picture(window)))
            QVERIFY(!deadline.hasExpired());
        // A double click on its bar, until it has heard both clicks.
        while (m_screen->findWindow(editor) == 0) {
            QVERIFY(!deadline.hasExpired());
            m_screen->click(window, panelBar);
            m_screen->click(window, panelBar);
        }
        const qint64 panel = m_screen->waitForWindow(editor, program);
        m_screen->focus(panel);
        m_screen->click(panel, QPoint(40, 100));
        // "File" of the Structure Editor has one entry, "Exit", which closes the panel alone.
        const int before = m_screen->windowCount();
        m_screen->key("alt+f");
        QTRY_VERIFY_WITH_TIMEOUT(m_screen->windowCount() > before, 60'000);
        m_screen->key("Return");
        QTRY_COMPARE_WITH_TIMEOUT(m_screen->findWindow(editor), 0, 60'000);
        QVERIFY(program.isRunning());
        m_screen->focus(window);
        m_screen->key("ctrl+q");
        const Ended ended = program.finish();
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors, QStringList());
    }

    void theEndOfTheSessionEndsTheProgramInOrder() {
        Program program;
        m_screen->show(program);
        program.start({"--windows", structure("1ubq.pdb")});
        QVERIFY(waitForEditor(program));
        program.terminate();
        const Ended ended = program.finish();
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors, QStringList());
    }
};

REGISTER_TEST(WindowOnScreenTest)
#include "WindowOnScreenTest.moc"
