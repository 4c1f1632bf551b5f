// Which files of a folder are loaded as plug-ins, and what is said of the others.
#include "PluginTestCase.h"

using namespace memory_host;
using namespace plugin_tools;

class PluginLoadingTest : public PluginTestCase {
    Q_OBJECT

private slots:
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
};

REGISTER_TEST(PluginLoadingTest)
#include "PluginLoadingTest.moc"
