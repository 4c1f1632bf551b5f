// Which things may be seen in which tile of a picture.
#pragma once

#include "Frame.h"
#include "Lanes.h"
#include "Workers.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace view {

/// Samples a side of a tile.
inline constexpr int tileSide = 64;

/// Where a thing is on the screen, in samples. With NaN in it, the thing is nowhere.
struct Extent {
    float left;
    float right;
    float top;
    float bottom;
    float front; ///< the greatest z
    float back;  ///< the least z
};

/// Four of them.
struct Extents {
    Floats left, right, top, bottom, front, back;
};

inline constexpr float nan = std::numeric_limits<float>::quiet_NaN();
inline constexpr Extent nowhere = {nan, nan, nan, nan, nan, nan};

/// Things of one kind by the tiles that they touch.
class Bins {
public:
    /// Sorts `count` things, of which extent(index) says where they are, and widens the frame's
    /// depth range by them. What no sample of the picture can show is left out. If there is an
    /// extent.four(indices), it says it of four at once. Returns false after a stop request.
    template <class ExtentOf>
    bool fill(Frame& frame, std::size_t count, const ExtentOf& extent, Workers& workers);

    /// The things of a tile, in ascending order; without the large ones.
    std::span<const std::uint32_t> inTile(std::size_t tile) const {
        return {m_entries.data() + m_starts[tile], m_starts[tile + 1] - m_starts[tile]};
    }
    /// The number of tiles in the picture.
    std::size_t tiles() const { return m_tiles; }
    /// Things that touch many tiles, front to back.
    std::span<const std::uint32_t> large() const { return m_large; }

private:
    struct Part {
        std::vector<std::uint32_t> counts; ///< by tile: the number, then the place of the next
        std::vector<std::pair<float, std::uint32_t>> large; ///< with their front
        float nearZ = -std::numeric_limits<float>::infinity();
        float farZ = std::numeric_limits<float>::infinity();
    };
    struct TileRange {
        int left, right, top, bottom;
        bool isLarge() const { return (right - left + 1) * (bottom - top + 1) > 16; }
    };
    /// Instead of the only tile of a thing: that it touches several, or none.
    static constexpr std::uint16_t several = 0xFFFE;
    static constexpr std::uint16_t none = 0xFFFF;

    /// What a picture shows.
    class Limits {
    public:
        explicit Limits(const Frame& frame, std::size_t tiles);
        Ints isBetweenPlanes(const Extents& extents) const {
            return (extents.front >= all(m_back)) & (extents.back <= all(m_front));
        }
        /// The only tile of each of four things between the planes, or one of the above.
        Ints tilesOf(const Extents& extents) const;
        TileRange tileRange(const Extent& extent) const {
            return {tileOf(extent.left, m_lastColumn), tileOf(extent.right, m_lastColumn),
                    tileOf(extent.top, m_lastRow), tileOf(extent.bottom, m_lastRow)};
        }

    private:
        /// The tile of a coordinate, at most `last`; 0 for what is left of the picture.
        static int tileOf(float coordinate, float last) {
            const float tile = std::max(0.0F, coordinate * (1.0F / tileSide));
            return static_cast<int>(std::min(tile, last));
        }
        static Ints tileOf(Floats coordinates, float last) {
            return toInts(
                smaller(larger(coordinates * all(1.0F / tileSide), all(0.0F)), all(last)));
        }

        float m_front; ///< NaN when nothing lies between the planes
        float m_back;
        float m_width;
        float m_height;
        float m_lastColumn; ///< of tiles
        float m_lastRow;    ///< likewise
        bool m_isNumbered;  ///< whether there are no more tiles than numbers
    };

    /// Where four things are. They are numbered from `first` on, but none is from `end` on: the
    /// last one stands for those.
    template <class ExtentOf>
    static Extents extentsOf(ExtentOf& extent, std::size_t first, std::size_t end) {
        const std::array<std::size_t, 4> i = {first, std::min(first + 1, end - 1),
                                              std::min(first + 2, end - 1),
                                              std::min(first + 3, end - 1)};
        if constexpr (requires { extent.four(i); }) {
            return extent.four(i);
        } else {
            const std::array<Extent, 4> e = {extent(i[0]), extent(i[1]), extent(i[2]),
                                             extent(i[3])};
            const auto four = [&e](float Extent::*side) {
                return Floats{e[0].*side, e[1].*side, e[2].*side, e[3].*side};
            };
            return {four(&Extent::left),   four(&Extent::right), four(&Extent::top),
                    four(&Extent::bottom), four(&Extent::front), four(&Extent::back)};
        }
    }
    std::size_t firstOf(std::size_t part) const { return m_count * part / m_parts.size(); }
    template <class ExtentOf> void countPart(const Frame& frame, ExtentOf extent, std::size_t part);
    template <class ExtentOf> void fillPart(const Frame& frame, ExtentOf extent, std::size_t part);
    template <class Use> void eachTile(const TileRange& range, const Use& use) const {
        for (int row = range.top; row <= range.bottom; ++row)
            for (int column = range.left; column <= range.right; ++column)
                use(static_cast<std::size_t>(row) * m_columns + static_cast<std::size_t>(column));
    }
    void start(const Frame& frame, std::size_t count);
    /// Turns the numbers of things into places in `m_entries`.
    void placeEntries();
    void mergeParts(Frame& frame);

