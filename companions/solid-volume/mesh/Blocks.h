// A lattice in cubic blocks of 16 cells each way: which of its corners are inside of a solid, and
// the edges between a corner inside and one outside.
//
// The lattice is anchored in the origin, so that a surface does not depend on what else there is.
// Lengths within are in steps of the lattice.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace solid {

inline constexpr int blockSide = 16;
inline constexpr int blockCorners = blockSide + 1;
inline constexpr std::size_t blockRows = std::size_t{blockCorners} * blockCorners;

/// Where a block stands among the others: it begins at 16 times this corner of the lattice.
using BlockPlace = std::array<int, 3>;

/// A number for each place of a block, whose coordinates are between -2^20 and 2^20 - 1.
constexpr std::uint64_t packed(const BlockPlace& place) {
    std::uint64_t key = 0;
    for (const int coordinate : {place[2], place[1], place[0]})
        key = (key << 21) | static_cast<std::uint64_t>(coordinate + (1 << 20));
    return key;
}

/// The place of a block among others, sorted by packed(); their number if it is not there.
std::size_t findBlock(std::span<const BlockPlace> blocks, const BlockPlace& place);

/// Which of a block's own corners are inside, of each row along x a bit a corner. Those on its
/// upper faces are its neighbours'.
struct OwnSigns {
    std::array<std::uint16_t, std::size_t{blockSide} * blockSide> rows;

    std::uint16_t& row(int y, int z) { return rows[static_cast<std::size_t>(z * blockSide + y)]; }
    std::uint16_t row(int y, int z) const {
        return rows[static_cast<std::size_t>(z * blockSide + y)];
    }
};

/// Which corners of a block are inside, its neighbours' included: of each row along x a bit a
/// corner.
struct BlockSigns {
    std::array<std::uint32_t, blockRows> rows;

    static constexpr std::uint32_t whole = (1U << blockCorners) - 1;

    static std::size_t place(int y, int z) {
        return static_cast<std::size_t>(z * blockCorners + y);
    }
    std::uint32_t& row(int y, int z) { return rows[place(y, z)]; }
    std::uint32_t row(int y, int z) const { return rows[place(y, z)]; }
    /// Whether all corners are inside, or none.
    bool areAlike() const;
};

struct BlockEdge {
    std::array<std::uint8_t, 3> corner; ///< the lower one
    std::uint8_t axis;
    bool isLowInside; ///< whether the lower corner is inside, and not the upper one
};

/// The edges of one block that cross a surface.
///
/// An edge belongs to the block of its lower corner; those on the upper faces of a block are its
/// neighbours'.
class BlockEdges {
public:
    /// Takes the place of the edges of another block. Returns whether there are any, the
    /// neighbours' included.
    bool find(const BlockSigns& signs);

    /// The block's own, sorted by key.
    std::span<const BlockEdge> own() const { return {m_own.data(), m_owns}; }
    /// The neighbours', likewise; each corner has at least one coordinate of 16.
    std::span<const BlockEdge> foreign() const { return {m_foreign.data(), m_foreigns}; }

    static constexpr std::int16_t none = -0x7f80; ///< its bytes are alike
    /// The place of an edge in own(), or -1 - its place in foreign(); none, if it is in neither.
    std::int32_t at(std::size_t key) const { return m_at[key]; }
    std::int32_t at(int axis, int x, int y, int z) const { return at(key(axis, x, y, z)); }

    /// A number for each edge of a block.
    static std::size_t key(int axis, int x, int y, int z) {
        return static_cast<std::size_t>(
            ((axis * blockCorners + z) * blockCorners + y) * blockCorners + x);
    }
    static std::uint16_t key(const BlockEdge& edge) {
        return static_cast<std::uint16_t>(
            key(edge.axis, edge.corner[0], edge.corner[1], edge.corner[2]));
    }

private:
    static constexpr std::size_t mostOwn = std::size_t{3} * blockSide * blockSide * blockSide;
    // Along each axis, the rows in two of the upper faces.
    static constexpr std::size_t mostForeign = std::size_t{3} * blockSide * (2 * blockCorners - 1);

    std::size_t m_owns = 0;
    std::size_t m_foreigns = 0;
    std::array<BlockEdge, mostOwn> m_own;
    std::array<BlockEdge, mostForeign> m_foreign;
    std::array<std::int16_t, 3 * blockRows * blockCorners> m_at;
};

} // namespace solid
