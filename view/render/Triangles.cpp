#include "Triangles.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace view {

namespace {

constexpr std::size_t trianglesAPart = 1 << 14;
constexpr float infinity = std::numeric_limits<float>::infinity();

/// Coordinates of one corner of four triangles.
struct Corners {
    Floats x, y, z;
};

Floats least(Floats a, Floats b, Floats c) {
    return smaller(smaller(a, b), c);
}
Floats greatest(Floats a, Floats b, Floats c) {
    return larger(larger(a, b), c);
}
Floats absolute(Floats a) {
    return Floats(Ints(a) & all(0x7FFFFFFF));
}

/// Whether the middle of a sample lies between two coordinates; for large ones, perhaps.
Ints holdsSample(Floats from, Floats to) {
    const Floats exact = all(static_cast<float>(1 << 20));
    const Ints isExact = (from > all(0.0F)) & (to < exact);
    // Rounded towards 0, which is down here.
    const auto whole = [&](Floats x) {
        return __builtin_convertvector(smaller(larger(x, all(0.0F)), exact), Ints);
    };
    const Floats half = all(0.5F);
    return ~isExact | (whole(from + half) < whole(to + half)) |
           (__builtin_convertvector(whole(from), Floats) + half == from);
}

/// Whether triangles turn clockwise on the screen, seen from their front; not when rounding
/// decides.
Ints isTurnedAway(const Corners& a, const Corners& b, const Corners& c) {
    const Floats one = (b.x - a.x) * (c.y - a.y);
    const Floats other = (b.y - a.y) * (c.x - a.x);
    return one - other > all(3e-7F) * (absolute(one) + absolute(other));
}

/// Which of the triangles of a mesh are shown; asked for in ascending order.
class Shown {
public:
    Shown(const Frame& frame, const PlacedMesh& mesh)
        : m_scene(*frame.scene), m_mesh(mesh), m_id(mesh.id(0)), m_isShown(m_scene.isShown(m_id)) {}
    /// Of four triangles from `first` on, but of none from `end` on.
    Ints four(std::size_t first, std::size_t end) {
        Ints mask = all(0);
        for (std::size_t i = first; i < std::min(end, first + 4); ++i) {
            const Id id = m_mesh.id(i);
            if (id != m_id)
                m_isShown = m_scene.isShown(id);
            m_id = id;
            mask[i - first] = m_isShown ? -1 : 0;
        }
        return mask;
    }

private:
    const Scene& m_scene;
    const PlacedMesh& m_mesh;
    Id m_id; ///< of the last one
    bool m_isShown;
};

/// z of the nearest vertex of a mesh.
float nearestVertex(const Frame& frame, const PlacedMesh& mesh) {
    const Place* const vertices = frame.vertices.data() + mesh.firstVertex;
    float nearest = -infinity;
    for (std::size_t i = 0; i < mesh.vertexCount; ++i)
        nearest = vertices[i].z > nearest ? vertices[i].z : nearest;
    return nearest;
}

/// How fast the depth changes along x and y.
struct Slope {
    float x;
    float y;
};

double twiceArea(Floats a, Floats b, Floats c) {
    return (double(b[0]) - double(a[0])) * (double(c[1]) - double(a[1])) -
           (double(b[1]) - double(a[1])) * (double(c[0]) - double(a[0]));
}

Slope slopeOf(Floats a, Floats b, Floats c, double area) {
    const double inverse = 1 / area;
    const double bz = double(b[2]) - double(a[2]);
    const double cz = double(c[2]) - double(a[2]);
    return {
        static_cast<float>(
            (bz * (double(c[1]) - double(a[1])) - cz * (double(b[1]) - double(a[1]))) * inverse),
        static_cast<float>(
            (cz * (double(b[0]) - double(a[0])) - bz * (double(c[0]) - double(a[0]))) * inverse)};
}

/// The sides of a triangle, one a lane. Two triangles that share one calculate with the same
/// numbers, so that no sample falls between them.
class Edges {
public:
    /// `turn` is 1 when the third corner lies to the right of the way on the screen, else -1.
    Edges(const std::array<Floats, 3>& corners, float turn) {
        Floats fromX = corners[0];
        Floats fromY = corners[1];
        Floats z = corners[2];
        Floats unused = all(0.0F);
        transpose(fromX, fromY, z, unused);
        const Floats toX = __builtin_shufflevector(fromX, fromX, 1, 2, 0, 3);
        const Floats toY = __builtin_shufflevector(fromY, fromY, 1, 2, 0, 3);
        const Ints isForward = (fromX < toX) | ((fromX == toX) & (fromY < toY));
        m_startX = select(isForward, fromX, toX);
        m_startY = select(isForward, fromY, toY);
        m_dx = all(turn) * (toX - fromX);
        m_dy = all(turn) * (toY - fromY);
    }

