// A union of balls: the inside of van der Waals and of solvent-accessible surfaces.
#pragma once

#include "BallLists.h"
#include "Polygonizer.h"

namespace solid {

class BallUnion : public Solid {
public:
    /// Of the balls, each grown by `margin`, on a lattice of `step`; both in Å.
    BallUnion(std::span<const Ball> balls, double step, double margin)
        : m_lists(balls, step, margin) {}

    const BallLists& lists() const { return m_lists; }

    CellSteps steps() const override { return cubicSteps(m_lists.step()); }
    std::span<const BlockPlace> blocks() const override { return m_lists.blocks(); }
    void findInside(std::size_t block, OwnSigns& signs) const override;
    /// To single precision on the balls.
    void findCrossings(std::size_t block, const BlockEdges& edges,
                       std::vector<Crossing>& crossings) const override;

private:
    BallLists m_lists;
};

} // namespace solid
