// The side-chain rotamers of proteins: S. C. Lovell, J. M. Word, J. S. Richardson and
// D. C. Richardson, "The penultimate rotamer library", Proteins 40 (2000) 389-408.
#pragma once

#include <array>
#include <span>
#include <string_view>

namespace rotamer {

/// One rotamer. The angles are the common-atom values, over all backbones.
struct Rotamer {
    std::string_view residue;  ///< "ARG"
    std::string_view name;     ///< "mtt180": p, t, m for +60, 180 and -60 degrees, or an angle
    int observations;          ///< in the structures that the library was made from
    int percent;               ///< of the residue's side chains, rounded
    std::array<double, 4> chi; ///< degrees, from chi 1 on; the first `angles` of them
    int angles;
};

/// All 153 rotamers, by residue in alphabetical order, and of a residue as published.
std::span<const Rotamer> allRotamers();
/// The rotamers of a residue by its name of three letters; empty for one that has none.
std::span<const Rotamer> rotamersOf(std::string_view residue);

} // namespace rotamer
