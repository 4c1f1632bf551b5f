#include "Destroying.h"

#include "AtomItem.h"
#include "Attaching.h"
#include "DataVersion.h"
#include "DestroyObserver.h"
#include "Holder.h"
#include "Recording.h"
#include "Sets.h"
#include "Slabs.h"
#include "Subscribers.h"

#include <algorithm>
#include <limits>

namespace memory_host {

namespace {

struct Observers {
    std::vector<TAVIK::DestroyObserver*> all; ///< null: unregistered during a notification
    int tellings = 0;                         ///< nested notifications
};

Observers& observers() {
    // Never destroyed: observers may live as long as static objects.
    static auto* const state = new Observers;
    return *state;
}

void freeBond(BondItem* bond) {
    // Bonds go with their atoms in the order in which they were made.
    prefetchAfter(bond);
    prefetchAfter(bond + 1);
    noteDataChange(HostItem::of(bond));
    detach(bond);
    freeItem(bond);
}

} // namespace

void tellBeforeDestroying(Compound* item) {
    noteDataChange(HostItem::of(item));
    Observers& state = observers();
    if (state.all.empty() || !isInSpace(HostItem::of(item)))
        return;
    ++state.tellings;
    // Observers that register in the loop know the items that exist now, so they are told, too.
    for (std::size_t i = 0; i != state.all.size(); ++i)
        if (TAVIK::DestroyObserver* const observer = state.all[i])
            callHandler([=] { observer->aboutToDestroy(item); });
    if (--state.tellings == 0)
        std::erase(state.all, nullptr);
}

void addDestroyObservers(std::vector<const void*>& listeners) {
    for (const TAVIK::DestroyObserver* observer : observers().all)
        if (observer)
            listeners.push_back(observer);
}

void freeItem(Compound* item) {
    HostItem& record = HostItem::of(item);
    leaveSets(record);
    switch (record.kind) {
    case Kind::Atom:
        while (BondItem* bond = static_cast<AtomItem*>(item)->m_bonds)
            freeBond(bond);
        break;
    case Kind::Bond:
        static_cast<BondItem*>(item)->disconnect();
        break;
    default:
        break;
    }
    if (record.isHolder()) {
        auto all = std::numeric_limits<std::size_t>::max();
        freeChildren(record.asHolder(), all);
    }
    delete item;
}

bool freeChildren(Holder& holder, std::size_t& most) {
    // An atom that is freed takes its bonds along. Bonds in here leave null children behind.
    for (std::uint32_t slot = holder.begin, end = holder.end; slot != end; ++slot) {
        Compound* const child = holder.children[slot];
        if (!child)
            continue;
        HostItem& record = HostItem::of(child);
        record.parent = nullptr;
        if (most == 0 || (record.isHolder() && !freeChildren(record.asHolder(), most)))
            return false;
        most -= most != 0 ? 1 : 0;
        holder.removeChild(slot);
        freeItem(child);
    }
    return true;
}

} // namespace memory_host

namespace TAVIK {

DestroyObserver::DestroyObserver() {
    memory_host::observers().all.push_back(this);
}

DestroyObserver::~DestroyObserver() {
    auto& [all, tellings] = memory_host::observers();
    const auto found = std::find(all.begin(), all.end(), this);
    if (found == all.end())
        return;
    if (tellings > 0)
        *found = nullptr;
    else
        all.erase(found);
}

} // namespace TAVIK
