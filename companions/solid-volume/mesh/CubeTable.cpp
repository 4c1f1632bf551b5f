#include "CubeTable.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace solid {

namespace {

using Loop = std::vector<int>; // edges

int edgeBetween(int a, int b) {
    const int low = std::min(a, b);
    const int axis = (a ^ b) >> 1; // 1, 2, 4 become 0, 1, 2
    const int x = low & 1;
    const int y = (low >> 1) & 1;
    const int z = (low >> 2) & 1;
    const int first = axis == 0 ? y : x;
    const int second = axis == 2 ? y : z;
    return 4 * axis + first + 2 * second;
}

// The corners of a face, counterclockwise seen from outside of the cube.
constexpr std::array<std::array<int, 4>, 6> faces = {{
    {0, 4, 6, 2},
    {1, 3, 7, 5},
    {0, 1, 5, 4},
    {2, 6, 7, 3},
    {0, 2, 3, 1},
    {4, 5, 7, 6},
}};

bool isOnFace(int edge, const std::array<int, 4>& face) {
    for (std::size_t i = 0; i != 4; ++i)
        if (edgeBetween(face[i], face[(i + 1) % 4]) == edge)
            return true;
    return false;
}

bool shareFace(int a, int b) {
    return std::any_of(faces.begin(), faces.end(),
                       [&](const auto& face) { return isOnFace(a, face) && isOnFace(b, face); });
}

// On each face a line runs around each run of inside corners. An edge begins one line, and ends
// one on the cube's other face there, so that lines join to closed loops.
std::vector<Loop> loopsOf(unsigned inside) {
    std::array<int, cubeEdges> next{};
    next.fill(-1);
    for (const std::array<int, 4>& face : faces)
        for (std::size_t i = 0; i != 4; ++i) {
            const auto isInside = [&](std::size_t k) {
                return ((inside >> face[k % 4]) & 1U) != 0;
            };
            if (!isInside(i) || isInside(i + 1))
                continue;
            std::size_t first = i; // of the run that ends here
            while (isInside(first + 3))
                first += 3;
            const int leaving = edgeBetween(face[i], face[(i + 1) % 4]);
            const int entering = edgeBetween(face[(first + 3) % 4], face[first % 4]);
            next[static_cast<std::size_t>(entering)] = leaving;
        }
    std::vector<Loop> loops;
    for (std::size_t edge = 0; edge != cubeEdges; ++edge) {
        Loop loop;
        for (int at = static_cast<int>(edge); next[static_cast<std::size_t>(at)] >= 0;) {
            loop.push_back(at);
            at = std::exchange(next[static_cast<std::size_t>(at)], -1);
        }
        if (!loop.empty())
            loops.push_back(std::move(loop));
    }
    return loops;
}

// A diagonal in a face of the cube might be drawn from the other side, too, and four triangles
// would meet in it.
bool isFan(const Loop& loop, std::size_t first) {
    for (std::size_t k = 2; k + 1 < loop.size(); ++k)
        if (shareFace(loop[first], loop[(first + k) % loop.size()]))
            return false;
    return true;
}

// Every loop can be divided from one of its edges without such a diagonal.
void addFan(CubeCase& made, const Loop& loop) {
    const std::size_t n = loop.size();
    std::size_t first = 0;
    while (first + 1 != n && !isFan(loop, first))
        ++first;
    for (std::size_t k = 1; k + 1 < n; ++k)
        made.triangles[made.count++] = {static_cast<std::uint8_t>(loop[first]),
                                        static_cast<std::uint8_t>(loop[(first + k) % n]),
                                        static_cast<std::uint8_t>(loop[(first + k + 1) % n])};
}

std::array<CubeCase, 256> makeTable() {
    std::array<CubeCase, 256> table{};
    for (unsigned inside = 0; inside != table.size(); ++inside)
        for (const Loop& loop : loopsOf(inside))
            addFan(table[inside], loop);
    return table;
}

} // namespace

const std::array<CubeCase, 256>& cubeTable() {
    static const std::array<CubeCase, 256> table = makeTable();
    return table;
}

} // namespace solid
