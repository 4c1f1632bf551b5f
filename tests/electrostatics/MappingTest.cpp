// Values mapped onto a surface: which, from where, and what is said of them.
#include "Mapping.h"
#include "CommandCase.h"
#include "DataPoint.h"
#include "potential/Coulomb.h"
#include "services/DataFolder.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>

using namespace command_case;
using electrostatics::mapOntoSurface;

namespace {

constexpr std::uint32_t red = 0xffff0000U;
constexpr std::uint32_t white = 0xffffffffU;
constexpr std::uint32_t blue = 0xff0000ffU;
constexpr std::uint32_t grey = 0xff808080U;

/// A strip of triangles along x at y and z of 1 and 2, with a vertex at each of `xs`.
Surface* addStrip(const std::string& name, const std::vector<float>& xs) {
    SurfaceMesh mesh;
    for (std::size_t i = 0; i != xs.size(); ++i) {
        mesh.vertices.push_back({xs[i], i % 2 ? 2.0F : 1.0F, 1});
        mesh.normals.push_back({0, 0, 1});
        if (i >= 2)
            mesh.triangles.push_back(
                {std::uint32_t(i - 2), std::uint32_t(i - 1), std::uint32_t(i)});
    }
    return TAVIK::DataMaker::makeSurface(space(), name, mesh);
}

/// Values of x - `zero` on 9 x 4 x 4 points.
Grid* addSlope(const std::string& name, float zero) {
    return addGrid(name, {9, 4, 4}, [zero](int x, int, int) { return float(x) - zero; });
}

const SurfaceMesh& meshOf(const Surface* surface) {
    return *TAVIK::GetSurfaceMesh(surface);
}

} // namespace

class MappingTest : public CommandCase {
    Q_OBJECT
private slots:
    void theValuesOfAMapAreMappedWithColoursAndAScale() {
        Surface* const surface = addStrip("skin", {0, 2, 4, 6, 8});
        addSlope("pot", 4);
        m_updates = m_additions = m_deletions = 0;
        QCOMPARE(command(mapOntoSurface),
                 QStringList("Values of pot on skin: -4 to 4, mean 0; red -5, white 0, blue 5"));
        const SurfaceMesh& mesh = meshOf(surface);
        QCOMPARE(mesh.values, (std::vector<float>{-4, -2, 0, 2, 4}));
        QVERIFY(mesh.scale.has_value());
        QCOMPARE(mesh.scale->title, std::string("Values of pot on skin"));
        QCOMPARE(mesh.scale->lower, -5.0F);
        QCOMPARE(mesh.scale->upper, 5.0F);
        QCOMPARE(mesh.scale->colors.front(), red);
        QCOMPARE(mesh.scale->colors[mesh.scale->colors.size() / 2], white);
        QCOMPARE(mesh.scale->colors.back(), blue);
        QCOMPARE(mesh.colors[2], white);
        // From white to red only green and blue go, in the ratio of the values.
        const auto green = [&](std::size_t i) { return int(mesh.colors[i] >> 8 & 0xff); };
        QCOMPARE(mesh.colors[0] >> 16, 0xffffU);
        QVERIFY(std::abs(green(0) - 51) <= 1);
        QVERIFY(std::abs(green(1) - 153) <= 1);
        QCOMPARE(mesh.colors[4] & 0xff, 0xffU);
        QVERIFY(std::abs(green(4) - 51) <= 1);
        QCOMPARE(m_updates, 1);
        QCOMPARE(m_additions + m_deletions, 0);
        QCOMPARE(m_labels, QStringList("Map Values of pot on skin"));
    }

    void theRestOfTheMeshStays() {
        Surface* const surface = addStrip("skin", {0, 2, 4});
        SurfaceMesh before = meshOf(surface);
        before.atoms = {3, 4, 5};
        QVERIFY(TAVIK::SetSurfaceMesh(surface, before));
        addSlope("pot", 4);
        command(mapOntoSurface);
        QCOMPARE(meshOf(surface).vertices, before.vertices);
        QCOMPARE(meshOf(surface).normals, before.normals);
        QCOMPARE(meshOf(surface).triangles, before.triangles);
        QCOMPARE(meshOf(surface).atoms, before.atoms);
    }

