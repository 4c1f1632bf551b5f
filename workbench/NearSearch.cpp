#include "NearSearch.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>

namespace workbench {

namespace {

using Point = std::array<float, 3>;
using Cell = std::array<std::int64_t, 3>;

bool isFinite(const Point& point) {
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

/// A cell as a number. Cells far from the origin may share one, which only costs comparisons.
std::uint64_t numberOf(const Cell& cell) {
    constexpr std::uint64_t mask = (1U << 21) - 1;
    return (static_cast<std::uint64_t>(cell[0]) & mask) << 42 |
           (static_cast<std::uint64_t>(cell[1]) & mask) << 21 |
           (static_cast<std::uint64_t>(cell[2]) & mask);
}

/// A hash table from numbers of cells to small numbers.
class CellTable {
public:
    static constexpr std::uint32_t none = ~std::uint32_t{0};

    /// The value of a cell, which is `value` if it had none.
    std::uint32_t add(std::uint64_t cell, std::uint32_t value) {
        Slot& slot = m_slots[slotOf(cell)];
        if (slot.value != none)
            return slot.value;
        slot = {cell, value};
        if (2 * ++m_count > m_slots.size())
            grow();
        return value;
    }
    std::uint32_t find(std::uint64_t cell) const { return m_slots[slotOf(cell)].value; }

private:
    struct Slot {
        std::uint64_t cell = 0;
        std::uint32_t value = none;
    };
    std::size_t slotOf(std::uint64_t cell) const {
        std::size_t at = (cell * 0x9E3779B97F4A7C15ULL >> 20) & (m_slots.size() - 1);
        while (m_slots[at].value != none && m_slots[at].cell != cell)
            at = (at + 1) & (m_slots.size() - 1);
        return at;
    }
    void grow() {
        const std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(4 * m_slots.size()));
        for (const Slot& slot : old)
            if (slot.value != none)
                m_slots[slotOf(slot.cell)] = slot;
    }
    std::vector<Slot> m_slots = std::vector<Slot>(16);
    std::size_t m_count = 0;
};

/// Numbers of points, cell by cell (a counting sort).
struct ByCell {
    std::vector<std::uint32_t> points;
    std::vector<std::uint32_t> begins; ///< of each cell in them, and the end

    /// `cells` has the cell of each point, or none.
    ByCell(const std::vector<std::uint32_t>& cells, std::size_t cellCount) : begins(cellCount + 1) {
        for (const std::uint32_t cell : cells)
            if (cell != CellTable::none)
                ++begins[cell + 1];
        std::partial_sum(begins.begin(), begins.end(), begins.begin());
        points.resize(begins.back());
        std::vector<std::uint32_t> next = begins;
        for (std::size_t i = 0; i != cells.size(); ++i)
            if (cells[i] != CellTable::none)
                points[next[cells[i]]++] = static_cast<std::uint32_t>(i);
    }
};

class Search {
public:
    Search(const std::vector<Point>& points, double radius)
        : m_points(points), m_size(std::max(radius, 1.0)), m_squared(radius * radius) {}

    Bits run(const Bits& from, const std::stop_token& stop) {
        sortCentres(from);
        const ByCell candidates = sortCandidates(from);
        Bits near = from;
        for (std::size_t cell = 0; cell != m_reached.size(); ++cell) {
            gatherAround(m_reached[cell]);
            for (std::uint32_t i = candidates.begins[cell]; i != candidates.begins[cell + 1]; ++i) {
                if (i % 64 == 0 && stop.stop_requested())
                    return near;
                if (isNear(m_points[candidates.points[i]], m_reached[cell]))
                    near.add(candidates.points[i]);
            }
        }
        return near;
    }

private:
    /// Centres in a cell beside the one that is worked on, or in that one.
    struct Neighbour {
        std::array<int, 3> offset; ///< in cells, from -1 to 1
        std::uint32_t begin;
        std::uint32_t end;
    };

    Cell cellOf(const Point& point) const {
        Cell cell{};
        for (std::size_t axis = 0; axis != 3; ++axis)
            cell[axis] = static_cast<std::int64_t>(
                std::floor(std::clamp(static_cast<double>(point[axis]), -1e15, 1e15) / m_size));
        return cell;
    }
    /// The cell itself comes first, as it is the likeliest to have something near.
    template <class Visit> static void forNeighbours(const Cell& cell, const Visit& visit) {
        visit(std::array<int, 3>{}, cell);
        for (int x = -1; x <= 1; ++x)
            for (int y = -1; y <= 1; ++y)
                for (int z = -1; z <= 1; ++z)
                    if (x != 0 || y != 0 || z != 0)
                        visit(std::array<int, 3>{x, y, z}, {cell[0] + x, cell[1] + y, cell[2] + z});
    }

