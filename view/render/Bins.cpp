#include "Bins.h"

#include <cmath>

namespace view {

namespace {

constexpr std::size_t thingsAPart = 1 << 15;
constexpr std::size_t mostParts = 32;

std::size_t tilesAlong(int samples) {
    return (static_cast<std::size_t>(samples) + tileSide - 1) / tileSide;
}

} // namespace

Bins::Limits::Limits(const Frame& frame, std::size_t tiles)
    : m_front(frame.front >= frame.back ? frame.front : nan), m_back(frame.back),
      m_width(static_cast<float>(frame.width)), m_height(static_cast<float>(frame.height)),
      m_lastColumn(static_cast<float>((frame.width - 1) / tileSide)),
      m_lastRow(static_cast<float>((frame.height - 1) / tileSide)), m_isNumbered(tiles <= several) {
}

void Bins::start(const Frame& frame, std::size_t count) {
    m_count = count;
    m_columns = tilesAlong(frame.width);
    m_tiles = m_columns * tilesAlong(frame.height);
    // The number of parts follows from that of things alone, as the order of the large ones may not
    // depend on the number of threads.
    m_parts.resize(std::min(mostParts, (count + thingsAPart - 1) / thingsAPart));
    for (Part& part : m_parts)
        part.large.clear();
    m_large.clear();
    m_tileOf.resize(count);
}

void Bins::mergeParts(Frame& frame) {
    std::vector<std::pair<float, std::uint32_t>> large;
    for (const Part& part : m_parts) {
        frame.nearZ = std::max(frame.nearZ, part.nearZ);
        frame.farZ = std::min(frame.farZ, part.farZ);
        large.insert(large.end(), part.large.begin(), part.large.end());
    }
    std::sort(large.begin(), large.end(), [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first > b.first : a.second < b.second;
    });
    for (const auto& [front, thing] : large)
        m_large.push_back(thing);
}

void Bins::placeEntries() {
    m_starts.resize(m_tiles + 1);
    std::size_t total = 0;
    for (std::size_t tile = 0; tile < m_tiles; ++tile) {
        m_starts[tile] = total;
        std::uint32_t inTile = 0;
        for (Part& part : m_parts)
            inTile += std::exchange(part.counts[tile], inTile);
        total += inTile;
    }
    m_starts[m_tiles] = total;
    m_entries.resize(total);
}

} // namespace view
