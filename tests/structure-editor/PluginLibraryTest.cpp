// The built plug-in, loaded as a host loads it and driven through its five entry points.
#include "PluginResult.h"
#include "TestSupport.h"
#include "WindowTools.h"

#include <QApplication>
#include <QLibrary>
#include <QListWidget>
#include <QMainWindow>
#include <QProcess>
#include <QRegularExpression>
#include <QTreeView>

#include <algorithm>

using namespace window_tools;

namespace {

const QString libraryPath = QStringLiteral(STAGE_PLUGINS "/Edit/libVuxo.so.0");

QMainWindow* pluginWindow() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->inherits("Vuxo"))
            return qobject_cast<QMainWindow*>(widget);
    return nullptr;
}

QStringList symbolsOf(const QStringList& options) {
    QProcess nm;
    nm.start("nm", options + QStringList(libraryPath));
    if (!nm.waitForFinished() || nm.exitCode() != 0)
        return {"nm failed: " + nm.errorString()};
    return QString::fromLatin1(nm.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

const QString shown = QStringLiteral("GUIPlugin::CommandC: Execution successful");

} // namespace

class PluginLibraryTest : public test_support::TestCase {
    Q_OBJECT

    template <class Function> static Function entry(const char* name) {
        return reinterpret_cast<Function>(QLibrary::resolve(libraryPath, name));
    }

    void (*Command)(const char*, void*, PluginResult*) = nullptr;
    void (*CommandC)(const char*, const void*, PluginResult*) = nullptr;
    void (*Execute0)(PluginResult*) = nullptr;
    bool (*IsDone)() = nullptr;
    void (*Cleanup)() = nullptr;

private slots:
    void initTestCase() {
        Command = entry<decltype(Command)>("Command");
        CommandC = entry<decltype(CommandC)>("CommandC");
        Execute0 = entry<decltype(Execute0)>("Execute0");
        IsDone = entry<decltype(IsDone)>("IsDone");
        Cleanup = entry<decltype(Cleanup)>("Cleanup");
        QVERIFY(Command && CommandC && Execute0 && IsDone && Cleanup);
    }

    void cleanup() override {
        if (pluginWindow()) {
            Cleanup();
            QCOMPARE(takeMessages(), QStringList({"GUIPlugin::Cleanup()", "GUIPlugin: fKill"}));
        }
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
        TestCase::cleanup();
    }

    void itExportsItsFiveEntryPointsAndNothingElse() {
        QStringList names;
        for (const QString& line : symbolsOf({"-D", "--defined-only", "--format=just-symbols"}))
            names << line.section(u'@', 0, 0);
        names.sort();
        QCOMPARE(names, QStringList({"Cleanup", "Command", "CommandC", "Execute0", "IsDone"}));
    }

    void itNeedsNothingOfTheHostButItsInterface() {
        for (const QString& line : symbolsOf({"-D", "--undefined-only", "-C"}))
            QVERIFY2(!line.contains("memory_host"), qPrintable(line));
    }

    void itIsDoneUntilAndAfterItsWindowIsShown() {
        QVERIFY(IsDone());
        PluginResult result;
        Execute0(&result);
        QCOMPARE(takeMessages(), QStringList(shown));
        QCOMPARE(result.GetResultCode(), PluginResult::Success);
        QMainWindow* window = pluginWindow();
        QVERIFY(window && window->isVisible());
        QCOMPARE(window->windowTitle(), "Structure Editor");
        QVERIFY(!IsDone());
        window->close();
        QVERIFY(IsDone());
        QCOMPARE(pluginWindow(), window);
        Execute0(&result);
        takeMessages();
        QCOMPARE(pluginWindow(), window);
        QVERIFY(window->isVisible());
    }

    void aMinimisedWindowIsNotDoneAndIsRestoredByShow() {
        Execute0(nullptr);
        QMainWindow* window = pluginWindow();
        window->showMinimized();
        QVERIFY(!IsDone());
        CommandC("Show", nullptr, nullptr);
        QVERIFY(!window->isMinimized());
        QVERIFY(window->isVisible());
        window->showMaximized();
        CommandC("Show", nullptr, nullptr);
        QVERIFY(window->isMaximized());
        QCOMPARE(takeMessages(), QStringList({shown, shown, shown}));
    }

    void killWithoutAWindowBuildsAndDestroysOne() {
        PluginResult result;
        result.SetResultText("as it was");
        CommandC("Kill", nullptr, &result);
        QCOMPARE(takeMessages(), QStringList({"GUIPlugin: fKill", shown}));
        QCOMPARE(result.GetResultCode(), PluginResult::Success);
        QCOMPARE(result.GetResultText(), "as it was");
        QVERIFY(!pluginWindow());
        QVERIFY(IsDone());
    }

    void aCommandAfterKillStartsAfresh() {
        addStructure("1abc");
        Execute0(nullptr);
        CommandC("Kill", nullptr, nullptr);
        QVERIFY(!pluginWindow());
        addStructure("2abc"); // told to nobody who is gone
        Execute0(nullptr);
        QCOMPARE(takeMessages(), QStringList({shown, "GUIPlugin: fKill", shown, shown}));
        QCOMPARE(pluginWindow()->findChild<QListWidget*>()->count(), 2);
    }

    void showIsUnknownAmongTheWritableActionsButMakesTheWindow() {
        PluginResult result;
        Command("Show", nullptr, &result);
        QCOMPARE(result.GetResultCode(), PluginResult::NotRecognized);
        QCOMPARE(static_cast<int>(result.GetResultCode()), 10);
        QCOMPARE(result.GetResultText(), "Command 'Show' not recognized");
        QCOMPARE(takeMessages(), QStringList("Command 'Show' not recognized"));
        QVERIFY(pluginWindow());
        QVERIFY(pluginWindow()->isHidden());
        QVERIFY(IsDone());
        CommandC("show", nullptr, &result);
        QCOMPARE(result.GetResultText(), "CommandC 'show' not recognized");
        takeMessages();
    }

    void cleanupTwiceOnlySaysSo() {
        Execute0(nullptr);
        takeMessages();
        Cleanup();
        QCOMPARE(takeMessages(), QStringList({"GUIPlugin::Cleanup()", "GUIPlugin: fKill"}));
        Cleanup();
        QCOMPARE(takeMessages(), QStringList("GUIPlugin::Cleanup()"));
        QVERIFY(IsDone());
    }

    void killDuringAQuestionOfTheWindowEndsBoth() {
        addStructure("1abc");
        Execute0(nullptr);
        auto* list = pluginWindow()->findChild<QListWidget*>();
        QVERIFY(withQuestion(
            [&] {
                click(list->viewport(), list->visualItemRect(list->item(0)).center(),
                      Qt::MiddleButton);
            },
            [this](QMessageBox&) { CommandC("Kill", nullptr, nullptr); }));
        QVERIFY(!pluginWindow());
        QCOMPARE(takeMessages(), QStringList({shown, "GUIPlugin: fKill", shown}));
    }

    void itsWindowShowsTheHostsData() {
        addStructure("1abc");
        Execute0(nullptr);
        auto* list = pluginWindow()->findChild<QListWidget*>();
        QCOMPARE(list->item(0)->text(), " _ 1abc");
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(list->item(0)).center());
        QCOMPARE(pluginWindow()->findChild<QTreeView*>()->model()->index(0, 0).data(), "1abc");
        takeMessages();
    }
};

REGISTER_TEST(PluginLibraryTest)
#include "PluginLibraryTest.moc"
