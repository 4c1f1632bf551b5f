// Surfaces, lines and boxes of grids in the scene.
#include "Geometry.h"
#include "scene/DataReader.h"
#include "scene/SceneMaker.h"
#include "scene/ShownScales.h"

#include "SceneTools.h"
#include "TestSupport.h"

using namespace scene_tools;
using view::SceneMaker;

namespace {

TAVIK::SurfaceMesh triangle(float z) {
    TAVIK::SurfaceMesh mesh;
    mesh.vertices = {{0, 0, z}, {1, 0, z}, {0, 1, z}};
    mesh.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    mesh.triangles = {{0, 1, 2}};
    return mesh;
}

/// 3 x 4 x 5 points with steps of 1, 2 and 3 Å from (10, 20, 30).
TAVIK::GridValues grid() {
    TAVIK::GridValues values;
    values.points = {3, 4, 5};
    values.origin = {10, 20, 30};
    values.steps = {{{1, 0, 0}, {0, 2, 0}, {0, 0, 3}}};
    values.values.assign(60, 1.0F);
    return values;
}

} // namespace

class ShapesTest : public test_support::TestCase {
    Q_OBJECT

    view::DataReader m_reader;
    SceneMaker m_maker;

    std::shared_ptr<const view::Scene> readScene() {
        m_reader.read();
        return m_maker.scene(m_reader.snapshot(), {});
    }
    std::shared_ptr<const view::Scene> refreshedScene() {
        m_reader.refresh();
        return m_maker.scene(m_reader.snapshot(), {});
    }

private slots:
    void aSurfaceIsAMeshInTheItemsColour() {
        Structure made;
        made.add("UNL 1", {{"A", "C", {0, 0, 0}}});
        made.attach();
        TAVIK::Compound* surface = TAVIK::DataMaker::makeSurface(space(), "surface", triangle(5));
        surface->SetColor(Color(0xff336699U));
        auto scene = readScene();
        QCOMPARE(scene->meshes.size(), std::size_t(1));
        QCOMPARE(scene->meshes[0]->vertices, triangle(5).vertices);
        QCOMPARE(scene->meshes[0]->triangles, triangle(5).triangles);
        QVERIFY(scene->meshes[0]->colours.empty());
        QCOMPARE(scene->idColours->at(1), 0xff336699U);
        QCOMPARE(scene->meshes[0]->ids, std::vector<view::Id>{view::idOf(1)});
        QCOMPARE(m_reader.item(view::idOf(1), m_reader.snapshot().generation), surface);

        // Another colour costs no other mesh, and reading nothing again.
        const auto meshes = scene->meshes;
        const std::uint64_t generation = m_reader.snapshot().generation;
        surface->SetColor(Color(0xff112233U));
        scene = refreshedScene();
        QCOMPARE(scene->meshes, meshes);
        QCOMPARE(scene->idColours->at(1), 0xff112233U);
        made.atoms[0]->SetColor(Color(0xff00ff00U));
        QCOMPARE(refreshedScene()->meshes, meshes);
        QCOMPARE(m_reader.snapshot().generation, generation);
        surface->SetVisible(false);
        QVERIFY(refreshedScene()->meshes.empty());
    }

    void aSurfaceMayHaveAColourForEachVertex() {
        TAVIK::SurfaceMesh mesh = triangle(0);
        mesh.colors = {0xff000001U, 0xff000002U, 0xff000003U};
        TAVIK::Compound* surface = TAVIK::DataMaker::makeSurface(space(), "surface", mesh);
        const auto scene = readScene();
        QCOMPARE(scene->meshes[0]->colours, mesh.colors);
        QVERIFY(!scene->meshLook(0).hasIdColours);

        // Another colour of the item hides them, and reads no mesh again.
        const std::uint64_t generation = m_reader.snapshot().generation;
        surface->SetColor(Color(0xffaabbccU));
        QVERIFY(refreshedScene()->meshLook(0).hasIdColours);
        QCOMPARE(m_maker.quickScene(m_reader.snapshot(), {})->colours,
                 std::vector<view::Colour>(3, 0xffaabbccU));
        surface->RestoreColor();
        const auto back = refreshedScene();
        QVERIFY(!back->meshLook(0).hasIdColours);
        QCOMPARE(back->meshes[0], scene->meshes[0]);
        QCOMPARE(m_reader.snapshot().generation, generation);
    }

