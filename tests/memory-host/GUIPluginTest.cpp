#include "GUIPlugin.h"

#include "BaseWindow.h"
#include "TestSupport.h"

#include <QApplication>
#include <QRegularExpression>

#include <functional>
#include <stdexcept>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

/// The frame gives up tables when it is told to start twice; while one of these lives, what is made
/// is not counted as a leak.
struct LeakAllowed {
#if defined(__SANITIZE_ADDRESS__)
    LeakAllowed() {
        __lsan_disable();
    }
    ~LeakAllowed() {
        __lsan_enable();
    }
#else
    LeakAllowed() {}
    ~LeakAllowed() {}
#endif
    LeakAllowed(const LeakAllowed&) = delete;
    LeakAllowed& operator=(const LeakAllowed&) = delete;
};

class TestWindow : public BaseWindow {
public:
    TestWindow()
        : BaseWindow(QStringLiteral("Framed"), QSize(200, 100), QString(), false, nullptr,
                     nullptr) {
        if (throwing)
            throw std::runtime_error("no window today");
        last = this;
        ++made;
    }
    ~TestWindow() override {
        if (ending)
            ending();
        last = nullptr;
        ++destroyed;
    }

    int raised = 0;

    static inline TestWindow* last = nullptr;
    static inline int made = 0;
    static inline int destroyed = 0;
    static inline bool throwing = false;
    static inline std::function<void()> ending; ///< what a window does as it goes

protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::ZOrderChange)
            ++raised;
        return BaseWindow::event(event);
    }
};

using Frame = GUIPlugin<TestWindow>;

struct Call {
    int number = 0;
    const void* data = nullptr;
    PluginResult* result = nullptr;
} called;

template <int number> void action(void* data, PluginResult* result) {
    called = {number, data, result};
}
template <int number> void constAction(const void* data, PluginResult* result) {
    called = {-number, data, result};
}
void failing(void*, PluginResult* result) {
    result->SetResultCode(PluginResult::Failure);
    result->SetResultText("it did not work");
}
void throwing(void*, PluginResult*) {
    throw std::runtime_error("thrown by an action");
}
void killing(void*, PluginResult*) {
    Frame::fKill(nullptr, nullptr);
}

} // namespace

GUI_PLUGIN(TestWindow)

class GUIPluginTest : public test_support::TestCase {
    Q_OBJECT

    PluginResult m_result;

    /// Compares the lines since the last call; `#` stands for the line of a check in the frame.
    static void compareMessages(const QStringList& expected) {
        static const QRegularExpression place(
            QStringLiteral("(\\.\\./\\.\\./include/GUIPlugin)( \\(|, line )\\d+"));
        QStringList messages = takeMessages();
        for (QString& message : messages)
            message.replace(place, QStringLiteral("\\1\\2#"));
        QCOMPARE(messages.join(u'\n'), expected.join(u'\n'));
    }
    static QString outOfMemory() {
        return "In file ../../include/GUIPlugin, line #: Out of memory";
    }
    static QString assertion(const QString& text) {
        return "ASSERT: \"" + text + "\" in ../../include/GUIPlugin (#)";
    }
    static QString success(const QString& entryPoint) {
        return "GUIPlugin::" + entryPoint + ": Execution successful";
    }
    /// The host's calls, with a result of their own.
    void command(const char* name, void* data = nullptr) {
        m_result = {};
        ::Command(name, data, &m_result);
    }
    void commandC(const char* name, const void* data = nullptr) {
        m_result = {};
        ::CommandC(name, data, &m_result);
    }
    void compareResult(int code, const std::string& text) {
        QCOMPARE(static_cast<int>(m_result.GetResultCode()), code);
        QCOMPARE(m_result.GetResultText(), text);
    }

private slots:
    void init() override {
        TestCase::init();
        TestWindow::made = TestWindow::destroyed = 0;
        TestWindow::ending = {};
        called = {};
    }
    void cleanup() override {
        if (TestWindow::last) {
            ::Cleanup();
            takeMessages();
        }
        QCOMPARE(TestWindow::destroyed, TestWindow::made);
        TestCase::cleanup();
    }

