// The commands that make surfaces of atoms.
#include "ClosedForms.h"
#include "CommandCase.h"
#include "DensitySurfaces.h"
#include "SurfaceChecks.h"
#include "Surfaces.h"
#include "files/Files.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <array>
#include <cmath>
#include <numbers>
#include <random>

using namespace command_case;
using solid::SurfaceKind;
using surface_checks::isWithin;

namespace {

constexpr std::array<SurfaceKind, 5> kinds = {SurfaceKind::Excluded, SurfaceKind::VanDerWaals,
                                              SurfaceKind::Accessible, SurfaceKind::Gaussian,
                                              SurfaceKind::ElectronDensity};

std::function<void()> add(SurfaceKind kind) {
    return [kind] { solid::addAtomSurfaces(kind); };
}

double sphere(double radius) {
    return 4 * std::numbers::pi * radius * radius;
}

/// What is wrong with the surface's mesh; empty if nothing is.
std::string problemWith(const SurfaceMesh& mesh) {
    solid::Mesh plain;
    plain.vertices = mesh.vertices;
    plain.normals = mesh.normals;
    plain.triangles = mesh.triangles;
    return surface_checks::problemWith(plain);
}

double distance(const std::array<float, 3>& a, const std::array<float, 3>& b) {
    return std::hypot(double{a[0]} - b[0], double{a[1]} - b[1], double{a[2]} - b[2]);
}

} // namespace

class AtomSurfacesTest : public CommandCase {
    Q_OBJECT
private slots:
    void aSurfaceOfOneAtomIsASphere_data() {
        QTest::addColumn<SurfaceKind>("kind");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("title");
        QTest::addColumn<double>("radius");
        QTest::newRow("excluded") << SurfaceKind::Excluded << "Connolly one"
                                  << "Solvent-excluded surface" << copperRadius;
        QTest::newRow("van der Waals") << SurfaceKind::VanDerWaals << "VanderWaals one"
                                       << "Van der Waals surface" << copperRadius;
        QTest::newRow("accessible") << SurfaceKind::Accessible << "SolventAccessible one"
                                    << "Solvent-accessible surface" << copperRadius + 1.4;
        QTest::newRow("Gaussian") << SurfaceKind::Gaussian << "Gaussian one"
                                  << "Gaussian surface" << copperRadius;
    }
    void aSurfaceOfOneAtomIsASphere() {
        QFETCH(SurfaceKind, kind);
        QFETCH(QString, name);
        QFETCH(QString, title);
        QFETCH(double, radius);
        Compound* const entry = addCopper("one", {1, 2, 3});
        const QStringList said = command(add(kind));
        QCOMPARE(said.size(), 1);
        QVERIFY(said[0].startsWith(title + " of one: "));
        QVERIFY(said[0].endsWith(" Å² around 1 atom"));
        QVERIFY(isWithin(areaIn(said[0]).value_or(0), sphere(radius), 0.02));
        QCOMPARE(m_labels, QStringList("Add " + title));
        QCOMPARE(m_additions, 1);
        QCOMPARE(m_updates + m_deletions, 0);

        QCOMPARE(namesOf(surfaces()), QStringList(name));
        const Surface* const surface = surfaces().front();
        QVERIFY(TAVIK::HasDefaultColor(surface) && surface->IsVisible());
        QVERIFY(!surface->IsSelected());
        const SurfaceMesh& mesh = *TAVIK::GetSurfaceMesh(surface);
        QCOMPARE(problemWith(mesh), std::string());
        for (const auto& vertex : mesh.vertices)
            QVERIFY2(std::abs(distance(vertex, {1, 2, 3}) - radius) < 5e-3,
                     qPrintable(QString::number(distance(vertex, {1, 2, 3}) - radius)));
        const Compound* const atom = atomsIn(entry).front();
        QCOMPARE(mesh.atoms, std::vector(mesh.vertices.size(), atom->GetId()));
        QCOMPARE(mesh.colors, std::vector(mesh.vertices.size(), atom->GetColor().rgba()));
        QVERIFY(mesh.values.empty() && !mesh.scale);
        // The message tells the mesh's area, which others tell, too.
        const double told = mesh.area ? *mesh.area : areaOf(mesh);
        QVERIFY(isWithin(areaIn(said[0]).value_or(0), told, 2e-3));
        QCOMPARE(mesh.area.has_value(), kind != SurfaceKind::Gaussian);
    }

    void anEntryWithoutASurfaceTakesNoneFromOthers() {
        addEntry("far", "CU 1", {{"CU", "Cu", {3e7F, 0, 0}}});
        addCopper("one");
        const QStringList said = command(add(SurfaceKind::VanDerWaals));
        QCOMPARE(namesOf(surfaces()), QStringList("VanderWaals one"));
        QCOMPARE(said.size(), 2);
        QCOMPARE(said[0], "No surface: the atoms of far have none");
        QVERIFY(said[1].startsWith("Van der Waals surface of one: "));
    }

