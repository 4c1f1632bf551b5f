#include "FocusedItem.h"

#include "AtomItem.h"
#include "Holder.h"
#include "Subscribers.h"

namespace memory_host {

namespace {

bool isAtOrBelow(const HostItem& item, const HostItem& root) {
    const HostItem* at = &item;
    while (at && at != &root)
        at = at->parent;
    return at;
}

} // namespace

FocusState& focusState() {
    // Never destroyed: observers may live as long as static objects.
    static auto* const focus = new FocusState;
    return *focus;
}

void moveFocus(Compound* item, const TAVIK::FocusObserver* by, bool center) noexcept {
    FocusState& focus = focusState();
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

bool FocusKeptAway::covers(const Compound& item) const {
    const HostItem& record = HostItem::of(&item);
    bool isGoing = isAtOrBelow(record, m_item) || (m_outer && m_outer->covers(item));
    if (record.kind == Kind::Bond)
        for (const Compound* atom : static_cast<const BondItem&>(item).m_atoms)
            isGoing = isGoing || (atom && isAtOrBelow(HostItem::of(atom), m_item));
    return isGoing;
}

FocusKeptAway::FocusKeptAway(const Compound* item) noexcept
    : m_item(HostItem::of(item)), m_outer(focusState().going) {
    focusState().going = this;
    if (const Compound* const focused = focusState().item; focused && covers(*focused))
        moveFocus(nullptr, nullptr, false);
}

FocusKeptAway::~FocusKeptAway() {
    focusState().going = m_outer;
}

} // namespace memory_host
