// Turning, moving and fitting the camera.
#include "render/Camera.h"
#include "TestSupport.h"

#include <cmath>
#include <random>

using view::Camera;
using view::Point;

namespace {

constexpr double pi = 3.14159265358979323846;

double dot(const Point& a, const Point& b) {
    return double(a[0]) * b[0] + double(a[1]) * b[1] + double(a[2]) * b[2];
}

/// Where a point is on the screen: Å to the right, up, and towards the viewer.
std::array<double, 3> seen(const Camera& camera, const Point& point) {
    Point from;
    for (std::size_t i = 0; i < 3; ++i)
        from[i] = point[i] - camera.centre[i];
    return {dot(from, camera.axes[0]), dot(from, camera.axes[1]), dot(from, camera.axes[2])};
}

bool isNear(const std::array<double, 3>& a, const std::array<double, 3>& b) {
    return std::abs(a[0] - b[0]) < 1e-5 && std::abs(a[1] - b[1]) < 1e-5 &&
           std::abs(a[2] - b[2]) < 1e-5;
}

} // namespace

class CameraTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void whatFacesTheViewerTurnsToTheRightAndUp() {
        const Point front = {0, 0, 1};
        Camera camera;
        camera.turn(pi / 2, 0);
        QVERIFY(isNear(seen(camera, front), {1, 0, 0}));
        camera = Camera();
        camera.turn(0, pi / 2);
        QVERIFY(isNear(seen(camera, front), {0, 1, 0}));
        camera = Camera();
        camera.turn(pi / 6, 0);
        QVERIFY(isNear(seen(camera, front), {0.5, 0, std::sqrt(0.75)}));
    }

    void rollingGoesCounterClockwise() {
        Camera camera;
        camera.roll(pi / 2);
        QVERIFY(isNear(seen(camera, {1, 0, 0}), {0, 1, 0}));
    }

    void theSceneMovesOnTheScreenWhateverItsRotation() {
        Camera camera;
        camera.turn(1, 0.5);
        const std::array<double, 3> before = seen(camera, {1, 2, 3});
        camera.move(10, -4);
        const std::array<double, 3> after = seen(camera, {1, 2, 3});
        QVERIFY(isNear(after, {before[0] + 10, before[1] - 4, before[2]}));
    }

    void theAxesStayPerpendicularAfterManyTurns() {
        Camera camera;
        std::mt19937 random(1);
        for (int i = 0; i < 100000; ++i) {
            camera.turn(random() % 100 * 0.001, random() % 100 * 0.001);
            camera.roll(random() % 100 * 0.001);
        }
        for (std::size_t i = 0; i < 3; ++i) {
            QVERIFY(std::abs(dot(camera.axes[i], camera.axes[i]) - 1) < 1e-5);
            QVERIFY(std::abs(dot(camera.axes[i], camera.axes[(i + 1) % 3])) < 1e-5);
        }
    }

    void allPointsAreSeenAtAnyRotation() {
        std::mt19937 random(2);
        std::uniform_real_distribution<float> along(-50, 70);
        std::vector<Point> points;
        for (int i = 0; i < 100; ++i)
            points.push_back({along(random), along(random) / 5, along(random)});
        for (const double aspect : {0.5, 1.0, 1.6}) {
            Camera camera;
            camera.fit(points, aspect, 2);
            for (int turn = 0; turn < 100; ++turn) {
                camera.turn(0.3, 0.2);
                for (const Point& point : points) {
                    const std::array<double, 3> at = seen(camera, point);
                    QVERIFY(std::abs(at[1]) + 2 <= camera.height / 2 + 1e-4);
                    QVERIFY(std::abs(at[0]) + 2 <= camera.height / 2 * aspect + 1e-4);
                }
            }
        }
    }

    void pointsThatAreNoPlacesDoNotCount() {
        Camera camera;
        camera.fit(std::vector<Point>{{NAN, 0, 0}, {1e30F, 0, 0}, {0, INFINITY, 0}}, 1, 2);
        QCOMPARE(camera.height, Camera().height);
        camera.fit(std::vector<Point>{{NAN, 0, 0}, {1, 2, 3}, {1e30F, 0, 0}}, 1, 2);
        QCOMPARE(camera.centre, (Point{1, 2, 3}));
        QCOMPARE(camera.height, 4.0);
    }
};

REGISTER_TEST(CameraTest)
#include "CameraTest.moc"
