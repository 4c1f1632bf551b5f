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
    if (tileWidth != m_width || tileHeight != m_height)
        m_drawn = ~std::uint64_t{0};
    m_width = tileWidth;
    m_height = tileHeight;
    // The other blocks are as they were made empty.
    for (; m_drawn != 0; m_drawn &= m_drawn - 1)
        emptyBlock(static_cast<std::size_t>(std::countr_zero(m_drawn)));
    m_isDepthOld = true;
}

void Tile::emptyBlock(std::size_t block) {
    const int top = static_cast<int>(block) / blocksASide * blockSide;
    const int left = static_cast<int>(block) % blocksASide * blockSide;
    const int width = std::clamp(m_width - left, 0, blockSide);
    for (int row = top; row < top + blockSide; ++row) {
        // Nothing is nearer than samples beyond the picture, so that they hide all.
        float* const depth = depths(row) + left;
        std::fill_n(depth, blockSide, infinity);
        std::fill_n(depth, row < m_height ? width : 0, -infinity);
        std::fill_n(numbers(row) + left, blockSide, noNumber);
    }
    updateBlock(block);
}

bool Tile::hides(float front) {
    if (m_isDepthOld) {
        m_depth = *std::min_element(m_blockDepths.begin(), m_blockDepths.end());
        m_isDepthOld = false;
    }
    return m_depth > front;
}

void Tile::touch(const Range& range) {
    for (int y = range.top / blockSide; y <= range.bottom / blockSide; ++y) {
        const int rows = std::min(range.bottom, y * blockSide + blockSide - 1) -
                         std::max(range.top, y * blockSide) + 1;
        for (int x = range.left / blockSide; x <= range.right / blockSide; ++x) {
            const int columns = std::min(range.right, x * blockSide + blockSide - 1) -
                                std::max(range.left, x * blockSide) + 1;
            const auto block = static_cast<std::size_t>(y * blocksASide + x);
            m_drawn |= std::uint64_t{1} << block;
            m_blockTouches[block] += rows * columns;
            if (m_blockTouches[block] >= touchesAnUpdate)
                updateBlock(block);
        }
    }
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
