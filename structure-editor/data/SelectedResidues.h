// The selected residues of an item, found again one by one while others destroy what they like.
#pragma once

#include "Compound.h"

#include <cstddef>
#include <vector>

/// Remembers the residues that are selected now, in the host's order, and the way that leads to
/// each: composites by address and identifier. Nothing is read before it was found to exist.
class SelectedResidues {
public:
    /// `root` is a top-level item.
    explicit SelectedResidues(TAVIK::Compound* root);

    std::size_t size() const { return m_residues.size(); }
    /// Residue `index`, below size(), if it still stands where it stood; else null. Takes a look at
    /// each level when nothing has changed, else a binary search: children stand in the order of
    /// their identifiers.
    TAVIK::Compound* find(std::size_t index);

private:
    struct Place {
        TAVIK::Compound* item;
        unsigned int id;
        std::size_t above; ///< place of the composite that holds it; `nowhere` for the root
        std::size_t at;    ///< where it stood among the children when it was last found

        bool holds(TAVIK::Compound* candidate) const;
    };
    static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

    void add(TAVIK::Compound* item, std::size_t above, std::size_t at);
    TAVIK::Compound* find(Place& place);

    std::vector<Place> m_places;         ///< the root first
    std::vector<std::size_t> m_residues; ///< places
};
