#include "Blocks.h"

#include <algorithm>
#include <cstring>

namespace solid {

namespace {

// Of a row along x, the block's own corners, which are also the lower ones of edges along x.
constexpr std::uint32_t ownOfRow = BlockSigns::whole >> 1;

struct Row {
    int axis, y, z;
    std::uint32_t inside;
};

// Writes the edges of a row that cross the surface from edges[place] on, and their places into
// `at`, which is the row's. Returns the place behind them. All that it uses is its own, as what is
// written is bytes, which might be anything else's.
template <bool isForeign>
std::size_t write(std::uint32_t crossing, const Row row, std::int16_t* const at,
                  BlockEdge* const edges, std::size_t place) {
    for (; crossing != 0; crossing &= crossing - 1) {
        const int x = std::countr_zero(crossing);
        const auto signedPlace = static_cast<std::int16_t>(place);
        at[x] = static_cast<std::int16_t>(isForeign ? -1 - signedPlace : signedPlace);
        edges[place++] = {{static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(row.y),
                           static_cast<std::uint8_t>(row.z)},
                          static_cast<std::uint8_t>(row.axis),
                          ((row.inside >> x) & 1U) != 0};
    }
    return place;
}

} // namespace

std::size_t findBlock(std::span<const BlockPlace> blocks, const BlockPlace& place) {
    const auto found =
        std::lower_bound(blocks.begin(), blocks.end(), packed(place),
                         [](const BlockPlace& a, std::uint64_t b) { return packed(a) < b; });
    return found != blocks.end() && *found == place
               ? static_cast<std::size_t>(found - blocks.begin())
               : blocks.size();
}

bool BlockSigns::areAlike() const {
    const std::uint32_t first = rows[0];
    return (first == 0 || first == whole) &&
           std::all_of(rows.begin(), rows.end(),
                       [first](std::uint32_t row) { return row == first; });
}

bool BlockEdges::find(const BlockSigns& signs) {
    m_owns = 0;
    m_foreigns = 0;
    if (signs.areAlike())
        return false;
    static_assert(none == static_cast<std::int16_t>(0x8080));
    std::memset(m_at.data(), 0x80, sizeof m_at);
    const auto add = [&](std::uint32_t crossing, const Row& row) {
        if (crossing == 0)
            return;
        std::int16_t* const at = m_at.data() + key(row.axis, 0, row.y, row.z);
        const std::uint32_t ours = row.y != blockSide && row.z != blockSide ? ownOfRow : 0;
        m_owns = write<false>(crossing & ours, row, at, m_own.data(), m_owns);
        m_foreigns = write<true>(crossing & ~ours, row, at, m_foreign.data(), m_foreigns);
    };
    for (int z = 0; z != blockCorners; ++z)
        for (int y = 0; y != blockCorners; ++y) {
            const std::uint32_t row = signs.row(y, z);
            add((row ^ (row >> 1)) & ownOfRow, {0, y, z, row});
        }
    for (int z = 0; z != blockCorners; ++z)
        for (int y = 0; y != blockSide; ++y)
            add(signs.row(y, z) ^ signs.row(y + 1, z), {1, y, z, signs.row(y, z)});
    for (int z = 0; z != blockSide; ++z)
        for (int y = 0; y != blockCorners; ++y)
            add(signs.row(y, z) ^ signs.row(y, z + 1), {2, y, z, signs.row(y, z)});
    return true;
}

} // namespace solid