    void coloursThatAreReplacedAloneAreShown() {
        TAVIK::SurfaceMesh mesh = triangle(0);
        mesh.colors = {0xff000001U, 0xff000002U, 0xff000003U};
        auto* const surface = TAVIK::DataMaker::makeSurface(space(), "surface", mesh);
        readScene();
        const std::vector<view::Colour> others = {0xff000004U, 0xff000005U, 0xff000006U};
        QVERIFY(TAVIK::SetSurfaceColors(surface, others));
        QCOMPARE(refreshedScene()->meshes[0]->colours, others);
    }

    void eachSurfaceHasItsStyle() {
        auto* const first = TAVIK::DataMaker::makeSurface(space(), "first", triangle(0));
        auto* const second = TAVIK::DataMaker::makeSurface(space(), "second", triangle(1));
        m_reader.read();
        view::Look look;
        look.surfaces = view::SurfaceStyle::SeeThrough;
        auto scene = m_maker.scene(m_reader.snapshot(), look);
        QVERIFY(scene->meshLook(0).isSeeThrough && scene->meshLook(1).isSeeThrough);
        look.ownSurfaceStyles[second->GetId()] = view::SurfaceStyle::Opaque;
        scene = m_maker.scene(m_reader.snapshot(), look);
        QVERIFY(scene->meshLook(0).isSeeThrough && !scene->meshLook(1).isSeeThrough);

        // Lines in the colours of the vertices, or of the item.
        look.ownSurfaceStyles[first->GetId()] = view::SurfaceStyle::MeshLines;
        first->SetColor(Color(0xffaabbccU));
        m_reader.refresh();
        scene = m_maker.scene(m_reader.snapshot(), look);
        QCOMPARE(scene->meshes.size(), std::size_t(1));
        QVERIFY(!scene->meshLook(0).isSeeThrough);
        QCOMPARE(scene->lines.size(), std::size_t(3));
        for (const view::Segment& line : scene->lines) {
            QCOMPARE(scene->points[line.from][2], 0.0F);
            QCOMPARE(scene->colours[line.from], 0xffaabbccU);
            QCOMPARE(scene->ids[line.to], view::idOf(0));
        }
        TAVIK::SurfaceMesh mesh = triangle(0);
        mesh.colors = {0xffaabbccU, 0xffbbccaaU, 0xffccaabbU};
        QVERIFY(TAVIK::SetSurfaceMesh(second, mesh));
        look.ownSurfaceStyles[second->GetId()] = view::SurfaceStyle::MeshLines;
        m_reader.refresh();
        scene = m_maker.scene(m_reader.snapshot(), look);
        const std::vector<view::Colour> colours(scene->colours.end() - 3, scene->colours.end());
        QCOMPARE(colours, mesh.colors);
        second->SetVisible(false);
        m_reader.refresh();
        QCOMPARE(m_maker.scene(m_reader.snapshot(), look)->lines.size(), std::size_t(3));
    }

    void scalesOfShownValuesAreThereOnce() {
        const auto scaled = [](const char* title) {
            TAVIK::SurfaceMesh mesh = triangle(0);
            mesh.colors = {1, 2, 3};
            mesh.scale = {title, -1, 1, {0xffff0000U, 0xff0000ffU}};
            return mesh;
        };
        Items made;
        for (const char* title : {"a", "b", "a", "c", "d"})
            made.push_back(TAVIK::DataMaker::makeSurface(space(), "surface", scaled(title)));
        TAVIK::DataMaker::makeSurface(space(), "plain", triangle(0));
        const auto titles = [&] {
            m_reader.refresh();
            QStringList all;
            for (const TAVIK::ValueScale& scale :
                 view::shownScales(*m_reader.snapshot().contents, *m_reader.snapshot().marks))
                all << QString::fromStdString(scale.title);
            return all;
        };
        m_reader.read();
        QCOMPARE(titles(), (QStringList{"a", "b", "c"}));
        made[1]->SetVisible(false);
        QCOMPARE(titles(), (QStringList{"a", "c", "d"}));
        // One colour stands for no value.
        made[0]->SetColor(Color(0xff123456U));
        made[2]->SetColor(Color(0xff123456U));
        QCOMPARE(titles(), (QStringList{"c", "d"}));
        TAVIK::SurfaceMesh other = scaled("c");
        other.scale->upper = 2;
        QVERIFY(TAVIK::SetSurfaceMesh(dynamic_cast<TAVIK::Surface*>(made[3]), other));
        titles();
        QCOMPARE(m_reader.snapshot().contents->shapes[3].scale, other.scale);
    }

