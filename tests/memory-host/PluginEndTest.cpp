// When plug-ins are done, and how they are unloaded: windows, code in memory, and calls meanwhile.
#include "DataMaker.h"
#include "DataPointBase.h"
#include "Focus.h"
#include "Messages.h"
#include "PluginTestCase.h"
#include "Space.h"
#include "items/Subscribers.h"

#include <QPointer>

using namespace memory_host;
using namespace plugin_tools;

class PluginEndTest : public PluginTestCase {
    Q_OBJECT

    static void change() { const DataPointBase guard(nullptr, Publisher::Update); }
    static void destroy() {
        TAVIK::DataMaker::Destroy(
            TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), "surface", "Surface"));
    }
    static void moveFocus() { TAVIK::Focus::set(nullptr, nullptr, true); }
    static void showMessage() { Messages::Show("a message"); }

    /// What a library left behind still hears what there is to tell, and is destroyed.
    static void destroyHearing(const QString& file, void (*tell)() = change) {
        QVERIFY(isInMemory(file));
        tell();
        QStringList heard = takeHostLog();
        heard.removeAll("a message");
        QCOMPARE(heard, QStringList("the subscriber that was left behind hears"));
        void* const library = dlopen(QFile::encodeName(file).constData(), RTLD_LAZY | RTLD_NOLOAD);
        QVERIFY(library);
        reinterpret_cast<void (*)()>(dlsym(library, "DestroySubscriber"))();
        dlclose(library);
    }

private slots:
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

    void aSubscriberThatIsLeftBehindKeepsItsCodeInMemory_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<void (*)()>("tell");
        QTest::newRow("of changes") << "Subscribing" << &change;
        QTest::newRow("of destructions") << "Observing" << &destroy;
        QTest::newRow("of the focus") << "Following" << &moveFocus;
        QTest::newRow("of messages") << "Reading" << &showMessage;
    }
    void aSubscriberThatIsLeftBehindKeepsItsCodeInMemory() {
        using Tell = void (*)();
        QFETCH(const QString, name);
        QFETCH(const Tell, tell);
        const std::size_t before = subscriberCount();
        const QString file = loadOne(name);
        QVERIFY(startPlugin("Create/" + name));
        QCOMPARE(subscriberCount(), before + 1);
        unloadPlugins();
        QCOMPARE(takeHostLog(),
                 QStringList("Plug-in Create/" + name + " (" + file +
                             ") stays in memory: after Cleanup 1 of its subscribers exist"));
        QVERIFY(!PluginManager::FindPlugin("Create", name.toStdString()));
        destroyHearing(file, tell);
        QCOMPARE(subscriberCount(), before);
    }

    // It was never used, but its static objects have been busy.
    void aSubscriberOfAPluginThatCannotBeUsedKeepsItsCodeInMemory() {
        const std::size_t before = subscriberCount();
        const QString file = place("SubscribingUnusable");
        QCOMPARE(load(), QStringList());
        const QString about = "Plug-in Create/SubscribingUnusable (" + file + ") ";
        QCOMPARE(
            takeHostLog(),
            QStringList({about + "cannot be used: it lacks the entry point Cleanup",
                         about + "stays in memory: after Cleanup 1 of its subscribers exist"}));
        destroyHearing(file);
        QCOMPARE(subscriberCount(), before);
    }

    void aSubscriberThatIsAStaticObjectGoesWithItsPlugin() {
        const std::size_t before = subscriberCount();
        const QString file = loadOne("SubscribingStatic");
        QCOMPARE(subscriberCount(), before + 1);
        unloadPlugins();
        QVERIFY(!isInMemory(file));
        QCOMPARE(subscriberCount(), before);
        { const DataPointBase change(nullptr, Publisher::Update); }
    }

    void whatCommandsOfTheFrameLeaveIsCleanedUp() {
        const std::size_t before = subscriberCount();
        const QString file = loadOne("Cleaning");
        send("Cleaning", "Subscribe", nullptr);
        QCOMPARE(subscriberCount(), before + 1);
        change();
        QCOMPARE(takeHostLog(), QStringList("the subscriber hears"));
        unloadPlugins();
        QCOMPARE(takeHostLog(), QStringList("cleaned up"));
        QVERIFY(!isInMemory(file));
        QCOMPARE(subscriberCount(), before);
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

REGISTER_TEST(PluginEndTest)
#include "PluginEndTest.moc"
