// A square part of the picture while it is drawn: for each sample, how near the nearest thing is
// that was drawn so far, and which it is.
#pragma once

#include "Bins.h"
#include "Lanes.h"
#include "Picture.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <tuple>

namespace view {

class Tile {
public:
    static constexpr int blockSide = 8;
    static constexpr int blocksASide = tileSide / blockSide;

    /// Where something was drawn: by row of blocks a byte for each row of samples, the uppermost in
    /// the lowest byte, and in it a bit for each run of blockSide samples, the leftmost in the
    /// lowest bit.
    using Runs = DrawnRuns;
    static_assert(blocksASide == 8 && blockSide == 8 && std::tuple_size_v<Runs> == blocksASide);
    static constexpr Runs allRuns = [] {
        Runs runs;
        runs.fill(~std::uint64_t{0});
        return runs;
    }();
    /// The bits of a row.
    static unsigned runsOf(const Runs& runs, int row) {
        return runs[static_cast<std::size_t>(row / blockSide)] >> (row % blockSide * 8) & 0xFFU;
    }
    /// Calls use(from, end) for the samples of a row that have bits, as few times as can be.
    template <class Use> static void eachRun(unsigned bits, const Use& use) {
        while (bits != 0) {
            const int first = std::countr_zero(bits);
            const int last = first + std::countr_one(bits >> first);
            use(first * blockSide, last * blockSide);
            bits &= ~0U << last;
        }
    }

    /// Empties the tile and moves it: `left` and `top` are the first sample's place in a picture of
    /// width x height samples. Nothing is ever drawn beyond the picture.
    void begin(int left, int top, int width, int height);

    int left() const { return m_left; }
    int top() const { return m_top; }
    /// Empties the tile for what is seen through, at the place of another one: whatever is drawn
    /// now is hidden by what the other one shows.
    void beginInFrontOf(const Tile& other);

    /// Samples that belong to the picture.
    int width() const { return m_width; }
    int height() const { return m_height; }

    /// Row by row, tileSide a row.
    float* depths(int row) { return m_depths.data() + row * tileSide; }
    const float* depths(int row) const { return m_depths.data() + row * tileSide; }
    Number* numbers(int row) { return m_numbers.data() + row * tileSide; }
    const Number* numbers(int row) const { return m_numbers.data() + row * tileSide; }

    /// Puts a thing into four samples, in those lanes where `mask` says so and it is the nearest.
    void put(int row, int column, Ints mask, Floats depth, Ints number) {
        float* const depths = m_depths.data() + row * tileSide + column;
        Number* const numbers = m_numbers.data() + row * tileSide + column;
        const Floats depthThere = load(depths);
        const Ints numberThere = load(numbers);
        mask &= (depth > depthThere) | ((depth == depthThere) & (number < numberThere));
        store(depths, select(mask, depth, depthThere));
        store(numbers, select(mask, number, numberThere));
    }
    void put(int row, int column, float depth, Number number) {
        const auto at = static_cast<std::size_t>(row * tileSide + column);
        if (depth > m_depths[at] || (depth == m_depths[at] && number < m_numbers[at])) {
            m_depths[at] = depth;
            m_numbers[at] = number;
        }
    }

    /// Samples in the tile that a thing may touch.
    struct Range {
        int left, right, top, bottom; ///< the last ones included
        bool isEmpty() const { return left > right || top > bottom; }
    };
    /// The samples whose centres lie in an extent, and perhaps a few more around it.
    Range range(const Extent& extent) const {
        const float y = static_cast<float>(m_top) + 0.5F;
        const Columns columns = this->columns(extent.left, extent.right);
        return {columns.first, columns.last, sampleFrom(extent.top - y),
                sampleOf(extent.bottom - y, -1, m_height - 1)};
    }
    /// Four of them, each as range() says it of an extent.
    struct Ranges {
        Ints left, right, top, bottom;
    };
    Ranges ranges(Floats left, Floats right, Floats top, Floats bottom) const {
        const Floats x = all(static_cast<float>(m_left) + 0.5F);
        const Floats y = all(static_cast<float>(m_top) + 0.5F);
        return {samplesFrom(left - x), samplesOf(right - x, -1, m_width - 1), samplesFrom(top - y),
                samplesOf(bottom - y, -1, m_height - 1)};
    }
    struct Columns {
        int first, last;
    };
    /// Likewise, in each row.
    Columns columns(float left, float right) const {
        const float x = static_cast<float>(m_left) + 0.5F;
        return {sampleFrom(left - x), sampleOf(right - x, -1, m_width - 1)};
    }

