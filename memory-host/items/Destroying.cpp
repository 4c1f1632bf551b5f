// Telling of items that are about to go.
#include "DestroyObserver.h"
#include "HostItem.h"
#include "Subscribers.h"

#include <algorithm>

namespace memory_host {

namespace {

struct Observers {
    std::vector<TAVIK::DestroyObserver*> all; ///< null: left while others were being told
    int tellings = 0;                         ///< one inside the other
};

Observers& observers() {
    // Never destroyed: observers may live as long as static objects.
    static auto* const state = new Observers;
    return *state;
}

bool isInSpace(const HostItem& item) {
    const HostItem* root = &item;
    while (root->parent)
        root = root->parent;
    return root->kind == Kind::Space;
}

} // namespace

void tellBeforeDestroying(Compound* item) {
    Observers& state = observers();
    if (state.all.empty() || !isInSpace(HostItem::of(item)))
        return;
    ++state.tellings;
    // Those that come meanwhile know the items that are there now, too.
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
