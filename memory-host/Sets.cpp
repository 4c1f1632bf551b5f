// Named sets: which sets list an item, and what they count of its state.
#include "HostItem.h"

#include <algorithm>
#include <unordered_map>

namespace memory_host {

namespace {

struct Listing {
    SetRecord* set;
    std::uint32_t index; ///< in the set's vector of members
};

// Only items that some set lists stand here; they carry the flag InSets.
using Listings = std::unordered_map<const HostItem*, std::vector<Listing>>;

Listings& listings() {
    static auto* const all = new Listings;
    return *all;
}

void count(SetRecord& set, const ItemState& state, std::int32_t change) {
    set.selected += state.selected ? change : 0;
    set.hasSelected += state.hasSelected ? change : 0;
    set.visible += state.visible ? change : 0;
}

} // namespace

std::vector<Compound*>& SetRecord::listed() {
    if (holes == 0)
        return members;
    std::uint32_t to = 0;
    for (std::uint32_t from = 0; from != members.size(); ++from) {
        Compound* member = members[from];
        if (!member)
            continue;
        if (to != from) {
            for (Listing& listing : listings().at(&HostItem::of(member)))
                if (listing.set == this)
                    listing.index = to;
            members[to] = member;
        }
        ++to;
    }
    members.resize(to);
    holes = 0;
    return members;
}

void listMembers(SetRecord& set, std::vector<Compound*> members) {
    set.members = std::move(members);
    for (std::uint32_t index = 0; index != set.members.size(); ++index) {
        HostItem& member = HostItem::of(set.members[index]);
        listings()[&member].push_back({&set, index});
        member.set(HostItem::InSets, true);
        count(set, stateOf(member), 1);
    }
}

void leaveSets(HostItem& item) {
    if (!item.has(HostItem::InSets))
        return;
    const auto found = listings().find(&item);
    const ItemState state = stateOf(item);
    for (const auto& [set, index] : found->second)
        changeState(*set, [&, at = set, slot = index] {
            at->members[slot] = nullptr;
            ++at->holes;
            count(*at, state, -1);
        });
    listings().erase(found);
    item.set(HostItem::InSets, false);
}

void releaseMembers(SetRecord& set) {
    for (Compound* member : set.listed()) {
        HostItem& record = HostItem::of(member);
        const auto found = listings().find(&record);
        std::erase_if(found->second, [&](const Listing& listing) { return listing.set == &set; });
        if (found->second.empty()) {
            listings().erase(found);
            record.set(HostItem::InSets, false);
        }
    }
    set.members.clear();
}

void tellSets(const HostItem& item, ItemState before) {
    const ItemState after = stateOf(item);
    if (after == before)
        return;
    for (const Listing& listing : listings().at(&item))
        changeState(*listing.set, [&] {
            count(*listing.set, before, -1);
            count(*listing.set, after, 1);
        });
}

std::vector<SetRecord*> setsOf(const HostItem& item) {
    std::vector<SetRecord*> sets;
    if (const auto found = listings().find(&item); found != listings().end())
        for (const Listing& listing : found->second)
            sets.push_back(listing.set);
    return sets;
}

} // namespace memory_host
