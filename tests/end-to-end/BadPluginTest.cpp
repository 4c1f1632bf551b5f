#include "Program.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

using namespace end_to_end;

/// Plug-in folders that hold something else than good plug-ins, beside the Structure Editor or in
/// its place.
class BadPluginTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString pathOf(const QString& file) {
        const QString path = m_folder->filePath(file);
        QDir().mkpath(QFileInfo(path).path());
        return path;
    }
    /// Puts one of the plug-ins that are made for tests into the folder, under another name.
    QString placeTestPlugin(const QString& plugin, const QString& file) {
        const QString path = pathOf(file);
        if (!QFile::copy(QStringLiteral(TEST_PLUGINS "/lib%1.so").arg(plugin), path))
            qFatal("%s cannot be written", qPrintable(path));
        return path;
    }
    QString placeText(const QString& file) {
        const QString path = pathOf(file);
        QFile out(path);
        if (!out.open(QIODevice::WriteOnly) || out.write("not a library\n") < 0)
            qFatal("%s cannot be written", qPrintable(path));
        return path;
    }
    void placeStructureEditor() {
        const QString path = pathOf("Edit/libVuxo.so.0");
        if (!QFile::copy(QStringLiteral(STAGE_PLUGINS "/Edit/libVuxo.so.0"), path))
            qFatal("%s cannot be written", qPrintable(path));
    }
    QStringList arguments() {
        return {"--plugins", m_folder->path(), "--verbose", structure("1ubq.pdb")};
    }

    /// Starts with the folder's plug-ins and ends in order; returns the lines that name `file`.
    QStringList errorsAbout(const QString& file) {
        Program program;
        program.start(arguments());
        if (!program.waitUntilStarted())
            return {"(did not start)"};
        program.terminate();
        const Ended ended = program.finish();
        if (!ended.normally || ended.status != 0)
            return {"(ended with " + QString::number(ended.status) + ")"};
        return ended.errors.filter(file);
    }

private slots:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }

    void aTextFileIsOneLineAndTheRestGoesOn() {
        placeStructureEditor();
        const QString file = placeText("Create/libSolidVolume.so");
        QCOMPARE(errorsAbout(file).size(), 1);
    }

    void aLibraryWithoutAnEntryPointIsOneLineAndTheRestGoesOn() {
        placeStructureEditor();
        const QString file = placeTestPlugin("LacksIsDone", "Create/libRotamer.so");
        const QStringList errors = errorsAbout(file);
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors.constFirst().contains("IsDone"), qPrintable(errors.constFirst()));
    }

    void aPluginThatThrowsIsOneLineAndTheRestGoesOn() {
        placeStructureEditor();
        const QString file = placeTestPlugin("ThrowsIsDone", "Create/libRotamer.so");
        QCOMPARE(errorsAbout(file).size(), 1);
    }

    void aPluginThatThrowsWhileItIsUnloadedIsOneLine() {
        placeStructureEditor();
        const QString file = placeTestPlugin("ThrowsCleanup", "Create/libRotamer.so");
        QCOMPARE(errorsAbout(file).size(), 1);
    }

    void aStaticObjectThatThrowsEndsTheProgramWithALine() {
        placeStructureEditor();
        const QString file = placeTestPlugin("ThrowsStatic", "Create/libRotamer.so");
        Program program;
        const Ended ended = program.run(arguments());
        QVERIFY(!ended.normally);
        const QStringList errors = ended.errors.filter(file);
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors.constFirst().endsWith("OwnError: no room here; the program cannot go on"),
                 qPrintable(errors.constFirst()));
    }

    void aStructureEditorThatThrowsIsOneLineAndStatus1() {
        const QString file = placeTestPlugin("ThrowsExecute0", "Edit/libVuxo.so.0");
        Program program;
        const Ended ended = program.run(arguments());
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors.filter(file).size(), 1);
    }

    void anEventHandlerThatThrowsIsOneLineAndTheProgramGoesOn() {
        placeTestPlugin("FaultyWindow", "Edit/libVuxo.so.0");
        Program program;
        // It closes its window after the faults; the help window that it opened does not hold the
        // program open.
        const Ended ended =
            program.run({"--windows", "--plugins", m_folder->path(), structure("1ubq.pdb")});
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors.size(), 2);
        QVERIFY2(ended.errors.at(0).endsWith("failed: the first fault"),
                 qPrintable(ended.errors.at(0)));
        QVERIFY2(ended.errors.at(1).endsWith("failed: an unknown exception"),
                 qPrintable(ended.errors.at(1)));
    }

    void aFolderWithoutAPluginIsOneLineAndStatus1() {
        pathOf("Edit/nothing");
        Program program;
        const Ended ended = program.run({"--plugins", m_folder->path(), structure("1ubq.pdb")});
        QVERIFY(ended.normally);
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors,
                 QStringList("workbench: no plug-in could be loaded from " + m_folder->path()));
    }

    void aFolderWithoutAWindowIsOneLineAndStatus1() {
        placeTestPlugin("Good", "Create/libGood.so");
        for (const QStringList& options : {QStringList(), QStringList("--windows")}) {
            Program program;
            const Ended ended = program.run(
                options + QStringList{"--plugins", m_folder->path(), structure("1ubq.pdb")});
            QVERIFY(ended.normally);
            QCOMPARE(ended.status, 1);
            QCOMPARE(ended.errors.filter("workbench: "),
                     QStringList("workbench: no plug-in shows a window"));
        }
    }

    void aFolderThatDoesNotExistIsOneLineAndStatus1() {
        Program program;
        const Ended ended =
            program.run({"--plugins", m_folder->filePath("none"), structure("1ubq.pdb")});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors, QStringList("workbench: the plug-in folder " +
                                           m_folder->filePath("none") + " does not exist"));
    }
};

REGISTER_TEST(BadPluginTest)
#include "BadPluginTest.moc"
