// The lines as which a mesh is drawn.
#include "scene/MeshLines.h"
#include "TestSupport.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace {

using view::Mesh;
using view::MeshLines;
using view::Point;

/// A closed surface: a cube from `low` on whose sides are divided into so many squares each way,
/// which are as long as `size`, and each two triangles.
Mesh cube(float low, float size, std::uint32_t squares) {
    std::map<Point, std::uint32_t> numbers;
    Mesh mesh;
    const auto vertex = [&](const std::array<std::uint32_t, 3>& at) {
        const Point point = {low + float(at[0]) * size, low + float(at[1]) * size,
                             low + float(at[2]) * size};
        const auto [found, isNew] = numbers.emplace(point, mesh.vertices.size());
        if (isNew)
            mesh.vertices.push_back(point);
        return found->second;
    };
    for (std::size_t axis = 0; axis != 3; ++axis)
        for (const std::uint32_t level : {0U, squares})
            for (std::uint32_t i = 0; i != squares; ++i)
                for (std::uint32_t j = 0; j != squares; ++j) {
                    const auto corner = [&](std::uint32_t u, std::uint32_t v) {
                        std::array<std::uint32_t, 3> at{};
                        at[axis] = level;
                        at[(axis + 1) % 3] = i + u;
                        at[(axis + 2) % 3] = j + v;
                        return vertex(at);
                    };
                    mesh.triangles.push_back({corner(0, 0), corner(1, 0), corner(1, 1)});
                    mesh.triangles.push_back({corner(0, 0), corner(1, 1), corner(0, 1)});
                }
    return mesh;
}

double length(const MeshLines& lines) {
    double sum = 0;
    for (const view::Segment& line : lines.lines) {
        const Point& a = lines.points[line.from];
        const Point& b = lines.points[line.to];
        sum += std::hypot(double(b[0]) - a[0], double(b[1]) - a[1], double(b[2]) - a[2]);
    }
    return sum;
}

} // namespace

class MeshLinesTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void planesCutItAtEqualDistances() {
        // Squares of 1 with a diagonal: edges of (1 + 1 + sqrt(2)) / 3 on average.
        const Mesh mesh = cube(0.25F, 1, 10);
        const double spacing = 2 * (2 + std::sqrt(2.0)) / 3;
        const MeshLines lines = view::linesOf(mesh);
        QVERIFY(!lines.lines.empty());
        QCOMPARE(lines.vertices.size(), lines.points.size());
        for (const view::Segment& line : lines.lines) {
            const Point& a = lines.points[line.from];
            const Point& b = lines.points[line.to];
            bool isInPlane = false;
            for (std::size_t axis = 0; axis != 3; ++axis) {
                const double plane = std::round(double(a[axis]) / spacing) * spacing;
                isInPlane |= std::abs(double(a[axis]) - plane) < 1e-5 &&
                             std::abs(double(b[axis]) - plane) < 1e-5;
            }
            QVERIFY(isInPlane);
        }
        // Each plane that crosses the cube goes around it.
        const double planes = std::floor(10.25 / spacing) - std::floor(0.25 / spacing);
        QVERIFY(std::abs(length(lines) - 3 * planes * 40) < 1e-2);
    }

    void linesOfAClosedMeshAreClosed() {
        const MeshLines lines = view::linesOf(cube(-3.3F, 0.7F, 9));
        std::map<Point, int> ends;
        for (const view::Segment& line : lines.lines) {
            ++ends[lines.points[line.from]];
            ++ends[lines.points[line.to]];
        }
        QVERIFY(!ends.empty());
        for (const auto& [point, count] : ends)
            QCOMPARE(count % 2, 0);
    }

    void aPointTakesItsColourFromTheNearerEndOfItsSide() {
        const Mesh mesh = cube(0.25F, 1, 6);
        const MeshLines lines = view::linesOf(mesh);
        for (std::size_t i = 0; i != lines.points.size(); ++i) {
            const Point& at = mesh.vertices[lines.vertices[i]];
            for (std::size_t axis = 0; axis != 3; ++axis)
                QVERIFY(std::abs(at[axis] - lines.points[i][axis]) <= 0.5001F);
        }
    }

    void whatNoPlaneMeetsIsDrawnByItsSides() {
        // Beside a large cube, one that lies between two planes.
        Mesh mesh = cube(0.25F, 1, 10);
        const std::size_t lines = view::linesOf(mesh).lines.size();
        const auto first = static_cast<std::uint32_t>(mesh.vertices.size());
        const Mesh small = cube(20.8F, 0.1F, 1);
        mesh.vertices.insert(mesh.vertices.end(), small.vertices.begin(), small.vertices.end());
        for (const auto& [a, b, c] : small.triangles)
            mesh.triangles.push_back({first + a, first + b, first + c});
        QVERIFY(view::linesOf(mesh).lines.size() >= lines + 3 * small.triangles.size());
    }

    void whatHasNoSizeHasNoLines() {
        QVERIFY(view::linesOf({}).lines.empty());
        Mesh mesh;
        mesh.vertices = {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}};
        mesh.triangles = {{0, 1, 2}, {1, 1, 2}};
        QVERIFY(view::linesOf(mesh).lines.empty());
    }

    void farAwayAndLargeItEnds() {
        Mesh mesh = cube(0.25F, 1, 4);
        const auto first = static_cast<std::uint32_t>(mesh.vertices.size());
        for (const Point& point : {Point{1e30F, 0, 0}, Point{1.1e30F, 1, 0}, Point{1e30F, 1, 1}})
            mesh.vertices.push_back(point);
        mesh.triangles.push_back({first, first + 1, first + 2});
        QVERIFY(view::linesOf(mesh).lines.size() <= 5 * mesh.triangles.size());
        mesh.triangles = {{0, 1, first}};
        QVERIFY(view::linesOf(mesh).lines.size() <= 3);
    }

    void aStopRequestEndsIt() {
        std::stop_source stop;
        stop.request_stop();
        QVERIFY(view::linesOf(cube(0, 1, 1), stop.get_token()).lines.empty());
    }
};

REGISTER_TEST(MeshLinesTest)
#include "MeshLinesTest.moc"
