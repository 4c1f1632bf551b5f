// What holds for all kinds of things in a picture: planes that cut, depth cueing, samples, threads,
// stopping, and input that makes no sense.
#include "render/Renderer.h"
#include "SmallScene.h"
#include "TestSupport.h"

#include <chrono>
#include <cmath>
#include <random>
#include <thread>

using namespace small_scene;
using view::Picture;
using view::Renderer;
using view::Scene;
using view::Settings;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

bool isSame(const Picture& a, const Picture& b) {
    return a.image == b.image && a.ids == b.ids && a.depths == b.depths;
}

/// All kinds of things, closely packed.
Scene mixedScene(std::uint32_t count) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> along(-12, 12);
    Scene scene;
    auto mesh = std::make_shared<view::Mesh>();
    for (std::uint32_t i = 0; i < count; ++i) {
        addPoint(scene, {along(random), along(random), along(random)}, random());
        mesh->vertices.push_back(scene.points.back());
        mesh->normals.push_back({0.6F, 0, 0.8F});
        mesh->colours.push_back(random());
        if (i % 5 == 0)
            scene.balls.push_back({i, 0.5F});
        if (i % 5 == 1)
            scene.sticks.push_back({i, i - 1});
        if (i % 5 == 2)
            scene.lines.push_back({i, i - 2});
        if (i % 5 == 3)
            scene.dots.push_back(i);
        if (i % 5 == 4) {
            mesh->triangles.push_back({i, i - 1, i - 2});
            mesh->ids.push_back(count + i);
        }
    }
    scene.meshes = {mesh};
    return scene;
}

bool isBlank(const Picture& picture) {
    return std::all_of(picture.ids.begin(), picture.ids.end(),
                       [](view::Id id) { return id == view::noId; });
}

} // namespace

class RendererTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void theFrontPlaneCutsSolidThings() {
        Scene scene;
        addBall(scene, {-4, 0, 0}, 2, 0x808080);
        const std::uint32_t low = addPoint(scene, {3, 0, -3}, 0x808080);
        const std::uint32_t high = addPoint(scene, {3, 0, 3}, 0x808080);
        scene.sticks = {{low, high}};
        scene.stickRadius = 1.5F;
        addBall(scene, {0, 0, 3}, 1, 0x808080);
        view::Camera camera = smallCamera();
        camera.front = 1;
        const Picture picture = Renderer().draw(scene, camera, smallPicture());
        for (int row = 0; row < height; ++row) {
            for (int column = 0; column < width; ++column) {
                const double x = (column + 0.5 - width / 2.0) * 0.1;
                const double y = (height / 2.0 - row - 0.5) * 0.1;
                const double rest = 4 - (x + 4) * (x + 4) - y * y;
                const double inStick = 2.25 - (x - 3) * (x - 3) - y * y;
                if (std::abs(rest) < 1e-3 || std::abs(rest - 1) < 1e-3 || std::abs(inStick) < 1e-3)
                    continue;
                const auto pixel = static_cast<std::size_t>(row * width + column);
                if (rest > 0) {
                    // Where the sphere would be in front of the plane, the disc of the cut.
                    QCOMPARE(picture.ids[pixel], 1U);
                    const double z = std::min(1.0, std::sqrt(rest));
                    QVERIFY(std::abs(double(picture.depths[pixel]) - z) < 1e-4);
                } else if (inStick > 0) {
                    // What is at the plane is nearer to the upper end.
                    QCOMPARE(picture.ids[pixel], 3U);
                    QCOMPARE(picture.depths[pixel], 1.0F);
                } else {
                    QCOMPARE(picture.ids[pixel], view::noId);
                }
            }
        }
        // A cut is flat.
        QCOMPARE(colourAt(picture, -4.5, 0.5), colourAt(picture, -3.5, -0.5));
        QCOMPARE(colourAt(picture, 2.5, 0.5), colourAt(picture, -3.5, -0.5));
    }

    void whatLiesBehindTheRearPlaneIsNotDrawn() {
        Scene scene;
        addBall(scene, {-4, 0, 0}, 2, 0x808080);
        addBall(scene, {4, 0, -4}, 2, 0x808080);
        const std::uint32_t low = addPoint(scene, {0, -3, -3}, 0x808080);
        const std::uint32_t high = addPoint(scene, {0, 3, 3}, 0x808080);
        scene.lines = {{low, high}};
        scene.dots = {low};
        view::Camera camera = smallCamera();
        camera.back = 1;
        const Picture picture = Renderer().draw(scene, camera, smallPicture());
        const auto disc = std::count(picture.ids.begin(), picture.ids.end(), 1U);
        QVERIFY(std::abs(double(disc) - 3.14159 * 3 * 100) < 20);
        QCOMPARE(idAt(picture, 4, 0), view::noId);
        QCOMPARE(std::count(picture.ids.begin(), picture.ids.end(), 3U), 0);
        QCOMPARE(idAt(picture, 0.05, 0.85), view::noId);
        QCOMPARE(idAt(picture, 0.05, 1.15), 4U);
        camera.front = 0;
        QVERIFY(isBlank(Renderer().draw(scene, camera, smallPicture())));
    }

    void depthCueingGoesFromTheNearestToTheFarthest() {
        Scene scene;
        scene.dots = {addPoint(scene, {-3, 0, 8}, 0xFF0000), addPoint(scene, {0, 0, 3}, 0xFF0000),
                      addPoint(scene, {3, 0, -2}, 0xFF0000),
                      addPoint(scene, {500, 0, -2}, 0xFF0000)};
        Settings settings = smallPicture();
        settings.background = 0x0000FF;
        settings.depthCue = 0.8F;
        const Picture picture = Renderer().draw(scene, smallCamera(), settings);
        QCOMPARE(colourAt(picture, -3, 0), qRgb(255, 0, 0));
        QCOMPARE(colourAt(picture, 0, 0), qRgb(153, 0, 102));
        QCOMPARE(colourAt(picture, 3, 0), qRgb(51, 0, 204));
        // What is not drawn does not count; what lies beside the picture does.
        addPoint(scene, {0, 0, 100}, 0);
        scene.dots.push_back(addPoint(scene, {notANumber, 0, 200}, 0));
        QCOMPARE(Renderer().draw(scene, smallCamera(), settings).image, picture.image);
        scene.dots.push_back(addPoint(scene, {600, 0, -12}, 0));
        const Picture farther = Renderer().draw(scene, smallCamera(), settings);
        QCOMPARE(colourAt(farther, 3, 0), qRgb(153, 0, 102));
        // Nor does what the planes cut away.
        view::Camera camera = smallCamera();
        camera.front = 5;
        camera.back = -5;
        QCOMPARE(colourAt(Renderer().draw(scene, camera, settings), 0, 0), qRgb(255, 0, 0));
        QCOMPARE(colourAt(Renderer().draw(scene, camera, settings), 3, 0), qRgb(51, 0, 204));
    }

    void aSpheresFrontAndBackAreTheEndsOfDepthCueing() {
        Scene scene;
        addBall(scene, {0, 0, 0}, 3, 0x808080);
        Settings settings = smallPicture();
        settings.background = 0;
        const Picture plain = Renderer().draw(scene, smallCamera(), settings);
        settings.depthCue = 1;
        const Picture cued = Renderer().draw(scene, smallCamera(), settings);
        QVERIFY(isSimilar(colourAt(cued, 0.05, 0.05), colourAt(plain, 0.05, 0.05)));
        // The rim is half-way.
        const double rest = 9 - 2.95 * 2.95 - 0.05 * 0.05;
        const double part = 0.5 + std::sqrt(rest) / 6;
        QVERIFY(std::abs(qRed(colourAt(cued, 2.95, 0.05)) -
                         part * qRed(colourAt(plain, 2.95, 0.05))) <= 1);
    }

    void aPixelOfFourSamplesHasTheirMean() {
        const Scene scene = mixedScene(500);
        Settings settings = smallPicture();
        settings.samples = 2;
        settings.depthCue = 0.5F;
        const Picture mean = Renderer().draw(scene, smallCamera(), settings);
        settings.samples = 1;
        settings.width *= 2;
        settings.height *= 2;
        settings.lineWidth *= 2;
        settings.dotSize *= 2;
        const Picture fine = Renderer().draw(scene, smallCamera(), settings);
        QCOMPARE(mean.image.size(), QSize(width, height));
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                std::array<int, 3> sums{};
                float nearest = -infinity;
                for (int sample = 0; sample < 4; ++sample) {
                    const QRgb colour = fine.image.pixel(2 * x + sample % 2, 2 * y + sample / 2);
                    sums[0] += qRed(colour);
                    sums[1] += qGreen(colour);
                    sums[2] += qBlue(colour);
                    const auto at = static_cast<std::size_t>((2 * y + sample / 2) * 2 * width +
                                                             2 * x + sample % 2);
                    nearest = std::max(nearest, fine.depths[at]);
                }
                QCOMPARE(mean.image.pixel(x, y),
                         qRgb((sums[0] + 2) / 4, (sums[1] + 2) / 4, (sums[2] + 2) / 4));
                const auto pixel = static_cast<std::size_t>(y * width + x);
                QCOMPARE(mean.depths[pixel], nearest);
                QCOMPARE(mean.ids[pixel] == view::noId, nearest == -infinity);
            }
        }
    }

    void theOrderOfThreadsAndOfThingsChangesNothing() {
        Scene scene = mixedScene(8000);
        view::Camera camera = smallCamera();
        camera.turn(1, 2);
        camera.front = 8;
        const Picture once = Renderer(1).draw(scene, camera, smallPicture());
        for (const unsigned threads : {0U, 2U, 5U}) {
            Renderer renderer(threads);
            QVERIFY(isSame(renderer.draw(scene, camera, smallPicture()), once));
            QVERIFY(isSame(renderer.draw(scene, camera, smallPicture()), once));
        }
        // But for the flat cuts, which are all equally near.
        camera.front = infinity;
        const Picture whole = Renderer(1).draw(scene, camera, smallPicture());
        std::reverse(scene.balls.begin(), scene.balls.end());
        std::reverse(scene.lines.begin(), scene.lines.end());
        std::reverse(scene.dots.begin(), scene.dots.end());
        const Picture reversed = Renderer(2).draw(scene, camera, smallPicture());
        QVERIFY(isSame(reversed, whole));
    }

    // Only what changes is written into the memory of the picture before.
    void whatMovedLeavesNothingInTheMemoryOfThePictureBefore() {
        Renderer renderer(2);
        Settings settings = {.width = 200, .height = 150};
        view::Camera camera = smallCamera();
        const Scene scene = mixedScene(20);
        Picture used;
        for (int turn = 0; turn < 6; ++turn) {
            camera.turn(0.3, 0.2);
            camera.move(turn % 2 == 0 ? 4 : -4, 1);
            settings.background = turn < 4 ? 0xFF102030 : 0xFFFFFFFF;
            settings.samples = turn % 3 == 2 ? 2 : 1;
            const Picture fresh = Renderer(1).draw(scene, camera, settings);
            used = renderer.draw(scene, camera, settings, {}, std::move(used));
            QVERIFY(isSame(used, fresh));
        }
    }

    void buffersOfOtherPicturesLeaveNoTrace() {
        Renderer renderer;
        const Scene scene = mixedScene(3000);
        const Picture once = renderer.draw(scene, smallCamera(), smallPicture());
        Settings other = smallPicture();
        other.width = 333;
        other.height = 77;
        other.samples = 2;
        const Picture odd = renderer.draw(mixedScene(100), smallCamera(), other);
        Picture again = renderer.draw(scene, smallCamera(), smallPicture(), {}, odd);
        QVERIFY(isSame(again, once));
        QVERIFY(isBlank(renderer.draw(Scene(), smallCamera(), smallPicture(), {}, again)));
        // What still has a copy elsewhere is not written over.
        QVERIFY(isSame(again, once));
        const QImage kept = again.image;
        const Picture blank =
            renderer.draw({}, smallCamera(), smallPicture(), {}, std::move(again));
        QCOMPARE(kept, once.image);
        QVERIFY(isBlank(blank));
    }

    void aStopRequestEndsThePicture() {
        Renderer renderer;
        std::stop_source stop;
        stop.request_stop();
        const Scene scene = mixedScene(3000);
        const Picture picture =
            renderer.draw(scene, smallCamera(), smallPicture(), stop.get_token());
        QVERIFY(picture.image.isNull());
        QVERIFY(picture.ids.empty());
        // The renderer goes on to work.
        QVERIFY(!isBlank(renderer.draw(scene, smallCamera(), smallPicture())));
    }

    void aStopRequestFromAnotherThreadIsHeardAtOnce() {
        const Scene scene = mixedScene(100000);
        Settings settings = smallPicture();
        settings.width = 7680;
        settings.height = 4320;
        Renderer renderer;
        std::stop_source stop;
        std::chrono::steady_clock::time_point asked;
        std::jthread other([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            asked = std::chrono::steady_clock::now();
            stop.request_stop();
        });
        const Picture picture = renderer.draw(scene, smallCamera(), settings, stop.get_token());
        const auto ended = std::chrono::steady_clock::now();
        other.join();
        QVERIFY(picture.image.isNull());
        QVERIFY(ended - asked < std::chrono::seconds(2));
    }

    void aSceneOrAPictureOfNothingIsNoError() {
        QVERIFY(isBlank(Renderer().draw({}, smallCamera(), smallPicture())));
        const Scene scene = mixedScene(50);
        for (const auto& [columns, rows] : {std::pair(0, 0), {0, 5}, {5, 0}, {-1, -1}}) {
            Settings settings = smallPicture();
            settings.width = columns;
            settings.height = rows;
            QVERIFY(Renderer().draw(scene, smallCamera(), settings).image.isNull());
        }
        for (const double cameraHeight : {0.0, -1.0, double(notANumber), double(infinity)}) {
            view::Camera camera = smallCamera();
            camera.height = cameraHeight;
            QVERIFY(Renderer().draw(scene, camera, smallPicture()).image.isNull());
        }
    }

    void aPictureMayHaveAnySize() {
        Scene scene;
        addBall(scene, {0, 0, 0}, 100, 0xFFFFFF);
        for (const auto& [columns, rows] :
             {std::pair(1, 1), {1, 200}, {63, 65}, {64, 64}, {7680, 4320}}) {
            Settings settings = smallPicture();
            settings.width = columns;
            settings.height = rows;
            const Picture picture = Renderer().draw(scene, smallCamera(), settings);
            QCOMPARE(picture.image.size(), QSize(columns, rows));
            QCOMPARE(picture.ids.size(), std::size_t(columns) * std::size_t(rows));
            QVERIFY(std::count(picture.ids.begin(), picture.ids.end(), 1U) ==
                    std::ptrdiff_t(picture.ids.size()));
        }
    }

    void whatIsNowhereIsLeftOut() {
        Scene scene;
        for (const float x : {notANumber, infinity, -infinity, 1e30F, -1e30F, 1.1e7F}) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                view::Point point{};
                point[axis] = x;
                addBall(scene, point, 1, 0xFFFFFF);
            }
        }
        const auto count = static_cast<std::uint32_t>(scene.points.size());
        const std::uint32_t here = addPoint(scene, {0, 0, 0}, 0xFFFFFF);
        auto mesh = std::make_shared<view::Mesh>();
        mesh->vertices = scene.points;
        mesh->normals.assign(scene.points.size(), {notANumber, 0, 0});
        mesh->colours = {0xFFFFFF};
        mesh->ids = {1};
        for (std::uint32_t i = 0; i < count; ++i) {
            scene.sticks.push_back({i, here});
            scene.lines.push_back({here, i});
            scene.dots.push_back(i);
            mesh->triangles.push_back({here, here, i});
        }
        mesh->triangles.push_back({here, here, here});
        scene.meshes = {mesh};
        QVERIFY(isBlank(Renderer().draw(scene, smallCamera(), smallPicture())));
    }

    void aRadiusThatMakesNoSenseIsLeftOut() {
        for (const float radius : {0.0F, -1.0F, notANumber, infinity, -infinity, 1e30F}) {
            Scene scene;
            addBall(scene, {0, 0, 0}, radius, 0xFFFFFF);
            const std::uint32_t there = addPoint(scene, {1, 1, 1}, 0xFFFFFF);
            scene.sticks = {{0, there}};
            scene.stickRadius = radius;
            QVERIFY(isBlank(Renderer().draw(scene, smallCamera(), smallPicture())));
        }
    }

    void camerasAndSettingsThatMakeNoSenseAreNoEnd() {
        const Scene scene = mixedScene(200);
        Renderer renderer;
        for (const float bad : {notANumber, infinity, -infinity, 1e30F, -1e30F, 1e-30F}) {
            view::Camera camera = smallCamera();
            camera.centre = {bad, 0, 0};
            renderer.draw(scene, camera, smallPicture());
            camera = smallCamera();
            camera.front = double(bad);
            renderer.draw(scene, camera, smallPicture());
            camera.back = double(bad);
            renderer.draw(scene, camera, smallPicture());
            camera = smallCamera();
            camera.height = double(std::abs(bad));
            renderer.draw(scene, camera, smallPicture());
            camera = smallCamera();
            camera.axes[1] = {bad, bad, bad};
            renderer.draw(scene, camera, smallPicture());
            Settings settings = smallPicture();
            settings.lineWidth = settings.dotSize = settings.depthCue = bad;
            settings.samples = -3;
            renderer.draw(scene, smallCamera(), settings);
        }
    }

    void anyNumberOfBallsInOnePlaceIsDrawnOnce() {
        Scene scene;
        for (std::uint32_t i = 0; i < 200000; ++i) {
            addPoint(scene, {0, 0, 0}, i);
            scene.balls.push_back({i, i % 2 == 0 ? 1000.0F : 1e6F});
        }
        Settings settings = smallPicture();
        settings.width = 1280;
        settings.height = 800;
        const auto start = std::chrono::steady_clock::now();
        const Picture picture = Renderer().draw(scene, smallCamera(), settings);
        QVERIFY(std::chrono::steady_clock::now() - start < std::chrono::seconds(5));
        QCOMPARE(picture.ids[0], 2U);
    }
};

REGISTER_TEST(RendererTest)
#include "RendererTest.moc"
