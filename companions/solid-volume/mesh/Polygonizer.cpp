#include "Polygonizer.h"

#include "CubeTable.h"
#include "Lanes.h"
#include "Vectors.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>

namespace solid {

namespace {

// What of one block is not yet in the mesh.
struct Piece {
    struct Foreign {
        std::uint8_t neighbour; // that the edge belongs to
        std::uint16_t key;      // of the edge there
    };
    struct Named {
        std::uint16_t key;
        std::uint16_t vertex;
    };
    struct Open {
        std::uint32_t triangle;
        std::uint16_t foreign; // the edge on which the corner is
        std::uint8_t corner;
    };

    std::size_t firstVertex = 0; // in the whole mesh
    std::size_t firstTriangle = 0;
    bool isEmpty = true;
    std::vector<Foreign> foreign; // sorted by key for each neighbour
    std::vector<Named> named;     // vertices that neighbours may ask for, likewise
    std::vector<Open> open;       // corners of triangles that are neighbours' vertices
    double area = 0;              // Å²
};

// The blocks around that have own corners on a block's upper faces, and the block itself: of each,
// a bit an axis along which it stands one farther.
constexpr std::size_t neighbours = 8;

// The cubes of four rows of a block, from y on, that the surface passes; a bit each.
inline Ints cubesOf(const BlockSigns& signs, int y, int z) {
    const auto rowsAt = [&](int first, int layer) {
        Ints rows;
        std::memcpy(&rows, &signs.rows[BlockSigns::place(first, layer)], sizeof rows);
        return rows;
    };
    constexpr auto own = static_cast<std::int32_t>(BlockSigns::whole >> 1);
    const Ints a = rowsAt(y, z);
    const Ints b = rowsAt(y + 1, z);
    const Ints c = rowsAt(y, z + 1);
    const Ints d = rowsAt(y + 1, z + 1);
    const Ints some = a | b | c | d;
    const Ints every = a & b & c & d;
    return (some | (some >> 1)) & ~(every & (every >> 1)) & Ints{own, own, own, own};
}

// Calls visit(which corners are inside, x, y, z) for each cube of a block that the surface passes.
template <class Visit> void forCubes(const BlockSigns& signs, Visit&& visit) {
    for (int z = 0; z != blockSide; ++z)
        for (int four = 0; four != blockSide; four += lanes) {
            const Ints found = cubesOf(signs, four, z);
            if (bitsOf(found != 0) == 0)
                continue;
            for (int y = four; y != four + static_cast<int>(lanes); ++y) {
                auto cubes = static_cast<std::uint32_t>(found[y - four]);
                // Read once, as what is written meanwhile might be them.
                const std::uint32_t a = signs.row(y, z);
                const std::uint32_t b = signs.row(y + 1, z);
                const std::uint32_t c = signs.row(y, z + 1);
                const std::uint32_t d = signs.row(y + 1, z + 1);
                for (; cubes != 0; cubes &= cubes - 1) {
                    const int x = std::countr_zero(cubes);
                    const auto pair = [x](std::uint32_t row) { return (row >> x) & 3U; };
                    visit(pair(a) | (pair(b) << 2) | (pair(c) << 4) | (pair(d) << 6), x, y, z);
                }
            }
        }
}

struct Counts {
    std::size_t vertices;
    std::size_t triangles;
};

// Of a block's own. Each of its edges begins in the lowest corner of a cube, which the surface then
// passes.
Counts countsOf(const BlockSigns& signs) {
    // Of each case triangles, and 65536 times the edges from the lowest corner.
    static const std::array<std::uint32_t, 256> both = [] {
        std::array<std::uint32_t, 256> counts{};
        for (unsigned inside = 0; inside != counts.size(); ++inside) {
            const auto crosses = [&](unsigned corner) {
                return ((inside >> corner) ^ inside) & 1U;
            };
            counts[inside] =
                cubeTable()[inside].count + ((crosses(1) + crosses(2) + crosses(4)) << 16);
        }
        return counts;
    }();
    std::uint32_t sum = 0;
    forCubes(signs, [&](unsigned inside, int, int, int) { sum += both[inside]; });
    return {sum >> 16, sum & 0xffffU};
}

// The triangles of each case, their corners as what leads from the key of a cube's lowest corner to
// those of its edges.
struct KeyedCase {
    std::array<std::array<std::uint16_t, 3>, 5> triangles;
    std::uint16_t count;
};

// Counterclockwise among mirrored axes is the other way round.
std::array<KeyedCase, 256> keyedTable(bool isMirrored) {
    const std::array<std::size_t, 3> corners =
        isMirrored ? std::array<std::size_t, 3>{0, 2, 1} : std::array<std::size_t, 3>{0, 1, 2};
    std::array<KeyedCase, 256> table{};
    for (std::size_t i = 0; i != table.size(); ++i)
        for (const auto& triangle : cubeTable()[i].all()) {
            auto& made = table[i].triangles[table[i].count++];
            for (std::size_t k = 0; k != 3; ++k) {
                const CubeEdge edge = cubeEdge(triangle[k]);
                made[corners[k]] = static_cast<std::uint16_t>(
                    BlockEdges::key(edge.axis, edge.corner[0], edge.corner[1], edge.corner[2]));
            }
        }
    return table;
}

// Of a triangle that has a neighbour's vertex.
[[gnu::noinline]] void addOpen(std::int32_t a, std::int32_t b, std::int32_t c,
                               std::uint32_t triangle, Piece& piece) {
    std::uint8_t corner = 0;
    for (const std::int32_t at : {a, b, c}) {
        if (at < 0)
            piece.open.push_back({triangle, static_cast<std::uint16_t>(-1 - at), corner});
        ++corner;
    }
}

// Writes a block's triangles from `made` on.
[[gnu::noinline]] void addTriangles(const BlockSigns& signs, const BlockEdges& edges,
                                    bool isMirrored, Triangle* const made, Piece& piece) {
    static const std::array<std::array<KeyedCase, 256>, 2> tables = {keyedTable(false),
                                                                     keyedTable(true)};
    const KeyedCase* const table = tables[isMirrored ? 1 : 0].data();
    const auto first = static_cast<std::uint32_t>(piece.firstVertex);
    forCubes(signs, [&, next = made](unsigned inside, int x, int y, int z) mutable {
        const std::size_t lowest = BlockEdges::key(0, x, y, z);
        const KeyedCase& known = table[inside];
        for (std::size_t t = 0; t != known.count; ++t, ++next) {
            const auto& keys = known.triangles[t];
            const std::int32_t a = edges.at(lowest + keys[0]);
            const std::int32_t b = edges.at(lowest + keys[1]);
            const std::int32_t c = edges.at(lowest + keys[2]);
            if ((a | b | c) < 0)
                addOpen(a, b, c, static_cast<std::uint32_t>(next - made), piece);
            // What is open is put in later.
            *next = {first + static_cast<std::uint32_t>(a), first + static_cast<std::uint32_t>(b),
                     first + static_cast<std::uint32_t>(c)};
        }
    });
}

void nameEdges(const BlockEdges& edges, Piece& piece) {
    piece.foreign.reserve(edges.foreign().size());
    for (std::size_t i = 0; i != edges.own().size(); ++i) {
        const BlockEdge& edge = edges.own()[i];
        if (edge.corner[0] == 0 || edge.corner[1] == 0 || edge.corner[2] == 0)
            piece.named.push_back({BlockEdges::key(edge), static_cast<std::uint16_t>(i)});
    }
    for (BlockEdge edge : edges.foreign()) {
        unsigned neighbour = 0;
        for (std::size_t axis = 0; axis != 3; ++axis)
            if (edge.corner[axis] == blockSide) {
                neighbour |= 1U << axis;
                edge.corner[axis] = 0;
            }
        piece.foreign.push_back({static_cast<std::uint8_t>(neighbour), BlockEdges::key(edge)});
    }
}

// The cells between the corners.
class Cells {
public:
    explicit Cells(const CellSteps& steps) {
        for (std::size_t axis = 0; axis != 3; ++axis)
            m_steps[axis] = {steps[axis][0], steps[axis][1], steps[axis][2]};
        m_volume = dot(m_steps[0], cross(m_steps[1], m_steps[2]));
    }

