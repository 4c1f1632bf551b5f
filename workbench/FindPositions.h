// Where the atoms are, read in pieces.
#pragma once

#include "FindIndex.h"
#include "ManyAtoms.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace workbench {

/// Takes the positions of all atoms in their order, and finds out which of them were elsewhere.
class FindPositions {
public:
    /// With the values read before, or none, and room for about so many.
    FindPositions(const FindValues& before, std::size_t expected);

    /// The positions of some more atoms.
    void take(std::span<const TAVIK::ItemLook> looks);
    std::size_t size() const { return m_made->size(); }
    /// Puts them into `values`, after the last one. What was prepared of those before serves
    /// again, as far as they are the same.
    void finish(FindValues& values);

private:
    std::shared_ptr<FindValues::Points> m_made;
    std::shared_ptr<const FindValues::Points> m_before;
    std::vector<std::uint32_t> m_moved;
    bool m_areOthers = false; ///< more than would be moved
};

} // namespace workbench
