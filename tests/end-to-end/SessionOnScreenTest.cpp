#include "Pictures.h"
#include "Program.h"
#include "TestSupport.h"
#include "VirtualScreen.h"

#include <QDeadlineTimer>
#include <QRegularExpression>

#include <algorithm>
#include <functional>
#include <memory>

using namespace end_to_end;

namespace {

/// Places in the main window as it opens on a screen of 1280 x 1024.
constexpr QPoint fileMenu{20, 9};
constexpr QPoint displayMenu{118, 81}; // the Structure Editor's
constexpr QPoint firstEntry{60, 101};
constexpr QPoint nothingInView{450, 690};
constexpr QRect list{2, 92, 100, 580};
constexpr QRect tree{112, 112, 230, 640};
constexpr QRect view{430, 110, 440, 560};
constexpr QRect inspector{900, 76, 240, 300};
constexpr QRect state{700, 782, 450, 16}; // what is selected and hidden
constexpr QRect underHits{10, 56, 200, 12};

/// Pictures that are further apart show something else.
constexpr double other = 0.5;

constexpr int patience = 60'000; // ms

bool isRed(const QColor& color) {
    return color.red() > 120 && color.green() < color.red() / 3 && color.blue() < color.red() / 3;
}
/// What is far away is paler.
bool isGreen(const QColor& color) {
    return color.green() - std::max(color.red(), color.blue()) > 60;
}
/// The outline of what is selected, on a light background.
bool isOutline(const QColor& color) {
    return color.red() > 140 && color.green() < 40 && color.blue() > 120;
}

} // namespace

