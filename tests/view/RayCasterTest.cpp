// Pictures of random scenes beside those of a plain ray caster, which looks for the nearest thing
// in each sample by itself.
#include "TestSupport.h"
#include "render/Renderer.h"

#include <cmath>
#include <limits>
#include <optional>
#include <random>

using view::Camera;
using view::Id;
using view::Point;
using view::Scene;
using view::Segment;

namespace {

struct Vector {
    double x, y, z;
    explicit Vector(const Point& p) : x(double(p[0])), y(double(p[1])), z(double(p[2])) {}
    Vector(double a, double b, double c) : x(a), y(b), z(c) {}
};
Vector operator+(const Vector& a, const Vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
Vector operator*(const Vector& a, double f) {
    return {a.x * f, a.y * f, a.z * f};
}
Vector operator-(const Vector& a, const Vector& b) {
    return a + b * -1;
}
double dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
Vector cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Where a line leaves a solid thing on the viewer's side, and where it enters it.
struct Span {
    double front = -std::numeric_limits<double>::infinity();
    double back = std::numeric_limits<double>::infinity();
    void meet(double t) {
        front = std::max(front, t);
        back = std::min(back, t);
    }
};

struct Hit {
    Id id = view::noId;
    double depth = -std::numeric_limits<double>::infinity();
};

class RayCaster {
public:
    RayCaster(const Scene& scene, const Camera& camera) : m_scene(scene), m_camera(camera) {}

    /// What is seen at a place right of and above the picture's middle, of what is opaque or of
    /// what is not. Å.
    Hit cast(double right, double up, bool isSeeThrough = false) const {
        const Vector towards(m_camera.axes[2]);
        const Vector origin = Vector(m_camera.centre) + Vector(m_camera.axes[0]) * right +
                              Vector(m_camera.axes[1]) * up;
        Hit hit;
        const auto meet = [&](const Span& span, const auto& idAt) {
            const double depth = std::min(span.front, m_camera.front);
            if (span.back <= m_camera.front && span.front >= m_camera.back && depth > hit.depth)
                hit = {idAt(origin + towards * depth), depth};
        };
        for (const view::Ball& ball : m_scene.balls) {
            if (isSeeThrough)
                break;
            Span span;
            sphere(span, origin - at(ball.point), towards, double(ball.radius));
            meet(span, [&](const Vector&) { return m_scene.ids[ball.point]; });
        }
        for (const Segment& stick : m_scene.sticks) {
            if (isSeeThrough)
                break;
            meet(capsule(stick, origin, towards), [&](const Vector& point) {
                const Vector axis = at(stick.to) - at(stick.from);
                const bool isSecond = dot(point - at(stick.from), axis) > dot(axis, axis) / 2;
                return m_scene.ids[isSecond ? stick.to : stick.from];
            });
        }
        for (std::size_t which = 0; which < m_scene.meshes.size(); ++which) {
            const auto& mesh = m_scene.meshes[which];
            if (m_scene.meshLook(which).isSeeThrough != isSeeThrough)
                continue;
            for (std::size_t i = 0; i < mesh->triangles.size(); ++i) {
                const auto& [a, b, c] = mesh->triangles[i];
                const auto t = triangle(Vector(mesh->vertices[a]), Vector(mesh->vertices[b]),
                                        Vector(mesh->vertices[c]), origin, towards);
                if (t && *t <= m_camera.front)
                    meet({*t, *t}, [&](const Vector&) { return mesh->ids[i]; });
            }
        }
        return hit;
    }

private:
    Vector at(std::uint32_t point) const { return Vector(m_scene.points[point]); }

    static void sphere(Span& span, const Vector& from, const Vector& towards, double radius) {
        const double b = dot(from, towards);
        const double rest = b * b - dot(from, from) + radius * radius;
        if (rest < 0)
            return;
        span.meet(-b + std::sqrt(rest));
        span.meet(-b - std::sqrt(rest));
    }

    Span capsule(const Segment& stick, const Vector& origin, const Vector& towards) const {
        const double radius = double(m_scene.stickRadius);
        Span span;
        sphere(span, origin - at(stick.from), towards, radius);
        sphere(span, origin - at(stick.to), towards, radius);
        const Vector along = at(stick.to) - at(stick.from);
        const double length = std::sqrt(dot(along, along));
        const Vector axis = along * (1 / length);
        const Vector from = origin - at(stick.from);
        // What is across the axis, of the line's start and of its direction.
        const Vector start = from - axis * dot(from, axis);
        const Vector way = towards - axis * dot(towards, axis);
        const double a = dot(way, way);
        const double b = dot(start, way);
        const double rest = b * b - a * (dot(start, start) - radius * radius);
        if (rest < 0)
            return span;
        for (const double t : {(-b + std::sqrt(rest)) / a, (-b - std::sqrt(rest)) / a}) {
            const double place = dot(from + towards * t, axis);
            if (place >= 0 && place <= length)
                span.meet(t);
        }
        return span;
    }

    /// Möller and Trumbore, Fast, minimum storage ray-triangle intersection, J. Graphics Tools 2
    /// (1997).
    static std::optional<double> triangle(const Vector& a, const Vector& b, const Vector& c,
                                          const Vector& origin, const Vector& towards) {
        const Vector p = cross(towards, c - a);
        const double determinant = dot(b - a, p);
        const double u = dot(origin - a, p) / determinant;
        const Vector q = cross(origin - a, b - a);
        const double v = dot(towards, q) / determinant;
        if (!(u >= 0 && v >= 0 && u + v <= 1))
            return std::nullopt;
        return dot(c - a, q) / determinant;
    }

    const Scene& m_scene;
    const Camera& m_camera;
};

Scene randomScene(std::mt19937& random) {
    std::uniform_real_distribution<float> along(-7, 7);
    std::uniform_real_distribution<float> radius(0.3F, 2);
    Scene scene;
    for (Id i = 0; i < 60; ++i) {
        scene.points.push_back({along(random), along(random), along(random)});
        scene.colours.push_back(random());
        scene.ids.push_back(i + 1);
    }
    for (std::uint32_t i = 0; i < 20; ++i)
        scene.balls.push_back({i, radius(random)});
    for (std::uint32_t i = 10; i + 1 < 40; ++i)
        scene.sticks.push_back({i, i + 1});
    auto mesh = std::make_shared<view::Mesh>();
    for (std::uint32_t i = 0; i + 2 < 20; ++i) {
        mesh->triangles.push_back({i, i + 1, i + 2});
        mesh->ids.push_back(100 + i);
    }
    for (std::size_t i = 40; i < 60; ++i) {
        mesh->vertices.push_back(scene.points[i]);
        mesh->normals.push_back({0, 0, 1});
    }
    mesh->colours = {0xFF8000};
    auto seeThrough = std::make_shared<view::Mesh>(*mesh);
    for (std::size_t i = 0; i < mesh->vertices.size(); ++i) {
        seeThrough->vertices[i] = {along(random), along(random), along(random)};
        seeThrough->ids[std::min(i, seeThrough->ids.size() - 1)] = 200 + static_cast<Id>(i);
    }
    scene.meshes = {mesh, seeThrough};
    scene.meshLooks = {{}, {true, false}};
    return scene;
}

/// What a pixel shows: what is opaque, unless only a surface is seen, and that.
struct Look {
    Hit opaque;
    Hit seeThrough;
    static bool isLike(const Hit& a, const Hit& b) {
        return a.id == b.id && (a.depth == b.depth || std::abs(a.depth - b.depth) < 1e-3);
    }
    bool isLike(const Look& other) const {
        return isLike(opaque, other.opaque) && isLike(seeThrough, other.seeThrough);
    }
};

Look look(const RayCaster& caster, double right, double up) {
    Look seen = {caster.cast(right, up), caster.cast(right, up, true)};
    if (seen.seeThrough.depth < seen.opaque.depth)
        seen.seeThrough = {};
    if (seen.opaque.id == view::noId)
        seen.opaque = seen.seeThrough;
    return seen;
}

} // namespace

class RayCasterTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void eachPixelShowsWhatARayHits_data() {
        QTest::addColumn<unsigned>("seed");
        QTest::addColumn<bool>("isCut");
        for (unsigned seed = 1; seed <= 6; ++seed) {
            QTest::addRow("whole scene %u", seed) << seed << false;
            QTest::addRow("cut scene %u", seed) << seed << true;
        }
    }