    // By the table's four terms of carbon, summed up here.
    void theElectronDensityIsTheSameAllOverItsSurface() {
        constexpr std::array<std::array<double, 2>, 4> carbon = {
            {{2.31, 20.8439}, {1.02, 10.2075}, {1.5886, 0.5687}, {0.865, 51.6512}}};
        addEntry("one", "UNL 1", {{"C1", "C", {0, 0, 0}}});
        const QStringList said = command(add(SurfaceKind::ElectronDensity));
        QCOMPARE(said.size(), 1);
        QVERIFY(said[0].endsWith(" Å² around 1 atom, at 0.0135 e/Å³"));
        const SurfaceMesh& mesh = *TAVIK::GetSurfaceMesh(surfaces().front());
        QCOMPARE(problemWith(mesh), std::string());
        constexpr double pi = std::numbers::pi;
        for (const auto& vertex : mesh.vertices) {
            const double r = distance(vertex, {0, 0, 0});
            double density = 0;
            for (const auto& [a, b] : carbon)
                density += a * std::pow(4 * pi / b, 1.5) * std::exp(-4 * pi * pi * r * r / b);
            QVERIFY(std::abs(density / solid::molecularDensity - 1) < 0.01);
            QVERIFY(r > 1.6 && r < 2.0); // near the van der Waals radius
        }
        QVERIFY(isWithin(areaIn(said[0]).value_or(0), areaOf(mesh), 0.03));
    }

    void eachKindIsMadeOfATwo_data() {
        QTest::addColumn<double>("apart");
        QTest::newRow("on one point") << 0.0;
        QTest::newRow("bonded") << 1.5;
        QTest::newRow("far away") << 60.0;
    }
    void eachKindIsMadeOfATwo() {
        QFETCH(double, apart);
        Compound* const entry =
            addEntry("one", "CU 1", {{"CU", "Cu", {0, 0, 0}}, {"CU2", "Cu", {float(apart), 0, 0}}});
        atomsIn(entry)[1]->SetColor(Color(0xff00ff00U));
        for (const SurfaceKind kind : kinds) {
            const QStringList said = command(add(kind));
            QCOMPARE(said.size(), 1);
            QVERIFY(said[0].contains("around 2 atoms"));
            const SurfaceMesh& mesh = *TAVIK::GetSurfaceMesh(surfaces().back());
            QCOMPARE(problemWith(mesh), std::string());
            for (std::size_t i = 0; i != mesh.vertices.size() && apart > 0; ++i) {
                const bool isSecond = mesh.vertices[i][0] > apart / 2 + 0.01;
                const bool isFirst = mesh.vertices[i][0] < apart / 2 - 0.01;
                if (isFirst || isSecond) {
                    const Compound* const atom = atomsIn(entry)[isSecond ? 1 : 0];
                    QCOMPARE(mesh.atoms[i], atom->GetId());
                    QCOMPARE(mesh.colors[i], atom->GetColor().rgba());
                }
            }
        }
    }

    void theAreasOfTwoAtomsAreThoseInClosedForm() {
        constexpr double apart = 2.0;
        addEntry("one", "CU 1", {{"CU", "Cu", {0, 0, 0}}, {"CU2", "Cu", {float(apart), 0, 0}}});
        const auto area = [this](SurfaceKind kind) {
            return areaIn(command(add(kind)).value(0)).value_or(0);
        };
        using namespace closed_forms;
        constexpr double r = copperRadius;
        QVERIFY(isWithin(area(SurfaceKind::VanDerWaals), twoBalls(r, r, apart), 0.005));
        QVERIFY(isWithin(area(SurfaceKind::Accessible), twoBalls(r + 1.4, r + 1.4, apart), 0.005));
        QVERIFY(isWithin(area(SurfaceKind::Excluded), twoBallsExcluded(r, r, apart, 1.4), 0.02));
    }

    // From the file to the message, against a program that reads the same file and has the united
    // atoms' radii as its own.
    void theAreaOfAProteinIsThatOfAnotherProgram() {
        if (QStandardPaths::findExecutable("freesasa").isEmpty())
            QSKIP("the program freesasa is not installed");
        QProcess program;
        program.start("freesasa", {"--lee-richards", "--resolution=200", structure("1ubq.pdb")});
        QVERIFY(program.waitForFinished() && program.exitCode() == 0);
        const QRegularExpression total("Total\\s*:\\s*([0-9.]+)");
        const double expected = total.match(program.readAllStandardOutput()).captured(1).toDouble();
        QVERIFY(expected > 4000);
        memory_host::openFile(structure("1ubq.pdb").toStdString());
        takeHostLog();
        const QStringList said = command(add(SurfaceKind::Accessible));
        QVERIFY(said.value(0).endsWith("around 602 atoms"));
        QVERIFY(isWithin(areaIn(said[0]).value_or(0), expected, 0.005));
    }