    void loadingMakesNothingAndThePluginIsDone() {
        QVERIFY(::IsDone());
        QCOMPARE(TestWindow::made, 0);
    }

    void theDefaultActionShowsTheWindow() {
        m_result = {};
        ::Execute0(&m_result);
        const TestWindow* const window = TestWindow::last;
        QVERIFY(window);
        QVERIFY(window->isVisible());
        QVERIFY(!window->parentWidget());
        QVERIFY(!::IsDone());
        compareMessages({success("CommandC")});
        compareResult(0, "");
    }

    void aWindowThatIsClosedIsDoneAndKept() {
        ::Execute0(&m_result);
        TestWindow* const window = TestWindow::last;
        QVERIFY(window->close());
        QVERIFY(::IsDone());
        ::Execute0(&m_result);
        QCOMPARE(TestWindow::last, window);
        QVERIFY(window->isVisible());
        QVERIFY(!::IsDone());
        QCOMPARE(TestWindow::made, 1);
        takeMessages();
    }

    void aMinimisedWindowIsNotDone() {
        ::Execute0(&m_result);
        TestWindow::last->showMinimized();
        QVERIFY(TestWindow::last->isMinimized());
        QVERIFY(!::IsDone());
        // Hidden by the program, it is still minimised.
        TestWindow::last->hide();
        QVERIFY(!::IsDone());
        TestWindow::last->setWindowState(Qt::WindowNoState);
        QVERIFY(::IsDone());
        takeMessages();
    }

    void showRestoresAMinimisedWindowAndRaisesIt() {
        ::Execute0(&m_result);
        TestWindow::last->showMinimized();
        const int raised = TestWindow::last->raised;
        commandC("Show");
        QVERIFY(TestWindow::last->isVisible());
        QVERIFY(!TestWindow::last->isMinimized());
        QCOMPARE(TestWindow::last->raised, raised + 1);
        takeMessages();
    }

    void showOnlyRaisesAVisibleWindow() {
        ::Execute0(&m_result);
        TestWindow::last->showMaximized();
        const int raised = TestWindow::last->raised;
        commandC("Show");
        QVERIFY(TestWindow::last->isMaximized());
        QCOMPARE(TestWindow::last->raised, raised + 1);
        compareMessages({success("CommandC"), success("CommandC")});
    }

    void killDestroysTheWindow() {
        ::Execute0(&m_result);
        takeMessages();
        commandC("Kill");
        QVERIFY(!TestWindow::last);
        QVERIFY(::IsDone());
        compareMessages({"GUIPlugin: fKill", success("CommandC")});
        compareResult(0, "");
    }

    // A window that ends may still use what the frame holds for it.
    void killDestroysTheWindowBeforeTheTables() {
        ::Execute0(&m_result);
        Frame::addAction("write", &action<1>);
        Frame::addAction("read", &constAction<2>);
        std::vector<int> seen;
        bool wasDone = true;
        TestWindow::ending = [&] {
            for (const bool writes : {true, false}) {
                if (writes)
                    Frame::execAction("write", static_cast<void*>(&seen), nullptr);
                else
                    Frame::execAction("read", static_cast<const void*>(&seen), nullptr);
                seen.push_back(called.data == &seen ? called.number : 0);
            }
            wasDone = ::IsDone();
        };
        commandC("Kill");
        QCOMPARE(seen, (std::vector<int>{1, -2}));
        QVERIFY(!wasDone); // it is still to be seen
        QVERIFY(::IsDone());
        compareMessages({success("CommandC"), "GUIPlugin: fKill", success("Command"),
                         success("CommandC"), success("CommandC")});
    }

    void killWithoutAWindowMakesOneAndDestroysIt() {
        commandC("Kill");
        QCOMPARE(TestWindow::made, 1);
        QCOMPARE(TestWindow::destroyed, 1);
        compareMessages({"GUIPlugin: fKill", success("CommandC")});
        compareResult(0, "");
    }

    void aCommandAfterKillStartsAnew() {
        commandC("Kill");
        takeMessages();
        commandC("Show");
        QVERIFY(TestWindow::last && TestWindow::last->isVisible());
        QCOMPARE(TestWindow::made, 2);
        compareMessages({success("CommandC")});
    }