    void eachPixelShowsWhatARayHits() {
        QFETCH(unsigned, seed);
        QFETCH(bool, isCut);
        std::mt19937 random(seed);
        const Scene scene = randomScene(random);
        Camera camera;
        camera.centre = {0.3F, -0.2F, 0.1F};
        camera.height = 14;
        camera.turn(seed, seed * 0.7);
        if (isCut) {
            camera.front = 2.5;
            camera.back = -3;
        }
        constexpr int width = 150;
        constexpr int height = 110;
        view::Renderer renderer;
        const view::Picture picture =
            renderer.draw(scene, camera, {.width = width, .height = height});
        const RayCaster caster(scene, camera);
        const auto lookedAt = [&](double right, double up) { return look(caster, right, up); };
        const double pixel = camera.height / height;
        int skipped = 0;
        for (int row = 0; row < height; ++row) {
            for (int column = 0; column < width; ++column) {
                const double right = (column + 0.5 - width / 2.0) * pixel;
                const double up = (height / 2.0 - row - 0.5) * pixel;
                const Look seen = lookedAt(right, up);
                // At an edge, rounding decides.
                const auto isEdge = [&](double dx, double dy) {
                    return !seen.isLike(lookedAt(right + dx * 2e-4, up + dy * 2e-4));
                };
                const auto at = static_cast<std::size_t>(row * width + column);
                const Look shown = {
                    {picture.ids[at], double(picture.depths[at])},
                    {picture.seeThroughIds[at], double(picture.seeThroughDepths[at])}};
                if (shown.isLike(seen))
                    continue;
                ++skipped;
                if (!isEdge(1, 0) && !isEdge(-1, 0) && !isEdge(0, 1) && !isEdge(0, -1))
                    QFAIL(qPrintable(QStringLiteral("(%1, %2): %3 at %4, ray %5 at %6")
                                         .arg(column)
                                         .arg(row)
                                         .arg(picture.ids[at])
                                         .arg(double(picture.depths[at]))
                                         .arg(seen.opaque.id)
                                         .arg(seen.opaque.depth)));
            }
        }
        QVERIFY2(skipped < 10, qPrintable(QString::number(skipped)));
    }
};

REGISTER_TEST(RayCasterTest)
#include "RayCasterTest.moc"
