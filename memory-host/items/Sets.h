// Named sets: which sets list an item, and what they count of its state.
#pragma once

#include "Counters.h"
#include "HostItem.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace memory_host {

struct SetRecord;

struct Listing {
    SetRecord* set;
    std::uint32_t place; ///< in the set
    std::uint32_t id;    ///< the set's
};
/// The sets that list an item, for members of sets only; they carry the flag InSets.
using SetListings = std::unordered_map<const HostItem*, std::vector<Listing>>;
/// One item's, taken out of the map.
using SetListing = SetListings::node_type;

/// The record of a set: it counts the states of its members, which tell it of every change. Members
/// only ever leave; each keeps its place, so that it can come back to it.
struct SetRecord : HostItem {
    SetRecord(Kind ofKind, Name itsName);
    SetRecord(const SetRecord&) = delete;
    SetRecord& operator=(const SetRecord&) = delete;
    /// Removes the set from the listings of all members.
    ~SetRecord();

    std::uint32_t memberCount() const { return static_cast<std::uint32_t>(places.size()) - holes; }
    /// The members in their order, until one leaves or comes back.
    std::vector<Compound*>& listed() noexcept;

    std::vector<Compound*> places; ///< null: its member has left
    std::uint32_t holes = 0;
    std::int32_t selected = 0; ///< number of members that are selected
    std::int32_t hasSelected = 0;
    std::int32_t visible = 0;
    /// The last step in which members left.
    std::uint32_t leftIn = 0;

private:
    std::vector<Compound*> m_listed; ///< the places without holes; has room for all from the start
    bool m_isListed = false;         ///< as it is now

    friend void listMembers(SetRecord& set, const std::vector<Compound*>& members);
    friend SetListing leaveSets(HostItem& item);
    friend void rejoinSets(Compound& item, SetListing&& left) noexcept;
};

/// Lists `members`, which hold neither null nor repetitions, in a new set that is not attached yet.
void listMembers(SetRecord& set, const std::vector<Compound*>& members);
/// Takes an item out of every set that lists it. What is returned puts it back in again.
SetListing leaveSets(HostItem& item);
/// Puts an item that has left its sets back into those that there still are.
void rejoinSets(Compound& item, SetListing&& left) noexcept;
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