    std::size_t m_count = 0;
    std::size_t m_columns = 0;
    std::size_t m_tiles = 0;
    std::vector<Part> m_parts;
    std::vector<std::size_t> m_starts;
    std::vector<std::uint32_t> m_entries;
    std::vector<std::uint32_t> m_large;
    std::vector<std::uint16_t> m_tileOf; ///< by thing: its only tile, or one of the above
};

inline Ints Bins::Limits::tilesOf(const Extents& extents) const {
    const Ints isOnScreen = (extents.right >= all(0.0F)) & (extents.left <= all(m_width)) &
                            (extents.bottom >= all(0.0F)) & (extents.top <= all(m_height));
    const Ints left = tileOf(extents.left, m_lastColumn);
    const Ints top = tileOf(extents.top, m_lastRow);
    const Ints isInOne = (left == tileOf(extents.right, m_lastColumn)) &
                         (top == tileOf(extents.bottom, m_lastRow)) & all(m_isNumbered ? -1 : 0);
    const Ints tile = top * all(static_cast<std::int32_t>(m_lastColumn) + 1) + left;
    return select(isOnScreen, select(isInOne, tile, all(std::int32_t{several})),
                  all(std::int32_t{none}));
}

template <class ExtentOf>
bool Bins::fill(Frame& frame, std::size_t count, const ExtentOf& extent, Workers& workers) {
    start(frame, count);
    if (!workers.run(
            m_parts.size(), [&](std::size_t part, std::size_t) { countPart(frame, extent, part); },
            frame.stop))
        return false;
    mergeParts(frame);
    placeEntries();
    return workers.run(
        m_parts.size(), [&](std::size_t part, std::size_t) { fillPart(frame, extent, part); },
        frame.stop);
}

// `extent` is a copy, as it may remember something of the last thing.
template <class ExtentOf>
void Bins::countPart(const Frame& frame, ExtentOf extent, std::size_t index) {
    Part& part = m_parts[index];
    part.counts.assign(m_tiles, 0);
    const Limits limits(frame, m_tiles);
    std::uint32_t* const counts = part.counts.data();
    Floats nearZ = all(-std::numeric_limits<float>::infinity());
    Floats farZ = all(std::numeric_limits<float>::infinity());
    const std::size_t end = firstOf(index + 1);
    for (std::size_t i = firstOf(index); i < end; i += 4) {
        const Extents at = extentsOf(extent, i, end);
        const Ints isThere = limits.isBetweenPlanes(at);
        nearZ = larger(select(isThere, at.front, nearZ), nearZ);
        farZ = smaller(select(isThere, at.back, farZ), farZ);
        const Ints tiles = select(isThere, limits.tilesOf(at), all(std::int32_t{none}));
        for (std::size_t lane = 0; lane < std::min<std::size_t>(end - i, 4); ++lane) {
            const auto tile = static_cast<std::uint16_t>(tiles[lane]);
            m_tileOf[i + lane] = tile;
            if (tile < several) {
                ++counts[tile];
            } else if (tile == several) {
                const TileRange range = limits.tileRange(extent(i + lane));
                if (range.isLarge())
                    part.large.emplace_back(at.front[lane], static_cast<std::uint32_t>(i + lane));
                else
                    eachTile(range, [&](std::size_t t) { ++counts[t]; });
            }
        }
    }
    part.nearZ = std::max({nearZ[0], nearZ[1], nearZ[2], nearZ[3]});
    part.farZ = std::min({farZ[0], farZ[1], farZ[2], farZ[3]});
}

template <class ExtentOf>
void Bins::fillPart(const Frame& frame, ExtentOf extent, std::size_t index) {
    const Limits limits(frame, m_tiles);
    std::uint32_t* const counts = m_parts[index].counts.data();
    const auto put = [&](std::size_t tile, std::size_t thing) {
        m_entries[m_starts[tile] + counts[tile]++] = static_cast<std::uint32_t>(thing);
    };
    const std::size_t end = firstOf(index + 1);
    for (std::size_t i = firstOf(index); i < end; ++i) {
        const std::uint16_t tile = m_tileOf[i];
        if (tile < several) {
            put(tile, i);
        } else if (tile == several) {
            const TileRange range = limits.tileRange(extent(i));
            if (!range.isLarge())
                eachTile(range, [&](std::size_t t) { put(t, i); });
        }
    }
}

} // namespace view
