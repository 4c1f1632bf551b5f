#include "PluginManager.h"
#include "BaseWindow.h"
#include "PluginFolder.h"
#include "Services.h"
#include "TestSupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QTemporaryDir>

#include <dlfcn.h>
#include <functional>
#include <memory>

using namespace memory_host;

namespace {

using Action = std::function<void()>;

/// Whether a library is in memory; asking does not load it.
bool isInMemory(const QString& file) {
    void* const handle = dlopen(QFile::encodeName(file).constData(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
}

void send(const std::string& name, const std::string& command, void* data,
          const std::string& argument = {}) {
    PluginManager::Command("Create", name, "Tester", command, argument, data);
}

BaseWindow* windowTitled(const QString& title) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->windowTitle() == title)
            return qobject_cast<BaseWindow*>(widget);
    }
    return nullptr;
}

} // namespace

class PluginManagerTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    /// Puts one of the test plug-ins, under its own or another name, into the plug-in folder.
    QString place(const QString& plugin, const QString& file = {}) {
        const QString built = QStringLiteral(TEST_PLUGINS "/lib%1.so").arg(plugin);
        if (!QFile::exists(built))
            qFatal("%s is not built", qPrintable(built));
        QString path = pathOf(file.isEmpty() ? "Create/lib" + plugin + ".so" : file);
        if (!QFile::copy(built, path))
            qFatal("%s cannot be written", qPrintable(path));
        return path;
    }
    /// The path of a file in the plug-in folder; its folder is made.
    QString pathOf(const QString& file) {
        QString path = m_folder->filePath(file);
        QDir().mkpath(QFileInfo(path).path());
        return path;
    }
    QString placeText(const QString& file, const QByteArray& text) {
        QString path = pathOf(file);
        QFile out(path);
        if (!out.open(QIODevice::WriteOnly) || out.write(text) != text.size())
            qFatal("%s cannot be written", qPrintable(path));
        return path;
    }
    QStringList load() { return loadPlugins(m_folder->path()); }
    /// Loads one test plug-in.
    QString loadOne(const QString& plugin) {
        QString path = place(plugin);
        if (load() != QStringList("Create/" + plugin))
            qFatal("%s is not loaded: %s", qPrintable(plugin),
                   qPrintable(takeHostLog().join(u'\n')));
        return path;
    }

