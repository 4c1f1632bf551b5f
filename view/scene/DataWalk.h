// The walk over the data space that collects what is drawn, and how it looks.
#pragma once

#include "Compound.h"
#include "Contents.h"

#include <cstdint>
#include <vector>

namespace view {

/// Bonds that follow each other among the children of an item.
struct BondRun {
    TAVIK::Compound* parent;
    std::uint32_t first; ///< index of a child
    std::uint32_t count;
};

struct Collected {
    Contents contents;
    Marks marks;
    std::vector<TAVIK::Compound*> items; ///< by index, as Contents has them
    std::vector<BondRun> bonds;          ///< those of Contents, in that order
};

/// Everything below `root`, or `root` itself if it is no composite. Members of sets stand
/// elsewhere, and are taken where they stand.
/// Room is made at once for as much as there was in `before`.
Collected collect(TAVIK::Compound* root, const Contents& before = {});

/// Where an atom is, as Contents has it.
Point positionOf(const TAVIK::Compound* atom);

} // namespace view