    /// Sorts the points of `from` by cells, and gathers the cells that are in reach of them.
    void sortCentres(const Bits& from) {
        std::vector<Cell> cells;
        std::vector<std::uint32_t> cellOfPoint(m_points.size(), CellTable::none);
        for (std::size_t i = from.next(0); i != from.size(); i = from.next(i + 1)) {
            if (!isFinite(m_points[i]))
                continue;
            const Cell cell = cellOf(m_points[i]);
            const auto next = static_cast<std::uint32_t>(cells.size());
            cellOfPoint[i] = m_occupied.add(numberOf(cell), next);
            if (cellOfPoint[i] == next)
                cells.push_back(cell);
        }
        const ByCell sorted(cellOfPoint, cells.size());
        m_begins = sorted.begins;
        m_centres.reserve(sorted.points.size());
        for (const std::uint32_t i : sorted.points) {
            const Point& point = m_points[i];
            m_centres.push_back({static_cast<double>(point[0]), static_cast<double>(point[1]),
                                 static_cast<double>(point[2])});
        }
        for (const Cell& occupied : cells)
            forNeighbours(occupied, [this](const auto&, const Cell& cell) {
                const auto next = static_cast<std::uint32_t>(m_reached.size());
                if (m_reachedTable.add(numberOf(cell), next) == next)
                    m_reached.push_back(cell);
            });
    }
    /// Sorts the other points by the cells in reach; those elsewhere are near nothing.
    ByCell sortCandidates(const Bits& from) const {
        std::vector<std::uint32_t> cells(m_points.size(), CellTable::none);
        for (std::size_t i = 0; i != m_points.size(); ++i)
            if (!from.has(i) && isFinite(m_points[i]))
                cells[i] = m_reachedTable.find(numberOf(cellOf(m_points[i])));
        return {cells, m_reached.size()};
    }
    void gatherAround(const Cell& cell) {
        m_around.clear();
        forNeighbours(cell, [this](const std::array<int, 3>& offset, const Cell& other) {
            if (const std::uint32_t found = m_occupied.find(numberOf(other));
                found != CellTable::none)
                m_around.push_back({offset, m_begins[found], m_begins[found + 1]});
        });
    }
    bool isNear(const Point& point, const Cell& cell) const {
        // To the neighbouring cells on either side, along each axis.
        std::array<std::array<double, 3>, 3> gaps{};
        std::array<double, 3> at{};
        for (std::size_t axis = 0; axis != 3; ++axis) {
            at[axis] = static_cast<double>(point[axis]);
            const double below = at[axis] - static_cast<double>(cell[axis]) * m_size;
            gaps[axis] = {below * below, 0.0, (m_size - below) * (m_size - below)};
        }
        // Cells far away may share a number: then their places say nothing.
        const bool isPlain = cellOf(point) == cell;
        for (const Neighbour& other : m_around) {
            double gap = 0.0;
            for (std::size_t axis = 0; axis != 3; ++axis)
                gap += gaps[axis][static_cast<std::size_t>(other.offset[axis] + 1)];
            // A little more, as the gaps are rounded.
            if (isPlain && gap > m_squared * 1.001 + 0.001)
                continue;
            for (std::uint32_t i = other.begin; i != other.end; ++i) {
                const std::array<double, 3>& centre = m_centres[i];
                const double x = at[0] - centre[0];
                const double y = at[1] - centre[1];
                const double z = at[2] - centre[2];
                if (x * x + y * y + z * z <= m_squared)
                    return true;
            }
        }
        return false;
    }

    const std::vector<Point>& m_points;
    double m_size; ///< of a cell, in Å
    double m_squared;
    std::vector<std::array<double, 3>> m_centres; ///< the points of `from`, cell by cell
    std::vector<std::uint32_t> m_begins;          ///< of each occupied cell in them, and the end
    CellTable m_occupied;                         ///< cells with centres
    CellTable m_reachedTable;                     ///< those and the ones around them
    std::vector<Cell> m_reached;                  ///< in the order of the table
    std::vector<Neighbour> m_around;              ///< the cell that is worked on
};

} // namespace

Bits pointsNear(const std::vector<Point>& points, const Bits& from, double radius,
                const std::stop_token& stop) {
    return Search(points, radius).run(from, stop);
}

} // namespace workbench
