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

std::vector<Compound*>& SetRecord::listed() noexcept {
    if (holes == 0)
        return places;
    if (!m_isListed) {
        m_listed.resize(memberCount());
        std::copy_if(places.begin(), places.end(), m_listed.begin(),
                     [](const Compound* member) { return member != nullptr; });
        m_isListed = true;
    }
    return m_listed;
}

void listMembers(SetRecord& set, const std::vector<Compound*>& members) {
    set.places.reserve(members.size());
    set.m_listed.reserve(members.size());
    for (Compound* member : members) {
        HostItem& record = HostItem::of(member);
        std::vector<Listing>& sets = listings()[&record];
        const auto place = static_cast<std::uint32_t>(set.places.size());
        // In this order the set's destructor can undo a part of the list if memory runs out.
        set.places.push_back(member);
        sets.push_back({&set, place, set.id});
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
            set.places[listing.place] = nullptr;
            ++set.holes;
            set.m_isListed = false;
            count(set, state, -1);
        });
        if (!listsMembers(set))
            addContribution(set.parent, contributionOf(set));
    }
    return left;
}

void rejoinSets(Compound& item, SetListing&& left) noexcept {
    if (left.empty())
        return;
    // A set that was destroyed before the item left is not in this listing; one may be gone since.
    std::erase_if(left.mapped(), [](const Listing& listing) { return !findSet(listing.id); });
    if (left.mapped().empty())
        return;
    HostItem& record = HostItem::of(&item);
    // A set that has had no members counts by itself, perhaps in this very item.
    for (const Listing& listing : left.mapped())
        if (const SetRecord& set = *listing.set; !listsMembers(set))
            addContribution(set.parent, -contributionOf(set));
    const ItemState state = stateOf(record);
    for (const Listing& listing : left.mapped()) {
        SetRecord& set = *listing.set;
        changeState(set, [&] {
            set.places[listing.place] = &item;
            --set.holes;
            set.m_isListed = false;
            count(set, state, 1);
        });
    }
    // The map has had room for this node before, so that nothing is allocated.
    listings().insert(std::move(left));
    record.set(HostItem::InSets, true);
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
