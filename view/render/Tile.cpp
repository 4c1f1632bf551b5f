#include "Tile.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace view {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
/// After so many touched samples it pays to look how far away a block is now.
constexpr int touchesAnUpdate = 128;
constexpr std::uint64_t everyByte = 0x0101010101010101;

} // namespace

void Tile::begin(int left, int top, int width, int height) {
    m_left = left;
    m_top = top;
    const int tileWidth = std::min(tileSide, width - left);
    const int tileHeight = std::min(tileSide, height - top);
    m_isDepthOld = true;
    if (tileWidth != m_width || tileHeight != m_height) {
        m_width = tileWidth;
        m_height = tileHeight;
        emptyAll();
        return;
    }
    // The rest is as it was made empty.
    for (int row = 0; row < blocksASide; ++row)
        if (m_drawn[static_cast<std::size_t>(row)] != 0)
            emptyRows(row);
}

void Tile::beginInFrontOf(const Tile& other) {
    m_left = other.m_left;
    m_top = other.m_top;
    m_width = other.m_width;
    m_height = other.m_height;
    m_depth = other.m_depth;
    m_isDepthOld = other.m_isDepthOld;
    m_depths = other.m_depths;
    m_blockDepths = other.m_blockDepths;
    m_blockTouches = other.m_blockTouches;
    m_numbers.fill(noNumber);
    m_drawn = {};
}

void Tile::emptyAll() {
    m_blockTouches.fill(0);
    // Nothing is nearer than samples beyond the picture, so that they hide all.
    m_depths.fill(infinity);
    m_numbers.fill(noNumber);
    for (int row = 0; row < m_height; ++row)
        std::fill_n(depths(row), m_width, -infinity);
    for (std::size_t block = 0; block < m_blockDepths.size(); ++block)
        updateBlock(block);
    m_drawn = {};
}

void Tile::emptyRows(int blockRow) {
    unsigned columns = 0;
    for (int i = 0; i < blockSide; ++i) {
        const int row = blockRow * blockSide + i;
        const unsigned runs = runsOf(m_drawn, row);
        columns |= runs;
        eachRun(runs, [&](int from, int end) {
            int column = from;
            for (; column + 4 <= std::min(end, m_width); column += 4) {
                store(depths(row) + column, all(-infinity));
                store(numbers(row) + column, all(noNumber));
            }
            for (; column < std::min(end, m_width); ++column) {
                depths(row)[column] = -infinity;
                numbers(row)[column] = noNumber;
            }
        });
    }
    for (; columns != 0; columns &= columns - 1)
        m_blockDepths[static_cast<std::size_t>(blockRow * blocksASide +
                                               std::countr_zero(columns))] = -infinity;
    m_blockTouches[static_cast<std::size_t>(blockRow)] = 0;
    m_drawn[static_cast<std::size_t>(blockRow)] = 0;
}

bool Tile::hides(float front) {
    if (m_isDepthOld) {
        m_depth = *std::min_element(m_blockDepths.begin(), m_blockDepths.end());
        m_isDepthOld = false;
    }
    return m_depth > front;
}

void Tile::touch(const Range& range) {
    mark(range);
    // How many samples of a row are in each block.
    const int firstBlock = range.left / blockSide;
    const int lastBlock = range.right / blockSide;
    const std::uint64_t whole = ~std::uint64_t{0} << firstBlock * 8 &
                                ~std::uint64_t{0} >> (blocksASide - 1 - lastBlock) * 8;
    const std::uint64_t columns =
        (whole & everyByte * blockSide) -
        (static_cast<std::uint64_t>(range.left % blockSide) << firstBlock * 8) -
        (static_cast<std::uint64_t>(blockSide - 1 - range.right % blockSide) << lastBlock * 8);
    for (int y = range.top / blockSide; y <= range.bottom / blockSide; ++y) {
        const int rows = std::min(range.bottom, y * blockSide + blockSide - 1) -
                         std::max(range.top, y * blockSide) + 1;
        std::uint64_t& touches = m_blockTouches[static_cast<std::size_t>(y)];
        touches += columns * static_cast<unsigned>(rows);
        constexpr std::uint64_t highBits = everyByte << 7;
        // No byte is carried over: a block that has as many is updated at once.
        static_assert(touchesAnUpdate <= 128 && 128 + blockSide * blockSide <= 256);
        std::uint64_t many = (touches + everyByte * (128 - touchesAnUpdate)) & highBits;
        for (; many != 0; many &= many - 1)
            updateBlock(static_cast<std::size_t>(y * blocksASide + std::countr_zero(many) / 8));
    }
}

void Tile::touchPairs() {
    constexpr std::uint64_t evenBytes = 0x00FF00FF00FF00FF;
    for (std::uint64_t& drawn : m_drawn)
        drawn |= (drawn & evenBytes) << 8 | (drawn >> 8 & evenBytes);
}

void Tile::updateBlock(std::size_t block) {
    const int y = static_cast<int>(block) / blocksASide * blockSide;
    const int x = static_cast<int>(block) % blocksASide * blockSide;
    Floats least = all(infinity);
    for (int row = y; row < y + blockSide; ++row) {
        least = smaller(least, load(depths(row) + x));
        least = smaller(least, load(depths(row) + x + 4));
    }
    m_blockDepths[block] = std::min(std::min(least[0], least[1]), std::min(least[2], least[3]));
    m_blockTouches[block / blocksASide] &= ~(std::uint64_t{0xFF} << block % blocksASide * 8);
    m_isDepthOld = true;
}

} // namespace view
