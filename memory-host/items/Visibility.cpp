#include "Visibility.h"

#include "AtomItem.h"
#include "Holder.h"
#include "Recording.h"

#include <algorithm>

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
// What changes is recorded in `step` if there is one; there is room for it.
std::int32_t showWithin(Compound& item, HostItem& record, bool on, Step* step) {
    if (record.isHolder() && record.asHolder().sum.leaves > 0) {
        Holder& holder = record.asHolder();
        // What is shown is marked so. What is hidden may be so for another reason.
        if (step && !on && holder.sum.shownLeaves == holder.sum.leaves) {
            step->add(Step::Write::Show, on, &item);
            step = nullptr;
        }
        std::int32_t change = 0;
        Compound** const last = holder.childEnd();
        for (Compound** child = holder.childBegin(); child != last; ++child)
            if (HostItem& within = HostItem::of(*child); !listsMembers(within))
                change += showWithin(**child, within, on, step);
        if (change != 0)
            changeState(holder, [&] { holder.sum.shownLeaves += change; });
        return change;
    }
    if (record.has(HostItem::Visible) == on)
        return 0;
    if (step)
        step->add(Step::Write::Show, on, &item);
    changeState(record, [&] { record.set(HostItem::Visible, on); });
    if (record.kind == Kind::Atom)
        return static_cast<AtomItem&>(item).markShown();
    if (record.kind == Kind::Bond)
        return static_cast<BondItem&>(item).markShown();
    return record.isHolder() ? (on ? 1 : -1) : markShown(record, on);
}

} // namespace

void setVisible(HostItem& item, Compound* self, bool on) {
    if (listsMembers(item)) {
        for (Compound* member : static_cast<SetRecord&>(item).listed())
            setVisible(HostItem::of(member), member, on);
        return;
    }
    Step* const step = stepFor(item);
    const std::int32_t leaves = item.isHolder() ? item.asHolder().sum.leaves : 0;
    if (step && !step->reserve(static_cast<std::size_t>(std::max(leaves, 1))))
        return;
    countShown(item, showWithin(*self, item, on, step));
}

void showEach(std::span<void* const> items, bool on) {
    Holder* around = nullptr; // of the last one that changed
    std::int32_t change = 0;  // that it has not counted yet
    const auto count = [&] {
        for (Holder* holder = change == 0 ? nullptr : around; holder; holder = holder->parent)
            changeState(*holder, [&] { holder->sum.shownLeaves += change; });
        change = 0;
    };
    for (void* const each : items) {
        auto& item = *static_cast<Compound*>(each);
        HostItem& record = HostItem::of(&item);
        if (record.parent != around) {
            count();
            around = record.parent;
        }
        change += showWithin(item, record, on, nullptr);
    }
    count();
}

} // namespace memory_host
