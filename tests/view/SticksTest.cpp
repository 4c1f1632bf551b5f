// Sticks, lines, dots and meshes in scenes put together by hand.
#include "SmallScene.h"
#include "TestSupport.h"
#include "render/Renderer.h"

#include <array>
#include <cmath>
#include <numeric>

using namespace small_scene;
using view::Picture;
using view::Renderer;
using view::Scene;

namespace {

/// Two points 6 Å apart along the picture, red to the left and blue to the right.
Scene twoPoints() {
    Scene scene;
    addPoint(scene, {-3, 0, 0}, 0xFF0000);
    addPoint(scene, {3, 0, 0}, 0x0000FF);
    return scene;
}

std::ptrdiff_t pixelsOf(const Picture& picture, view::Id id) {
    return std::count(picture.ids.begin(), picture.ids.end(), id);
}

} // namespace

class SticksTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void aStickIsACylinderWithRoundEnds() {
        Scene scene = twoPoints();
        scene.sticks = {{0, 1}};
        scene.stickRadius = 1;
        const Picture picture = Renderer().draw(scene, smallCamera(), smallPicture());
        for (int row = 0; row < height; ++row) {
            for (int column = 0; column < width; ++column) {
                const double x = (column + 0.5 - width / 2.0) * 0.1;
                const double y = (height / 2.0 - row - 0.5) * 0.1;
                // From the nearest point of the axis.
                const double dx = x - std::clamp(x, -3.0, 3.0);
                const double rest = 1 - dx * dx - y * y;
                if (std::abs(rest) < 1e-4)
                    continue;
                const auto pixel = static_cast<std::size_t>(row * width + column);
                QCOMPARE(picture.ids[pixel], rest < 0 ? view::noId : x < 0 ? 1U : 2U);
                if (rest > 0)
                    QVERIFY(std::abs(double(picture.depths[pixel]) - std::sqrt(rest)) < 1e-4);
            }
        }
        QCOMPARE(qBlue(colourAt(picture, -2, 0.3)), qGreen(colourAt(picture, -2, 0.3)));
        QVERIFY(qRed(colourAt(picture, -2, 0.3)) > 200);
        QVERIFY(qBlue(colourAt(picture, 2, 0.3)) > 200);
    }

    void aStickSeenEndOnShowsItsNearerEnd() {
        for (const float far : {-2.0F, -1e-6F, 0.0F}) {
            Scene scene;
            addPoint(scene, {0, 0, far}, 0xFF0000);
            addPoint(scene, {0, 0, 1}, 0x0000FF);
            scene.sticks = {{0, 1}};
            scene.stickRadius = 1;
            const Picture picture = Renderer().draw(scene, smallCamera(), smallPicture());
            QCOMPARE(idAt(picture, 0, 0), 2U);
            QCOMPARE(pixelsOf(picture, 1), 0);
            QVERIFY(std::abs(double(pixelsOf(picture, 2)) - 314) < 12);
        }
    }

    void sticksThatMeetInAnAtomShowItWithoutASeam() {
        Scene scene = twoPoints();
        addPoint(scene, {0, 2, 1}, 0x00FF00);
        scene.stickRadius = 0.5F;
        scene.sticks = {{0, 2}, {2, 1}};
        const Picture forth = Renderer().draw(scene, smallCamera(), smallPicture());
        scene.sticks = {{1, 2}, {2, 0}};
        const Picture back = Renderer().draw(scene, smallCamera(), smallPicture());
        QVERIFY(forth.ids == back.ids);
        QCOMPARE(idAt(forth, 0, 2.3), 3U);
    }

    void aLineHasItsWidthWhateverTheScale() {
        Scene scene = twoPoints();
        scene.lines = {{0, 1}};
        for (const double zoom : {1.0, 2.0}) {
            view::Camera camera = smallCamera();
            camera.height *= zoom;
            view::Settings settings = smallPicture();
            settings.lineWidth = 4;
            const Picture picture = Renderer().draw(scene, camera, settings);
            int wide = 0;
            for (int row = 0; row < height; ++row)
                wide += picture.ids[static_cast<std::size_t>(row * width + width / 2 - 5)] == 1U;
            QCOMPARE(wide, 4);
            // Half of the length, and half of a round end of radius 2.
            QVERIFY(std::abs(double(pixelsOf(picture, 1)) - (4 * 30 / zoom + 6)) < 3);
            QCOMPARE(pixelsOf(picture, 1), pixelsOf(picture, 2));
            QCOMPARE(depthAt(picture, -0.5, 0.05), 0.0F);
        }
    }

    void linesFromTheFirstThinOneOnAreHalfAsWide() {
        Scene scene;
        for (const float y : {3.02F, 0.02F, -2.98F})
            scene.lines.push_back(
                {addPoint(scene, {-3, y, 0}, 0xFF0000), addPoint(scene, {3, y, 0}, 0x0000FF)});
        scene.firstThinLine = 1;
        view::Settings settings = smallPicture();
        settings.lineWidth = 4;
        const auto widths = [&] {
            const Picture picture = Renderer().draw(scene, smallCamera(), settings);
            std::array<int, 3> wide{};
            for (int row = 0; row < height; ++row) {
                const view::Id id =
                    picture.ids[static_cast<std::size_t>(row * width + width / 2 - 5)];
                if (id != view::noId)
                    ++wide[(id - 1) / 2];
            }
            return wide;
        };
        QCOMPARE(widths(), (std::array<int, 3>{4, 2, 2}));
        // None is thinner than a pixel.
        settings.lineWidth = 1;
        QCOMPARE(widths(), (std::array<int, 3>{1, 1, 1}));
    }

    void linesAndDotsAreNotLit() {
        Scene scene = twoPoints();
        scene.lines = {{0, 1}};
        scene.dots = {addPoint(scene, {0, 3, 0}, 0x123456)};
        const Picture picture = Renderer().draw(scene, smallCamera(), smallPicture());
        QCOMPARE(colourAt(picture, -1, 0.05), qRgb(255, 0, 0));
        QCOMPARE(colourAt(picture, 1, 0.05), qRgb(0, 0, 255));
        QCOMPARE(colourAt(picture, 0, 3), qRgb(0x12, 0x34, 0x56));
    }

    void aThinLineIsWithoutGaps() {
        for (int degrees = 0; degrees < 90; degrees += 7) {
            Scene scene;
            const double angle = degrees * 3.14159265358979 / 180;
            const auto x = static_cast<float>(4 * std::cos(angle));
            const auto y = static_cast<float>(4 * std::sin(angle));
            addPoint(scene, {-x, -y, 0}, 0);
            addPoint(scene, {x, y, 0}, 0);
            scene.lines = {{0, 1}};
            view::Settings settings = smallPicture();
            settings.lineWidth = 0;
            const Picture picture = Renderer().draw(scene, smallCamera(), settings);
            // Each row or each column that it crosses has a pixel.
            const double longer = 80 * std::max(std::cos(angle), std::sin(angle));
            QVERIFY(double(pixelsOf(picture, 1) + pixelsOf(picture, 2)) >= longer - 1);
        }
    }

    void aDotHasItsSizeAndIsNeverLost() {
        Scene scene;
        scene.dots = {addPoint(scene, {0.001F, 0.001F, 0}, 0)};
        view::Settings settings = smallPicture();
        settings.dotSize = 10;
        QVERIFY(std::abs(double(pixelsOf(Renderer().draw(scene, smallCamera(), settings), 1)) -
                         78.5) < 4);
        settings.dotSize = 1;
        QCOMPARE(pixelsOf(Renderer().draw(scene, smallCamera(), settings), 1), 1);
    }

    // The normals turn from the left to the right, so that the middle faces the viewer.
    void aMeshIsShadedByItsNormalsFromBothSides() {
        auto mesh = std::make_shared<view::Mesh>();
        mesh->vertices = {{-2, -2, 0}, {2, -2, 0}, {2, 2, 0}, {-2, 2, 0}};
        const float tilt = std::sqrt(0.5F);
        mesh->normals = {{-tilt, 0, tilt}, {tilt, 0, tilt}, {tilt, 0, tilt}, {-tilt, 0, tilt}};
        mesh->colours = {0x808080};
        mesh->triangles = {{0, 1, 2}, {0, 2, 3}};
        mesh->ids = {7};
        Scene scene;
        scene.meshes = {mesh};
        Scene ball;
        addBall(ball, {0, 0, 0}, 2, 0x808080);
        view::Camera camera = smallCamera();
        const Picture front = Renderer().draw(scene, camera, smallPicture());
        const Picture round = Renderer().draw(ball, camera, smallPicture());
        QCOMPARE(pixelsOf(front, 7), 1600);
        // A normal (s, 0, c) by interpolation is where the ball has it: at 2 s Å.
        for (const double x : {-1.95, -1.05, 0.05, 1.05, 1.95}) {
            const double sine =
                x / 2 * double(tilt) / std::hypot(x / 2 * double(tilt), double(tilt));
            const QRgb expected = colourAt(round, 2 * sine, 0);
            const QRgb colour = colourAt(front, x, 0);
            QVERIFY(std::abs(qRed(colour) - qRed(expected)) <= 6);
        }
        // From behind, what bulged is a hollow: at x there is the place -x, and its normal, turned
        // to the viewer, still leans to the side to which it leant.
        camera.turn(3.14159265358979, 0);
        const Picture back = Renderer().draw(scene, camera, smallPicture());
        for (const double x : {-1.55, 0.05, 1.55})
            QVERIFY(isSimilar(colourAt(back, x, 1), colourAt(front, -x, 1)));
    }

    void aMeshWithSharedEdgesHasNoHoles() {
        auto mesh = std::make_shared<view::Mesh>();
        // A fan around a point that lies on no sample, with edges in all directions.
        mesh->vertices = {{0.0123F, 0.0456F, 0}};
        for (std::uint32_t i = 0; i < 97; ++i) {
            const double angle = i * 2 * 3.14159265358979 / 97;
            mesh->vertices.push_back({static_cast<float>(4 * std::cos(angle)),
                                      static_cast<float>(4 * std::sin(angle)), 0});
            mesh->triangles.push_back({0, i + 1, (i + 1) % 97 + 1});
        }
        mesh->normals.assign(98, {0, 0, 1});
        mesh->colours = {0xFFFFFF};
        mesh->ids.resize(97);
        std::iota(mesh->ids.begin(), mesh->ids.end(), 1U);
        Scene scene;
        scene.meshes = {std::make_shared<view::Mesh>(), mesh};
        const Picture picture = Renderer().draw(scene, smallCamera(), smallPicture());
        for (int row = 0; row < height; ++row)
            for (int column = 0; column < width; ++column)
                if (std::hypot(column + 0.5 - width / 2.0, row + 0.5 - height / 2.0) < 39.9)
                    QVERIFY(picture.ids[static_cast<std::size_t>(row * width + column)] != 0);
        for (view::Id id = 1; id <= 97; ++id)
            QVERIFY(pixelsOf(picture, id) > 30);
    }

    void aMeshMayHaveAColourForEachVertex() {
        auto mesh = std::make_shared<view::Mesh>();
        mesh->vertices = {{-4, -4, 0}, {4, -4, 0}, {-4, 4, 0}};
        mesh->normals.assign(3, {0, 0, 1});
        mesh->colours = {0xFF0000, 0x00FF00, 0x0000FF};
        mesh->triangles = {{0, 1, 2}};
        mesh->ids = {1};
        Scene scene;
        scene.meshes = {mesh};
        const Picture picture = Renderer().draw(scene, smallCamera(), smallPicture());
        QVERIFY(qRed(colourAt(picture, -3.9, -3.9)) > 200);
        QVERIFY(qGreen(colourAt(picture, 3.7, -3.9)) > 200);
        QVERIFY(qBlue(colourAt(picture, -3.9, 3.7)) > 200);
        // In the centroid all three have the same part.
        const QRgb middle = colourAt(picture, -4 + 8 / 3.0, -4 + 8 / 3.0);
        QVERIFY(std::abs(qRed(middle) - qGreen(middle)) < 8);
        QVERIFY(std::abs(qRed(middle) - qBlue(middle)) < 8);
    }

    void aMeshWithoutColoursHasThoseOfItsIds() {
        auto mesh = std::make_shared<view::Mesh>();
        mesh->vertices = {{-4, -4, 0}, {4, -4, 0}, {4, 4, 0}, {-4, 4, 0}};
        mesh->normals.assign(4, {0, 0, 1});
        mesh->triangles = {{0, 1, 2}, {0, 2, 3}};
        mesh->ids = {3, 1};
        auto coloured = std::make_shared<view::Mesh>(*mesh);
        coloured->vertices = {{-4, -4, 0}, {4, -4, 0}, {4, 4, 0},
                              {-4, -4, 0}, {4, 4, 0},  {-4, 4, 0}};
        coloured->normals.assign(6, {0, 0, 1});
        coloured->triangles = {{0, 1, 2}, {3, 4, 5}};
        coloured->colours = {0xFF0000, 0xFF0000, 0xFF0000, 0x00FF00, 0x00FF00, 0x00FF00};
        Scene one;
        one.meshes = {mesh};
        one.idColours = std::make_shared<std::vector<view::Colour>>(
            std::vector<view::Colour>{0x00FF00, 0x123456, 0xFF0000});
        Scene other;
        other.meshes = {coloured};
        const Picture picture = Renderer().draw(one, smallCamera(), smallPicture());
        QCOMPARE(picture.image, Renderer().draw(other, smallCamera(), smallPicture()).image);
        QVERIFY(qRed(colourAt(picture, 2, -2)) > 200 && qGreen(colourAt(picture, -2, 2)) > 200);
    }

    void trianglesOfIdsThatAreNotShownAreLeftOut() {
        auto mesh = std::make_shared<view::Mesh>();
        mesh->vertices = {{-4, -4, 2}, {4, -4, 2}, {4, 4, 2}, {-4, 4, 2}};
        mesh->normals.assign(4, {0, 0, 1});
        mesh->triangles = {{0, 1, 2}, {0, 2, 3}};
        mesh->ids = {1, 2};
        mesh->colours = {0xFF0000};
        Scene scene;
        scene.meshes = {mesh};
        scene.idShown =
            std::make_shared<std::vector<std::uint8_t>>(std::vector<std::uint8_t>{1, 0});
        const Picture picture = Renderer().draw(scene, smallCamera(), smallPicture());
        QVERIFY(pixelsOf(picture, 1) > 0);
        QCOMPARE(pixelsOf(picture, 2), 0);
        // As if they were not there: also for the depth cue.
        auto half = std::make_shared<view::Mesh>(*mesh);
        half->triangles.pop_back();
        half->ids.pop_back();
        Scene other;
        other.meshes = {half};
        QCOMPARE(picture.image, Renderer().draw(other, smallCamera(), smallPicture()).image);
    }
};

REGISTER_TEST(SticksTest)
#include "SticksTest.moc"