    void aMeshThatIsReplacedIsReadAgain() {
        auto* const surface = TAVIK::DataMaker::makeSurface(space(), "surface", triangle(0));
        readScene();
        QVERIFY(TAVIK::SetSurfaceMesh(surface, triangle(7)));
        QCOMPARE(refreshedScene()->meshes[0]->vertices, triangle(7).vertices);
        TAVIK::SurfaceMesh coloured = triangle(7);
        coloured.colors = {1, 2, 3};
        QVERIFY(TAVIK::SetSurfaceMesh(surface, coloured));
        QCOMPARE(refreshedScene()->meshes[0]->colours, coloured.colors);
    }

    void aSurfaceWithoutAMeshIsNothingUntilItGetsOne() {
        auto* const item = TAVIK::DataMaker::makeCore(space(), "surface", "Surface");
        QVERIFY(readScene()->meshes.empty());
        QVERIFY(TAVIK::SetSurfaceMesh(dynamic_cast<TAVIK::Surface*>(item), triangle(0)));
        QCOMPARE(refreshedScene()->meshes.size(), std::size_t(1));
    }

    void aPolyLineIsDrawnInPiecesBetweenItsPoints() {
        TAVIK::Compound* line = TAVIK::DataMaker::makePolyLine(
            space(), "line",
            {TAVIK::Vertex(0, 0, 0, true), TAVIK::Vertex(1, 0, 0, true),
             TAVIK::Vertex(0, 0, 0, false), TAVIK::Vertex(2, 0, 0, true),
             TAVIK::Vertex(3, 0, 0, true)});
        line->SetColor(Color(0xffaabbccU));
        const auto scene = readScene();
        QCOMPARE(scene->lines.size(), std::size_t(2));
        QCOMPARE(scene->points[scene->lines[1].from], (view::Point{2, 0, 0}));
        QCOMPARE(scene->points[scene->lines[1].to], (view::Point{3, 0, 0}));
        QCOMPARE(scene->colours[scene->lines[0].from], 0xffaabbccU);
        QCOMPARE(scene->ids[scene->lines[0].to], view::idOf(0));
    }

    void aGridIsTheBoxOfWhatIsShownOfIt() {
        TAVIK::Grid* made = TAVIK::DataMaker::makeGrid(space(), "grid", grid());
        auto scene = readScene();
        QCOMPARE(scene->lines.size(), std::size_t(12));
        QCOMPARE(scene->points.front(), (view::Point{10, 20, 30}));
        QCOMPARE(scene->points.back(), (view::Point{12, 26, 42}));
        // Each edge is as long as the box along one axis.
        for (const view::Segment& edge : scene->lines) {
            int differences = 0;
            for (std::size_t i = 0; i != 3; ++i)
                differences += scene->points[edge.from][i] != scene->points[edge.to][i] ? 1 : 0;
            QCOMPARE(differences, 1);
        }
        made->m_lower[0] = 1;
        made->m_upper[2] = 3;
        scene = refreshedScene();
        QCOMPARE(scene->points.front(), (view::Point{11, 20, 30}));
        QCOMPARE(scene->points.back(), (view::Point{12, 26, 36}));
        made->m_lower[0] = made->m_upper[0];
        QVERIFY(refreshedScene()->lines.empty());
    }

    void whileMovingMeshesAreDotsAndLinesStay() {
        TAVIK::DataMaker::makeSurface(space(), "surface", triangle(0));
        TAVIK::DataMaker::makeGrid(space(), "grid", grid());
        m_reader.read();
        const auto scene = m_maker.quickScene(m_reader.snapshot(), {});
        QCOMPARE(scene->dots.size(), std::size_t(3));
        QCOMPARE(scene->lines.size(), std::size_t(12));
        QVERIFY(scene->meshes.empty());
        const view::Snapshot& snapshot = m_reader.snapshot();
        QCOMPARE(view::drawnPoints(*snapshot.contents, *snapshot.marks, {}).size(),
                 std::size_t(11));
    }
};

REGISTER_TEST(ShapesTest)
#include "ShapesTest.moc"
