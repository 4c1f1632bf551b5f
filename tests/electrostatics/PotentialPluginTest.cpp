// The built plug-in as a user meets it: the window's menu maps a grid that was opened, or charges,
// onto a surface that the other plug-in has made.
#include "CommandCase.h"
#include "CommandTools.h"
#include "PluginManager.h"
#include "WindowTools.h"
#include "files/Files.h"
#include "items/Invariants.h"
#include "services/PluginFolder.h"
#include "window/Vuxo.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace command_case;
using command_tools::trigger;
using window_tools::clickEntry;

namespace {

const QString entry = QStringLiteral("MapGrid2Surface");

/// A grid of 3 x 3 x 3 points around the middle of 1cbs, whose values are x - 20.
QByteArray slope() {
    QByteArray text = "# POTENTIAL (kT/e)\nobject 1 class gridpositions counts 3 3 3\n"
                      "origin -20 -20 -20\ndelta 40 0 0\ndelta 0 40 0\ndelta 0 0 40\n"
                      "object 2 class gridconnections counts 3 3 3\n"
                      "object 3 class array type double rank 0 items 27 data follows\n";
    for (int x = 0; x != 3; ++x)
        text += (QByteArray::number(40 * x - 40) + ' ').repeated(9) + '\n';
    return text + "attribute \"dep\" string \"positions\"\n";
}

} // namespace

class PotentialPluginTest : public CommandCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Vuxo> m_window;

    void place(const QString& library) {
        const QString to = m_folder->filePath(library);
        QVERIFY(QDir().mkpath(QFileInfo(to).path()));
        QVERIFY(QFile::copy(QStringLiteral(STAGE_PLUGINS) + u'/' + library, to));
    }
    void load() {
        place("Calculate/libElectrostatics.so");
        place("Create/libSolidVolume.so");
        QCOMPARE(memory_host::loadPlugins(m_folder->path()),
                 QStringList({"Calculate/Electrostatics", "Create/SolidVolume"}));
    }
    void openWindow() {
        m_window = std::make_unique<Vuxo>();
        m_window->show();
    }
    QStringList choose(const QString& label) {
        const QStringList said = command([&] { trigger(*m_window, "Add", label); });
        takeMessages(); // what the window says on the debug stream
        return said;
    }
    bool hasEntry() const {
        return std::ranges::any_of(m_window->findChildren<QAction*>(),
                                   [](const QAction* one) { return one->text() == entry; });
    }
    /// The pocket of 1cbs: the surface of what is within 5 Å of its ligand.
    void openPocket() {
        memory_host::openFile(structure("1cbs.cif.gz").toStdString());
        openWindow();
        clickEntry(*m_window, 0);
        std::vector<Compound*> ligand;
        for (Compound* const atom : atomsIn(space()))
            if (atom->GetFQName().find("/REA ") != std::string::npos)
                ligand.push_back(atom);
        QVERIFY(!ligand.empty());
        for (Compound* const atom : atomsIn(space()))
            atom->SetVisible(std::ranges::any_of(ligand, [atom](const Compound* other) {
                const TAVIK::Vertex a = atom->GetPosition();
                const TAVIK::Vertex b = other->GetPosition();
                return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]) < 5;
            }));
    }