    /// One side, for the samples of a row.
    struct Row {
        Floats start, slope, startX;
        /// Not below 0 on the inner side.
        Floats inside(Floats x) const { return start - slope * (x - startX); }
    };
    std::array<Row, 3> row(float y) const {
        const Floats start = m_dx * (all(y) - m_startY);
        return {Row{all(start[0]), all(m_dy[0]), all(m_startX[0])},
                Row{all(start[1]), all(m_dy[1]), all(m_startX[1])},
                Row{all(start[2]), all(m_dy[2]), all(m_startX[2])}};
    }

private:
    Floats m_startX, m_startY, m_dx, m_dy;
};

Extent extentOf(const std::array<Floats, 3>& corners) {
    const auto& [a, b, c] = corners;
    const Floats low = least(a, b, c);
    const Floats high = greatest(a, b, c);
    return {low[0], high[0], low[1], high[1], high[2], low[2]};
}

template <bool isCut>
bool drawRows(Tile& tile, const Frame& frame, const std::array<Floats, 3>& corners, double area,
              const Extent& extent, const Tile::Range& range, Number number) {
    const Edges edges(corners, area > 0 ? 1.0F : -1.0F);
    const Floats a = corners[0];
    const int first = range.left & ~3;
    const float left = static_cast<float>(tile.left() + first) + 0.5F;
    // Many small ones cover no sample: their slope is not needed.
    Slope slope{};
    bool isDrawn = false;
    for (int row = range.top; row <= range.bottom; ++row) {
        const float y = static_cast<float>(tile.top() + row) + 0.5F;
        const std::array<Edges::Row, 3> sides = edges.row(y);
        Floats x = {left, left + 1, left + 2, left + 3};
        for (int column = first; column <= range.right; column += 4, x += all(4.0F)) {
            Ints mask =
                least(sides[0].inside(x), sides[1].inside(x), sides[2].inside(x)) >= all(0.0F);
            if (!isAny(mask))
                continue;
            if (!isDrawn)
                slope = slopeOf(a, corners[1], corners[2], area);
            isDrawn = true;
            const Floats rowDepth = all(a[2] + slope.y * (y - a[1]));
            // The plane of a narrow triangle is steep: rounding must not lead out of it.
            const Floats depth =
                smaller(larger(rowDepth + all(slope.x) * (x - all(a[0])), all(extent.back)),
                        all(extent.front));
            if constexpr (isCut)
                mask &= (depth >= all(frame.back)) & (depth <= all(frame.front));
            tile.put(row, column, mask, depth, all(number));
        }
    }
    return isDrawn;
}

void drawOne(Tile& tile, const Frame& frame, const std::array<Floats, 3>& corners, Number number) {
    const Extent extent = extentOf(corners);
    const Tile::Range range = tile.range(extent);
    if (range.isEmpty() || tile.hides(range, extent.front))
        return;
    const double area = twiceArea(corners[0], corners[1], corners[2]);
    // What is seen from its edge covers no sample.
    if (!(area != 0))
        return;
    const bool isCut = extent.front > frame.front || extent.back < frame.back;
    if (isCut ? drawRows<true>(tile, frame, corners, area, extent, range, number)
              : drawRows<false>(tile, frame, corners, area, extent, range, number))
        tile.touch(range);
}

} // namespace

bool SeenTriangles::find(Frame& frame, Workers& workers) {
    std::size_t parts = 0;
    for (std::size_t mesh = 0; mesh < frame.meshes.size(); ++mesh) {
        const std::size_t count = frame.meshes[mesh].triangles->size();
        for (std::size_t begin = 0; begin < count; begin += trianglesAPart) {
            m_parts.resize(std::max(m_parts.size(), parts + 1));
            Part& part = m_parts[parts++];
            part.mesh = mesh;
            part.begin = begin;
            part.end = std::min(count, begin + trianglesAPart);
        }
    }
    m_areBacksHidden.assign(frame.meshes.size(), false);
    for (std::size_t i = 0; i < frame.meshes.size(); ++i)
        m_areBacksHidden[i] =
            frame.meshes[i].mesh->isClosed &&
            (frame.front == infinity || nearestVertex(frame, frame.meshes[i]) <= frame.front);
    if (!workers.run(
            parts,
            [&](std::size_t part, std::size_t) {
                findPart(frame, m_parts[part], m_areBacksHidden[m_parts[part].mesh] != 0);
            },
            frame.stop))
        return false;
    m_numbers.clear();
    for (std::size_t i = 0; i < parts; ++i) {
        const Part& part = m_parts[i];
        frame.nearZ = std::max(frame.nearZ, part.nearZ);
        frame.farZ = std::min(frame.farZ, part.farZ);
        m_numbers.insert(m_numbers.end(), part.numbers.begin(), part.numbers.end());
    }
    return true;
}

