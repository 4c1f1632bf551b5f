// Which things may be seen in which tile of a picture.
#pragma once

#include "Frame.h"
#include "Workers.h"

#include <algorithm>
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

inline constexpr float nan = std::numeric_limits<float>::quiet_NaN();
inline constexpr Extent nowhere = {nan, nan, nan, nan, nan, nan};

/// Things of one kind by the tiles that they touch.
class Bins {
public:
    /// Sorts `count` things, of which extent(index) says where they are, and widens the frame's
    /// depth range by them. What no sample of the picture can show is left out. Returns false after
    /// a stop request.
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

    static bool isBetweenPlanes(const Frame& frame, const Extent& extent) {
        return frame.front >= frame.back && extent.front >= frame.back &&
               extent.back <= frame.front;
    }
    static bool isOnScreen(const Frame& frame, const Extent& extent) {
        return extent.right >= 0 && extent.left <= static_cast<float>(frame.width) &&
               extent.bottom >= 0 && extent.top <= static_cast<float>(frame.height);
    }
    /// The tile of a coordinate, at most `last`; 0 for what is left of the picture.
    static int tileOf(float coordinate, int last) {
        const float tile = coordinate * (1.0F / tileSide);
        if (!(tile > 0))
            return 0;
        return tile < static_cast<float>(last) ? static_cast<int>(tile) : last;
    }
    static TileRange tilesAt(const Frame& frame, const Extent& extent) {
        const int lastColumn = (frame.width - 1) / tileSide;
        const int lastRow = (frame.height - 1) / tileSide;
        return {tileOf(extent.left, lastColumn), tileOf(extent.right, lastColumn),
                tileOf(extent.top, lastRow), tileOf(extent.bottom, lastRow)};
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
};

template <class ExtentOf>
bool Bins::fill(Frame& frame, std::size_t count, const ExtentOf& extent, Workers& workers) {
    start(frame, count);
    // Calls use(thing, extent, tiles) for the things of a part that may be seen.
    const auto walk = [&](std::size_t part, const auto& meet, const auto& use) {
        ExtentOf extentHere = extent; // which may remember something of the last one
        const std::size_t end = m_count * (part + 1) / m_parts.size();
        for (std::size_t i = m_count * part / m_parts.size(); i < end; ++i) {
            const Extent at = extentHere(i);
            if (!isBetweenPlanes(frame, at))
                continue;
            meet(at);
            if (isOnScreen(frame, at))
                use(static_cast<std::uint32_t>(i), at, tilesAt(frame, at));
        }
    };
    const auto eachTile = [this](const TileRange& range, const auto& use) {
        for (int row = range.top; row <= range.bottom; ++row)
            for (int column = range.left; column <= range.right; ++column)
                use(static_cast<std::size_t>(row) * m_columns + static_cast<std::size_t>(column));
    };
    const auto countPart = [&](std::size_t index, std::size_t) {
        Part& part = m_parts[index];
        part.counts.assign(m_tiles, 0);
        float nearZ = -std::numeric_limits<float>::infinity();
        float farZ = std::numeric_limits<float>::infinity();
        walk(
            index,
            [&](const Extent& at) {
                nearZ = std::max(nearZ, at.front);
                farZ = std::min(farZ, at.back);
            },
            [&](std::uint32_t thing, const Extent& at, const TileRange& range) {
                if (range.isLarge())
                    part.large.emplace_back(at.front, thing);
                else
                    eachTile(range, [&](std::size_t tile) { ++part.counts[tile]; });
            });
        part.nearZ = nearZ;
        part.farZ = farZ;
    };
    const auto fillPart = [&](std::size_t index, std::size_t) {
        Part& part = m_parts[index];
        walk(
            index, [](const Extent&) {},
            [&](std::uint32_t thing, const Extent&, const TileRange& range) {
                if (!range.isLarge())
                    eachTile(range, [&](std::size_t tile) {
                        m_entries[m_starts[tile] + part.counts[tile]++] = thing;
                    });
            });
    };
    if (!workers.run(m_parts.size(), countPart, frame.stop))
        return false;
    mergeParts(frame);
    placeEntries();
    return workers.run(m_parts.size(), fillPart, frame.stop);
}

} // namespace view