    void eachEntryHasASurfaceOfItsOwnInOneChange() {
        addCopper("one");
        addCopper("two", {1, 0, 0});
        addCopper("hidden")->SetVisible(false);
        const QStringList said = command(add(SurfaceKind::VanDerWaals));
        QCOMPARE(said.size(), 2);
        QVERIFY(said[0].contains(" of one: ") && said[1].contains(" of two: "));
        QCOMPARE(namesOf(surfaces()), QStringList({"VanderWaals one", "VanderWaals two"}));
        QCOMPARE(m_additions, 1);
        // They are next to each other, and know nothing of that.
        QVERIFY(isWithin(areaIn(said[1]).value_or(0), sphere(copperRadius), 0.02));
    }

    void surfacesOfTheSameAtomsStandBesideEachOther() {
        addCopper("one");
        for (const SurfaceKind kind : kinds)
            command(add(kind));
        QCOMPARE(namesOf(surfaces()),
                 QStringList({"Connolly one", "VanderWaals one", "SolventAccessible one",
                              "Gaussian one", "ElectronDensity one"}));
        // A surface that is selected is no entry of atoms.
        surfaces().front()->SetSelected(true);
        QCOMPARE(command(add(SurfaceKind::VanDerWaals)).size(), 1);
        QCOMPARE(surfaces().size(), std::size_t(6));
    }

    void withoutAShownAtomThereIsNone() {
        const auto line = [](const char* title) {
            return QString::fromLatin1(title) + ": nothing is made: no atom is shown, or "
                                                "only waters, which count where they are selected";
        };
        refuses(add(SurfaceKind::Excluded), line("Solvent-excluded surface"));
        addCopper("one")->SetVisible(false);
        addEntry("water", "HOH 1", {{"O", "O", {0, 0, 0}}});
        addDistances();
        for (const auto& [kind, title] :
             {std::pair(SurfaceKind::VanDerWaals, "Van der Waals surface"),
              std::pair(SurfaceKind::Accessible, "Solvent-accessible surface"),
              std::pair(SurfaceKind::Gaussian, "Gaussian surface"),
              std::pair(SurfaceKind::ElectronDensity, "Electron-density surface")})
            refuses(add(kind), line(title));
    }

    void elementsThatNobodyKnowsHaveASurfaceToo() {
        addEntry("one", "UNL 1", {{"Q", "X", {0, 0, 0}}});
        for (const SurfaceKind kind : kinds)
            QVERIFY(command(add(kind)).value(0).contains("around 1 atom"));
        QCOMPARE(surfaces().size(), kinds.size());
    }

    // Farther from the first atom than the lattice reaches.
    void anAtomOutOfReachIsLeftOut() {
        addEntry("one", "CU 1", {{"CU", "Cu", {0, 0, 0}}, {"CU2", "Cu", {3e7F, 0, 0}}});
        const QStringList said = command(add(SurfaceKind::Excluded));
        QCOMPARE(said.size(), 1);
        QVERIFY(isWithin(areaIn(said[0]).value_or(0), sphere(copperRadius), 0.02));
    }

    void manyAtomsInOneCell_data() {
        QTest::addColumn<SurfaceKind>("kind");
        QTest::addColumn<int>("count");
        QTest::newRow("excluded") << SurfaceKind::Excluded << 100'000;
        QTest::newRow("van der Waals") << SurfaceKind::VanDerWaals << 3000;
        QTest::newRow("accessible") << SurfaceKind::Accessible << 3000;
        QTest::newRow("Gaussian") << SurfaceKind::Gaussian << 2000;
        QTest::newRow("electron density") << SurfaceKind::ElectronDensity << 2000;
    }
    void manyAtomsInOneCell() {
        QFETCH(SurfaceKind, kind);
        QFETCH(int, count);
        std::mt19937 random(1);
        std::uniform_real_distribution<float> along(0, 4);
        std::vector<AtomSpec> atoms;
        for (int i = 0; i != count; ++i) {
            const float x = along(random);
            const float y = along(random);
            atoms.push_back({"C", "C", {x, y, along(random)}});
        }
        addEntry("crowd", "UNL 1", atoms);
        const QStringList said = command(add(kind));
        QCOMPARE(said.size(), 1);
        QVERIFY2(said[0].contains(QString(" around %1,000 atoms").arg(count / 1000)),
                 qPrintable(said[0]));
        QCOMPARE(surfaces().size(), std::size_t(1));
        QCOMPARE(problemWith(*TAVIK::GetSurfaceMesh(surfaces().back())), std::string());
    }
};

REGISTER_TEST(AtomSurfacesTest)
#include "AtomSurfacesTest.moc"
