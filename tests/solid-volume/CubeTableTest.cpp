// The triangles of each case of a cube.
#include "mesh/CubeTable.h"
#include "TestSupport.h"

#include <map>
#include <set>
#include <utility>

namespace {

using Sides = std::map<std::pair<int, int>, int>; // how often a directed side is in a triangle

Sides sidesOf(const solid::CubeCase& made) {
    Sides sides;
    for (const auto& triangle : made.all())
        for (std::size_t i = 0; i != 3; ++i)
            ++sides[{triangle[i], triangle[(i + 1) % 3]}];
    return sides;
}

bool isInside(unsigned inside, int x, int y, int z) {
    return ((inside >> (x + 2 * y + 4 * z)) & 1U) != 0;
}

/// Whether the surface passes between the two corners of an edge.
bool isCrossed(unsigned inside, int edge) {
    const solid::CubeEdge at = solid::cubeEdge(edge);
    std::array<int, 3> high = {at.corner[0], at.corner[1], at.corner[2]};
    ++high[at.axis];
    return isInside(inside, at.corner[0], at.corner[1], at.corner[2]) !=
           isInside(inside, high[0], high[1], high[2]);
}

/// The coordinate of a face that both edges are in, as 2 * axis + side; -1 if there is none.
int commonFace(int a, int b) {
    for (int axis = 0; axis != 3; ++axis)
        for (int side = 0; side != 2; ++side) {
            const auto isIn = [&](int edge) {
                const solid::CubeEdge at = solid::cubeEdge(edge);
                return at.axis != axis && at.corner[static_cast<std::size_t>(axis)] == side;
            };
            if (isIn(a) && isIn(b))
                return 2 * axis + side;
        }
    return -1;
}

/// The sides in one face of the cube that no other triangle has, as edges of the neighbouring cube
/// behind it, reversed.
std::set<std::pair<int, int>> rim(unsigned inside, int face, bool isMirrored) {
    const Sides sides = sidesOf(solid::cubeTable()[inside]);
    std::set<std::pair<int, int>> found;
    for (const auto& [side, count] : sides) {
        if (sides.contains({side.second, side.first}) ||
            commonFace(side.first, side.second) != face)
            continue;
        found.insert(isMirrored ? std::pair(side.second, side.first) : side);
    }
    return found;
}

} // namespace

class CubeTableTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void exactlyTheEdgesThatAreCrossedHaveVertices() {
        for (unsigned inside = 0; inside != 256; ++inside) {
            std::set<int> used;
            for (const auto& triangle : solid::cubeTable()[inside].all())
                used.insert(triangle.begin(), triangle.end());
            for (int edge = 0; edge != solid::cubeEdges; ++edge)
                QCOMPARE(used.contains(edge), isCrossed(inside, edge));
        }
    }

    void noSideIsInTwoTrianglesTheSameWay() {
        for (unsigned inside = 0; inside != 256; ++inside)
            for (const auto& [side, count] : sidesOf(solid::cubeTable()[inside]))
                QCOMPARE(count, 1);
    }

    void whatIsOpenIsInAFaceOfTheCube() {
        for (unsigned inside = 0; inside != 256; ++inside) {
            const Sides sides = sidesOf(solid::cubeTable()[inside]);
            for (const auto& [side, count] : sides) {
                const bool isOpen = !sides.contains({side.second, side.first});
                QCOMPARE(isOpen, commonFace(side.first, side.second) >= 0);
            }
        }
    }

    // Two cubes with a face in common must close each other there, whatever else they hold.
    void neighboursCloseEachOther() {
        for (int axis = 0; axis != 3; ++axis)
            for (unsigned inside = 0; inside != 256; ++inside)
                for (unsigned behind = 0; behind != 256; ++behind) {
                    bool isSame = true;
                    for (int corner = 0; corner != 8; ++corner)
                        if (((corner >> axis) & 1) != 0)
                            isSame = isSame && ((inside >> corner) & 1U) ==
                                                   ((behind >> (corner ^ (1 << axis))) & 1U);
                    if (!isSame)
                        continue;
                    // The neighbour's low face is this one's high one: its edges' numbers differ by
                    // the bit of the corner on that axis.
                    std::set<std::pair<int, int>> ours;
                    for (const auto& [a, b] : rim(inside, 2 * axis + 1, false))
                        ours.insert({onLowFace(a, axis), onLowFace(b, axis)});
                    QVERIFY(ours == rim(behind, 2 * axis, true));
                }
    }

private:
    static int onLowFace(int edge, int axis) {
        solid::CubeEdge at = solid::cubeEdge(edge);
        at.corner[static_cast<std::size_t>(axis)] = 0;
        for (int other = 0; other != solid::cubeEdges; ++other)
            if (solid::cubeEdge(other).axis == at.axis &&
                solid::cubeEdge(other).corner == at.corner)
                return other;
        return -1;
    }
};

REGISTER_TEST(CubeTableTest)
#include "CubeTableTest.moc"
