// Balls on a lattice, and for each of its blocks those that reach into it.
#pragma once

#include "Blocks.h"
#include "Mesh.h"

#include <cstdint>
#include <span>
#include <vector>

namespace solid {

/// Whether a ball takes part: its radius is positive and at most 20 Å, more than any atom and probe
/// have, and its centre is within 1e6 Å of the origin along each axis.
bool isUsable(const Ball& ball);

/// In steps of the lattice.
struct LatticeBall {
    std::array<double, 3> centre;
    double radius;
};

class BallLists {
public:
    /// Every ball, grown by `margin` (Å), on a lattice of `step` (Å). Balls that are not usable,
    /// and those of which a negative margin leaves nothing, are in no list. Throws
    /// std::invalid_argument if the step is not 0.1 to 100 Å.
    BallLists(std::span<const Ball> balls, double step, double margin);

    double step() const { return m_step; }
    /// Sorted by packed(); each is reached by a ball, at least by its lattice corners.
    const std::vector<BlockPlace>& blocks() const { return m_blocks; }
    /// The balls that reach a corner of a block, ascending.
    std::span<const std::uint32_t> ballsOf(std::size_t block) const {
        return {m_balls.data() + m_firsts[block], m_firsts[block + 1] - m_firsts[block]};
    }
    /// One for each of the balls given, in steps.
    const LatticeBall& ball(std::uint32_t index) const { return m_lattice[index]; }

private:
    double m_step;
    std::vector<LatticeBall> m_lattice;
    std::vector<BlockPlace> m_blocks;
    std::vector<std::size_t> m_firsts;
    std::vector<std::uint32_t> m_balls;
};

} // namespace solid
