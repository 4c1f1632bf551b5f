// Ribbons with fewer triangles where they are small, and without what faces away.
#include "MeshChecks.h"
#include "RibbonTools.h"
#include "TestSupport.h"
#include "render/Renderer.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

using ribbon_tools::plainStyle;
using ribbon_tools::protein;
using view::Camera;
using view::CoarserSurface;
using view::Id;
using view::Mesh;
using view::Picture;
using view::RibbonStyle;

namespace {

constexpr int width = 320;
constexpr int height = 240;

Mesh ribbonOf(const QString& path, const RibbonStyle& style) {
    return view::makeRibbon(protein(path), style).mesh;
}

/// A coarser surface as a mesh of its own.
Mesh meshOf(const Mesh& mesh, const CoarserSurface& surface) {
    Mesh coarse;
    const auto count = static_cast<std::ptrdiff_t>(surface.vertexCount);
    coarse.vertices.assign(mesh.vertices.begin(), mesh.vertices.begin() + count);
    coarse.normals.assign(mesh.normals.begin(), mesh.normals.begin() + count);
    coarse.triangles = surface.triangles;
    coarse.ids = surface.ids;
    coarse.isClosed = mesh.isClosed;
    return coarse;
}

/// With 8 pixels an Å.
Camera cameraFor(const Mesh& mesh) {
    Camera camera;
    camera.fit(mesh.vertices, double(width) / height, 1);
    camera.height = height / 8.0;
    return camera;
}

Picture draw(const Mesh& mesh, const Camera& camera) {
    view::Scene scene;
    scene.meshes = {std::make_shared<const Mesh>(mesh)};
    scene.idColours = std::make_shared<const std::vector<view::Colour>>(1000, 0xFFFFFFFFU);
    return view::Renderer().draw(scene, camera, {.width = width, .height = height});
}

/// Pixels that are not the same.
int differences(const Picture& a, const Picture& b) {
    int count = 0;
    for (std::size_t i = 0; i < a.ids.size(); ++i)
        count += a.ids[i] != b.ids[i] || a.depths[i] != b.depths[i] ? 1 : 0;
    return count;
}

/// Whether each pixel that shows something has one in the other picture, at most `reach` away.
bool isNear(const Picture& picture, const Picture& other, int reach) {
    for (int y = reach; y < height - reach; ++y)
        for (int x = reach; x < width - reach; ++x) {
            const auto shows = [](const Picture& shown, int column, int row) {
                return shown.ids[static_cast<std::size_t>(row * width + column)] != view::noId;
            };
            bool isFound = !shows(picture, x, y);
            for (int dy = -reach; dy <= reach; ++dy)
                for (int dx = -reach; dx <= reach; ++dx)
                    isFound = isFound || shows(other, x + dx, y + dy);
            if (!isFound)
                return false;
        }
    return true;
}

} // namespace

class RibbonDetailTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void coarserSurfacesAreClosedBodiesOfAllResidues_data() {
        QTest::addColumn<int>("residues");
        QTest::newRow("few") << 100;
        QTest::newRow("many") << 3'000;
        QTest::newRow("very many") << 30'000;
    }

    void coarserSurfacesAreClosedBodiesOfAllResidues() {
        QFETCH(int, residues);
        const Mesh mesh = ribbonOf(structure("1ubq.pdb"),
                                   RibbonStyle::forResidues(static_cast<std::size_t>(residues)));
        QVERIFY(mesh.isClosed);
        QVERIFY(!mesh.coarser.empty());
        std::size_t triangles = mesh.triangles.size();
        std::size_t vertices = mesh.vertices.size();
        float error = 0;
        for (const CoarserSurface& surface : mesh.coarser) {
            const Mesh coarse = meshOf(mesh, surface);
            QVERIFY(view_testing::isWhole(coarse));
            QVERIFY(view_testing::isClosed(coarse));
            QVERIFY(view_testing::volume(coarse) > 0.4 * view_testing::volume(mesh));
            QCOMPARE(std::set<Id>(coarse.ids.begin(), coarse.ids.end()),
                     std::set<Id>(mesh.ids.begin(), mesh.ids.end()));
            QVERIFY(coarse.triangles.size() * 4 < triangles * 3);
            QVERIFY(coarse.vertices.size() < vertices);
            QVERIFY(surface.error > error);
            QCOMPARE(surface.triangles.capacity(), surface.triangles.size());
            QCOMPARE(surface.ids.capacity(), surface.ids.size());
            triangles = coarse.triangles.size();
            vertices = coarse.vertices.size();
            error = surface.error;
        }
    }

    // The error is that of the path's turns, and at the ends of helices there is more.
    void aCoarserSurfaceIsOffByAboutItsError() {
        const Mesh mesh = ribbonOf(structure("1ubq.pdb"), RibbonStyle());
        const Camera camera = cameraFor(mesh);
        Mesh fine = mesh;
        fine.coarser.clear();
        const Picture whole = draw(fine, camera);
        for (const CoarserSurface& surface : mesh.coarser) {
            const int reach = static_cast<int>(std::ceil(surface.error * 8));
            const Picture coarse = draw(meshOf(mesh, surface), camera);
            QVERIFY(differences(coarse, whole) > 0);
            QVERIFY(isNear(coarse, whole, reach));
            QVERIFY(isNear(whole, coarse, reach));
        }
    }

    void theCoarsestThatIsNotOffByASampleIsDrawn() {
        const Mesh mesh = ribbonOf(structure("1ubq.pdb"), RibbonStyle());
        Camera camera = cameraFor(mesh);
        std::set<const CoarserSurface*> drawn;
        for (const double scale : {400.0, 15.0, 2.5, 0.5}) {
            camera.height = height / scale;
            const CoarserSurface* expected = nullptr;
            for (const CoarserSurface& surface : mesh.coarser)
                if (double(surface.error) * scale < 1)
                    expected = &surface;
            Mesh alone = expected ? meshOf(mesh, *expected) : mesh;
            alone.coarser.clear();
            QCOMPARE(differences(draw(mesh, camera), draw(alone, camera)), 0);
            drawn.insert(expected);
        }
        QCOMPARE(drawn.size(), mesh.coarser.size() + 1);
    }

    void whatFacesAwayIsHiddenInAnyCase_data() {
        QTest::addColumn<bool>("isCut");
        QTest::newRow("whole") << false;
        QTest::newRow("cut open") << true;
    }

    void whatFacesAwayIsHiddenInAnyCase() {
        QFETCH(bool, isCut);
        const Mesh closed = ribbonOf(structure("1ubq.pdb"), RibbonStyle());
        Mesh open = closed;
        open.isClosed = false;
        Camera camera = cameraFor(closed);
        if (isCut)
            camera.front = 2;
        int seen = 0;
        int different = 0;
        for (int turn = 0; turn < 12; ++turn) {
            camera.turn(0.7, 0.3);
            const Picture picture = draw(closed, camera);
            seen += static_cast<int>(std::count_if(picture.ids.begin(), picture.ids.end(),
                                                   [](Id id) { return id != 0; }));
            different += differences(picture, draw(open, camera));
        }
        // A narrow triangle where the path twists may face the other way.
        QVERIFY2(different <= (isCut ? 0 : seen / 2000),
                 qPrintable(QStringLiteral("%1 of %2").arg(different).arg(seen)));
    }

    void aCutShowsTheInside() {
        const Mesh mesh = ribbonOf(structure("1ubq.pdb"), plainStyle());
        Camera camera = cameraFor(mesh);
        camera.front = 0;
        const Picture cut = draw(mesh, camera);
        Mesh outside = mesh;
        outside.isClosed = false;
        // Only triangles that face the viewer.
        std::size_t kept = 0;
        for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
            const view::Vector face =
                view::cross(view_testing::corner(mesh, i, 1) - view_testing::corner(mesh, i, 0),
                            view_testing::corner(mesh, i, 2) - view_testing::corner(mesh, i, 0));
            if (face.z <= 0)
                continue;
            outside.triangles[kept] = mesh.triangles[i];
            outside.ids[kept++] = mesh.ids[i];
        }
        outside.triangles.resize(kept);
        outside.ids.resize(kept);
        outside.coarser.clear();
        QVERIFY(differences(cut, draw(outside, camera)) > 20);
    }
};

REGISTER_TEST(RibbonDetailTest)
#include "RibbonDetailTest.moc"