    void aSurfaceWithAColourOfItsOwnShowsTheValues() {
        Surface* const surface = addStrip("skin", {0, 2, 4});
        surface->SetColor(Color(0xff123456U));
        addSlope("pot", 4);
        command(mapOntoSurface);
        QVERIFY(TAVIK::HasDefaultColor(surface));
    }

    void verticesOutsideOfTheMapAreGreyAndCounted() {
        Surface* const surface = addStrip("skin", {-1, 2, 4, 6, 8.5F});
        addSlope("pot", 0);
        QCOMPARE(command(mapOntoSurface),
                 QStringList("Values of pot on skin: 2 to 6, mean 4; red -10, white 0, blue 10; 2 "
                             "of 5 vertices have no value and are grey"));
        const SurfaceMesh& mesh = meshOf(surface);
        QVERIFY(std::isnan(mesh.values.front()));
        QVERIFY(std::isnan(mesh.values.back()));
        QCOMPARE(mesh.values[2], 4.0F);
        QCOMPARE(mesh.colors.front(), grey);
        QCOMPARE(mesh.colors.back(), grey);
    }

    void theFirstShownPairIsTakenAndTheSelectedOneBeforeIt() {
        const std::vector<Surface*> skins = {addStrip("a", {1, 2, 3}), addStrip("b", {1, 2, 3}),
                                             addStrip("c", {1, 2, 3})};
        const std::vector<Grid*> maps = {addSlope("m1", 0), addSlope("m2", 0), addSlope("m3", 0)};
        const auto pair = [this] {
            const QStringList said = command(mapOntoSurface);
            return said.value(0).section(u':', 0, 0);
        };
        QCOMPARE(pair(), "Values of m1 on a");
        skins[0]->SetVisible(false);
        maps[0]->SetVisible(false);
        maps[1]->SetVisible(false);
        QCOMPARE(pair(), "Values of m3 on b");
        skins[2]->SetSelected(true);
        maps[1]->SetSelected(true); // hidden as it is
        QCOMPARE(pair(), "Values of m2 on c");
        maps[1]->SetSelected(false);
        maps[2]->SetVisible(false);
        addCopper();
        QCOMPARE(pair(), "Coulomb potential of the shown atoms on c");
    }

    void aSurfaceWithoutVerticesIsPassedBy() {
        TAVIK::DataMaker::makeCore(space(), "old", "Surface");
        TAVIK::DataMaker::makeSurface(space(), "empty", {})->SetSelected(true);
        addStrip("skin", {1, 2, 3});
        addSlope("pot", 4);
        QVERIFY(command(mapOntoSurface).value(0).startsWith("Values of pot on skin: "));
    }

    void withoutAMapThereIsTheCoulombPotential() {
        Compound* const entry = addEntry("two", "NA 1", {{"NA", "Na", {0, 0, 0}}});
        addResidue(entry, "CL 2", {{"CL", "Cl", {8, 0, 0}}});
        Surface* const surface = addStrip("skin", {2, 4, 6});
        QCOMPARE(command(mapOntoSurface),
                 QStringList("Coulomb potential of the shown atoms on skin: -19.7 to 19.7 kT/e, "
                             "mean 0; red -20, white 0, blue 20; 2 charges, 0 e in all: 0 of "
                             "the file, 2 of residues at pH 7; dielectric 4 r/Å"));
        const std::vector<electrostatics::Charge> charges = {{{0, 0, 0}, 1}, {{8, 0, 0}, -1}};
        const SurfaceMesh& mesh = meshOf(surface);
        for (std::size_t i = 0; i != 3; ++i)
            QVERIFY(std::abs(mesh.values[i] -
                             electrostatics::coulombPotential(mesh.vertices[i], charges)) < 1e-4F);
        QCOMPARE(mesh.scale->title,
                 std::string("Coulomb potential (kT/e) of the shown atoms on skin"));
    }

    void theChargesAreThoseOfTheSurfacesEntry() {
        addEntry("other", "CL 1", {{"CL", "Cl", {2, 1, 1}}});
        Compound* const entry = addEntry("one", "NA 1", {{"NA", "Na", {0, 0, 0}}});
        Surface* const surface = addStrip("skin", {2, 4, 6});
        SurfaceMesh mesh = meshOf(surface);
        mesh.atoms.assign(3, atomsIn(entry)[0]->GetId());
        QVERIFY(TAVIK::SetSurfaceMesh(surface, mesh));
        entry->SetVisible(false);
        QVERIFY(command(mapOntoSurface).value(0).startsWith("Coulomb potential of one on skin: "));
        QVERIFY(std::ranges::all_of(meshOf(surface).values, [](float value) { return value > 0; }));
    }

