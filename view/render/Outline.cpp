#include "Outline.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace view {

namespace {

/// Å. Two atoms of a residue are drawn over each other without a line, a loop over a strand is not.
constexpr float jump = 3;

class Outliner {
public:
    /// Of things by their ids and depths, pixel by pixel, but for those of the ids `others` at the
    /// same place, if these are given.
    Outliner(QImage& image, const std::vector<Id>& ids, const std::vector<float>& depths,
             const std::vector<Id>& others, const std::vector<bool>& isSelected, Colour colour,
             int width)
        : m_depths(depths), m_columns(image.width()), m_rows(image.height()), m_reach(width - 1),
          m_colour(colour | 0xFF000000U), m_pixels(reinterpret_cast<std::uint32_t*>(image.bits())),
          m_stride(static_cast<std::size_t>(image.bytesPerLine()) / 4) {
        m_mask.resize(ids.size());
        // Neighbours mostly show the same thing.
        Id last = noId;
        bool isLast = false;
        for (std::size_t i = 0; i < m_mask.size(); ++i) {
            const Id id = ids[i];
            if (id != last) {
                last = id;
                isLast = id != noId && id < isSelected.size() && isSelected[id];
            }
            m_mask[i] = isLast && (others.empty() || others[i] != id);
        }
    }

    void draw() {
        for (int y = 0; y < m_rows; ++y)
            for (int x = 0; x < m_columns; ++x)
                if (m_mask[at(x, y)] && isBorder(x, y))
                    paint(x, y);
    }

private:
    std::size_t at(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_columns) +
               static_cast<std::size_t>(x);
    }
    bool isBehind(std::size_t pixel, float depth) const { return m_depths[pixel] < depth - jump; }
    bool isBorder(int x, int y) const {
        const float depth = m_depths[at(x, y)];
        const auto ends = [&](std::size_t pixel) {
            return !m_mask[pixel] || isBehind(pixel, depth);
        };
        return (x > 0 && ends(at(x - 1, y))) || (x + 1 < m_columns && ends(at(x + 1, y))) ||
               (y > 0 && ends(at(x, y - 1))) || (y + 1 < m_rows && ends(at(x, y + 1)));
    }
    /// Colours a border's pixel and what is selected around it, but for what lies behind.
    void paint(int x, int y) {
        const float depth = m_depths[at(x, y)];
        for (int row = std::max(0, y - m_reach); row <= std::min(m_rows - 1, y + m_reach); ++row) {
            for (int column = std::max(0, x - m_reach);
                 column <= std::min(m_columns - 1, x + m_reach); ++column) {
                const int dx = column - x;
                const int dy = row - y;
                if (m_mask[at(column, row)] && dx * dx + dy * dy <= m_reach * m_reach &&
                    !isBehind(at(column, row), depth))
                    m_pixels[static_cast<std::size_t>(row) * m_stride +
                             static_cast<std::size_t>(column)] = m_colour;
            }
        }
    }

    const std::vector<float>& m_depths;
    int m_columns;
    int m_rows;
    int m_reach;
    Colour m_colour;
    std::uint32_t* m_pixels;
    std::size_t m_stride;
    std::vector<std::uint8_t> m_mask; ///< by pixel: whether it shows something selected
};

} // namespace

void outline(QImage& image, const Picture& picture, const std::vector<bool>& isSelected,
             Colour colour, int width) {
    if (picture.ids.empty() || width < 1)
        return;
    const int pixels = std::min(width, 64);
    Outliner(image, picture.ids, picture.depths, picture.seeThroughIds, isSelected, colour, pixels)
        .draw();
    if (!picture.seeThroughIds.empty())
        Outliner(image, picture.seeThroughIds, picture.seeThroughDepths, {}, isSelected, colour,
                 pixels)
            .draw();
}

} // namespace view
