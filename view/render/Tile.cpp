#include "Tile.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace view {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
/// After so many touched samples it pays to look how far away a block is now.
constexpr int touchesAnUpdate = 96;

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

void Tile::emptyAll() {
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
    for (; columns != 0; columns &= columns - 1) {
        const auto block =
            static_cast<std::size_t>(blockRow * blocksASide + std::countr_zero(columns));
        m_blockDepths[block] = -infinity;
        m_blockTouches[block] = 0;
    }
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
    for (int y = range.top / blockSide; y <= range.bottom / blockSide; ++y) {
        const int rows = std::min(range.bottom, y * blockSide + blockSide - 1) -
                         std::max(range.top, y * blockSide) + 1;
        for (int x = range.left / blockSide; x <= range.right / blockSide; ++x) {
            const int columns = std::min(range.right, x * blockSide + blockSide - 1) -
                                std::max(range.left, x * blockSide) + 1;
            const auto block = static_cast<std::size_t>(y * blocksASide + x);
            m_blockTouches[block] += rows * columns;
            if (m_blockTouches[block] >= touchesAnUpdate)
                updateBlock(block);
        }
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
    m_blockTouches[block] = 0;
    m_isDepthOld = true;
}

} // namespace view
