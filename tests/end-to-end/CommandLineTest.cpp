#include "Program.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace end_to_end;

/// What the program does before it opens a window.
class CommandLineTest : public test_support::TestCase {
    Q_OBJECT

    /// A display that nothing answers on: a name without a number.
    static void takeDisplayAway(Program& program) {
        program.set("QT_QPA_PLATFORM", QString());
        program.set("WAYLAND_DISPLAY", QString());
        program.set("DISPLAY", QString());
    }

private slots:
    void helpAndVersionNeedNoDisplay() {
        Program program;
        takeDisplayAway(program);
        Ended ended = program.run({"--help"});
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QVERIFY(ended.output.constFirst().startsWith("Usage: workbench"));
        for (const QString option :
             {"--plugins", "--data", "--picture", "--size", "--save", "--as-shown", "--windows",
              "--new", "--verbose", "--version", "--help"})
            QVERIFY2(!ended.output.filter(option).isEmpty(), qPrintable(option));
        QCOMPARE(ended.errors, QStringList());

        ended = program.run({"--version"});
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.output, QStringList("workbench " WORKBENCH_VERSION));
        QCOMPARE(ended.errors, QStringList());
    }

    void helpWinsOverFilesAndFolders() {
        Program program;
        const Ended ended = program.run({"missing.pdb", "--data=nowhere", "-h"});
        QCOMPARE(ended.status, 0);
        QVERIFY(!ended.output.isEmpty());
        QCOMPARE(ended.errors, QStringList());
    }

    void anUnknownOptionIsOneLineAndStatus2() {
        Program program;
        takeDisplayAway(program);
        for (const QString option : {"--foo", "-x", "--datas=x", "--help=x"}) {
            const Ended ended = program.run({option, structure("1ubq.pdb")});
            QVERIFY(ended.normally);
            QCOMPARE(ended.status, 2);
            QCOMPARE(ended.output, QStringList());
            QCOMPARE(ended.errors, QStringList("workbench: unknown option " + option +
                                               " (--help lists the options)"));
        }
    }

    void anOptionWithoutItsFolderIsOneLineAndStatus2() {
        Program program;
        const QList<QStringList> lines{{"--plugins"}, {"--data"}, {"--data="}, {"--plugins", ""}};
        for (const QStringList& arguments : lines) {
            const Ended ended = program.run(arguments);
            QCOMPARE(ended.status, 2);
            QCOMPARE(ended.errors.size(), 1);
            QVERIFY(ended.errors.constFirst().contains("needs a folder"));
        }
    }

    void aPictureWithoutAFileOrASizeIsOneLineAndStatus2() {
        Program program;
        for (const QStringList& arguments : {QStringList{"--picture"},
                                             {"--picture="},
                                             {"--size"},
                                             {"--size", "large"},
                                             {"--size=12x"},
                                             {"--size", "-3x4"}}) {
            const Ended ended = program.run(arguments);
            QCOMPARE(ended.status, 2);
            QCOMPARE(ended.errors.size(), 1);
            QVERIFY(ended.errors.constFirst().contains(" needs a "));
        }
    }

    void anEmptyArgumentIsOneLineAndStatus2() {
        Program program;
        const Ended ended = program.run({structure("1ubq.pdb"), ""});
        QCOMPARE(ended.status, 2);
        QCOMPARE(ended.errors,
                 QStringList("workbench: an argument is empty (--help lists what there is)"));
    }

    void aFileInPlaceOfAFolderIsOneLine() {
        const QString file = structure("1ubq.pdb");
        Program program;
        Ended ended = program.run({"--plugins", file, file});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors,
                 QStringList("workbench: the plug-in folder " + file + " is no folder"));
        ended = program.run({"--data", file});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors, QStringList("workbench: the data folder " + file + " is no folder"));
        ended = program.run({"--data=/nowhere"});
        QCOMPARE(ended.errors, QStringList("workbench: the data folder /nowhere does not exist"));
    }

    void filesComeThroughStandardInputAndPipes_data() {
        QTest::addColumn<QString>("command");
        QTest::newRow("standard input, a pipe")
            << "gzip -c '%2' | '%1' --plugins=/nowhere /dev/stdin";
        QTest::newRow("standard input, a file") << "'%1' --plugins=/nowhere /dev/stdin < '%2'";
        QTest::newRow("a process substitution") << "'%1' --plugins=/nowhere <(gzip -c '%2')";
    }
    void filesComeThroughStandardInputAndPipes() {
        QFETCH(const QString, command);
        Program shell("/bin/bash");
        const Ended ended = shell.run({"-c", command.arg(WORKBENCH, structure("1ubq.pdb"))});
        // Plug-ins are looked for when a file is open.
        QCOMPARE(ended.errors,
                 QStringList("workbench: the plug-in folder /nowhere does not exist"));
    }

    void aFileThatTheMemoryCannotHoldIsOneLineAndStatus1() {
        const QTemporaryDir folder;
        QFile large(folder.filePath("large.pdb"));
        QVERIFY(large.open(QIODevice::WriteOnly));
        large.write(QByteArray("REMARK\n").repeated(200'000));
        QVERIFY(large.resize(qint64(3) << 30));
        large.close();
#ifndef __SANITIZE_ADDRESS__ // which needs far more addresses than a limit could leave
        Program shell("/bin/bash");
        const Ended ended = shell.run(
            {"-c", QString("ulimit -v 3000000; exec '%1' '%2'").arg(WORKBENCH, large.fileName())});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors.size(), 1);
        QVERIFY2(
            ended.errors.constFirst().contains("large.pdb: needs about 3220 MB of memory to go "
                                               "on, and "),
            qPrintable(ended.errors.constFirst()));
#endif
    }

    void afterTwoDashesEverythingIsAFile() {
        Program program;
        const Ended ended = program.run({"--", "--help"});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output, QStringList());
        QCOMPARE(ended.errors.size(), 1);
        QVERIFY(ended.errors.constFirst().contains("--help"));
    }

    void withoutADisplayThereIsOneLineAndNoCrash_data() {
        QTest::addColumn<QString>("display");
        QTest::addColumn<QString>("platform");
        QTest::addColumn<QString>("said");
        QTest::newRow("not set") << QString() << QString() << "DISPLAY is not set";
        QTest::newRow("empty") << "" << QString() << "DISPLAY is not set";
        QTest::newRow("nobody there") << ":9999" << QString() << "\":9999\"";
        QTest::newRow("no display's name") << "screen" << QString() << "\"screen\"";
        QTest::newRow("asked for") << ":9999"
                                   << "xcb"
                                   << "\":9999\"";
        QTest::newRow("platform plug-in missing") << QString() << "missing"
                                                  << "\"missing\"";
    }
    void withoutADisplayThereIsOneLineAndNoCrash() {
        QFETCH(const QString, display);
        QFETCH(const QString, platform);
        QFETCH(const QString, said);
        Program program;
        takeDisplayAway(program);
        program.set("DISPLAY", display);
        program.set("QT_QPA_PLATFORM", platform);
        // Qt has remarks of its own on this locale.
        program.set("LC_ALL", "C");
        const Ended ended = program.run({structure("1ubq.pdb")});
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output, QStringList());
        QCOMPARE(ended.errors.size(), 1);
        QVERIFY(ended.errors.constFirst().startsWith(
            "workbench: there is no display to open a window on: "));
        QVERIFY2(ended.errors.constFirst().contains(said), qPrintable(ended.errors.constFirst()));
    }

    void withoutAFileItOpensTheSample() {
        Program program;
        program.start({"--verbose"});
        QVERIFY(program.waitUntilStarted());
        program.terminate();
        const Ended ended = program.finish();
        QCOMPARE(ended.status, 0);
    }

    void aDataFolderWithoutASampleIsOneLine() {
        const QTemporaryDir empty;
        Program program;
        const Ended ended = program.run({"--data", empty.path()});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors, QStringList("workbench: there is no sample in " + empty.path()));
    }

    void theUsersSettingsAreRead() {
        Program program;
        QDir(program.home()).mkpath("config/structure-editor");
        const QString path = program.home() + "/config/structure-editor/settings.ini";
        QFile settings(path);
        QVERIFY(settings.open(QIODevice::WriteOnly));
        settings.write("no setting\n");
        settings.close();
        program.start({"--verbose", structure("1ubq.pdb")});
        QVERIFY(program.waitUntilStarted());
        program.terminate();
        QCOMPARE(program.finish().errors.filter("Settings file " + path + ", line 1").size(), 1);
    }

    void theLogStandsBelowTheUsersStateFolder() {
        Program program;
        program.run({"missing.pdb"});
        QFile log(program.home() + "/state/structure-editor/workbench.log");
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().contains("missing.pdb"));
    }

    void aLogThatCannotBeWrittenKeepsNothingFromRunning() {
        Program program;
        program.set("HOME", "/proc/nowhere");
        program.set("XDG_STATE_HOME", QString());
        program.set("XDG_CONFIG_HOME", QString());
        program.start({"--verbose", structure("1ubq.pdb")});
        QVERIFY(program.waitUntilStarted());
        program.terminate();
        QCOMPARE(program.finish().status, 0);
    }
};

REGISTER_TEST(CommandLineTest)
#include "CommandLineTest.moc"