    /// Whether nothing at or behind `front` can be seen in the range.
    bool hides(const Range& range, float front) const {
        const unsigned columns = blockColumns(range);
        for (int y = range.top / blockSide; y <= range.bottom / blockSide; ++y) {
            const float* const depths = m_blockDepths.data() + y * blocksASide;
            const unsigned hidden = bits(load(depths) > all(front)) |
                                    bits(load(depths + blocksASide / 2) > all(front)) << 4;
            if ((columns & ~hidden) != 0)
                return false;
        }
        return true;
    }
    /// Whether nothing at or behind `front` can be seen in the whole tile.
    bool hides(float front);

    /// Says that something was drawn in the range, which hides() learns now or later.
    void touch(const Range& range);
    /// Likewise, where hides() need not learn it.
    void mark(const Range& range) {
        constexpr std::uint64_t everyByte = 0x0101010101010101;
        // The runs of a row, in each byte.
        const std::uint64_t runs = everyByte * blockColumns(range);
        for (int y = range.top / blockSide; y <= range.bottom / blockSide; ++y) {
            const int first = std::max(range.top - y * blockSide, 0);
            const int last = std::min(range.bottom - y * blockSide, blockSide - 1);
            m_drawn[static_cast<std::size_t>(y)] |=
                runs & (~std::uint64_t{0} << (first * 8)) & (~std::uint64_t{0} >> ((7 - last) * 8));
        }
    }
    /// Likewise of 4 x 4 samples, which lie in the tile and in the picture.
    void markFourRows(int left, int top) {
        const std::uint64_t runs = (1U << left / blockSide) | (1U << (left + 3) / blockSide);
        const std::uint64_t rows = runs * 0x01010101U;
        const int first = top % blockSide * 8;
        std::uint64_t* const drawn = m_drawn.data() + top / blockSide;
        drawn[0] |= rows << first;
        if (first > 32)
            drawn[1] |= rows >> (64 - first);
    }
    /// Says that the rows above and below, in pairs from the first row on, are to be taken for
    /// drawn where one of them is: they make up pixels.
    void touchPairs();
    /// Likewise, where something was drawn into another tile at the same place.
    void mark(const Runs& runs) {
        for (std::size_t i = 0; i < runs.size(); ++i)
            m_drawn[i] |= runs[i];
    }
    /// Where something was drawn, and perhaps a little more.
    const Runs& drawnRuns() const { return m_drawn; }
    /// Whether nothing was drawn.
    bool isEmpty() const { return m_drawn == Runs(); }

private:
    /// The sample of a coordinate relative to the tile, between `first` and `last`.
    static int sampleOf(float coordinate, int first, int last) {
        if (!(coordinate > static_cast<float>(first)))
            return first;
        return coordinate < static_cast<float>(last) ? static_cast<int>(coordinate) : last;
    }
    /// The first sample that is not before a coordinate.
    static int sampleFrom(float coordinate) {
        const int sample = sampleOf(coordinate, 0, tileSide);
        return sample + (static_cast<float>(sample) < coordinate ? 1 : 0);
    }
    static Ints samplesOf(Floats coordinates, int first, int last) {
        return toInts(smaller(larger(coordinates, all(static_cast<float>(first))),
                              all(static_cast<float>(last))));
    }
    static Ints samplesFrom(Floats coordinates) {
        const Floats inTile =
            smaller(larger(coordinates, all(0.0F)), all(static_cast<float>(tileSide)));
        const Ints samples = toInts(inTile);
        return samples - (toFloats(samples) < inTile);
    }
    /// A bit for each column of blocks that a range touches.
    static unsigned blockColumns(const Range& range) {
        return (2U << range.right / blockSide) - (1U << range.left / blockSide);
    }
    void updateBlock(std::size_t block);
    void emptyAll();
    void emptyRows(int blockRow);

    Runs m_drawn;
    int m_left = 0;
    int m_top = 0;
    int m_width = 0; ///< 0 before the first use
    int m_height = 0;
    float m_depth = 0; ///< of the farthest sample, or less
    bool m_isDepthOld = false;
    alignas(16) std::array<float, tileSide * tileSide> m_depths;
    alignas(16) std::array<Number, tileSide * tileSide> m_numbers;
    /// Of each block's farthest sample, or less.
    alignas(16) std::array<float, blocksASide * blocksASide> m_blockDepths;
    /// By row of blocks a byte for each, the leftmost lowest: how many samples may have been drawn
    /// over since.
    std::array<std::uint64_t, blocksASide> m_blockTouches;
};

} // namespace view
