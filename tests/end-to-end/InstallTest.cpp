#include "Program.h"
#include "RunPaths.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

using namespace end_to_end;

/// The installed tree, away from where it was built and from where it was installed to.
class InstallTest : public test_support::TestCase {
    Q_OBJECT

    QTemporaryDir m_folder;
    QString m_tree;

    static void runTool(const QString& tool, const QStringList& arguments) {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(tool, arguments);
        QVERIFY(process.waitForFinished(120'000));
        QVERIFY2(process.exitCode() == 0, process.readAll().constData());
    }

    /// What the program has in memory when it shows its window; it is started without a file, so
    /// that it has to find the sample, too.
    QString mappedFiles() const {
        Program program(m_tree + "/" INSTALL_BIN "/workbench");
        program.setWorkingFolder("/");
        program.start({"--verbose"});
        if (!program.waitUntilStarted())
            return {};
        QFile maps("/proc/" + QString::number(program.pid()) + "/maps");
        const bool read = maps.open(QIODevice::ReadOnly);
        const QString mapped = read ? QString::fromUtf8(maps.readAll()) : QString();
        program.terminate();
        return program.finish().status == 0 ? mapped : QString();
    }

private slots:
    void initTestCase() {
        QVERIFY(m_folder.isValid());
        const QString first = m_folder.filePath("first");
        runTool(CMAKE, {"--install", BUILD_DIR, "--prefix", first});
        m_tree = m_folder.filePath("a moved tree");
        QVERIFY(QDir().rename(first, m_tree));
    }

    void theMovedProgramRunsOnItsOwnFilesOnly() {
        const QString mapped = mappedFiles();
        QVERIFY(mapped.contains(m_tree + "/" INSTALL_LIB "/libMemoryHost.so"));
        QVERIFY(mapped.contains(m_tree + "/" INSTALL_LIB "/plugins/Edit/libVuxo.so.0"));
        QVERIFY(!mapped.contains(BUILD_DIR));
    }

    void itsRunPathsBeginAtItsOwnPlaces() {
        const QStringList binaries = binariesBelow(m_tree);
        // The program, the host, and the plug-ins, each file once.
        QCOMPARE(binaries.size(), binariesBelow(STAGE_DIR).size());
        const QStringList wrong = wrongRunPaths(binaries);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
    }

    void aPluginIsWrittenAgainstTheInstalledHeaders() {
        const QString source = m_folder.filePath("Mine.cpp");
        QFile file(source);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#include \"BaseWindow.h\"\n"
                   "#include \"GUIPlugin.h\"\n"
                   "#include \"Space.h\"\n"
                   "struct Mine : BaseWindow {\n"
                   "    Mine() : BaseWindow(\"Mine\", QSize(9, 9), {}, false, nullptr, nullptr) {\n"
                   "        TAVIK::Space::instance();\n"
                   "    }\n"
                   "};\n"
                   "GUI_PLUGIN(Mine)\n");
        file.close();
        const QString library = m_tree + "/" INSTALL_LIB "/plugins/Show/libMine.so";
        QDir().mkpath(QFileInfo(library).path());
        QStringList arguments{"-std=c++20", "-shared", "-fPIC", "-o", library, source};
        for (const QString& folder : QString(QT_INCLUDES).split(':'))
            arguments << "-isystem" << folder;
        for (const QString room : {"host", "include"})
            arguments << "-I" + m_tree + "/" INSTALL_INCLUDE "/" + room;
        runTool(COMPILER, arguments);
        QVERIFY(mappedFiles().contains(library));
    }

    void theTreeHoldsLicenceDataAndSettings() {
        QVERIFY(QFile::exists(m_tree + "/" INSTALL_DOC "/LICENSE"));
        QVERIFY(QFile::exists(m_tree + "/" INSTALL_DOC "/README.md"));
        QVERIFY(QFile::exists(m_tree + "/" INSTALL_DATA "/BlueRedTR.cm"));
        QVERIFY(QFile::exists(m_tree + "/" INSTALL_DATA "/settings.ini"));
    }
};

REGISTER_TEST(InstallTest)
#include "InstallTest.moc"
