// What is seen through surfaces, and what of the surfaces themselves.
#include "SmallScene.h"
#include "TestSupport.h"
#include "render/Outline.h"
#include "render/Shading.h"

#include <cmath>
#include <random>

using namespace small_scene;
using view::Id;
using view::Mesh;
using view::Picture;
using view::Renderer;
using view::Scene;

namespace {

constexpr view::Colour green = 0x40C040;
constexpr view::Colour red = 0xD02020;
constexpr Id surfaceId = 1000;

/// A square of 6 Å around the middle of the picture at a depth. Its normals have that z.
std::shared_ptr<Mesh> square(float depth, view::Colour colour, Id id = surfaceId, float z = 1) {
    auto mesh = std::make_shared<Mesh>();
    mesh->vertices = {{-3, -3, depth}, {3, -3, depth}, {3, 3, depth}, {-3, 3, depth}};
    mesh->normals.assign(4, {0, std::sqrt(1 - z * z), z});
    mesh->triangles = {{0, 1, 2}, {0, 2, 3}};
    mesh->colours = {colour};
    mesh->ids = {id};
    return mesh;
}

void add(Scene& scene, const std::shared_ptr<Mesh>& mesh, bool isSeeThrough) {
    scene.meshes.push_back(mesh);
    scene.meshLooks.push_back({isSeeThrough, false});
}

Picture draw(const Scene& scene, const view::Settings& settings = smallPicture()) {
    return Renderer().draw(scene, smallCamera(), settings);
}

/// What is seen of a surface over something else, by the formula.
QRgb over(QRgb surface, QRgb behind, double z) {
    const double opacity =
        double(view::facingOpacity) +
        (double(view::edgeOpacity) - double(view::facingOpacity)) * (1 - z) * (1 - z);
    const auto channel = [&](int near, int far) {
        return static_cast<int>(std::lround(far + (near - far) * opacity));
    };
    return qRgb(channel(qRed(surface), qRed(behind)), channel(qGreen(surface), qGreen(behind)),
                channel(qBlue(surface), qBlue(behind)));
}

bool isSame(const Picture& a, const Picture& b) {
    return a.image == b.image && a.ids == b.ids && a.depths == b.depths &&
           a.seeThroughIds == b.seeThroughIds && a.seeThroughDepths == b.seeThroughDepths;
}

/// Balls in and around a bumpy see-through body, which an opaque one cuts.
Scene largeScene() {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> along(-9, 9);
    Scene scene;
    for (int i = 0; i < 300; ++i)
        addBall(scene, {along(random), along(random) / 2, along(random)}, 0.5F, random());
    for (const bool isSeeThrough : {true, false}) {
        auto mesh = std::make_shared<Mesh>();
        constexpr std::uint32_t steps = 60;
        for (std::uint32_t i = 0; i <= steps; ++i)
            for (std::uint32_t j = 0; j <= steps; ++j) {
                const double polar = 3.14159 * i / steps;
                const double around = 6.28318 * j / steps;
                const view::Point normal = {float(std::sin(polar) * std::cos(around)),
                                            float(std::sin(polar) * std::sin(around)),
                                            float(std::cos(polar))};
                const float radius = 4 + float(std::sin(8 * polar) * std::sin(6 * around));
                mesh->normals.push_back(normal);
                mesh->vertices.push_back({normal[0] * radius + (isSeeThrough ? 0.0F : 4.0F),
                                          normal[1] * radius, normal[2] * radius});
                mesh->colours.push_back(random());
            }
        for (std::uint32_t i = 0; i < steps; ++i)
            for (std::uint32_t j = 0; j < steps; ++j) {
                const std::uint32_t corner = i * (steps + 1) + j;
                mesh->triangles.push_back({corner, corner + steps + 1, corner + 1});
                mesh->triangles.push_back({corner + 1, corner + steps + 1, corner + steps + 2});
            }
        mesh->ids = {isSeeThrough ? surfaceId : surfaceId + 1};
        add(scene, mesh, isSeeThrough);
    }
    return scene;
}

} // namespace

class SeeThroughTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void aSurfaceIsBlendedOverWhatIsBehindIt_data() {
        QTest::addColumn<float>("z");
        QTest::newRow("facing the viewer") << 1.0F;
        QTest::newRow("60 degrees off") << 0.5F;
        QTest::newRow("edge-on") << 0.0F;
    }
    void aSurfaceIsBlendedOverWhatIsBehindIt() {
        QFETCH(float, z);
        Scene behind;
        addBall(behind, {0, 0, 0}, 1, red);
        Scene opaque;
        addPoint(opaque, {0, 0, 0}, red);
        add(opaque, square(2, green, surfaceId, z), false);
        Scene scene = behind;
        add(scene, square(2, green, surfaceId, z), true);
        const Picture picture = draw(scene);
        const Picture behindIt = draw(behind);
        const QRgb surface = colourAt(draw(opaque), 2, 2);
        for (const auto& [x, y] : {std::pair(0.0, 0.0), std::pair(0.5, -0.4), std::pair(2.0, 2.0)})
            QVERIFY(isSimilar(colourAt(picture, x, y),
                              over(surface, colourAt(behindIt, x, y), double(z))));
        QCOMPARE(colourAt(picture, 4, 0), colourAt(behindIt, 4, 0));
        QVERIFY(colourAt(picture, 0, 0) != surface);
    }

    void whatIsNearerHidesTheSurface() {
        Scene scene;
        addBall(scene, {0, 0, 0}, 1, red);
        const Picture alone = draw(scene);
        add(scene, square(-2, green), true);
        const Picture picture = draw(scene);
        QCOMPARE(colourAt(picture, 0, 0), colourAt(alone, 0, 0));
        QCOMPARE(picture.seeThroughIds[pixelAt(0, 0)], view::noId);
        QVERIFY(colourAt(picture, 2, 2) != colourAt(alone, 2, 2));
    }

    void ofSeveralSurfacesTheNearestIsSeen() {
        Scene one;
        add(one, square(2, green), true);
        Scene two;
        add(two, square(-2, red, surfaceId + 1), true);
        add(two, square(2, green), true);
        const Picture expected = draw(one);
        const Picture picture = draw(two);
        QCOMPARE(picture.image, expected.image);
        QCOMPARE(picture.seeThroughIds, expected.seeThroughIds);
    }

    void theIdsAreThoseOfWhatIsSeenThrough() {
        Scene scene;
        addBall(scene, {0, 0, 0}, 1, red);
        add(scene, square(2, green), true);
        const Picture picture = draw(scene);
        QCOMPARE(idAt(picture, 0, 0), Id(1));
        QVERIFY(std::abs(depthAt(picture, 0, 0) - 1) < 0.01F);
        QCOMPARE(idAt(picture, 2, 2), surfaceId);
        QCOMPARE(depthAt(picture, 2, 2), 2.0F);
        QCOMPARE(idAt(picture, 4, 0), view::noId);
        for (const double x : {0.0, 2.0}) {
            QCOMPARE(picture.seeThroughIds[pixelAt(x, x)], surfaceId);
            QCOMPARE(picture.seeThroughDepths[pixelAt(x, x)], 2.0F);
        }
        QCOMPARE(picture.seeThroughIds[pixelAt(4, 0)], view::noId);
    }

    void anOpaqueSceneHasNoSecondLayer() {
        Scene scene;
        add(scene, square(2, green), true);
        Picture picture = draw(scene);
        QVERIFY(!picture.seeThroughIds.empty());
        scene.meshLooks[0].isSeeThrough = false;
        picture = Renderer().draw(scene, smallCamera(), smallPicture(), {}, std::move(picture));
        QVERIFY(picture.seeThroughIds.empty() && picture.seeThroughDepths.empty());
        scene.meshLooks.clear();
        QVERIFY(isSame(picture, draw(scene)));
    }

    // The square ends in the middle of a pixel: half of its samples show it.
    void atAnEdgeAPixelIsTheMeanOfItsSamples() {
        Scene scene;
        const auto mesh = square(2, green);
        for (view::Point& vertex : mesh->vertices)
            vertex[0] += 0.05F;
        add(scene, mesh, true);
        view::Settings settings = smallPicture();
        settings.samples = 2;
        const Picture picture = draw(scene, settings);
        const QRgb inside = colourAt(picture, 1, 1);
        const QRgb outside = colourAt(picture, 4, 1);
        const QRgb edge = colourAt(picture, 3.05, 1);
        const auto mean = [](int a, int b) { return (a + b + 1) / 2; };
        QVERIFY(isSimilar(edge, qRgb(mean(qRed(inside), qRed(outside)),
                                     mean(qGreen(inside), qGreen(outside)),
                                     mean(qBlue(inside), qBlue(outside)))));
        QCOMPARE(idAt(picture, 3.05, 1), surfaceId);
        QCOMPARE(idAt(picture, 3.15, 1), view::noId);
    }

    // Here the far surface has all of the background's colour, and the near one nothing of it.
    void surfacesFadeIntoTheBackgroundLikeAllElse() {
        Scene scene;
        addBall(scene, {-9, 0, 6}, 1, red);
        add(scene, square(-4, green), true);
        view::Settings settings = smallPicture();
        settings.depthCue = 1;
        const Picture far = draw(scene, settings);
        QVERIFY(isSimilar(colourAt(far, 2, 2), settings.background | 0xFF000000U));
        QCOMPARE(idAt(far, 2, 2), surfaceId);
        scene.meshes[0] = square(7, green);
        const Picture near = draw(scene, settings);
        const Picture plain = draw(scene);
        QVERIFY(isSimilar(colourAt(near, 2, 2), colourAt(plain, 2, 2)));
    }

    void theFrontPlaneCutsTheSurfaceOpen() {
        Scene scene;
        addPoint(scene, {0, 0, 0}, red);
        add(scene, square(2, green), true);
        view::Camera camera = smallCamera();
        camera.front = 1;
        const Picture picture = Renderer().draw(scene, camera, smallPicture());
        QCOMPARE(idAt(picture, 0, 0), view::noId);
    }

    void aMeshMayShowTheColourOfItsId() {
        Scene scene;
        add(scene, square(2, green, 1), false);
        scene.idColours = std::make_shared<std::vector<view::Colour>>(1, red);
        const Picture own = draw(scene);
        scene.meshLooks[0].hasIdColours = true;
        const Picture ofId = draw(scene);
        scene.meshes[0] = square(2, red, 1);
        scene.meshLooks.clear();
        QVERIFY(isSame(ofId, draw(scene)));
        QVERIFY(colourAt(own, 0, 0) != colourAt(ofId, 0, 0));
    }

    void theOutlineOfASurfaceGoesOverWhatIsSeenThroughIt() {
        Scene scene;
        addBall(scene, {3, 0, 0}, 1, red); // half of it behind the surface
        add(scene, square(2, green, 2), true);
        const Picture picture = draw(scene);
        constexpr view::Colour yellow = 0xFFFF00;
        const auto outlined = [&](const std::vector<bool>& isSelected) {
            Picture result = picture;
            outline(result.image, picture, isSelected, yellow, 1);
            return result;
        };
        const auto isOutlined = [](const Picture& of, double x, double y) {
            return colourAt(of, x, y) == (yellow | 0xFF000000U);
        };
        // The square's edge is at 3 Å, also where the ball is behind it; there is none around the
        // ball inside of the square.
        const Picture ofSurface = outlined({false, false, true});
        QVERIFY(isOutlined(ofSurface, 2.95, 2) && isOutlined(ofSurface, 2.95, 0));
        QVERIFY(!isOutlined(ofSurface, 2.05, 0) && !isOutlined(ofSurface, 3.95, 0));
        const Picture ofBall = outlined({false, true, false});
        QVERIFY(isOutlined(ofBall, 2.05, 0) && isOutlined(ofBall, 3.95, 0));
        QVERIFY(!isOutlined(ofBall, 2.95, 2) && !isOutlined(ofBall, 2.95, 0));
    }

    void thePixelsAreTheSameForAnyNumberOfThreadsAndInUsedMemory() {
        const Scene scene = largeScene();
        for (const int samples : {1, 2}) {
            view::Settings settings = smallPicture();
            settings.samples = samples;
            settings.depthCue = 0.6F;
            view::Camera camera = smallCamera();
            Renderer one(1);
            Renderer four(4);
            Picture used;
            for (int turn = 0; turn < 4; ++turn) {
                camera.turn(0.4, 0.3);
                camera.height *= 1.5;
                used = one.draw(scene, camera, settings, {}, std::move(used));
                QVERIFY(isSame(used, four.draw(scene, camera, settings)));
            }
        }
    }
};

REGISTER_TEST(SeeThroughTest)
#include "SeeThroughTest.moc"
