// The plug-in's library, as the host loads it.
#include "CommandCase.h"
#include "PluginManager.h"
#include "services/PluginFolder.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <dlfcn.h>
#include <memory>

using namespace command_case;

namespace {

const QString built = QStringLiteral(STAGE_PLUGINS "/Create/libSolidVolume.so");

void send(const std::string& command, void* data) {
    PluginManager::Command("Create", "SolidVolume", "Vuxo", command, "argument", data);
}

} // namespace

class PluginTest : public CommandCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString file() const { return m_folder->filePath("Create/libSolidVolume.so"); }
    bool isInMemory() const {
        void* const handle = dlopen(QFile::encodeName(file()).constData(), RTLD_LAZY | RTLD_NOLOAD);
        if (handle)
            dlclose(handle);
        return handle != nullptr;
    }

private slots:
    void init() override {
        CommandCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(m_folder->path()).mkpath("Create"));
        QVERIFY(QFile::copy(built, file()));
        QCOMPARE(memory_host::loadPlugins(m_folder->path()), QStringList("Create/SolidVolume"));
    }
    void cleanup() override {
        memory_host::unloadPlugins();
        QVERIFY(!isInMemory());
        TestCase::cleanup();
    }

    void itExportsItsFiveEntryPointsAndNothingElse() {
        QProcess nm;
        nm.start("nm", {"-D", "--defined-only", "--format=just-symbols", file()});
        QVERIFY(nm.waitForFinished() && nm.exitCode() == 0);
        QStringList names;
        const QString symbols = QString::fromLatin1(nm.readAllStandardOutput());
        for (const QString& line : symbols.split(u'\n', Qt::SkipEmptyParts))
            names << line.section(u'@', 0, 0);
        names.sort();
        QCOMPARE(names, QStringList({"Cleanup", "Command", "CommandC", "Execute0", "IsDone"}));
    }

    void eachCommandMakesItsSurface_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("name");
        QTest::newRow("excluded") << "Connolly"
                                  << "Connolly one";
        QTest::newRow("van der Waals") << "AddSurfaceVdW"
                                       << "VanderWaals one";
        QTest::newRow("accessible") << "AddSurfaceSolv"
                                    << "SolventAccessible one";
        QTest::newRow("Gaussian") << "AddSurfaceG"
                                  << "Gaussian one";
        QTest::newRow("electron density") << "AddSurfaceED"
                                          << "ElectronDensity one";
        QTest::newRow("high contour") << "AddContourHi"
                                      << "ContourHigh map -5";
        QTest::newRow("low contour") << "AddContourLo"
                                     << "ContourLow map -5";
        QTest::newRow("part") << "SubSurface"
                              << "valued from -5";
    }
    void eachCommandMakesItsSurface() {
        QFETCH(QString, command);
        QFETCH(QString, name);
        addCopper();
        addDistances();
        SurfaceMesh mesh;
        mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
        mesh.normals.assign(3, {0, 0, 1});
        mesh.triangles = {{0, 1, 2}};
        mesh.values = {1, 2, 3};
        TAVIK::DataMaker::makeSurface(space(), "valued", mesh);
        // As the Structure Editor sends it: the address of a flag, or of a level.
        double level = -5;
        bool flag = false;
        const bool hasLevel = command.contains("Contour") || command == "SubSurface";
        const QStringList said = this->command([&] {
            send(command.toStdString(),
                 hasLevel ? static_cast<void*>(&level) : static_cast<void*>(&flag));
        });
        QCOMPARE(said.size(), 1);
        QVERIFY(areaIn(said[0]).value_or(0) > 0);
        QCOMPARE(namesOf(surfaces()), QStringList({"valued", name}));
        QCOMPARE(m_labels.size(), 1); // that of the change, and no complaint
        // The surface can do without the plug-in.
        memory_host::unloadPlugins();
        TAVIK::DataMaker::Destroy(surfaces().back());
    }

    void itColoursSurfacesByAtoms() {
        Compound* const entry = addCopper();
        bool flag = false;
        command([&] { send("AddSurfaceVdW", &flag); });
        atomsIn(entry)[0]->SetColor(Color(0xff00ff00U));
        QCOMPARE(command([&] { send("ColorByAtoms", &flag); }).size(), 1);
        QCOMPARE(TAVIK::GetSurfaceMesh(surfaces()[0])->colors.front(), 0xff00ff00U);
    }

    void withoutANumberACommandFails() {
        addDistances();
        for (const char* name : {"AddContourHi", "AddContourLo", "SubSurface"}) {
            QCOMPARE(command([name] { send(name, nullptr); }), QStringList());
            QCOMPARE(m_labels.size(), 1);
            QVERIFY(m_labels[0].contains("the command needs a number"));
        }
        QVERIFY(surfaces().empty());
    }

    void otherCommandsAreNotKnown() {
        bool flag = false;
        QCOMPARE(command([&] { send("AddSurface", &flag); }), QStringList());
        QVERIFY(m_labels.value(0).contains("code 10"));
        // None of them has read-only data.
        command([] {
            const bool readOnly = false;
            PluginManager::Command("Create", "SolidVolume", "Vuxo", "Connolly", "Connolly",
                                   static_cast<const void*>(&readOnly));
        });
        QVERIFY(m_labels.value(0).contains("needs writable data"));
    }

    void itIsNotUnloadedWhileItWorks() {
        std::vector<AtomSpec> atoms;
        for (int i = 0; i != 2000; ++i)
            atoms.push_back({"C", "C", {float(i % 40) * 3, float(i / 40) * 3, 0}});
        addEntry("layer", "UNL 1", atoms);
        bool hasTried = false;
        QTimer::singleShot(0, this, [&] {
            memory_host::unloadPlugins();
            hasTried = isInMemory();
        });
        bool flag = false;
        const QStringList said = command([&] { send("Connolly", &flag); });
        QVERIFY(hasTried);
        QVERIFY(m_labels.contains("Plug-ins are not unloaded: one of them is running"));
        QVERIFY(said.value(0).contains("around 2,000 atoms"));
        QCOMPARE(surfaces().size(), std::size_t(1));
        QVERIFY(PluginManager::FindPlugin("Create", "SolidVolume"));
    }
};

REGISTER_TEST(PluginTest)
#include "PluginTest.moc"
