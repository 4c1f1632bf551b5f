// Counters summed up the tree of items, so that every item's state is read in constant time.
#pragma once

#include "HostItem.h"

#include <cstdint>

namespace memory_host {

/// What a subtree adds to the counters of the composite that holds it. Sets with members add
/// nothing: members are counted where they stand.
struct Contribution {
    std::int32_t atoms = 0;
    std::int32_t selectedAtoms = 0;
    std::int32_t leaves = 0; ///< items that hold nothing, empty composites and sets included
    std::int32_t selectedLeaves = 0;
    std::int32_t shownLeaves = 0;

    Contribution operator-(const Contribution& other) const {
        return {atoms - other.atoms, selectedAtoms - other.selectedAtoms, leaves - other.leaves,
                selectedLeaves - other.selectedLeaves, shownLeaves - other.shownLeaves};
    }
    Contribution operator-() const { return Contribution{} - *this; }
    Contribution& operator+=(const Contribution& other) {
        atoms += other.atoms;
        selectedAtoms += other.selectedAtoms;
        leaves += other.leaves;
        selectedLeaves += other.selectedLeaves;
        shownLeaves += other.shownLeaves;
        return *this;
    }
    bool operator==(const Contribution&) const = default;
};

/// The state of an item that others may ask for.
struct ItemState {
    bool selected = false;
    bool hasSelected = false;
    bool visible = false;

    bool operator==(const ItemState&) const = default;
};

/// The state of any item, in constant time.
ItemState stateOf(const HostItem& item);
bool isSelected(const HostItem& item);
bool hasSelected(const HostItem& item);
bool isVisible(const HostItem& item);

/// What `item` adds to its parent now.
Contribution contributionOf(const HostItem& item);
/// Adds a change in the sum over the children of `holder` to `holder` and all composites above it.
void addContribution(Holder* holder, Contribution change);

} // namespace memory_host