    // Whether the axes are left-handed, so that triangles that are made for right-handed ones would
    // face inwards.
    bool isMirrored() const { return m_volume < 0; }

    // For which a block's crossings stand, by the normals there.
    double area(const BlockEdges& edges, const std::vector<Crossing>& crossings) const {
        double sum = 0;
        const BlockEdge* edge = edges.own().data();
        for (const Crossing& crossing : crossings) {
            const Vector normal = vectorOf(crossing.normal);
            const double a = dot(normal, m_steps[0]);
            const double b = dot(normal, m_steps[1]);
            const double c = dot(normal, m_steps[2]);
            const double squares = a * a + b * b + c * c;
            const double part = dot(normal, m_steps[(edge++)->axis]);
            if (squares > 0)
                sum += std::abs(part) / squares * crossing.share;
        }
        return sum * std::abs(m_volume);
    }

private:
    std::array<Vector, 3> m_steps;
    double m_volume;
};

// Makes the blocks into a mesh. It is known beforehand how many vertices and triangles come of
// each, so that they are written where they belong.
class Maker {
public:
    Maker(const Solid& solid, const ForEach& forEach)
        : m_solid(solid), m_blocks(solid.blocks()), m_cells(solid.steps()), m_own(m_blocks.size()),
          m_pieces(m_blocks.size()) {
        forEach(m_blocks.size(),
                [this](std::size_t block) { m_solid.findInside(block, m_own[block]); });
        forEach(m_blocks.size(), [this](std::size_t block) { count(block); });
        makeRoom();
        forEach(m_blocks.size(), [this](std::size_t block) { make(block); });
        forEach(m_blocks.size(), [this](std::size_t block) { close(block); });
        m_mesh.area = solid.knownArea();
        for (const Piece& piece : m_pieces)
            m_mesh.area += piece.area;
    }

