// Ladders between the strands of sheets: bridges that follow each other (Kabsch and Sander,
// Biopolymers 22, 2577, 1983).
#pragma once

#include "HydrogenBonds.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace view {

struct ResidueRange {
    std::uint32_t from;
    std::uint32_t to; ///< included
};

/// Bridges of one kind from a strand to another, each next to the one before or, at a bulge, with
/// at most one residue more on one strand and four on the other in between.
struct Ladder {
    ResidueRange first; ///< from the first bridge to the last one, bulges included
    ResidueRange second;
    std::size_t bridges; ///< how many
    bool isParallel;
};

/// Whether the N-H of one residue is bonded to the C=O of another.
inline bool isBonded(std::span<const Acceptors> acceptors, std::size_t donor,
                     std::size_t acceptor) {
    const Acceptors& of = acceptors[donor];
    return of[0] == acceptor || of[1] == acceptor;
}

/// All ladders, in order of their first residues. `acceptors` and `segments` are what
/// hydrogenBonds() and chainSegments() say.
std::vector<Ladder> ladders(std::span<const Acceptors> acceptors,
                            std::span<const std::uint32_t> segments);

} // namespace view