private slots:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }
    void cleanup() override {
        unloadPlugins();
        // A line for each clean-up is the test plug-in's own.
        QStringList left = takeHostLog();
        left.removeIf([](const QString& line) { return line.startsWith("Cleanup "); });
        QCOMPARE(left, QStringList());
        m_folder.reset();
        TestCase::cleanup();
    }

    void pluginsAreLoadedInOrderOfTypeAndName() {
        place("Good", "Edit/libB.so");
        place("Good", "Create/libZ.so");
        place("Other", "Create/liba.so.0");
        place("Other", "Create/libA.b.so.1.2");
        placeText("Create/README", "no library");
        placeText("Create/libnotes.so.txt", "no library");
        placeText("libGood.so", "a file where the types should be");
        pathOf("Empty/x");
        QCOMPARE(load(), QStringList({"Create/A.b", "Create/Z", "Create/a", "Edit/B"}));
        QVERIFY(PluginManager::FindPlugin("Create", "a"));
        QVERIFY(PluginManager::FindPlugin("Edit", "B"));
        QVERIFY(!PluginManager::FindPlugin("Create", "B"));
        QVERIFY(!PluginManager::FindPlugin("Create", "z"));
        QVERIFY(!PluginManager::FindPlugin("", ""));
    }

    void versionLinksToOneFileAreOnePlugin() {
        const QString file = place("Good", "Create/libGood.so.0.1.0");
        QVERIFY(QFile::link("libGood.so.0.1.0", pathOf("Create/libGood.so.0")));
        QVERIFY(QFile::link("libGood.so.0", pathOf("Create/libGood.so")));
        QVERIFY(QFile::link("libGone.so.0", pathOf("Create/libGone.so")));
        QCOMPARE(load(), QStringList("Create/Good"));
    }

    void theNewestOfSeveralVersionsIsLoaded() {
        place("Good", "Create/libGood.so.0.9");
        const QString old = place("Good", "Create/libGood.so.0.10.1");
        const QString newest = place("Other", "Create/libGood.so.1");
        QCOMPARE(load(), QStringList("Create/Good"));
        QVERIFY(isInMemory(newest));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 2);
        QCOMPARE(log.filter("left out for " + newest).size(), 1);
        QVERIFY(log.at(0).contains("libGood.so.0.9") || log.at(1).contains("libGood.so.0.9"));
    }

    void aFolderThatIsMissingIsOneLine() {
        QCOMPARE(loadPlugins(m_folder->filePath("none")), QStringList());
        QCOMPARE(loadPlugins(QString()), QStringList());
        QCOMPARE(takeHostLog(),
                 QStringList({"Plug-in folder " + m_folder->filePath("none") + " does not exist",
                              "Plug-in folder  does not exist"}));
        QVERIFY(allPluginsDone());
    }

    void whatIsNoLibraryIsNamedAndTheOthersGoOn() {
        const QString text = placeText("Create/libText.so", "this is no library\n");
        const QString empty = placeText("Create/libEmpty.so", "");
        place("Good");
        QCOMPARE(load(), QStringList("Create/Good"));
        QCOMPARE(takeHostLog(),
                 QStringList({"Plug-in Create/Empty (" + empty +
                                  ") cannot be loaded: it is not a shared library",
                              "Plug-in Create/Text (" + text +
                                  ") cannot be loaded: it is not a shared library"}));
    }

    void aLibraryThatIsCutOffIsRefusedAtAnyLength() {
        QFile whole(QStringLiteral(TEST_PLUGINS "/libGood.so"));
        QVERIFY(whole.open(QIODevice::ReadOnly));
        const QByteArray bytes = whole.readAll();
        QVERIFY(bytes.size() > 4096);
        int refused = 0;
        for (qsizetype length = 4; length < bytes.size(); length += bytes.size() / 61) {
            const QString file =
                placeText(QStringLiteral("Create/libCut%1.so").arg(length), bytes.left(length));
            // Behind the last part that is loaded stand only debugging data.
            if (!load().isEmpty())
                break;
            ++refused;
            const QStringList log = takeHostLog();
            QCOMPARE(log.size(), 1);
            QVERIFY2(log.first().contains(file), qPrintable(log.first()));
            QVERIFY2(log.first().contains("cannot be loaded: "), qPrintable(log.first()));
            QVERIFY(QFile::remove(file));
        }
        QVERIFY(refused > 2);
    }

    void aLibraryOfAnotherMachineIsRefused() {
        QFile whole(QStringLiteral(TEST_PLUGINS "/libGood.so"));
        QVERIFY(whole.open(QIODevice::ReadOnly));
        QByteArray bytes = whole.readAll();
        bytes[18] = '\xf3';
        bytes[19] = '\0';
        const QString file = placeText("Create/libForeign.so", bytes);
        QCOMPARE(load(), QStringList());
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.first().startsWith("Plug-in Create/Foreign (" + file + ") cannot be loaded: "),
                 qPrintable(log.first()));
    }

    void aMissingEntryPointIsNamed() {
        const QString file = place("LacksIsDone");
        place("Good");
        QCOMPARE(load(), QStringList("Create/Good"));
        QCOMPARE(takeHostLog(), QStringList("Plug-in Create/LacksIsDone (" + file +
                                            ") cannot be used: it lacks the entry point IsDone"));
        QVERIFY(!PluginManager::FindPlugin("Create", "LacksIsDone"));
        QVERIFY(!isInMemory(file));
    }

    void aSymbolThatStandsNowhereIsFoundWhenLoading() {
        const QString file = place("LacksSymbol");
        place("Other");
        QCOMPARE(load(), QStringList("Create/Other"));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(
            log.first().startsWith("Plug-in Create/LacksSymbol (" + file + ") cannot be loaded: "),
            qPrintable(log.first()));
        QVERIFY2(log.first().contains("standsNowhere"), qPrintable(log.first()));
    }

    void loadingAgainKeepsWhatIsLoaded() {
        const QString file = loadOne("Good");
        const Plugin* const plugin = PluginManager::FindPlugin("Create", "Good");
        QCOMPARE(load(), QStringList());
        QCOMPARE(PluginManager::FindPlugin("Create", "Good"), plugin);
        QCOMPARE(takeHostLog(), QStringList());

        const QTemporaryDir other;
        QVERIFY(QDir(other.path()).mkdir("Create"));
        const QString second = other.filePath("Create/libGood.so");
        QVERIFY(QFile::copy(file, second));
        QCOMPARE(loadPlugins(other.path()), QStringList());
        QCOMPARE(takeHostLog(), QStringList("Plug-in Create/Good (" + second +
                                            ") is left out: it is loaded from " + file));
    }

    void commandReachesTheEntryPointOfWritableData() {
        loadOne("Good");
        double value = 2.5;
        PluginManager::Command("Create", "Good", "Tester", "Record", "1.0", &value);
        QCOMPARE(takeHostLog(), QStringList("Command 2.500000 Create|Good|Tester|Record|1.0|d"));
    }

    void commandReachesTheEntryPointOfReadOnlyData() {
        loadOne("Good");
        const double value = -1.0;
        PluginManager::Command("Create", "Good", "Tester", "Record", "", &value);
        QCOMPARE(takeHostLog(), QStringList("CommandC -1.000000 Create|Good|Tester|Record||c"));
    }

    void executeHandsOnBothPointers() {
        loadOne("Good");
        double value = 1.0;
        int more = 0;
        PluginManager::Execute("Create", "Good", "Tester", "Record", &value, &more);
        QCOMPARE(takeHostLog(), QStringList("Command 1.000000 Create|Good|Tester|Record||dm"));
        Action check = [&] {
            QCOMPARE(PluginManager::CurrentCall()->data, &check);
            QCOMPARE(PluginManager::CurrentCall()->more, &more);
            QVERIFY(!PluginManager::CurrentCall()->constData);
        };
        PluginManager::Execute("Create", "Good", "Tester", "Run", &check, &more);
    }

    void theRightOneOfSeveralPluginsIsCalled() {
        place("Good");
        place("Other");
        place("Good", "Edit/libGood.so");
        QCOMPARE(load().size(), 3);
        double value = 0;
        PluginManager::Command("Edit", "Good", "Tester", "Record", "", &value);
        send("Other", "Record", &value);
        QCOMPARE(takeHostLog(), QStringList({"Command 0.000000 Edit|Good|Tester|Record||d",
                                             "Command 0.000000 Create|Other|Tester|Record||d"}));
    }

    void currentCallIsTheInnermostAndEndsWithIt() {
        place("Good");
        place("Other");
        QCOMPARE(load().size(), 2);
        QVERIFY(!PluginManager::CurrentCall());
        int ran = 0;
        Action inner = [&] {
            ++ran;
            QCOMPARE(PluginManager::CurrentCall()->name, "Other");
            QCOMPARE(PluginManager::CurrentCall()->argument, "inner");
        };
        Action again = [&] {
            ++ran;
            QCOMPARE(PluginManager::CurrentCall()->argument, "again");
        };
        Action outer = [&] {
            ++ran;
            QCOMPARE(PluginManager::CurrentCall()->argument, "outer");
            send("Other", "Run", &inner, "inner");
            QCOMPARE(PluginManager::CurrentCall()->argument, "outer");
            send("Good", "Run", &again, "again");
            QCOMPARE(PluginManager::CurrentCall()->argument, "outer");
            send("Nobody", "Run", &inner, "nobody");
            QCOMPARE(PluginManager::CurrentCall()->name, "Good");
            send("Other", "ThrowNumber", nullptr);
            QCOMPARE(PluginManager::CurrentCall()->name, "Good");
        };
        send("Good", "Run", &outer, "outer");
        QVERIFY(!PluginManager::CurrentCall());
        QCOMPARE(ran, 3);
        QCOMPARE(takeHostLog().size(), 2);
    }

    void aCallOutlivesTheTextsItWasMadeFrom() {
        loadOne("Good");
        auto argument = std::make_unique<std::string>(200, 'x');
        Action drop = [&] {
            argument.reset();
            QCOMPARE(PluginManager::CurrentCall()->argument, std::string(200, 'x'));
        };
        send("Good", "Run", &drop, *argument);
        QVERIFY(!argument);
    }

    void aPluginThatIsNotThereIsOneLine() {
        double value = 0;
        send("Nobody", "Record", &value, "2.0");
        PluginManager::Command("", "", "Tester", "Record", "", static_cast<const void*>(&value));
        PluginManager::Execute("Create", "Rotamer", "Tester", "Find", &value, &value);
        QVERIFY(!startPlugin("Edit/Nobody"));
        QVERIFY(!startPlugin("nonsense"));
        QCOMPARE(takeHostLog(),
                 QStringList({"Plug-in Create/Nobody is not loaded (Record 2.0 from Tester)",
                              "Plug-in / is not loaded (Record from Tester)",
                              "Plug-in Create/Rotamer is not loaded (Find from Tester)",
                              "Plug-in Edit/Nobody is not loaded (default action)",
                              "Plug-in nonsense/ is not loaded (default action)"}));
    }

    void anAnswerOtherThanSuccessIsLogged() {
        const QString file = loadOne("Good");
        const QString plugin = "Plug-in Create/Good (" + file + ") ";
        const double value = 0;
        send("Good", "Dance", nullptr);
        PluginManager::Command("Create", "Good", "Tester", "Dance", "", &value);
        send("Good", "Fail", nullptr);
        QCOMPARE(
            takeHostLog(),
            QStringList({plugin + "answered with code 10: 'Dance' is not known (Dance from Tester)",
                         plugin + "answered with code 10 (Dance from Tester)",
                         plugin + "answered with code 1 (Fail from Tester)"}));
    }

    void exceptionsOutOfAnyEntryPointAreLoggedAndTheOthersGoOn_data() {
        QTest::addColumn<QString>("thrower");
        for (const char* entryPoint : {"Command", "CommandC", "Execute0", "IsDone", "Cleanup"})
            QTest::newRow(entryPoint) << QString::fromLatin1(entryPoint);
    }
    void exceptionsOutOfAnyEntryPointAreLoggedAndTheOthersGoOn() {
        QFETCH(const QString, thrower);
        const QString name = "Throws" + thrower;
        const QString file = place(name);
        place("Good");
        place("Other", "Create/libZed.so");
        QCOMPARE(load(), QStringList({"Create/Good", "Create/" + name, "Create/Zed"}));

        const QStringList plugins{"Good", name, "Zed"};
        double value = 3;
        for (const QString& plugin : plugins) {
            QCOMPARE(startPlugin("Create/" + plugin), plugin != name || thrower != "Execute0");
            send(plugin.toStdString(), "Record", &value);
            PluginManager::Command("Create", plugin.toStdString(), "Tester", "Record", "",
                                   static_cast<const void*>(&value));
            QVERIFY(!PluginManager::CurrentCall());
        }
        QVERIFY(allPluginsDone());
        unloadPlugins();

        QStringList expected;
        const auto expect = [&](const QString& plugin, const QString& entryPoint,
                                const QString& during, const QString& line) {
            if (plugin == name && entryPoint == thrower)
                expected << "Plug-in Create/" + name + " (" + file +
                                ") threw (anonymous namespace)::OwnError: no " + thrower +
                                " here (" + during + ")";
            else if (!line.isEmpty())
                expected << line;
        };
        for (const QString& plugin : plugins) {
            expect(plugin, "Execute0", "default action", "Execute0 ");
            for (const QString& entryPoint : {QString("Command"), QString("CommandC")})
                expect(plugin, entryPoint, "Record from Tester",
                       entryPoint + " 3.000000 Create|" + plugin + "|Tester|Record||" +
                           (entryPoint == "Command" ? "d" : "c"));
        }
        expect(name, "IsDone", "IsDone", "");
        for (const QString& plugin : plugins)
            expect(plugin, "Cleanup", "Cleanup", "Cleanup 1");
        QCOMPARE(takeHostLog(), expected);
    }

    void whatIsNoExceptionClassIsLoggedToo() {
        const QString file = loadOne("Good");
        send("Good", "ThrowNumber", nullptr);
        QCOMPARE(takeHostLog(), QStringList("Plug-in Create/Good (" + file +
                                            ") threw int (ThrowNumber from Tester)"));
    }

    void aPluginThatCannotSayWhetherItIsDoneIsToldOnce() {
        place("ThrowsIsDone");
        place("Window");
        QCOMPARE(load().size(), 2);
        for (int i = 0; i < 3; ++i)
            QVERIFY(allPluginsDone());
        QCOMPARE(takeHostLog().size(), 1);
        QVERIFY(startPlugin("Create/Window"));
        QVERIFY(!allPluginsDone());
        QCOMPARE(takeHostLog(), QStringList());
        unloadPlugins();
        takeMessages();
    }

    void pluginsAreDoneWhenTheirWindowsAreClosed() {
        place("Window");
        place("Good");
        QCOMPARE(load().size(), 2);
        QVERIFY(allPluginsDone());
        QVERIFY(startPlugin("Create/Window"));
        BaseWindow* const window = windowTitled("A plug-in's window");
        QVERIFY(window && window->isVisible());
        QVERIFY(!allPluginsDone());
        window->close();
        QVERIFY(allPluginsDone());
        QVERIFY(startPlugin("Create/Window"));
        QVERIFY(window->isVisible());
        QCOMPARE(takeMessages(), QStringList({"GUIPlugin::CommandC: Execution successful",
                                              "GUIPlugin::CommandC: Execution successful"}));
        PluginManager::Command("Create", "Window", "Tester", "Kill", "",
                               static_cast<const void*>(nullptr));
        QVERIFY(!windowTitled("A plug-in's window"));
        QVERIFY(allPluginsDone());
        unloadPlugins();
        QCOMPARE(takeMessages(),
                 QStringList({"GUIPlugin: fKill", "GUIPlugin::CommandC: Execution successful",
                              "GUIPlugin::Cleanup()"}));
    }

    void commandsForTheReadOnlyTableAreUnknownInTheWritableOne() {
        const QString file = loadOne("Window");
        PluginManager::Command("Create", "Window", "Tester", "Show", "",
                               static_cast<void*>(nullptr));
        QCOMPARE(takeHostLog(), QStringList("Plug-in Create/Window (" + file +
                                            ") answered with code 10: "
                                            "Command 'Show' not recognized (Show from Tester)"));
        QCOMPARE(takeMessages(), QStringList("Command 'Show' not recognized"));
        unloadPlugins();
        takeMessages();
    }

    void unloadingCleansUpOnceAndForgets() {
        place("Good");
        const QString other = place("Other");
        QCOMPARE(load().size(), 2);
        QVERIFY(isInMemory(other));
        unloadPlugins();
        QCOMPARE(takeHostLog(), QStringList({"Cleanup 1", "Cleanup 1"}));
        QVERIFY(!isInMemory(other));
        QVERIFY(!PluginManager::FindPlugin("Create", "Good"));
        QVERIFY(allPluginsDone());
        unloadPlugins();
        QCOMPARE(takeHostLog(), QStringList());
    }

    void pluginsCanBeLoadedAgain() {
        loadOne("Good");
        unloadPlugins();
        QCOMPARE(load(), QStringList("Create/Good"));
        double value = 1;
        send("Good", "Record", &value);
        unloadPlugins();
        QCOMPARE(takeHostLog(),
                 QStringList(
                     {"Cleanup 1", "Command 1.000000 Create|Good|Tester|Record||d", "Cleanup 1"}));
    }

    void anOpenWindowIsGoneWithItsPlugin() {
        const QString file = loadOne("Window");
        QVERIFY(startPlugin("Create/Window"));
        const QPointer<BaseWindow> window = windowTitled("A plug-in's window");
        QVERIFY(window && window->isVisible());
        unloadPlugins();
        QVERIFY(!window);
        QVERIFY(!isInMemory(file));
        QCoreApplication::processEvents();
        QCOMPARE(takeMessages(), QStringList({"GUIPlugin::CommandC: Execution successful",
                                              "GUIPlugin::Cleanup()", "GUIPlugin: fKill"}));
    }

    void aWindowThatIsToBeDeletedLaterIsDeletedInTime() {
        const QString file = loadOne("LeavingLater");
        QVERIFY(startPlugin("Create/LeavingLater"));
        const QPointer<BaseWindow> window = windowTitled("Left behind");
        QVERIFY(window);
        unloadPlugins();
        QVERIFY(!window);
        QVERIFY(!isInMemory(file));
        QCoreApplication::processEvents();
    }

    void aWindowThatIsLeftBehindKeepsItsCodeInMemory() {
        const QString file = loadOne("Leaving");
        QVERIFY(startPlugin("Create/Leaving"));
        const QPointer<BaseWindow> window = windowTitled("Left behind");
        QVERIFY(window);
        unloadPlugins();
        QCOMPARE(takeHostLog(),
                 QStringList("Plug-in Create/Leaving (" + file +
                             ") stays in memory: after Cleanup 1 of its widgets exist"));
        QVERIFY(!PluginManager::FindPlugin("Create", "Leaving"));
        QVERIFY(isInMemory(file));
        QVERIFY(window && window->isVisible());
        window->repaint();
        QVERIFY(window->close());
        delete window;
    }

    void commandsWhilePluginsUnloadFindNobody() {
        place("Good");
        place("Other");
        QCOMPARE(load().size(), 2);
        double value = 1;
        Action call = [&] {
            send("Good", "Record", &value);
            send("Other", "Record", &value);
            QVERIFY(!PluginManager::FindPlugin("Create", "Other"));
        };
        // In Cleanup of one, and in the static destructors of another.
        send("Good", "AtCleanup", &call);
        send("Other", "AtUnload", &call);
        unloadPlugins();
        const QStringList refused{"Plug-in Create/Good is not loaded (Record from Tester)",
                                  "Plug-in Create/Other is not loaded (Record from Tester)"};
        QCOMPARE(takeHostLog(),
                 QStringList("Cleanup 1") + refused + QStringList("Cleanup 1") + refused);
    }

    void pluginsAreNeitherLoadedNorUnloadedWhileTheyUnload() {
        const QString file = loadOne("Good");
        Action meddle = [&] {
            unloadPlugins();
            QCOMPARE(load(), QStringList());
        };
        send("Good", "AtCleanup", &meddle);
        unloadPlugins();
        QCOMPARE(takeHostLog(),
                 QStringList({"Cleanup 1", "Plug-ins are not unloaded: one of them is running",
                              "Plug-in folder " + m_folder->path() +
                                  " is not loaded: plug-ins are being unloaded"}));
        QVERIFY(!isInMemory(file));
    }

    void pluginsAreNotUnloadedUnderARunningCommand() {
        const QString file = loadOne("Good");
        Action unload = [] { unloadPlugins(); };
        send("Good", "Run", &unload);
        QCOMPARE(takeHostLog(), QStringList("Plug-ins are not unloaded: one of them is running"));
        QVERIFY(PluginManager::FindPlugin("Create", "Good"));
        // Neither after one that ended with an exception.
        send("Good", "ThrowNumber", nullptr);
        takeHostLog();
        unloadPlugins();
        QCOMPARE(takeHostLog(), QStringList("Cleanup 1"));
        QVERIFY(!isInMemory(file));
    }
};

REGISTER_TEST(PluginManagerTest)
#include "PluginManagerTest.moc"
