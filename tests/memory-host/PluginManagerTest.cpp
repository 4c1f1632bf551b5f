// Commands to plug-ins: what reaches them, what they answer, and what they throw.
#include "PluginTestCase.h"

using namespace memory_host;
using namespace plugin_tools;

class PluginManagerTest : public PluginTestCase {
    Q_OBJECT

private slots:
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
};

REGISTER_TEST(PluginManagerTest)
#include "PluginManagerTest.moc"
