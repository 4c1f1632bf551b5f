// Centres in a grid of cells: finds whether any is within a radius of a point, as long as no cell
// holds many. Knows neither items nor widgets.
#pragma once

#include "Point.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// The cells are at least as long as the radius (linked cells; Quentrec and Brot, J. Comput. Phys.
/// 13, 430, 1973). Points are searched in runs: neighbours in a structure's order are mostly
/// neighbours in space, so that the cells around a run are looked up once for all its points.
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
    struct Block;

    /// The cells are of `length` Å or longer, and at most `most`.
    CentreGrid(const std::vector<Point>& centres, const Reach& reach, double length,
               std::size_t most);
    Cell cellOf(const Point& centre) const;
    /// Sorts the centres by their cells; returns whether no cell holds too many.
    bool fill(const std::vector<Point>& centres);
    /// The cells that may hold a centre near a point between two corners; none are there when a
    /// coordinate of `low` is above that of `high`.
    Block blockAround(const Point& low, const Point& high) const;
    /// search() for a few points.
    void searchRun(std::span<const Point> points, std::uint8_t* near) const;

    float m_squaredLimit;
    double m_distance;
    std::array<double, 3> m_low{};
    std::array<double, 3> m_cells{};    ///< along each axis
    double m_perLength = 0.0;           ///< cells per Å
    std::array<Cell, 3> m_stride{};     ///< from a cell to the next along each axis
    std::vector<std::uint32_t> m_first; ///< index of each cell's first centre; one more at the end
    std::array<std::vector<float>, 3> m_coordinates; ///< of the centres, in order of their cells
};
