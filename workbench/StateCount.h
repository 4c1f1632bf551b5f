// Counts what is selected and hidden in the data space, and says what a change did. In pieces, so
// that a large count never holds up the program.
#pragma once

#include "Compound.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

struct StateCount {
    std::size_t entries = 0;
    std::size_t atoms = 0;
    std::size_t selectedAtoms = 0;
    std::size_t selectedResidues = 0; ///< in which something is selected
    std::size_t selectedChains = 0;   ///< likewise
    std::size_t selectedOthers = 0;   ///< maps, surfaces and others of which none holds atoms
    std::size_t hiddenAtoms = 0;      ///< without those of alternative models that are not active
    std::size_t hiddenOthers = 0;
    /// Sums over the identifiers of what is selected and shown, and over the colours: another sum
    /// means another state.
    std::uint64_t selection = 0;
    std::uint64_t visibility = 0;
    std::uint64_t colors = 0;

    bool operator==(const StateCount&) const = default;
};

/// "915 atoms, 915 residues, 68 chains selected; 2 hidden".
QString stateText(const StateCount& state);
/// What a change has done, from the counts before and after it: "+915 atoms selected".
QString changeText(const StateCount& before, const StateCount& after);

/// A count in progress. To be dropped when anything changes: it keeps pointers to items.
class StateCounter {
public:
    /// Begins with the data space as it is.
    StateCounter();
    /// Counts some 100,000 atoms more; returns whether that was the last.
    bool step();
    const StateCount& count() const { return m_count; }

private:
    void gather(TAVIK::Compound* item);
    void countPiece(TAVIK::Compound* piece);
    void countOther(const TAVIK::Compound* item);
    void countAtoms(const std::vector<TAVIK::Compound*>& atoms);

    std::vector<TAVIK::Compound*> m_pieces; ///< chains, and whatever else may hold atoms
    std::size_t m_next = 0;
    std::vector<TAVIK::Compound*> m_residues; ///< kept for their memory
    std::vector<TAVIK::Compound*> m_items;
    StateCount m_count;
};

} // namespace workbench
