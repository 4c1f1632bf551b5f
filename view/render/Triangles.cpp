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

} // namespace

bool SeenTriangles::find(Frame& frame, Workers& workers, bool areSeeThrough) {
    std::size_t parts = 0;
    for (std::size_t mesh = 0; mesh < frame.meshes.size(); ++mesh) {
        if (frame.meshes[mesh].look.isSeeThrough != areSeeThrough)
            continue;
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
            frame.meshes[i].look.isSeeThrough == areSeeThrough && frame.meshes[i].mesh->isClosed &&
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

Extents TriangleExtents::four(const std::array<std::size_t, 4>& indices) {
    std::array<std::array<Floats, 4>, 3> corners; // by number: those of the four triangles
    for (std::size_t i = 0; i < 4; ++i) {
        const std::array<Floats, 3> own = m_meshes.cornersOf((*m_seen)[indices[i]]);
        for (std::size_t j = 0; j < 3; ++j)
            corners[j][i] = own[j];
    }
    for (auto& [x, y, z, rest] : corners)
        transpose(x, y, z, rest);
    const auto leastOf = [&](std::size_t i) {
        return least(corners[0][i], corners[1][i], corners[2][i]);
    };
    const auto greatestOf = [&](std::size_t i) {
        return greatest(corners[0][i], corners[1][i], corners[2][i]);
    };
    return {leastOf(0), greatestOf(0), leastOf(1), greatestOf(1), greatestOf(2), leastOf(2)};
}

Extent TriangleExtents::operator()(std::size_t index) {
    const Extents e = four({index, index, index, index});
    return {e.left[0], e.right[0], e.top[0], e.bottom[0], e.front[0], e.back[0]};
}

void TrianglePainter::draw(Tile& tile, const Frame& frame, const SeenTriangles& seen,
                           const Bins& triangles, std::size_t tileIndex) {
    MeshFinder meshes(frame);
    m_triangles.clear();
    m_order.fronts.clear();
    const auto add = [&](std::uint32_t index) {
        m_triangles.push_back({meshes.cornersOf(seen[index]), seen[index]});
        const auto& [a, b, c] = m_triangles.back().corners;
        m_order.fronts.push_back(greatest(a, b, c)[2]);
    };
    for (const std::uint32_t index : triangles.large()) {
        add(index);
        if (tile.hides(m_order.fronts.back()) || frame.stop.stop_requested())
            break;
        constexpr std::array<std::uint32_t, 1> first = {0};
        FourTriangles(tile, m_triangles, first).draw(tile, frame, 0);
        m_triangles.clear();
        m_order.fronts.clear();
    }
    m_triangles.clear();
    m_order.fronts.clear();
    for (const std::uint32_t index : triangles.inTile(tileIndex))
        add(index);
    m_order.drawFours(tile, frame, [&](std::span<const std::uint32_t> indices) {
        const FourTriangles four(tile, m_triangles, indices);
        for (std::size_t lane = 0; lane < indices.size(); ++lane)
            four.draw(tile, frame, lane);
    });
}

} // namespace view