    void aWindowOutOfTheWritableTableIsUnknown_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("show") << QByteArray("Show");
        QTest::newRow("kill") << QByteArray("Kill");
    }
    void aWindowOutOfTheWritableTableIsUnknown() {
        QFETCH(const QByteArray, name);
        command(name.constData());
        const QString text = "Command '" + QString::fromLatin1(name) + "' not recognized";
        compareResult(10, text.toStdString());
        compareMessages({text});
        QVERIFY(TestWindow::last && TestWindow::last->isHidden());
        QVERIFY(::IsDone());
    }

    void unknownNamesAreAnsweredWithCode10_data() {
        QTest::addColumn<QByteArray>("name");
        for (const char* name : {"Dance", "show", "SHOW", "Show ", "", "100%s %d", "'"})
            QTest::newRow(name) << QByteArray(name);
    }
    void unknownNamesAreAnsweredWithCode10() {
        QFETCH(const QByteArray, name);
        const QString rest = " '" + QString::fromLatin1(name) + "' not recognized";
        commandC(name.constData());
        compareResult(10, ("CommandC" + rest).toStdString());
        command(name.constData());
        compareResult(10, ("Command" + rest).toStdString());
        compareMessages({"CommandC" + rest, "Command" + rest});
        QCOMPARE(TestWindow::made, 1);
    }

    void aNullNameWarnsAndIsUnknown() {
        command(nullptr);
        compareResult(10, "Command '' not recognized");
        commandC(nullptr);
        compareResult(10, "CommandC '' not recognized");
        compareMessages({outOfMemory(), "Command '' not recognized", outOfMemory(),
                         "CommandC '' not recognized"});
    }

    void anActionGetsDataAndResult() {
        command("Show");
        Frame::addAction("Do", &action<1>);
        Frame::addAction("Do", &constAction<2>);
        int data = 0;
        takeMessages();
        command("Do", &data);
        QCOMPARE(called.number, 1);
        QCOMPARE(called.data, &data);
        QCOMPARE(called.result, &m_result);
        commandC("Do", &data);
        QCOMPARE(called.number, -2);
        QCOMPARE(called.data, &data);
        compareResult(0, "");
        compareMessages({success("Command"), success("CommandC")});
    }

    void theSuccessLineComesWhateverTheActionAnswered() {
        command("Show");
        Frame::addAction("Fail", &failing);
        takeMessages();
        command("Fail");
        compareResult(1, "it did not work");
        compareMessages({success("Command")});
    }

    void anActionThatIsRedefinedIsTheLastOne() {
        command("Show");
        takeMessages();
        Frame::addAction("Do", &action<1>);
        Frame::addAction("Do", &constAction<1>);
        compareMessages({});
        Frame::addAction("Do", &action<2>);
        Frame::addAction("Do", &constAction<3>);
        compareMessages(
            {"GUIPlugin: redefining Action 'Do'", "GUIPlugin: redefining CAction 'Do'"});
        command("Do");
        QCOMPARE(called.number, 2);
        commandC("Do");
        QCOMPARE(called.number, -3);
        takeMessages();
    }

    void theOwnActionsOfTheFrameCanBeRedefined() {
        command("Show");
        takeMessages();
        Frame::addAction("Show", &constAction<4>);
        ::Execute0(&m_result);
        QCOMPARE(called.number, -4);
        QVERIFY(TestWindow::last->isHidden());
        compareMessages({"GUIPlugin: redefining CAction 'Show'", success("CommandC")});
    }

    void anEmptyNameWarnsAndIsRegistered() {
        command("Show");
        takeMessages();
        Frame::addAction("", &action<5>);
        Frame::addAction("", &constAction<6>);
        compareMessages({assertion("! Action.empty()"), assertion("! Action.empty()")});
        command("");
        QCOMPARE(called.number, 5);
        commandC(nullptr);
        QCOMPARE(called.number, -6);
        compareMessages({success("Command"), outOfMemory(), success("CommandC")});
    }

    void aNullFunctionWarnsAndIsRegistered() {
        command("Show");
        takeMessages();
        Frame::addAction("Null", static_cast<Frame::Action>(nullptr));
        Frame::addAction("Null", static_cast<Frame::CAction>(nullptr));
        compareMessages({outOfMemory(), outOfMemory()});
        Frame::addAction("Null", &action<7>);
        compareMessages({"GUIPlugin: redefining Action 'Null'"});
        command("Null");
        QCOMPARE(called.number, 7);
        takeMessages();
    }

    void actionsAreForgottenWithTheWindow() {
        command("Show");
        Frame::addAction("Do", &action<1>);
        commandC("Kill");
        takeMessages();
        command("Do");
        compareResult(10, "Command 'Do' not recognized");
        QCOMPARE(called.number, 0);
        takeMessages();
    }

    void anActionMayDestroyTheTableThatItIsIn() {
        command("Show");
        Frame::addAction("Bye", &killing);
        takeMessages();
        command("Bye");
        QVERIFY(!TestWindow::last);
        compareMessages({"GUIPlugin: fKill", success("Command")});
    }

    void anExceptionOutOfAnActionPassesAndHarmsNothing() {
        command("Show");
        Frame::addAction("Throw", &throwing);
        takeMessages();
        QVERIFY_EXCEPTION_THROWN(command("Throw"), std::runtime_error);
        compareMessages({});
        commandC("Show");
        QVERIFY(TestWindow::last->isVisible());
        compareMessages({success("CommandC")});
    }

    void creatingTwiceWarnsAndStartsAnew() {
        {
            const LeakAllowed leak;
            Frame::Create();
            Frame::addAction("Do", &action<1>);
        }
        const TestWindow* const first = TestWindow::last;
        compareMessages({});
        Frame::Create();
        compareMessages({assertion("0 == options_")});
        QVERIFY(TestWindow::last != first);
        QCOMPARE(TestWindow::made, 2);
        // The tables are new ones.
        command("Do");
        compareResult(10, "Command 'Do' not recognized");
        commandC("Kill");
        QCOMPARE(TestWindow::destroyed, 1);
        takeMessages();
        // Only the first window is left, which nobody owns any more.
        delete first;
    }

    void aConstructorThatThrowsLeavesTheTablesAndNoWindow() {
        TestWindow::throwing = true;
        {
            const LeakAllowed leak;
            QVERIFY_EXCEPTION_THROWN(commandC("Show"), std::runtime_error);
            // The tables are there: an action can be added, and is found.
            Frame::addAction("Do", &action<1>);
            Frame::execAction("Do", static_cast<void*>(nullptr), &m_result);
            QCOMPARE(called.number, 1);
        }
        QVERIFY(::IsDone());
        ::Cleanup();
        compareMessages({success("Command"), "GUIPlugin::Cleanup()"});
        // The next command tries again, with new tables.
        TestWindow::throwing = false;
        commandC("Show");
        QVERIFY(TestWindow::last && TestWindow::last->isVisible());
        compareMessages({assertion("0 == options_"), success("CommandC")});
        command("Do");
        compareResult(10, "Command 'Do' not recognized");
        takeMessages();
    }

    void cleanupDestroysTheWindowOnce() {
        ::Execute0(&m_result);
        takeMessages();
        ::Cleanup();
        QVERIFY(!TestWindow::last);
        QVERIFY(::IsDone());
        compareMessages({"GUIPlugin::Cleanup()", "GUIPlugin: fKill"});
        ::Cleanup();
        compareMessages({"GUIPlugin::Cleanup()"});
        QCOMPARE(TestWindow::destroyed, 1);
    }

    void aCommandAfterCleanupStartsAnew() {
        ::Execute0(&m_result);
        ::Cleanup();
        ::Execute0(&m_result);
        QCOMPARE(TestWindow::made, 2);
        compareMessages(
            {success("CommandC"), "GUIPlugin::Cleanup()", "GUIPlugin: fKill", success("CommandC")});
    }

    void killingWhatIsNotThereOnlyWarns() {
        Frame::fKill(nullptr, nullptr);
        compareMessages({outOfMemory(), "GUIPlugin: fKill", outOfMemory(), outOfMemory()});
    }
};

REGISTER_TEST(GUIPluginTest)
#include "GUIPluginTest.moc"
