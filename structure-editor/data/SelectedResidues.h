// The selected residues of an item, found again one by one while other code may destroy items.
#pragma once

#include "Compound.h"

#include <cstddef>
#include <vector>

/// Remembers the residues that are selected now, in the host's order, and the path to each: its
/// composites, by address and identifier. An item is dereferenced only once it is known to exist.
class SelectedResidues {
public:
    /// `root` is a top-level item.
    explicit SelectedResidues(TAVIK::Compound* root);

    std::size_t size() const { return m_residues.size(); }
    /// Residue `index`, below size(), if it still is where it was; else null. Costs one look-up for
    /// each level when nothing has changed, else a binary search: children are ordered by
    /// identifier.
    TAVIK::Compound* find(std::size_t index);

private:
    struct Place {
        TAVIK::Compound* item;
        unsigned int id;
        std::size_t above; ///< index of the composite that holds it; `nowhere` for the root
        std::size_t at;    ///< its index among the children when it was last found

        bool holds(TAVIK::Compound* candidate) const;
    };
    static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

    void add(TAVIK::Compound* item, std::size_t above, std::size_t at);
    TAVIK::Compound* find(Place& place);

    std::vector<Place> m_places;         ///< the root first
    std::vector<std::size_t> m_residues; ///< indices of places
};
