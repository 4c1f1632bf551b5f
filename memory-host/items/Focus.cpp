#include "Focus.h"

#include "AtomItem.h"
#include "FocusedItem.h"
#include "Holder.h"
#include "Logger.h"
#include "ObserverList.h"
#include "Subscribers.h"

#include <string>

namespace memory_host {

namespace {

struct FocusState {
    ObserverList<TAVIK::FocusObserver> observers;
    Compound* item = nullptr;
    unsigned int moves = 0;
    const FocusKeptAway* going = nullptr; ///< the innermost destruction
};

FocusState& state() {
    // Never destroyed: observers may live as long as static objects.
    static auto* const focus = new FocusState;
    return *focus;
}

bool isAtOrBelow(const HostItem& item, const HostItem& root) {
    const HostItem* at = &item;
    while (at && at != &root)
        at = at->parent;
    return at;
}

void moveFocus(Compound* item, const TAVIK::FocusObserver* by, bool center) noexcept {
    FocusState& focus = state();
    focus.item = item;
    const unsigned int move = ++focus.moves;
    focus.observers.tellEach([&](TAVIK::FocusObserver& observer) {
        if (&observer != by)
            callHandler([&] { observer.focusMoved(item, center); },
                        "an observer failed to follow the focus: ");
        // A move that a handler made was told to all, and this one is over.
        return move == focus.moves;
    });
}

} // namespace

bool FocusKeptAway::covers(const Compound& item) const {
    const HostItem& record = HostItem::of(&item);
    bool isGoing = isAtOrBelow(record, m_item) || (m_outer && m_outer->covers(item));
    if (record.kind == Kind::Bond)
        for (const Compound* atom : static_cast<const BondItem&>(item).m_atoms)
            isGoing = isGoing || (atom && isAtOrBelow(HostItem::of(atom), m_item));
    return isGoing;
}

FocusKeptAway::FocusKeptAway(const Compound* item) noexcept
    : m_item(HostItem::of(item)), m_outer(state().going) {
    state().going = this;
    if (const Compound* const focused = state().item; focused && covers(*focused))
        moveFocus(nullptr, nullptr, false);
}

FocusKeptAway::~FocusKeptAway() {
    state().going = m_outer;
}

void addFocusObservers(std::vector<const void*>& listeners) {
    state().observers.appendTo(listeners);
}

} // namespace memory_host

namespace TAVIK {

using namespace memory_host;

FocusObserver::FocusObserver() {
    state().observers.add(this);
}

FocusObserver::~FocusObserver() {
    state().observers.remove(this);
}

Compound* Focus::item() {
    return state().item;
}

void Focus::set(Compound* item, FocusObserver* by, bool center) {
    if (item && state().going && state().going->covers(*item))
        return;
    if (item == state().item && !center)
        return;
    if (state().observers.depth() >= deepestTelling) {
        Logger::Write("a move of the focus is refused: it answers a move that answers another, " +
                      std::to_string(deepestTelling) + " times over");
        return;
    }
    moveFocus(item, by, center);
}

} // namespace TAVIK
