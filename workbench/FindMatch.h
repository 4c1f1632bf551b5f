// What of the data an expression of the find box stands for. Arrays in, arrays out: it may run on
// any thread.
#pragma once

#include "FindIndex.h"
#include "FindLanguage.h"

#include <cstdint>
#include <stop_token>
#include <string>
#include <vector>

namespace workbench {

struct FindHits {
    Bits atoms;
    std::size_t atomCount = 0;
    bool ofAtoms = false; ///< whether a hit is an atom, or else a residue
    /// Atoms; or residues of which some atom is meant. Atoms outside of residues count together.
    std::vector<std::uint32_t> hits;
};

/// The atoms that a good expression, not empty, stands for. `values` must hold what it needs. When
/// `stop` is requested, the answer means nothing.
FindHits findHits(const FindIndex& index, const FindValues& values,
                  const FindExpression& expression, const std::stop_token& stop = {});

/// A hit in words: "1cbs/A MET 1", "1cbs/A MET 1 CA (B)". In Latin-1; asks the items, on the GUI
/// thread.
std::string hitText(const FindIndex& index, const FindHits& hits, std::uint32_t hit);

} // namespace workbench
