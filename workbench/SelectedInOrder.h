// The few atoms that are selected, in the order in which they were.
#pragma once

#include "Compound.h"

#include <cstddef>
#include <vector>

namespace workbench {

/// The selected atoms at or below `root` in the order of the data, up to `most` of them.
std::vector<TAVIK::Compound*> selectedAtoms(TAVIK::Compound* root, std::size_t most);

/// To be told of every change of the selection. More than four atoms have no order.
class SelectedInOrder {
public:
    static constexpr std::size_t most = 4;

    /// Looks what is selected now: atoms that are new come behind those that were there, in the
    /// order of the data.
    void update();
    /// The atoms of the last update, which must still exist; empty if there were more than four.
    const std::vector<TAVIK::Compound*>& atoms() const { return m_atoms; }
    /// Whether there were any atoms, however many.
    bool hasAtoms() const { return m_hasAtoms; }
    /// Before anything is destroyed.
    void forget();

private:
    std::vector<TAVIK::Compound*> m_atoms;
    std::vector<unsigned int> m_ids; ///< in their order
    bool m_hasAtoms = false;
};

} // namespace workbench
