#include "Sets.h"

#include "Counters.h"
#include "Holder.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace memory_host {

namespace {

SetListings& listings() {
    static auto* const all = new SetListings;
    return *all;
}

std::unordered_map<std::uint32_t, SetRecord*>& sets() {
    static auto* const all = new std::unordered_map<std::uint32_t, SetRecord*>;
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
        sets.push_back({&set, index, set.id});
        record.set(HostItem::InSets, true);
        count(set, stateOf(record), 1);
    }
}

SetRecord::SetRecord(Kind ofKind, Name itsName) : HostItem(ofKind, std::move(itsName)) {
    sets()[id] = this;
}

SetRecord::~SetRecord() {
    sets().erase(id);
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

SetListing leaveSets(HostItem& item) {
    if (!item.has(HostItem::InSets))
        return {};
    // From here on the sets are not told of changes of the item, which may happen while it leaves.
    SetListing left = listings().extract(&item);
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
    return left;
}

void rejoinSets(HostItem& item, SetListing&& left) noexcept {
    if (left.empty())
        return;
    // A set that was destroyed before the item left is not in this listing; one may be gone since.
    std::erase_if(left.mapped(), [](const Listing& listing) { return !findSet(listing.id); });
    if (left.mapped().empty())
        return;
    // The map has had room for this node before, so that nothing is allocated.
    listings().insert(std::move(left));
    item.set(HostItem::InSets, true);
}

void restoreMembers(SetRecord& set, std::vector<Compound*>& members) noexcept {
    const Contribution before = contributionOf(set);
    changeState(set, [&] {
        set.members.swap(members);
        set.holes = 0;
        set.selected = set.hasSelected = set.visible = 0;
        for (std::uint32_t i = 0; i != set.members.size(); ++i) {
            const HostItem& member = HostItem::of(set.members[i]);
            for (Listing& listing : listings().find(&member)->second)
                if (listing.set == &set)
                    listing.index = i;
            count(set, stateOf(member), 1);
        }
    });
    addContribution(set.parent, contributionOf(set) - before);
}

const std::vector<Listing>& listingsOf(const HostItem& item) noexcept {
    return listings().find(&item)->second;
}

SetRecord* findSet(std::uint32_t id) noexcept {
    const auto found = sets().find(id);
    return found == sets().end() ? nullptr : found->second;
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
    std::vector<SetRecord*> all;
    if (const auto found = listings().find(&item); found != listings().end())
        for (const Listing& listing : found->second)
            all.push_back(listing.set);
    return all;
}

} // namespace memory_host