/// One session from the first file to the end, by mouse and keyboard, seen as a user sees it: on
/// the screen, and in what the program says that it does.
class SessionOnScreenTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<VirtualScreen> m_screen;
    std::unique_ptr<Program> m_program;
    qint64 m_window = 0;

    QImage picture(QRect part) { return m_screen->picture(m_window).copy(part); }
    /// Waits until a part of the window looks as it is to look.
    bool waitUntil(QRect part, const std::function<bool(const QImage&)>& isSo) {
        const QDeadlineTimer deadline(patience);
        while (!deadline.hasExpired())
            if (isSo(picture(part)))
                return true;
        return false;
    }
    bool waitForChange(QRect part, const QImage& before) {
        return waitUntil(part, [&](const QImage& now) { return now != before; });
    }
    bool waitForOtherView(const QImage& before) {
        return waitUntil(view, [&](const QImage& now) { return difference(now, before) > other; });
    }
    bool waitForSameView(const QImage& before) {
        return waitUntil(view, [&](const QImage& now) { return difference(now, before) < other; });
    }
    void keys(const QStringList& names) {
        for (const QString& name : names)
            m_screen->key(name);
    }
    /// Chooses the entry of a menu that so many steps lead down to.
    void choose(QPoint menu, int steps) {
        const int before = m_screen->windowCount();
        m_screen->click(m_window, menu);
        QTRY_VERIFY_WITH_TIMEOUT(m_screen->windowCount() > before, patience);
        keys(QStringList(steps, "Down") + QStringList("Return"));
    }
    /// Types in the find box, and waits for the hits.
    bool find(const QString& text) {
        const QImage before = picture(underHits);
        m_screen->key("ctrl+f");
        m_screen->type(text);
        return waitForChange(underHits, before);
    }

    void open() {
        m_program = std::make_unique<Program>();
        m_screen->show(*m_program);
        m_program->start({"--verbose", structure("1ubq.pdb")});
        m_window = m_screen->waitForWindow("1ubq - Workbench", *m_program);
        QVERIFY(m_window);
        QVERIFY(waitUntil(view, [](const QImage& now) { return !isEmpty(now); }));
        m_screen->focus(m_window);
        choose(fileMenu, 1);
        const qint64 dialog = m_screen->waitForWindow("Open", *m_program);
        QVERIFY(dialog);
        m_screen->focus(dialog);
        m_screen->type(structure("1ejg.pdb"));
        m_screen->key("Return");
        QVERIFY(m_screen->waitForWindow("1ubq, 1ejg - Workbench", *m_program));
        QVERIFY(m_program->waitForError("Open 1ejg"));
        m_screen->focus(m_window);
        // Without the one that was there first.
        m_screen->click(m_window, firstEntry);
        m_screen->key("ctrl+w");
        QVERIFY(m_screen->waitForWindow("1ejg - Workbench", *m_program));
        const QImage empty = picture(tree);
        // Elsewhere in between, or the two clicks on the list would be one double click.
        m_screen->click(m_window, nothingInView);
        m_screen->click(m_window, firstEntry);
        QVERIFY(waitForChange(tree, empty));
    }

    void turn() {
        m_screen->click(m_window, nothingInView);
        const QImage before = picture(view);
        m_screen->key("Home");
        QVERIFY(waitForOtherView(before)); // the camera was that of two structures
        const QImage whole = picture(view);
        m_screen->drag(m_window, view.center(), view.center() + QPoint(90, 40));
        QVERIFY(waitForOtherView(whole));
        m_screen->key("Home");
        QVERIFY(waitForSameView(whole));
    }

    void pick() {
        m_screen->key("5"); // spheres
        std::optional<QPoint> oxygen;
        QVERIFY(waitUntil(view, [&](const QImage& now) {
            oxygen = findSquare(now, 9, isRed);
            return oxygen.has_value();
        }));
        const QImage whole = m_screen->picture(m_window);
        const QColor highlight = whole.pixelColor(firstEntry.x() + 35, firstEntry.y());
        const auto isHighlight = [&](const QColor& color) { return color == highlight; };
        QCOMPARE(count(whole.copy(tree), isHighlight), 0);
        QCOMPARE(count(whole.copy(view), isOutline), 0);
        m_screen->click(m_window, view.topLeft() + *oxygen);
        QVERIFY(m_program->waitForError("Select atom O"));
        QVERIFY(waitUntil(view, [](const QImage& now) { return count(now, isOutline) > 10; }));
        QVERIFY(waitUntil(tree, [&](const QImage& now) { return count(now, isHighlight) > 20; }));
        QVERIFY(waitForChange(state, whole.copy(state)));
        QVERIFY(waitForChange(inspector, whole.copy(inspector)));
    }

    void search() {
        const QImage before = m_screen->picture(m_window);
        QVERIFY(find("CYS 16"));
        m_screen->key("Return");
        QVERIFY(
            waitUntil(underHits, [&](const QImage& now) { return now == before.copy(underHits); }));
        QVERIFY(waitForChange(tree, before.copy(tree)));
        QVERIFY(waitForChange(inspector, before.copy(inspector)));
        QVERIFY(waitForOtherView(before.copy(view)));
        // The selection stays as it was.
        QCOMPARE(picture(state), before.copy(state));
    }

    void hide() {
        const QImage before = m_screen->picture(m_window);
        QVERIFY(find("within 6 of :16@SG"));
        m_screen->key("ctrl+Return");
        QVERIFY(m_program->waitForError("Select 107 atoms found"));
        QVERIFY(waitForChange(state, before.copy(state)));
        const QImage selected = m_screen->picture(m_window);
        choose(displayMenu, 1);
        QVERIFY(m_program->waitForError("Hide 107 atoms"));
        QVERIFY(waitForOtherView(selected.copy(view)));
        QVERIFY(waitForChange(state, selected.copy(state)));
        choose(displayMenu, 4);
        QVERIFY(m_program->waitForError("Show 107 atoms"));
        QVERIFY(waitForSameView(selected.copy(view)));
        QVERIFY(waitUntil(state, [&](const QImage& now) { return now == selected.copy(state); }));
    }

    void colour() {
        QCOMPARE(count(picture(view), isGreen), 0);
        choose(displayMenu, 5);
        const qint64 dialog = m_screen->waitForWindow("Select Color", *m_program);
        QVERIFY(dialog);
        m_screen->focus(dialog);
        keys({"alt+h", "ctrl+a"});
        m_screen->type("#00c000");
        m_screen->key("Return");
        QVERIFY(waitUntil(view, [](const QImage& now) { return count(now, isGreen) > 200; }));
        m_screen->focus(m_window);
    }

    void switchModels() {
        m_screen->click(m_window, nothingInView);
        m_screen->key("3"); // sticks
        QVERIFY(find("altloc B"));
        m_screen->key("shift+ctrl+Return");
        QVERIFY(m_program->waitForError("Select 469 atoms found"));
        QVERIFY(waitUntil(view, [](const QImage& now) { return count(now, isOutline) > 1000; }));
        const QImage first = picture(view);
        m_screen->click(m_window, firstEntry);
        m_screen->key("n");
        QVERIFY(m_program->waitForError("Next model of 17 residues"));
        QVERIFY(waitForOtherView(first));
        m_screen->key("f");
        QVERIFY(waitForSameView(first));
    }

    void close() {
        m_screen->key("ctrl+w");
        QVERIFY(m_screen->waitForWindow("Workbench", *m_program));
        for (const QRect part : {list, tree, view})
            QVERIFY(waitUntil(part, isEmpty));
    }

    void quit() {
        m_screen->key("ctrl+q");
        const Ended ended = m_program->finish();
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors.filter(QRegularExpression("error|warning|failed|ASSERT")),
                 QStringList());
    }

private slots:
    void initTestCase() { m_screen = std::make_unique<VirtualScreen>(); }
    void cleanup() override {
        m_program.reset();
        TestCase::cleanup();
    }
    void cleanupTestCase() { m_screen.reset(); }

    void everyStepIsSeenOnTheScreen() {
        using Step = void (SessionOnScreenTest::*)();
        for (const Step step :
             {&SessionOnScreenTest::open, &SessionOnScreenTest::turn, &SessionOnScreenTest::pick,
              &SessionOnScreenTest::search, &SessionOnScreenTest::hide,
              &SessionOnScreenTest::colour, &SessionOnScreenTest::switchModels,
              &SessionOnScreenTest::close, &SessionOnScreenTest::quit}) {
            (this->*step)();
            if (QTest::currentTestFailed())
                return;
        }
    }
};

REGISTER_TEST(SessionOnScreenTest)
#include "SessionOnScreenTest.moc"