void SeenTriangles::findPart(const Frame& frame, Part& part, bool areBacksHidden) {
    const PlacedMesh& mesh = frame.meshes[part.mesh];
    const Place* const vertices = frame.vertices.data() + mesh.firstVertex;
    const auto& triangles = *mesh.triangles;
    part.numbers.clear();
    Shown shown(frame, mesh);
    Floats nearZ = all(-infinity);
    Floats farZ = all(infinity);
    const Floats width = all(static_cast<float>(frame.width));
    const Floats height = all(static_cast<float>(frame.height));
    for (std::size_t i = part.begin; i < part.end; i += 4) {
        // The last triangle of a part fills the lanes that are left over.
        const std::size_t count = std::min<std::size_t>(4, part.end - i);
        const std::array<const std::array<std::uint32_t, 3>*, 4> four = {
            &triangles[i], &triangles[i + std::min<std::size_t>(1, count - 1)],
            &triangles[i + std::min<std::size_t>(2, count - 1)], &triangles[i + count - 1]};
        const auto corner = [&](std::size_t number) {
            Floats x = load(&vertices[(*four[0])[number]].x);
            Floats y = load(&vertices[(*four[1])[number]].x);
            Floats z = load(&vertices[(*four[2])[number]].x);
            Floats rest = load(&vertices[(*four[3])[number]].x);
            transpose(x, y, z, rest);
            return Corners{x, y, z};
        };
        const Corners a = corner(0);
        const Corners b = corner(1);
        const Corners c = corner(2);
        const Floats front = greatest(a.z, b.z, c.z);
        const Floats back = least(a.z, b.z, c.z);
        const Ints isBetween = shown.four(i, part.end) & (a.x == a.x) & (b.x == b.x) &
                               (c.x == c.x) & (front >= all(frame.back)) &
                               (back <= all(frame.front)) &
                               (frame.front >= frame.back ? all(-1) : all(0));
        nearZ = larger(nearZ, select(isBetween, front, all(-infinity)));
        farZ = smaller(farZ, select(isBetween, back, all(infinity)));
        const Floats left = least(a.x, b.x, c.x);
        const Floats right = greatest(a.x, b.x, c.x);
        const Floats top = least(a.y, b.y, c.y);
        const Floats bottom = greatest(a.y, b.y, c.y);
        Ints isSeen = isBetween & (right >= all(0.0F)) & (left <= width) & (bottom >= all(0.0F)) &
                      (top <= height) & holdsSample(left, right) & holdsSample(top, bottom);
        if (areBacksHidden)
            isSeen &= ~isTurnedAway(a, b, c);
        for (unsigned rest = bits(isSeen); rest != 0; rest &= rest - 1)
            part.numbers.push_back(mesh.start + static_cast<Number>(i) + std::countr_zero(rest));
    }
    part.nearZ = std::max(std::max(nearZ[0], nearZ[1]), std::max(nearZ[2], nearZ[3]));
    part.farZ = std::min(std::min(farZ[0], farZ[1]), std::min(farZ[2], farZ[3]));
}

Extent TriangleExtents::operator()(std::size_t index) {
    return extentOf(m_meshes.cornersOf((*m_seen)[index]));
}

void TrianglePainter::draw(Tile& tile, const Frame& frame, const SeenTriangles& seen,
                           const Bins& triangles, std::size_t tileIndex) {
    MeshFinder meshes(frame);
    for (const std::uint32_t index : triangles.large()) {
        const std::array<Floats, 3> corners = meshes.cornersOf(seen[index]);
        if (tile.hides(extentOf(corners).front) || frame.stop.stop_requested())
            break;
        drawOne(tile, frame, corners, seen[index]);
    }
    m_triangles.clear();
    m_order.fronts.clear();
    for (const std::uint32_t index : triangles.inTile(tileIndex)) {
        m_triangles.push_back({meshes.cornersOf(seen[index]), seen[index]});
        m_order.fronts.push_back(extentOf(m_triangles.back().corners).front);
    }
    m_order.draw(tile, frame, [&](std::uint32_t index) {
        drawOne(tile, frame, m_triangles[index].corners, m_triangles[index].number);
    });
}

} // namespace view
