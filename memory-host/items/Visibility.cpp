#include "Visibility.h"

#include "AtomItem.h"
#include "Holder.h"

namespace memory_host {

void countShown(const HostItem& item, std::int32_t change) {
    if (change == 0)
        return;
    for (Holder* holder = item.parent; holder; holder = holder->parent)
        changeState(*holder, [&] { holder->sum.shownLeaves += change; });
}

namespace {

// Marks everything in an item and updates the counters in it; returns the change in shown leaves
// for the counters above the item. Bonds that follow their atoms update the counters themselves.
std::int32_t showWithin(Compound& item, HostItem& record, bool on) {
    if (record.isHolder() && record.asHolder().sum.leaves > 0) {
        Holder& holder = record.asHolder();
        std::int32_t change = 0;
        Compound** const last = holder.childEnd();
        for (Compound** child = holder.childBegin(); child != last; ++child)
            if (HostItem& within = HostItem::of(*child); !listsMembers(within))
                change += showWithin(**child, within, on);
        if (change != 0)
            changeState(holder, [&] { holder.sum.shownLeaves += change; });
        return change;
    }
    if (record.has(HostItem::Visible) == on)
        return 0;
    changeState(record, [&] { record.set(HostItem::Visible, on); });
    if (record.kind == Kind::Atom)
        return static_cast<AtomItem&>(item).markShown();
    if (record.kind == Kind::Bond)
        return static_cast<BondItem&>(item).markShown();
    return record.isHolder() ? (on ? 1 : -1) : markShown(record, on);
}

} // namespace

void setVisible(HostItem& item, Compound* self, bool on) {
    if (listsMembers(item))
        for (Compound* member : static_cast<SetRecord&>(item).listed())
            setVisible(HostItem::of(member), member, on);
    else
        countShown(item, showWithin(*self, item, on));
}

} // namespace memory_host
