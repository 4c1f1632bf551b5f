// Named sets: which sets list an item, and what they count of its state.
#pragma once

#include "Counters.h"
#include "HostItem.h"

#include <cstdint>
#include <vector>

namespace memory_host {

/// The record of a set: it counts the states of its members, which tell it of every change. Members
/// that are destroyed leave holes, closed when the parts are next read.
struct SetRecord : HostItem {
    using HostItem::HostItem;
    SetRecord(const SetRecord&) = delete;
    SetRecord& operator=(const SetRecord&) = delete;
    /// Removes the set from the listings of all members.
    ~SetRecord();

    std::uint32_t memberCount() const { return static_cast<std::uint32_t>(members.size()) - holes; }
    std::vector<Compound*>& listed();

    std::vector<Compound*> members;
    std::uint32_t holes = 0;
    std::int32_t selected = 0; ///< number of members that are selected
    std::int32_t hasSelected = 0;
    std::int32_t visible = 0;
};

/// Lists `members`, which hold neither null nor repetitions, in a new set that is not attached yet.
void listMembers(SetRecord& set, const std::vector<Compound*>& members);
/// Takes an item out of every set that lists it.
void leaveSets(HostItem& item);
/// Whether the item is a set with members. Changes of all that a composite holds skip such sets.
inline bool listsMembers(const HostItem& item) {
    return item.kind == Kind::Set && static_cast<const SetRecord&>(item).memberCount() > 0;
}
/// Tells the sets that list `item` that its state was `before`.
void tellSets(const HostItem& item, ItemState before);
/// The sets that list `item`.
std::vector<SetRecord*> setsOf(const HostItem& item);

/// Runs a change of one item's counters or marks, and tells the sets that list the item.
template <class Change> void changeState(HostItem& item, Change&& change) {
    if (!item.has(HostItem::InSets)) {
        change();
        return;
    }
    const ItemState before = stateOf(item);
    change();
    tellSets(item, before);
}

} // namespace memory_host
