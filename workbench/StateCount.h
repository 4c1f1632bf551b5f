// Counts what is selected and hidden in the data space, and says what a change did. In pieces, so
// that a large count never holds up the program.
#pragma once

#include "ByClass.h"
#include "Compound.h"

#include <QString>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

/// What is counted beside atoms.
enum class OtherKind { Bond, Set, Surface, Grid, PolyLine, Other };
using OtherCounts = std::array<std::size_t, static_cast<std::size_t>(OtherKind::Other) + 1>;

struct StateCount {
    std::size_t entries = 0;
    std::size_t atoms = 0;
    std::size_t selectedAtoms = 0;
    std::size_t selectedResidues = 0; ///< in which something is selected
    std::size_t selectedChains = 0;   ///< likewise
    OtherCounts selectedOthers{};     ///< by OtherKind
    std::size_t hiddenAtoms = 0;      ///< without those of alternative models that are not active
    OtherCounts hiddenOthers{};       ///< without the bonds of hidden atoms
    /// Sums over the identifiers of what is selected and shown, and over the colours: another sum
    /// means another state.
    std::uint64_t selection = 0;
    std::uint64_t visibility = 0;
    std::uint64_t colors = 0;

    bool operator==(const StateCount&) const = default;
};

/// "915 atoms, 915 residues, 68 chains, 2 bonds selected; 2 hidden". Where more than atoms is
/// hidden, "2 atoms, 1 surface hidden".
QString stateText(const StateCount& state);
/// What a change has done, from the counts before and after it: "+915 atoms selected".
QString changeText(const StateCount& before, const StateCount& after);

/// A count in progress. To be dropped when anything changes: it keeps pointers to items.
class StateCounter {
public:
    /// Begins with the data space as it is.
    StateCounter();
    /// Counts some 100,000 items more; returns whether those were the last.
    bool step();
    const StateCount& count() const { return m_count; }

private:
    enum class Role { Atom, Residue, Chain, Composite, Leaf };
    /// Children that follow each other.
    struct Piece {
        TAVIK::Compound** begin;
        TAVIK::Compound** end;
    };

    Role roleOf(const TAVIK::Compound* item);
    void gather(TAVIK::Compound** begin, TAVIK::Compound** end);
    void countAll(TAVIK::Compound** begin, TAVIK::Compound** end);
    void countChain(TAVIK::Compound* chain);
    void countResidue(TAVIK::Compound* residue);
    void countOther(TAVIK::Compound* item);
    void countGathered();
    void countHiddenAlternates();

    ByClass<Role> m_roles;
    ByClass<OtherKind> m_kinds;
    std::vector<Piece> m_pieces;
    std::size_t m_next = 0;
    std::size_t m_done = 0;                   ///< items
    std::vector<TAVIK::Compound*> m_gathered; ///< atoms of one residue, or of none, to be counted
    StateCount m_count;
};

} // namespace workbench
