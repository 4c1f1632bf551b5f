// The part of a mesh above a limit.
#include "mesh/Clip.h"
#include "TestSupport.h"

#include <limits>
#include <set>

using solid::clip;
using solid::Clipped;
using solid::Triangle;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
const std::vector<Triangle> square = {{0, 1, 2}, {0, 2, 3}};

/// Whether each vertex is in a triangle, and no triangle has one twice.
bool isSound(const Clipped& part) {
    std::set<std::uint32_t> used;
    for (const Triangle& triangle : part.triangles) {
        if (std::set<std::uint32_t>(triangle.begin(), triangle.end()).size() != 3)
            return false;
        used.insert(triangle.begin(), triangle.end());
    }
    return used.size() == part.vertices.size();
}

} // namespace

class ClipTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void allOrNothing() {
        const std::vector<float> values = {1, 2, 3, 4};
        QCOMPARE(clip(square, values, 1).triangles.size(), square.size());
        QCOMPARE(clip(square, values, 1).vertices.size(), values.size());
        QVERIFY(clip(square, values, 4.5F).triangles.empty());
        QVERIFY(clip(square, values, 4.5F).vertices.empty());
        QVERIFY(clip(square, values, notANumber).triangles.empty());
        QVERIFY(clip({}, {}, 0).triangles.empty());
    }

    void trianglesAreCutWhereTheLimitIs() {
        // Corners of a square of side 1, whose value is 4 x.
        const Clipped part = clip(square, std::vector<float>{0, 4, 4, 0}, 1);
        QVERIFY(isSound(part));
        int cuts = 0;
        for (const Clipped::Vertex& vertex : part.vertices)
            if (vertex.from != vertex.to) {
                ++cuts;
                QCOMPARE(vertex.part, 0.75F); // from the high end
            }
        // Both triangles have the vertex on the edge between them.
        QCOMPARE(cuts, 3);
        QCOMPARE(part.vertices.size(), std::size_t(5));
        QCOMPARE(part.triangles.size(), std::size_t(3));
    }

    void aLimitThatMeetsAVertexLeavesNoTriangleWithoutAnArea() {
        const Clipped corner = clip(square, std::vector<float>{1, 0, 0, 0}, 1);
        QVERIFY(corner.triangles.empty() && corner.vertices.empty());
        const Clipped edge = clip(square, std::vector<float>{1, 0, 1, 0}, 1);
        QVERIFY(edge.triangles.empty() && edge.vertices.empty());
        const Clipped half = clip(square, std::vector<float>{1, 0, 1, 2}, 1);
        QVERIFY(isSound(half));
        QCOMPARE(half.triangles.size(), std::size_t(1));
        QCOMPARE(half.vertices.size(), std::size_t(3));
    }

    void whereNoValueIsNothingIsAbove() {
        const Clipped part = clip(square, std::vector<float>{5, notANumber, 5, 5}, 1);
        QVERIFY(isSound(part));
        QCOMPARE(part.triangles, (std::vector<Triangle>{{0, 1, 2}}));
        for (const Clipped::Vertex& vertex : part.vertices)
            QVERIFY(vertex.from == vertex.to && vertex.from != 1);
        const float all = -std::numeric_limits<float>::infinity();
        QCOMPARE(clip(square, std::vector<float>{5, notANumber, 5, 5}, all).triangles.size(),
                 std::size_t(1));
        QVERIFY(clip(square, std::vector<float>(4, notANumber), all).triangles.empty());
    }

    void theLargestNumbersHaveAPlaceBetweenThem() {
        constexpr float most = std::numeric_limits<float>::max();
        const Clipped part = clip(square, std::vector<float>{-most, most, most, -most}, 0);
        QVERIFY(isSound(part));
        for (const Clipped::Vertex& vertex : part.vertices)
            if (vertex.from != vertex.to)
                QCOMPARE(vertex.part, 0.5F);
    }
};

REGISTER_TEST(ClipTest)
#include "ClipTest.moc"