    Mesh& mesh() { return m_mesh; }

private:
    // A block and its neighbours; the number of blocks for one that is not there.
    std::array<std::size_t, neighbours> around(std::size_t block) const {
        std::array<std::size_t, neighbours> found{};
        found[0] = block;
        for (std::size_t i = 1; i != neighbours; ++i) {
            BlockPlace place = m_blocks[block];
            for (std::size_t axis = 0; axis != 3; ++axis)
                place[axis] += static_cast<int>((i >> axis) & 1U);
            // Blocks follow one another along x.
            const std::size_t next = found[i - 1] + 1;
            if (i % 2 == 0 || found[i - 1] == m_blocks.size())
                found[i] = findBlock(m_blocks, place);
            else
                found[i] =
                    next != m_blocks.size() && m_blocks[next] == place ? next : m_blocks.size();
        }
        return found;
    }

    void findSigns(std::size_t block, BlockSigns& signs) const {
        const std::array<std::size_t, neighbours> near = around(block);
        for (std::size_t i = 0; i != neighbours; i += 2) {
            const OwnSigns* const low = own(near[i]);
            const OwnSigns* const high = own(near[i + 1]);
            const int beyondY = (i & 2U) != 0 ? 1 : 0;
            const int beyondZ = (i & 4U) != 0 ? 1 : 0;
            for (int z = 0; z != (beyondZ == 0 ? blockSide : 1); ++z)
                for (int y = 0; y != (beyondY == 0 ? blockSide : 1); ++y) {
                    const std::uint32_t lower = low ? low->row(y, z) : 0U;
                    const std::uint32_t upper = high ? high->row(y, z) & 1U : 0U;
                    signs.row(y + beyondY * blockSide, z + beyondZ * blockSide) =
                        lower | (upper << blockSide);
                }
        }
    }

