#include "Tile.h"

#include <algorithm>
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
    m_width = std::min(tileSide, width - left);
    m_height = std::min(tileSide, height - top);
    m_isEmpty = true;
    m_depths.fill(-infinity);
    m_numbers.fill(noNumber);
    // Nothing is nearer than samples beyond the picture, so that they hide all.
    for (int row = 0; row < tileSide; ++row)
        std::fill(depths(row) + (row < m_height ? m_width : 0), depths(row) + tileSide, infinity);
    m_blockTouches.fill(0);
    for (std::size_t block = 0; block < m_blockDepths.size(); ++block)
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
    m_isEmpty = false;
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
