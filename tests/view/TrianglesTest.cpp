// Triangles of all sizes beside a plain evaluation of their sides in each sample.
#include "TestSupport.h"
#include "render/Renderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <random>

using view::Camera;
using view::Id;
using view::Mesh;
using view::Point;

namespace {

constexpr int width = 150;
constexpr int height = 130;

/// A sample an Å, from the middle of the picture.
Camera plainCamera() {
    Camera camera;
    camera.height = height;
    return camera;
}

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Seen {
    Id id = view::noId;
    double depth = -infinity;
    double next = -infinity; ///< the depth of what is behind it, or may be there
    bool isSure() const { return next == -infinity || depth > next + 0.05; }
};

double at(const Point& point, std::size_t axis) {
    return double(point[axis]);
}

/// How far a place is to the left of a way. Å.
double left(const Point& from, const Point& to, double x, double y) {
    const double dx = at(to, 0) - at(from, 0);
    const double dy = at(to, 1) - at(from, 1);
    return (dx * (y - at(from, 1)) - dy * (x - at(from, 0))) / std::hypot(dx, dy);
}

Seen look(const Mesh& mesh, double x, double y) {
    constexpr double near = 0.02;
    Seen seen;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const Point& a = mesh.vertices[mesh.triangles[i][0]];
        const Point& b = mesh.vertices[mesh.triangles[i][1]];
        const Point& c = mesh.vertices[mesh.triangles[i][2]];
        const auto isBeyond = [&](double place, std::size_t axis) {
            const auto [first, last] = std::minmax({a[axis], b[axis], c[axis]});
            return place < double(first) - 1 || place > double(last) + 1;
        };
        if (isBeyond(x, 0) || isBeyond(y, 1))
            continue;
        const std::array<double, 3> sides = {left(a, b, x, y), left(b, c, x, y), left(c, a, x, y)};
        const auto [least, most] = std::minmax({sides[0], sides[1], sides[2]});
        if (least < -near && most > near)
            continue;
        // Rounding decides whether a sample beside a side is inside.
        if (least <= near && most >= -near) {
            seen.next = std::max({seen.next, at(a, 2), at(b, 2), at(c, 2)});
            continue;
        }
        const double area = (at(b, 0) - at(a, 0)) * (at(c, 1) - at(a, 1)) -
                            (at(b, 1) - at(a, 1)) * (at(c, 0) - at(a, 0));
        const double v =
            ((x - at(a, 0)) * (at(c, 1) - at(a, 1)) - (y - at(a, 1)) * (at(c, 0) - at(a, 0))) /
            area;
        const double w =
            ((at(b, 0) - at(a, 0)) * (y - at(a, 1)) - (at(b, 1) - at(a, 1)) * (x - at(a, 0))) /
            area;
        const double depth = at(a, 2) + v * (at(b, 2) - at(a, 2)) + w * (at(c, 2) - at(a, 2));
        seen.next = std::max(seen.next, std::min(seen.depth, depth));
        if (depth > seen.depth) {
            seen.id = mesh.ids[i];
            seen.depth = depth;
        }
    }
    return seen;
}

/// Å.
struct Size {
    float length;
    float width;
};

Mesh randomMesh(unsigned seed, int count, Size size) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> x(-width / 2.0F, width / 2.0F);
    std::uniform_real_distribution<float> y(-height / 2.0F, height / 2.0F);
    std::uniform_real_distribution<float> along(-1, 1);
    Mesh mesh;
    for (int i = 0; i < count; ++i) {
        const Point middle = {x(random), y(random), 20 * along(random)};
        const double angle = 3.2 * double(along(random));
        const auto c = static_cast<float>(std::cos(angle));
        const auto s = static_cast<float>(std::sin(angle));
        for (int corner = 0; corner < 3; ++corner) {
            const float u = size.length * along(random);
            const float v = size.width * along(random);
            mesh.vertices.push_back(
                {middle[0] + u * c - v * s, middle[1] + u * s + v * c, middle[2] + along(random)});
            mesh.normals.push_back({0, 0, 1});
        }
        const auto first = static_cast<std::uint32_t>(3 * i);
        mesh.triangles.push_back({first, first + 1, first + 2});
        mesh.ids.push_back(static_cast<Id>(i + 1));
    }
    mesh.colours = {0xFFFFFF};
    return mesh;
}

} // namespace

class TrianglesTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void eachSampleShowsTheNearestTriangleAroundIt_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<float>("length");
        QTest::addColumn<float>("breadth");
        QTest::newRow("less than a sample") << 4000 << 0.6F << 0.6F;
        QTest::newRow("some samples") << 600 << 5.0F << 5.0F;
        QTest::newRow("long and narrow") << 300 << 60.0F << 0.7F;
        QTest::newRow("larger than the picture") << 10 << 900.0F << 400.0F;
        QTest::newRow("much larger than the picture") << 10 << 40'000.0F << 40'000.0F;
        QTest::newRow("across the picture, narrow") << 200 << 40'000.0F << 2.0F;
    }

    void eachSampleShowsTheNearestTriangleAroundIt() {
        QFETCH(int, count);
        QFETCH(float, length);
        QFETCH(float, breadth);
        int sure = 0;
        int shown = 0;
        for (unsigned seed = 1; seed <= 3; ++seed) {
            auto mesh = std::make_shared<Mesh>(randomMesh(seed, count, {length, breadth}));
            view::Scene scene;
            scene.meshes = {mesh};
            const view::Picture picture =
                view::Renderer().draw(scene, plainCamera(), {.width = width, .height = height});
            for (int row = 0; row < height; ++row)
                for (int column = 0; column < width; ++column) {
                    const Seen seen =
                        look(*mesh, column + 0.5 - width / 2.0, height / 2.0 - row - 0.5);
                    if (!seen.isSure())
                        continue;
                    ++sure;
                    shown += seen.id != view::noId ? 1 : 0;
                    const auto pixel = static_cast<std::size_t>(row * width + column);
                    QCOMPARE(picture.ids[pixel], seen.id);
                    if (seen.id != view::noId)
                        QVERIFY(std::abs(double(picture.depths[pixel]) - seen.depth) < 0.05);
                }
        }
        QVERIFY2(sure > 3 * width * height / 2, qPrintable(QString::number(sure)));
        QVERIFY2(shown > 500, qPrintable(QString::number(shown)));
    }
};

REGISTER_TEST(TrianglesTest)
#include "TrianglesTest.moc"