private slots:
    void init() override {
        CommandCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
    }
    void cleanup() override {
        m_window.reset();
        memory_host::unloadPlugins();
        takeMessages();
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        TestCase::cleanup();
    }

    void itExportsItsFiveEntryPointsAndNothingElse() {
        QProcess nm;
        nm.start("nm", {"-D", "--defined-only", "--format=just-symbols",
                        STAGE_PLUGINS "/Calculate/libElectrostatics.so"});
        QVERIFY(nm.waitForFinished() && nm.exitCode() == 0);
        QStringList names;
        const QString symbols = QString::fromLatin1(nm.readAllStandardOutput());
        for (const QString& line : symbols.split(u'\n', Qt::SkipEmptyParts))
            names << line.section(u'@', 0, 0);
        names.sort();
        QCOMPARE(names, QStringList({"Cleanup", "Command", "CommandC", "Execute0", "IsDone"}));
    }

    void theMenuHasItsEntryWithThePlugin() {
        openWindow();
        QVERIFY(!hasEntry());
        m_window.reset();
        load();
        openWindow();
        QVERIFY(hasEntry());
    }

    void aGridThatWasOpenedIsMappedOntoASurfaceThatWasMade() {
        load();
        openPocket();
        QVERIFY(choose("ConnollySurface").value(0).startsWith("Solvent-excluded surface of 1cbs"));
        QFile file(m_folder->filePath("pot.dx"));
        QVERIFY(file.open(QFile::WriteOnly) && file.write(slope()) > 0);
        file.close();
        memory_host::openFile(file.fileName().toStdString());
        const QStringList said = choose(entry);
        QCOMPARE(said.size(), 1);
        QVERIFY2(said[0].startsWith("Values of pot on Connolly 1cbs: "), qPrintable(said[0]));
        QCOMPARE(m_labels, QStringList("Map Values of pot on Connolly 1cbs"));
        const SurfaceMesh& mesh = *TAVIK::GetSurfaceMesh(surfaces().at(0));
        QVERIFY(mesh.vertices.size() > 1000);
        for (std::size_t i = 0; i != mesh.vertices.size(); ++i)
            QVERIFY(std::abs(mesh.values[i] - (mesh.vertices[i][0] - 20)) < 1e-3F);
    }

    // The pocket binds an acid: arginines 111 and 132 make it positive.
    void thePocketOf1cbsHasThePotentialOfTheWholeEntry() {
        load();
        openPocket();
        choose("ConnollySurface");
        const QStringList said = choose(entry);
        QVERIFY2(said.value(0).startsWith("Coulomb potential of 1cbs on Connolly 1cbs: "),
                 qPrintable(said.value(0)));
        QVERIFY(said.value(0).contains(" kT/e, mean "));
        QVERIFY(said.value(0).endsWith("; dielectric 4 r/Å"));
        const SurfaceMesh& mesh = *TAVIK::GetSurfaceMesh(surfaces().at(0));
        QVERIFY(!mesh.atoms.empty());
        QVERIFY(mesh.scale.has_value());
        QVERIFY(std::ranges::all_of(mesh.values, [](float value) { return std::isfinite(value); }));
    }

    void itNeedsNoWritableData() {
        load();
        const bool flag = false;
        QCOMPARE(command([&] {
                     PluginManager::Command("Calculate", "Electrostatics", "Vuxo", "MapGrid2Surf",
                                            "Map", static_cast<const void*>(&flag));
                 }),
                 QStringList("Nothing is mapped: no surface with vertices is selected or shown"));
        QCOMPARE(m_labels, QStringList());
        command([&] {
            PluginManager::Command("Calculate", "Electrostatics", "Vuxo", "Other", "Map",
                                   static_cast<const void*>(&flag));
        });
        QVERIFY(m_labels.value(0).contains("code 10"));
    }

    void itIsNotUnloadedWhileItWorksAndLeavesNothingThen() {
        load();
        openWindow();
        SurfaceMesh mesh;
        for (int i = 0; i != 300'000; ++i) {
            mesh.vertices.push_back({float(i % 600) / 60, float(i / 600) / 50, 1});
            mesh.normals.push_back({0, 0, 1});
        }
        TAVIK::DataMaker::makeSurface(space(), "sheet", mesh);
        addDistances();
        QTimer::singleShot(0, this, [] { memory_host::unloadPlugins(); });
        QVERIFY(choose(entry).value(0).startsWith("Values of map on sheet: "));
        QVERIFY(m_labels.contains("Plug-ins are not unloaded: one of them is running"));
        // What it has made stays without it, and can go.
        m_window.reset();
        memory_host::unloadPlugins();
        QVERIFY(!PluginManager::FindPlugin("Calculate", "Electrostatics"));
        QCOMPARE(TAVIK::GetSurfaceMesh(surfaces().at(0))->values.size(), mesh.vertices.size());
        TAVIK::DataMaker::Destroy(surfaces().at(0));
    }
};

REGISTER_TEST(PotentialPluginTest)
#include "PotentialPluginTest.moc"
