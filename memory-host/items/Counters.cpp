#include "Counters.h"

#include "Holder.h"
#include "Sets.h"

namespace memory_host {

ItemState stateOf(const HostItem& item) {
    return {isSelected(item), hasSelected(item), isVisible(item)};
}

bool isSelected(const HostItem& item) {
    if (item.isHolder()) {
        const Contribution& sum = static_cast<const Holder&>(item).sum;
        if (sum.atoms > 0)
            return sum.selectedAtoms == sum.atoms;
        if (sum.leaves > 0)
            return sum.selectedLeaves == sum.leaves;
    } else if (listsMembers(item)) {
        const auto& set = static_cast<const SetRecord&>(item);
        return set.selected == static_cast<std::int32_t>(set.memberCount());
    }
    return item.has(HostItem::Selected);
}

bool hasSelected(const HostItem& item) {
    if (item.isHolder()) {
        const Contribution& sum = static_cast<const Holder&>(item).sum;
        if (sum.leaves > 0)
            return sum.selectedLeaves > 0;
    } else if (listsMembers(item)) {
        return static_cast<const SetRecord&>(item).hasSelected > 0;
    }
    return item.has(HostItem::Selected);
}

bool isVisible(const HostItem& item) {
    if (item.isHolder()) {
        const Contribution& sum = static_cast<const Holder&>(item).sum;
        return sum.leaves > 0 ? sum.shownLeaves > 0 : item.has(HostItem::Visible);
    }
    if (listsMembers(item))
        return static_cast<const SetRecord&>(item).visible > 0;
    return item.has(HostItem::Shown);
}

Contribution contributionOf(const HostItem& item) {
    if (listsMembers(item))
        return {};
    const std::int32_t selected = item.has(HostItem::Selected) ? 1 : 0;
    if (item.isHolder()) {
        const Contribution& sum = static_cast<const Holder&>(item).sum;
        return sum.leaves > 0
                   ? sum
                   : Contribution{0, 0, 1, selected, item.has(HostItem::Visible) ? 1 : 0};
    }
    const std::int32_t shown = item.has(HostItem::Shown) ? 1 : 0;
    if (item.kind == Kind::Atom)
        return {1, selected, 1, selected, shown};
    return {0, 0, 1, selected, shown};
}

void addContribution(Holder* holder, Contribution change) {
    if (change == Contribution{})
        return;
    for (; holder; holder = holder->parent) {
        if (holder->sum.leaves > 0 && holder->sum.leaves + change.leaves > 0) {
            // A composite that is empty neither before nor afterwards counts as its children do.
            changeState(*holder, [&] { holder->sum += change; });
            continue;
        }
        const Contribution before = contributionOf(*holder);
        changeState(*holder, [&] {
            holder->sum += change;
            if (holder->sum.leaves == 0) {
                // A composite that has just become empty starts with default marks of its own.
                holder->set(HostItem::Selected, false);
                holder->set(HostItem::Visible, true);
            }
        });
        change = contributionOf(*holder) - before;
        if (change == Contribution{})
            return;
    }
}

} // namespace memory_host
