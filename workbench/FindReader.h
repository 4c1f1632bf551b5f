// Reads what searches need of the data space, in pieces.
#pragma once

#include "FindIndex.h"
#include "FindIndexReading.h"
#include "FindPositions.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace workbench {

/// Whoever owns it tells it of changes, and of what is about to be destroyed before it is. What is
/// read at the moment is given up then, as far as it is of what changes, and read again when it is
/// needed. GUI thread.
class FindReader {
public:
    /// The residues and atoms; null until they are read.
    const std::shared_ptr<const FindIndex>& index() const { return m_index; }
    /// The parts that were read.
    const FindValues& values() const { return m_values; }
    /// Whether the index and these parts were read, and have not changed since.
    bool has(FindParts parts) const;
    /// Whether there is nothing that a change would make wrong.
    bool isEmpty() const { return !m_index && !m_reading && !has(FindValues::Positions); }

    /// Reads for about so long, until the index and these parts are there; returns whether they
    /// are. Throws std::bad_alloc: then what was read before is left.
    bool advance(FindParts parts, std::chrono::microseconds time);
    /// Reads it in one piece. Throws likewise.
    void finish(FindParts parts);

    /// Forgets everything, as items were made or are about to be destroyed. Old positions stay,
    /// with what was prepared of them, which serves again as far as the same are read: few changes
    /// move atoms, or make or destroy some.
    void forgetItems();
    /// Gives the memory of positions back if they were not read again.
    void forgetOldPositions();
    /// Forgets what changes without anything being made or destroyed.
    void forgetState();

private:
    using Part = FindValues::Part;

    bool has(Part part) const;
    bool step(FindParts parts);
    void stepIndex(bool withPositions);
    void endIndex();
    void stepPart(Part part);
    void beginPart(Part part);
    void readPart(std::size_t end);
    void endPart();
    void giveUpPart();
    void giveUp();

    std::shared_ptr<const FindIndex> m_index;
    FindValues m_values;
    bool m_areOld = false; ///< the positions, which may have changed
    // How many there were when the index was last read.
    std::size_t m_atomCount = 0;
    std::size_t m_residueCount = 0;

    /// While the index is being read.
    std::optional<FindIndexReading> m_reading;
    // The part that is being read, if one is: up to an atom, and into one of the arrays.
    std::optional<Part> m_part;
    std::size_t m_next = 0;
    std::optional<FindPositions> m_positions;
    std::shared_ptr<std::vector<char>> m_alternates;
    std::shared_ptr<std::vector<NameKeys::Key>> m_elements;
    std::shared_ptr<Bits> m_marks; ///< of selected or hidden atoms
};

} // namespace workbench
