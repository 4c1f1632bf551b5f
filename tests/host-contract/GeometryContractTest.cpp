// Meshes of surfaces, values of grids and points of lines: made, read, replaced, refused.
#include "ContractTools.h"
#include "DataPointBase.h"
#include "Geometry.h"
#include "TestSupport.h"

#include <cmath>
#include <limits>

using namespace contract;
using namespace TAVIK;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

/// A tetrahedron with a colour and a value a vertex; its normals point away from its middle.
SurfaceMesh tetrahedron() {
    constexpr float c = 0.57735027F;
    SurfaceMesh mesh;
    mesh.vertices = {{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}};
    mesh.normals = {{c, c, c}, {c, -c, -c}, {-c, c, -c}, {-c, -c, c}};
    mesh.triangles = {{0, 1, 2}, {0, 2, 3}, {0, 3, 1}, {1, 3, 2}};
    mesh.colors = {0xff0000ffU, 0xff00ff00U, 0xffff0000U, 0x80ffffffU};
    mesh.values = {-1.0F, 0.0F, 0.5F, 1.0F};
    mesh.scale = ValueScale{"Potential (kT/e)", -1, 1, {0xffff0000U, 0xffffffffU, 0xff0000ffU}};
    mesh.atoms = {7, 7, 8, 9};
    mesh.area = 12.5;
    return mesh;
}

GridValues smallGrid() {
    GridValues grid;
    grid.points = {3, 2, 2};
    grid.origin = {-1, 5, 0.5};
    grid.steps = {{{0.5, 0, 0}, {0.1, 0.5, 0}, {0, 0, 0.7}}};
    for (int i = 0; i != 12; ++i)
        grid.values.push_back(static_cast<float>(i));
    return grid;
}

} // namespace

class GeometryContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void aSurfaceKeepsItsMesh() {
        Compound* const entry = make(space(), "Composite");
        const Surface* const surface = DataMaker::makeSurface(entry, "skin/1", tetrahedron());
        QVERIFY(surface);
        QCOMPARE(surface->GetName(), std::string("skin_1"));
        QCOMPARE(childrenOf(entry), (Items{const_cast<Surface*>(surface)}));
        QVERIFY(GetSurfaceMesh(surface));
        QVERIFY(*GetSurfaceMesh(surface) == tetrahedron());
        QCOMPARE(faults(), QString());
    }

    void colorsAndValuesMayBeLeftOut() {
        SurfaceMesh mesh = tetrahedron();
        mesh.colors.clear();
        mesh.values.clear();
        const Surface* const surface = DataMaker::makeSurface(space(), "skin", mesh);
        QVERIFY(surface && *GetSurfaceMesh(surface) == mesh);
        const Surface* const empty = DataMaker::makeSurface(space(), "none", {});
        QVERIFY(empty && GetSurfaceMesh(empty) && GetSurfaceMesh(empty)->vertices.empty());
    }

    void aVertexMayHaveNoValue() {
        SurfaceMesh mesh = tetrahedron();
        mesh.values[2] = notANumber;
        const Surface* const surface = DataMaker::makeSurface(space(), "skin", mesh);
        QVERIFY(surface && std::isnan(GetSurfaceMesh(surface)->values[2]));
    }

    void theColorsOfAMeshAreShownUntilTheSurfaceGetsAnother() {
        QVERIFY(!HasDefaultColor(nullptr));
        Surface* const surface = DataMaker::makeSurface(space(), "skin", tetrahedron());
        QVERIFY(HasDefaultColor(surface));
        surface->SetColor(Color(0xff123456U));
        QVERIFY(!HasDefaultColor(surface));
        surface->RestoreColor();
        QVERIFY(HasDefaultColor(surface));
    }

    void aSurfaceThatWasMadeWithoutAMeshHasNone() {
        QVERIFY(!GetSurfaceMesh(nullptr));
        auto* const surface = dynamic_cast<Surface*>(make(space(), "Surface"));
        QVERIFY(!GetSurfaceMesh(surface));
        const DataPointBase guard(nullptr, Publisher::Update);
        QVERIFY(SetSurfaceMesh(surface, tetrahedron()));
        QVERIFY(*GetSurfaceMesh(surface) == tetrahedron());
    }

    void aMeshIsReplacedAsAWhole() {
        Surface* const surface = DataMaker::makeSurface(space(), "skin", tetrahedron());
        surface->SetSelected(true);
        surface->SetColor(Color(0xff123456U));
        SurfaceMesh other;
        other.vertices = {{1, 2, 3}};
        other.normals = {{0, 0, -1}};
        QStringList heard;
        const Listener listener(heard);
        {
            const DataPointBase guard(nullptr, Publisher::Update);
            QVERIFY(guard.m_good);
            QVERIFY(SetSurfaceMesh(surface, other));
        }
        QCOMPARE(heard, QStringList("a update"));
        QVERIFY(*GetSurfaceMesh(surface) == other);
        QVERIFY(surface->IsSelected());
        QCOMPARE(surface->GetColor().rgba(), 0xff123456U);
        QVERIFY(!SetSurfaceMesh(nullptr, other));
        QCOMPARE(faults(), QString());
    }

    void theColorsOfAMeshAreReplacedAlone() {
        Surface* const surface = DataMaker::makeSurface(space(), "skin", tetrahedron());
        const DataPointBase guard(nullptr, Publisher::Update);
        SurfaceMesh expected = tetrahedron();
        expected.colors = {1, 2, 3, 4};
        expected.scale.reset(); // They no longer show the values.
        QVERIFY(SetSurfaceColors(surface, {1, 2, 3, 4}));
        QVERIFY(*GetSurfaceMesh(surface) == expected);
        expected.colors.clear();
        QVERIFY(SetSurfaceColors(surface, {}));
        QVERIFY(*GetSurfaceMesh(surface) == expected);
        QCOMPARE(takeMessages(), QStringList());
        QCOMPARE(faults(), QString());
    }

    void colorsThatFitNoMeshAreRefusedWithALine() {
        Surface* const surface = DataMaker::makeSurface(space(), "skin", tetrahedron());
        const DataPointBase guard(nullptr, Publisher::Update);
        QVERIFY(!SetSurfaceColors(surface, {1, 2, 3}));
        QVERIFY(!SetSurfaceColors(surface, {1, 2, 3, 4, 5}));
        QVERIFY(*GetSurfaceMesh(surface) == tetrahedron());
        QVERIFY(!SetSurfaceColors(dynamic_cast<Surface*>(make(space(), "Surface")), {}));
        QVERIFY(!SetSurfaceColors(nullptr, {}));
        QCOMPARE(takeMessages().size(), 4);
    }

    void aMalformedMeshIsRefusedWithALine_data() {
        QTest::addColumn<std::function<void(SurfaceMesh&)>>("spoil");
        const auto row = [](const char* name, std::function<void(SurfaceMesh&)> spoil) {
            QTest::newRow(name) << std::move(spoil);
        };
        row("index out of range", [](SurfaceMesh& mesh) { mesh.triangles[2][1] = 4; });
        row("largest index", [](SurfaceMesh& mesh) { mesh.triangles[0][0] = 0xffffffffU; });
        row("a normal too few", [](SurfaceMesh& mesh) { mesh.normals.pop_back(); });
        row("no normals", [](SurfaceMesh& mesh) { mesh.normals.clear(); });
        row("a normal too many", [](SurfaceMesh& mesh) { mesh.normals.push_back({1, 0, 0}); });
        row("a colour too few", [](SurfaceMesh& mesh) { mesh.colors.pop_back(); });
        row("a value too many", [](SurfaceMesh& mesh) { mesh.values.push_back(1); });
        row("vertex not a number", [](SurfaceMesh& mesh) { mesh.vertices[3][2] = notANumber; });
        row("vertex infinite", [](SurfaceMesh& mesh) { mesh.vertices[0][0] = -infinity; });
        row("normal not a number", [](SurfaceMesh& mesh) { mesh.normals[1][1] = notANumber; });
        row("normal of no length", [](SurfaceMesh& mesh) { mesh.normals[1] = {0, 0, 0}; });
        row("normal too long", [](SurfaceMesh& mesh) { mesh.normals[1] = {0, 1.02F, 0}; });
        row("an atom too few", [](SurfaceMesh& mesh) { mesh.atoms.pop_back(); });
        row("scale of one colour", [](SurfaceMesh& mesh) { mesh.scale->colors.resize(1); });
        row("scale without a range", [](SurfaceMesh& mesh) { mesh.scale->lower = 1; });
        row("scale upside down", [](SurfaceMesh& mesh) { mesh.scale->upper = -2; });
        row("scale not a number", [](SurfaceMesh& mesh) { mesh.scale->lower = notANumber; });
        row("scale to infinity", [](SurfaceMesh& mesh) { mesh.scale->upper = infinity; });
        row("area below 0", [](SurfaceMesh& mesh) { mesh.area = -1; });
        row("area not a number", [](SurfaceMesh& mesh) { mesh.area = double(notANumber); });
        row("value infinite", [](SurfaceMesh& mesh) { mesh.values[1] = infinity; });
    }
    void aMalformedMeshIsRefusedWithALine() {
        using Spoil = std::function<void(SurfaceMesh&)>;
        QFETCH(const Spoil, spoil);
        SurfaceMesh mesh = tetrahedron();
        spoil(mesh);
        Surface* const surface = DataMaker::makeSurface(space(), "good", tetrahedron());
        const DataPointBase guard(nullptr, Publisher::Update);
        QVERIFY(!DataMaker::makeSurface(space(), "bad", mesh));
        QVERIFY(!SetSurfaceMesh(surface, mesh));
        QCOMPARE(childrenOf(space()), (Items{surface}));
        QVERIFY(*GetSurfaceMesh(surface) == tetrahedron());
        const QStringList lines = takeMessages();
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].contains("\"bad\"") && lines[1].contains("\"good\""));
    }

    void normalsNeedNotBeExact() {
        SurfaceMesh mesh = tetrahedron();
        mesh.normals[0] = {0, 1.009F, 0};
        mesh.normals[1] = {0, 0, -0.991F};
        QVERIFY(DataMaker::makeSurface(space(), "skin", mesh));
    }

    void aGridKeepsItsValues() {
        const Grid* const grid = DataMaker::makeGrid(space(), "map", smallGrid());
        QVERIFY(grid && GetGridValues(grid));
        QVERIFY(*GetGridValues(grid) == smallGrid());
        for (const std::size_t axis : {0, 1, 2}) {
            QCOMPARE(grid->m_points[axis], smallGrid().points[axis]);
            QCOMPARE(grid->m_upper[axis], smallGrid().points[axis]);
            QCOMPARE(grid->m_lower[axis], 0);
        }
        // x is the fastest: the value of (2, 1, 0) is the sixth.
        int ijk[3] = {};
        QVERIFY(grid->GetNearest(Vertex(0.1F, 5.5F, 0.5F, true), ijk));
        QCOMPARE(GetGridValues(grid)->values[std::size_t(ijk[0] + 3 * (ijk[1] + 2 * ijk[2]))],
                 5.0F);
        QCOMPARE(faults(), QString());
    }

    void aGridWithoutValuesHasNone() {
        QVERIFY(!GetGridValues(nullptr));
        QVERIFY(!GetGridValues(dynamic_cast<Grid*>(make(space(), "Grid"))));
    }

    void aValueMayBeMissing() {
        GridValues values = smallGrid();
        values.values[4] = notANumber;
        const Grid* const grid = DataMaker::makeGrid(space(), "map", values);
        QVERIFY(grid && GetGridValues(grid)->values[4] != GetGridValues(grid)->values[4]);
    }

    void aMalformedGridIsRefusedWithALine_data() {
        QTest::addColumn<std::function<void(GridValues&)>>("spoil");
        const auto row = [](const char* name, std::function<void(GridValues&)> spoil) {
            QTest::newRow(name) << std::move(spoil);
        };
        row("a value too few", [](GridValues& grid) { grid.values.pop_back(); });
        row("a value too many", [](GridValues& grid) { grid.values.push_back(0); });
        row("nothing", [](GridValues& grid) { grid = {}; });
        row("a negative number", [](GridValues& grid) { grid.points = {-3, -2, 2}; });
        row("product beyond all indices", [](GridValues& grid) {
            grid.points = {1 << 22, 1 << 21, 1 << 21}; // 2 to the 64
            grid.values.clear();
        });
        row("product that wraps around", [](GridValues& grid) {
            grid.points = {1 << 30, 1 << 30, 16}; // 2 to the 64
        });
        row("origin not a number", [](GridValues& grid) { grid.origin[1] = notANumber; });
        row("step infinite", [](GridValues& grid) { grid.steps[2][0] = infinity; });
    }
    void aMalformedGridIsRefusedWithALine() {
        using Spoil = std::function<void(GridValues&)>;
        QFETCH(const Spoil, spoil);
        GridValues values = smallGrid();
        spoil(values);
        QVERIFY(!DataMaker::makeGrid(space(), "bad", values));
        QVERIFY(!space()->HasChildren());
        const QStringList lines = takeMessages();
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines[0].contains("\"bad\""));
    }

    void aLineKeepsItsPoints() {
        Compound* const line = DataMaker::makePolyLine(
            space(), "line", {Vertex(1, 2, 3, true), Vertex(), Vertex(4, 5, 6, true)});
        const std::vector<Vertex>* const points = GetPolyLinePoints(line);
        QVERIFY(points);
        QCOMPARE(points->size(), std::size_t(3));
        QVERIFY((*points)[0].isValid() && !(*points)[1].isValid());
        QCOMPARE((*points)[2][1], 5.0F);
        QVERIFY(GetPolyLinePoints(DataMaker::makePolyLine(space(), "empty", {}))->empty());
        QVERIFY(!GetPolyLinePoints(space()));
        QVERIFY(!GetPolyLinePoints(nullptr));
    }

    void whatHoldsNothingGetsNoGeometry() {
        Compound* const leaf = atom(space());
        for (Compound* parent : {leaf, static_cast<Compound*>(nullptr)}) {
            QVERIFY(!DataMaker::makeSurface(parent, "skin", tetrahedron()));
            QVERIFY(!DataMaker::makeGrid(parent, "map", smallGrid()));
        }
        QCOMPARE(takeMessages().size(), 4);
        QCOMPARE(childrenOf(space()), (Items{leaf}));
    }
};

REGISTER_TEST(GeometryContractTest)
#include "GeometryContractTest.moc"
