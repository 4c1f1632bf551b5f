// Named sets: which sets list an item, and what they count of its state.
#pragma once

#include "Counters.h"
#include "HostItem.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace memory_host {

/// The record of a set: it counts the states of its members, which tell it of every change. Members
/// that are destroyed leave holes, closed when the parts are next read.
struct SetRecord : HostItem {
    SetRecord(Kind ofKind, Name itsName);
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
    /// The step that holds the members as they were before it.
    std::uint32_t recordedIn = 0;
};

struct Listing {
    SetRecord* set;
    std::uint32_t index; ///< in the set's vector of members
    std::uint32_t id;    ///< the set's
};
/// The sets that list an item, for members of sets only; they carry the flag InSets.
using SetListings = std::unordered_map<const HostItem*, std::vector<Listing>>;
/// One item's, taken out of the map.
using SetListing = SetListings::node_type;

/// Lists `members`, which hold neither null nor repetitions, in a new set that is not attached yet.
void listMembers(SetRecord& set, const std::vector<Compound*>& members);
/// Takes an item out of every set that lists it. What is returned puts it back in again.
SetListing leaveSets(HostItem& item);
/// Lists an item again that has left its sets; the sets get their members back by restoreMembers().
void rejoinSets(HostItem& item, SetListing&& left) noexcept;
/// Gives a set the members that it had before some left it, of which all are there again; leaves in
/// `members` what the set had.
void restoreMembers(SetRecord& set, std::vector<Compound*>& members) noexcept;
/// The sets that list an item, which has the flag InSets.
const std::vector<Listing>& listingsOf(const HostItem& item) noexcept;
/// The set of an identifier, or null if it does not exist any more.
SetRecord* findSet(std::uint32_t id) noexcept;
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
