#include "LatticeTopology.h"

#include "SurfaceChecks.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

namespace surface_checks {

namespace {

using Place = std::array<int, 3>;

/// The corners of all blocks in one box, with one more around them.
class Corners {
public:
    explicit Corners(const solid::Solid& solid) {
        Place last{};
        if (solid.blocks().empty())
            return;
        m_first = last = solid.blocks().front();
        for (const Place& block : solid.blocks())
            for (std::size_t axis = 0; axis != 3; ++axis) {
                m_first[axis] = std::min(m_first[axis], block[axis]);
                last[axis] = std::max(last[axis], block[axis]);
            }
        for (std::size_t axis = 0; axis != 3; ++axis)
            m_sides[axis] = (last[axis] - m_first[axis] + 1) * solid::blockSide + 2;
        m_inside.resize(static_cast<std::size_t>(m_sides[0]) *
                        static_cast<std::size_t>(m_sides[1]) *
                        static_cast<std::size_t>(m_sides[2]));
        for (std::size_t block = 0; block != solid.blocks().size(); ++block)
            take(solid, block);
    }

    const Place& sides() const { return m_sides; }
    std::size_t size() const { return m_inside.size(); }
    std::size_t at(int x, int y, int z) const {
        return (static_cast<std::size_t>(z) * static_cast<std::size_t>(m_sides[1]) +
                static_cast<std::size_t>(y)) *
                   static_cast<std::size_t>(m_sides[0]) +
               static_cast<std::size_t>(x);
    }
    bool isInside(std::size_t corner) const { return m_inside[corner] != 0; }

private:
    void take(const solid::Solid& solid, std::size_t block) {
        solid::OwnSigns signs{};
        solid.findInside(block, signs);
        Place start{};
        for (std::size_t axis = 0; axis != 3; ++axis)
            start[axis] = (solid.blocks()[block][axis] - m_first[axis]) * solid::blockSide + 1;
        for (int z = 0; z != solid::blockSide; ++z)
            for (int y = 0; y != solid::blockSide; ++y)
                for (int x = 0; x != solid::blockSide; ++x)
                    m_inside[at(start[0] + x, start[1] + y, start[2] + z)] =
                        static_cast<char>((signs.row(y, z) >> x) & 1U);
    }

    Place m_first{};
    Place m_sides{};
    std::vector<char> m_inside;
};

/// How many sets of corners hang together, of those inside and those outside.
long countSets(const Corners& corners) {
    std::vector<std::uint32_t> root(corners.size());
    std::iota(root.begin(), root.end(), 0U);
    const auto find = [&](std::size_t corner) {
        auto at = static_cast<std::uint32_t>(corner);
        while (root[at] != at)
            at = root[at] = root[root[at]];
        return at;
    };
    long sets = static_cast<long>(corners.size());
    const auto join = [&](std::size_t a, std::size_t b) {
        const std::uint32_t from = find(a);
        const std::uint32_t to = find(b);
        sets -= from != to ? 1 : 0;
        root[from] = to;
    };
    // The half of the neighbours along edges and across faces.
    constexpr std::array<Place, 9> neighbours = {{{1, 0, 0},
                                                  {0, 1, 0},
                                                  {0, 0, 1},
                                                  {1, 1, 0},
                                                  {1, -1, 0},
                                                  {1, 0, 1},
                                                  {1, 0, -1},
                                                  {0, 1, 1},
                                                  {0, 1, -1}}};
    const auto isIn = [&](const Place& place) {
        for (std::size_t axis = 0; axis != 3; ++axis)
            if (place[axis] < 0 || place[axis] >= corners.sides()[axis])
                return false;
        return true;
    };
    for (int z = 0; z != corners.sides()[2]; ++z)
        for (int y = 0; y != corners.sides()[1]; ++y)
            for (int x = 0; x != corners.sides()[0]; ++x) {
                const std::size_t own = corners.at(x, y, z);
                for (std::size_t i = 0; i != neighbours.size(); ++i) {
                    const Place other = {x + neighbours[i][0], y + neighbours[i][1],
                                         z + neighbours[i][2]};
                    if (!isIn(other) || (i >= 3 && corners.isInside(own)))
                        continue;
                    const std::size_t there = corners.at(other[0], other[1], other[2]);
                    if (corners.isInside(own) == corners.isInside(there))
                        join(own, there);
                }
            }
    return sets;
}

/// Which corners of a cell are inside, a bit each: x + 2 y + 4 z.
unsigned cellAt(const Corners& corners, int x, int y, int z) {
    unsigned inside = 0;
    for (unsigned i = 0; i != 8; ++i) {
        const std::size_t corner =
            corners.at(x + int(i & 1U), y + int((i >> 1) & 1U), z + int(i >> 2));
        inside |= (corners.isInside(corner) ? 1U : 0U) << i;
    }
    return inside;
}

/// Corners - edges + faces - cells that are all inside; in a cell whose outside is two opposite
/// corners, the solid fills the ring of the six others.
long eulerNumberInside(const Corners& corners) {
    long sum = 0;
    for (int z = 0; z + 1 < corners.sides()[2]; ++z)
        for (int y = 0; y + 1 < corners.sides()[1]; ++y)
            for (int x = 0; x + 1 < corners.sides()[0]; ++x) {
                const unsigned cell = cellAt(corners, x, y, z);
                const auto isAll = [cell](unsigned mask) {
                    return (cell & mask) == mask ? 1L : 0L;
                };
                sum += isAll(0x01) - isAll(0x03) - isAll(0x05) - isAll(0x11) + isAll(0x0f) +
                       isAll(0x33) + isAll(0x55) - isAll(0xff);
                const unsigned outside = ~cell & 0xffU;
                for (const unsigned diagonal : {0x81U, 0x42U, 0x24U, 0x18U})
                    sum += outside == diagonal ? 1 : 0;
            }
    return sum;
}

} // namespace

Topology topologyOf(const solid::Solid& solid) {
    const Corners corners(solid);
    if (corners.size() == 0)
        return {0, 0};
    // Each surface parts what is on its two sides, and nothing else does.
    return {countSets(corners) - 1, 2 * eulerNumberInside(corners)};
}

Topology topologyOf(const solid::Mesh& mesh) {
    return {componentsOf(mesh), eulerNumber(mesh)};
}

} // namespace surface_checks
