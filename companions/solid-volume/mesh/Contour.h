// Where the values on a grid reach a level.
#pragma once

#include "Lanes.h"
#include "Polygonizer.h"
#include "Vectors.h"

#include <array>
#include <cstddef>
#include <span>

namespace solid {

/// Values on a grid, x fastest, whose steps may be skewed; NaN where there is none.
struct GridView {
    std::array<int, 3> points;
    std::array<double, 3> origin;               ///< of point (0, 0, 0), in Å
    std::array<std::array<double, 3>, 3> steps; ///< Å from a point to the next along each axis
    std::span<const float> values;
    std::array<int, 3> lower; ///< the part that counts: from here
    std::array<int, 3> upper; ///< up to, not including, here
};

/// The inside of a contour: the points of a level or more, or with `isHigh` false of the level or
/// less. Flat caps close it where it reaches the bounds of the part that counts, with an outline
/// that is interpolated as the contour is; it ends at points without a value, too.
class Contour : public Solid {
public:
    /// The values stay where they are as long as this lives. A part that reaches beyond the grid is
    /// cut to it; of one that is empty nothing is inside. Throws std::invalid_argument if there is
    /// not one value a point, for more than 16 million points along an axis, and if the origin or a
    /// step is no number or more than 1e9 Å.
    Contour(const GridView& grid, double level, bool isHigh);

    CellSteps steps() const override { return m_grid.steps; }
    bool hasBalls() const override { return false; }
    std::span<const BlockPlace> blocks() const override { return m_blocks; }
    void findInside(std::size_t block, OwnSigns& signs) const override;
    /// By linear interpolation between two points; normals from the differences between their
    /// neighbours, on caps those of the bounds.
    void findCrossings(std::size_t block, const BlockEdges& edges,
                       std::vector<Crossing>& crossings) const override;

private:
    using Index = std::array<int, 3>;

    std::size_t at(const Index& point) const;
    bool isInPart(std::size_t axis, int index) const;
    /// Of a point one step beyond the bounds, the one on them.
    int held(std::size_t axis, int index) const;
    Index held(const Index& point) const;
    int sideOf(const Index& point) const;
    Crossing crossing(const Index& inside, const Index& outside, std::size_t axis) const;
    float shareOfFace(const Index& point, std::size_t axis) const;
    bool crossAmidPoints(const Index& low, std::size_t axis, Crossing& made) const;
    std::array<double, 3> gradient(const Index& point) const;
    Vector positionOf(const Index& point) const {
        return m_origin + m_steps[0] * point[0] + m_steps[1] * point[1] + m_steps[2] * point[2];
    }

    GridView m_grid;
    float m_level;
    float m_sign;                            ///< -1 for what is low
    std::array<std::ptrdiff_t, 3> m_strides; ///< from a value to the next along each axis
    std::vector<BlockPlace> m_blocks;
    Vector m_origin;
    std::array<Vector, 3> m_steps;
    std::array<Vector, 3> m_toSpace; ///< of a gradient along the axes
    std::array<Floats, 3> m_toSpaceLanes;
    /// Along each axis, the normals of flat ends that face down and up.
    std::array<std::array<Point, 2>, 3> m_walls;
};

} // namespace solid