    void mappingAgainReplacesTheValues() {
        Surface* const surface = addStrip("skin", {0, 2, 4});
        Grid* const first = addSlope("first", 0);
        addSlope("second", 10);
        command(mapOntoSurface);
        QCOMPARE(meshOf(surface).values, (std::vector<float>{0, 2, 4}));
        first->SetVisible(false);
        command(mapOntoSurface);
        QCOMPARE(meshOf(surface).values, (std::vector<float>{-10, -8, -6}));
        QCOMPARE(meshOf(surface).scale->title, std::string("Values of second on skin"));
    }

    void manyVerticesHaveTheValuesOfFew() {
        std::vector<float> xs;
        for (int i = 0; i != 30'000; ++i)
            xs.push_back(static_cast<float>(i) * 8 / 30'000);
        Surface* const surface = addStrip("skin", xs);
        addSlope("pot", 0);
        command(mapOntoSurface);
        for (std::size_t i = 0; i != xs.size(); ++i)
            QVERIFY(std::abs(meshOf(surface).values[i] - xs[i]) < 1e-5F);
    }

    // Bad input ------------------------------------------------------------------------------

    void withoutASurfaceNothingIsMapped() {
        addSlope("pot", 4);
        refuses(mapOntoSurface, "Nothing is mapped: no surface with vertices is selected or shown");
        TAVIK::DataMaker::makeSurface(space(), "empty", {});
        refuses(mapOntoSurface, "Nothing is mapped: no surface with vertices is selected or shown");
        addStrip("hidden", {1, 2, 3})->SetVisible(false);
        refuses(mapOntoSurface, "Nothing is mapped: no surface with vertices is selected or shown");
    }

    void withoutMapAndChargeNothingIsMapped() {
        Surface* const surface = addStrip("skin", {1, 2, 3});
        const SurfaceMesh before = meshOf(surface);
        const QString line =
            "Nothing is mapped: no map is selected or shown, and no atom with a charge";
        refuses(mapOntoSurface, line);
        addEntry("argon", "AR 1", {{"AR", "Ar", {0, 0, 0}}});
        refuses(mapOntoSurface, line);
        addEntry("water", "HOH 1", {{"O", "O", {0, 0, 0}}});
        refuses(mapOntoSurface, line);
        QVERIFY(meshOf(surface) == before);
    }

    void aMapFarFromTheSurfaceGivesNothing() {
        Surface* const surface = addStrip("skin", {100, 102, 104});
        const SurfaceMesh before = meshOf(surface);
        addSlope("pot", 4);
        refuses(mapOntoSurface, "Nothing is mapped: the surface lies outside of the map, or where "
                                "it has no values");
        QVERIFY(meshOf(surface) == before);
    }

    void aMapWithoutNumbersGivesNothing() {
        addStrip("skin", {1, 2, 3});
        addGrid("none", {9, 4, 4}, [](int, int, int) { return std::nanf(""); });
        refuses(mapOntoSurface, "Nothing is mapped: the surface lies outside of the map, or where "
                                "it has no values");
    }

    void infiniteValuesAreNone() {
        Surface* const surface = addStrip("skin", {1, 2, 3, 4});
        addGrid("wild", {9, 4, 4}, [](int x, int, int) { return x < 3 ? HUGE_VALF : 3.0e38F; });
        command(mapOntoSurface);
        QVERIFY(std::isnan(meshOf(surface).values[0]));
        QCOMPARE(meshOf(surface).values[3], 3.0e38F);
    }

    void withoutItsColourMapNothingIsMapped() {
        Surface* const surface = addStrip("skin", {1, 2, 3});
        const SurfaceMesh before = meshOf(surface);
        addSlope("pot", 4);
        const QString usual = memory_host::dataFolder();
        const QTemporaryDir empty;
        memory_host::setDataFolder(empty.path());
        refuses(mapOntoSurface, "Nothing is mapped: the colour map RedWhiteBlue.cm cannot be read");
        memory_host::setDataFolder(usual);
        QVERIFY(meshOf(surface) == before);
    }
};

REGISTER_TEST(MappingTest)
#include "MappingTest.moc"
