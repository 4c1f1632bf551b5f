#include "FindIndex.h"

#include "AtomDetails.h"

#include <algorithm>

namespace workbench {

std::uint32_t FindIndex::residueOf(std::uint32_t atom) const {
    const auto after =
        std::upper_bound(residues.begin(), residues.end(), atom,
                         [](std::uint32_t a, const Residue& residue) { return a < residue.begin; });
    auto found = after - 1;
    // Residues without atoms begin where the next one does.
    while (found->end <= atom)
        --found;
    return static_cast<std::uint32_t>(found - residues.begin());
}

char alternateOf(const TAVIK::Compound* atom) {
    const char letter = TAVIK::GetAtomDetails(static_cast<const TAVIK::Atom*>(atom)).alternative;
    return letter == '\0' ? ' ' : letter;
}

FindParts partsOf(const FindExpression& expression) {
    FindParts parts;
    parts.set(FindValues::Positions, expression.has(FindStep::Kind::Within));
    parts.set(FindValues::Alternates, expression.has(FindTerm::Kind::Alternate));
    parts.set(FindValues::Elements, expression.has(FindTerm::Kind::Element));
    parts.set(FindValues::Selected, expression.has(FindTerm::Kind::Selected));
    parts.set(FindValues::Hidden, expression.has(FindTerm::Kind::Hidden));
    return parts;
}

} // namespace workbench
