#include "Sets.h"

#include "Counters.h"
#include "Holder.h"

#include <algorithm>
#include <unordered_map>

namespace memory_host {

namespace {

struct Listing {
    SetRecord* set;
    std::uint32_t index; ///< in the set's vector of members
};

// Has only members of sets; they carry the flag InSets.
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

void listMembers(SetRecord& set, const std::vector<Compound*>& members) {
    set.members.reserve(members.size());
    for (Compound* member : members) {
        HostItem& record = HostItem::of(member);
        std::vector<Listing>& sets = listings()[&record];
        const auto index = static_cast<std::uint32_t>(set.members.size());
        // In this order the set's destructor can undo a part of the list if memory runs out.
        set.members.push_back(member);
        sets.push_back({&set, index});
        record.set(HostItem::InSets, true);
        count(set, stateOf(record), 1);
    }
}

SetRecord::~SetRecord() {
    for (Compound* member : listed()) {
        HostItem& record = HostItem::of(member);
        const auto found = listings().find(&record);
        std::erase_if(found->second,
                      [this](const Listing& listing) { return listing.set == this; });
        if (found->second.empty()) {
            listings().erase(found);
            record.set(HostItem::InSets, false);
        }
    }
}

void leaveSets(HostItem& item) {
    if (!item.has(HostItem::InSets))
        return;
    // From here on the sets are not told of changes of the item, which may happen while it leaves.
    const auto left = listings().extract(&item);
    item.set(HostItem::InSets, false);
    const ItemState state = stateOf(item);
    for (const Listing& listing : left.mapped()) {
        SetRecord& set = *listing.set;
        changeState(set, [&] {
            set.members[listing.index] = nullptr;
            ++set.holes;
            count(set, state, -1);
        });
        if (!listsMembers(set))
            addContribution(set.parent, contributionOf(set));
    }
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
