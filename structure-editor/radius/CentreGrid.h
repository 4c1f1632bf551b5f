// Centres in a grid of cells: finds whether any is within a radius of a point, as long as no cell
// holds many. Knows neither items nor widgets.
#pragma once

#include "Point.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// The cells are at least as long as the radius (linked cells; Quentrec and Brot, J. Comput. Phys.
/// 13, 430, 1973), so that every centre near a point is in the point's cell or in one of the 26
/// around it.
class CentreGrid {
public:
    /// The grid of finite centres, at least one; nullopt when a cell would hold too many of them,
    /// so that the cost of a point is bounded.
    static std::optional<CentreGrid> of(const std::vector<Point>& centres, const Reach& reach);

    /// Sets `near[i]`, which is 0 before, to 1 for each of `points` that lies within the radius of
    /// a centre.
    void search(const std::vector<Point>& points, std::vector<std::uint8_t>& near) const;

private:
    using Cell = std::uint32_t;

    CentreGrid(const std::vector<Point>& centres, const Reach& reach);
    Cell cellOf(const Point& centre) const;
    /// The cell of a point; cell 0, which has no centre near, for a point far from all centres.
    Cell cellAround(const Point& point) const;
    /// Whether a centre is near a point in that cell.
    bool isNear(const Point& point, Cell cell) const;
    /// Sorts the centres by their cells; returns whether no cell holds too many.
    bool fill(const std::vector<Point>& centres);
    /// Marks the cells that have a centre in or around them.
    void markSurroundings();

    float m_squaredLimit;
    std::array<double, 3> m_low{};
    std::array<double, 3> m_cells{}; ///< along each axis, without the empty ones at both ends
    double m_perLength = 0.0;        ///< cells per Å
    std::array<Cell, 3> m_stride{};  ///< from a cell to the next along each axis; 1 along x
    std::vector<Cell> m_first;       ///< index of each cell's first centre; one more at the end
    std::vector<std::uint8_t> m_surrounded;
    std::array<std::vector<float>, 3> m_coordinates; ///< of the centres, in order of their cells
    std::array<Cell, 9> m_rows{}; ///< offsets from a cell to the rows of three around it, the
                                  ///< nearest first; they wrap around
};
