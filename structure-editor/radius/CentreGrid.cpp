#include "CentreGrid.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace {

// With these limits the cells for real atoms are about as long as the radius, even when the centres
// are few and scattered. The grid takes 20 MB at most.
constexpr std::size_t cellsPerCentre = 512;
constexpr std::size_t fewCells = 4096;
constexpr std::size_t mostCells = std::size_t{1} << 22;
// With more centres in one cell the k-d tree is used.
constexpr std::uint32_t mostInCell = 64;

// Empty cells at both ends of each axis, so that no look-up checks bounds: a point in the inner one
// may still be near a centre, and the outer one is its neighbour.
constexpr double border = 2.0;

constexpr std::size_t laneCount = sizeof(Lanes) / sizeof(float);

Lanes lanesAt(const float* values) {
    Lanes lanes;
    std::memcpy(&lanes, values, sizeof lanes);
    return lanes;
}

} // namespace

std::optional<CentreGrid> CentreGrid::of(const std::vector<Point>& centres, const Reach& reach) {
    CentreGrid grid(centres, reach);
    if (!grid.fill(centres))
        return std::nullopt;
    grid.markSurroundings();
    return grid;
}

CentreGrid::CentreGrid(const std::vector<Point>& centres, const Reach& reach)
    : m_squaredLimit(reach.squaredLimit) {
    const auto [low, high] = boundsOf(centres);
    const auto most =
        static_cast<double>(std::min(centres.size() * cellsPerCentre + fewCells, mostCells));
    double total = 0.0;
    double length = reach.distance;
    for (bool fits = false; !fits; length *= fits ? 1.0 : 1.25) {
        total = 1.0;
        for (const std::size_t axis : {0, 1, 2}) {
            m_low[axis] = static_cast<double>(low[axis]);
            m_cells[axis] =
                std::floor((static_cast<double>(high[axis]) - m_low[axis]) / length) + 1.0;
            total *= m_cells[axis] + 2.0 * border;
        }
        fits = total <= most;
    }
    m_perLength = 1.0 / length;
    m_stride = {1, static_cast<Cell>(m_cells[0] + 2.0 * border), 0};
    m_stride[2] = m_stride[1] * static_cast<Cell>(m_cells[1] + 2.0 * border);
    m_first.assign(static_cast<std::size_t>(total) + 1, 0);
    std::size_t row = 0;
    for (const auto& [y, z] :
         {std::pair(0, 0), {1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1}, {1, -1}, {-1, 1}, {-1, -1}})
        m_rows[row++] = static_cast<Cell>(y) * m_stride[1] + static_cast<Cell>(z) * m_stride[2];
}

CentreGrid::Cell CentreGrid::cellOf(const Point& centre) const {
    Cell cell = 0;
    for (const std::size_t axis : {0, 1, 2})
        cell += m_stride[axis] *
                static_cast<Cell>((static_cast<double>(centre[axis]) - m_low[axis]) * m_perLength +
                                  border);
    return cell;
}

bool CentreGrid::fill(const std::vector<Point>& centres) {
    std::vector<Cell> cells;
    cells.reserve(centres.size());
    for (const Point& centre : centres) {
        cells.push_back(cellOf(centre));
        if (++m_first[cells.back()] > mostInCell)
            return false;
    }
    // Counting sort: prefix sums turn the counts into ends of cells, which are filled backwards.
    std::uint32_t sum = 0;
    for (std::uint32_t& first : m_first)
        first = sum += first;
    // Padding, because a test of four centres at once may read beyond the last.
    for (std::vector<float>& values : m_coordinates)
        values.resize(centres.size() + laneCount, std::numeric_limits<float>::infinity());
    for (std::size_t i = centres.size(); i-- > 0;) {
        const std::uint32_t place = --m_first[cells[i]];
        for (const std::size_t axis : {0, 1, 2})
            m_coordinates[axis][place] = centres[i][axis];
    }
    return true;
}

void CentreGrid::markSurroundings() {
    m_surrounded.assign(m_first.size(), 0);
    for (std::size_t cell = 0; cell + 1 < m_first.size(); ++cell)
        if (m_first[cell] != m_first[cell + 1])
            for (const Cell row : m_rows)
                std::memset(&m_surrounded[static_cast<Cell>(cell) + row - 1], 1, 3);
}

CentreGrid::Cell CentreGrid::cellAround(const Point& point) const {
    Cell cell = 0;
    for (const std::size_t axis : {0, 1, 2}) {
        const double place = (static_cast<double>(point[axis]) - m_low[axis]) * m_perLength;
        // False for NaN, too.
        const bool isInside = place >= -1.0 && place < m_cells[axis] + 1.0;
        cell += m_stride[axis] * static_cast<Cell>(isInside ? place + border : 0.0);
    }
    return cell;
}

bool CentreGrid::isNear(const Point& point, Cell cell) const {
    const auto passes = [this, &point](std::uint32_t i) {
        return areWithin(m_squaredLimit, point, lanesAt(&m_coordinates[0][i]),
                         lanesAt(&m_coordinates[1][i]), lanesAt(&m_coordinates[2][i]));
    };
    // The first four of each row at once, without a branch. Most rows hold no more; what follows a
    // shorter row are other centres, and testing them does no harm.
    LaneAnswers found{};
    bool isAll = true;
    for (const Cell row : m_rows) {
        const std::uint32_t first = m_first[cell + row - 1];
        found |= passes(first);
        isAll &= m_first[cell + row + 2] - first <= laneCount;
    }
    if (anyOf(found))
        return true;
    if (isAll)
        return false;
    for (const Cell row : m_rows) {
        const std::uint32_t end = m_first[cell + row + 2];
        for (std::uint32_t i = m_first[cell + row - 1] + laneCount; i < end; i += laneCount)
            if (anyOf(passes(i)))
                return true;
    }
    return false;
}

void CentreGrid::search(const std::vector<Point>& points, std::vector<std::uint8_t>& near) const {
    // First collects, without a branch, the points whose cells have a centre in or around them; in
    // batches, so that nothing is allocated.
    constexpr std::size_t part = 256;
    std::array<std::size_t, part> candidates{};
    std::array<Cell, part> cells{};
    for (std::size_t begin = 0; begin < points.size(); begin += part) {
        std::size_t count = 0;
        const std::size_t end = std::min(begin + part, points.size());
        for (std::size_t i = begin; i != end; ++i) {
            const Cell cell = cellAround(points[i]);
            candidates[count] = i;
            cells[count] = cell;
            count += m_surrounded[cell];
        }
        for (std::size_t k = 0; k != count; ++k)
            near[candidates[k]] = isNear(points[candidates[k]], cells[k]) ? 1 : 0;
    }
}