    const OwnSigns* own(std::size_t block) const {
        return block != m_blocks.size() ? &m_own[block] : nullptr;
    }

    // The numbers stand where the first ones will.
    void count(std::size_t block) {
        BlockSigns signs;
        findSigns(block, signs);
        if (signs.areAlike())
            return;
        const Counts counts = countsOf(signs);
        m_pieces[block].firstVertex = counts.vertices;
        m_pieces[block].firstTriangle = counts.triangles;
        m_pieces[block].isEmpty = false;
    }

    void makeRoom() {
        std::size_t vertices = 0;
        std::size_t triangles = 0;
        for (Piece& piece : m_pieces) {
            vertices += std::exchange(piece.firstVertex, vertices);
            triangles += std::exchange(piece.firstTriangle, triangles);
        }
        if (vertices > std::numeric_limits<std::uint32_t>::max())
            throw std::length_error("a surface with more vertices than can be numbered");
        m_mesh.vertices.resize(vertices);
        m_mesh.normals.resize(vertices);
        if (m_solid.hasBalls())
            m_mesh.nearest.resize(vertices);
        m_mesh.triangles.resize(triangles);
    }

    void make(std::size_t block) {
        Piece& piece = m_pieces[block];
        if (piece.isEmpty)
            return;
        BlockSigns signs;
        findSigns(block, signs);
        const auto edges = std::make_unique_for_overwrite<BlockEdges>();
        edges->find(signs);
        std::vector<Crossing> crossings;
        m_solid.findCrossings(block, *edges, crossings);
        std::size_t vertex = piece.firstVertex;
        for (const Crossing& crossing : crossings) {
            m_mesh.vertices[vertex] = crossing.position;
            m_mesh.normals[vertex] = crossing.normal;
            ++vertex;
        }
        if (m_solid.hasBalls())
            std::transform(crossings.begin(), crossings.end(),
                           m_mesh.nearest.data() + piece.firstVertex,
                           [](const Crossing& crossing) { return crossing.ball; });
        piece.area = m_cells.area(*edges, crossings);
        addTriangles(signs, *edges, m_cells.isMirrored(),
                     m_mesh.triangles.data() + piece.firstTriangle, piece);
        nameEdges(*edges, piece);
    }

    // Puts the neighbours' vertices in.
    void close(std::size_t block) {
        const Piece& piece = m_pieces[block];
        if (piece.open.empty())
            return;
        const std::array<std::size_t, neighbours> near = around(block);
        std::array<std::size_t, neighbours> next{}; // the name to compare with
        std::vector<std::uint32_t> vertices;
        vertices.reserve(piece.foreign.size());
        for (const Piece::Foreign& foreign : piece.foreign) {
            const Piece& other = m_pieces[near[foreign.neighbour]];
            std::size_t& name = next[foreign.neighbour];
            while (other.named[name].key != foreign.key)
                ++name;
            vertices.push_back(
                static_cast<std::uint32_t>(other.firstVertex + other.named[name].vertex));
        }
        for (const Piece::Open& open : piece.open)
            m_mesh.triangles[piece.firstTriangle + open.triangle][open.corner] =
                vertices[open.foreign];
    }

    const Solid& m_solid;
    std::span<const BlockPlace> m_blocks;
    Cells m_cells;
    std::vector<OwnSigns> m_own;
    std::vector<Piece> m_pieces;
    Mesh m_mesh;
};

} // namespace

Mesh polygonize(const Solid& solid, const ForEach& forEach) {
    return std::move(Maker(solid, forEach).mesh());
}

} // namespace solid
