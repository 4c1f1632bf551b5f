#include "Selection.h"

#include "AtomItem.h"
#include "Holder.h"
#include "SelectedChildren.h"
#include "SelectionChanges.h"
#include "Sets.h"
#include "Slabs.h"

namespace memory_host {

namespace {

void mark(HostItem& item, bool on) {
    changeState(item, [&] { item.set(HostItem::Selected, on); });
    if (item.parent)
        item.parent->markChild(item.position, on);
}

// Marks everything in a composite. Each composite's counters are set once, and not for each of what
// may be millions of leaves.
void selectBelow(Holder& holder, bool on) {
    const std::int32_t wanted = on ? holder.sum.leaves : 0;
    if (holder.sum.selectedLeaves == wanted)
        return;
    ++selectionChanges;
    Compound** const last = holder.childEnd();
    for (Compound** child = holder.childBegin(); child != last; ++child) {
        HostItem& record = HostItem::of(*child);
        prefetchAfter(&record);
        if (record.isHolder() && record.asHolder().sum.leaves > 0)
            selectBelow(record.asHolder(), on);
        else if (record.has(HostItem::Selected) != on && !listsMembers(record))
            mark(record, on);
    }
    changeState(holder, [&] {
        holder.sum.selectedLeaves = wanted;
        holder.sum.selectedAtoms = on ? holder.sum.atoms : 0;
    });
}

// Adds a change of the selection to the counters of all composites above an item.
void countSelected(const HostItem& item, std::int32_t leaves, std::int32_t atoms) {
    for (Holder* holder = item.parent; holder; holder = holder->parent)
        changeState(*holder, [&] {
            holder->sum.selectedLeaves += leaves;
            holder->sum.selectedAtoms += atoms;
        });
}

} // namespace

void setSelected(HostItem& item, bool on) {
    if (item.isHolder() && item.asHolder().sum.leaves > 0) {
        const Contribution before = item.asHolder().sum;
        selectBelow(item.asHolder(), on);
        const Contribution change = item.asHolder().sum - before;
        if (change != Contribution{})
            countSelected(item, change.selectedLeaves, change.selectedAtoms);
        return;
    }
    if (listsMembers(item)) {
        for (Compound* member : static_cast<SetRecord&>(item).listed())
            setSelected(HostItem::of(member), on);
        return;
    }
    if (item.has(HostItem::Selected) == on)
        return;
    ++selectionChanges;
    mark(item, on);
    const std::int32_t change = on ? 1 : -1;
    countSelected(item, change, item.kind == Kind::Atom ? change : 0);
}

void selectAtoms(std::span<Compound* const> atoms, bool on) {
    const std::int32_t each = on ? 1 : -1;
    Holder* around = nullptr; // of the last one that changed
    std::int32_t within = 0;  // changes that `around` has not counted yet
    std::int32_t above = 0;   // changes that the composite above has not counted yet
    const auto goOnIn = [&](Holder* next) {
        if (around) {
            changeState(*around, [&] {
                around->sum.selectedLeaves += within;
                around->sum.selectedAtoms += within;
            });
            above += within;
            if (!next || next->parent != around->parent) {
                countSelected(*around, above, above);
                above = 0;
            }
        }
        within = 0;
        around = next;
    };
    for (Compound* const atom : atoms) {
        HostItem& record = static_cast<AtomItem*>(atom)->record();
        if (record.has(HostItem::Selected) == on)
            continue;
        ++selectionChanges;
        if (record.parent != around)
            goOnIn(record.parent);
        mark(record, on);
        within += each;
    }
    goOnIn(nullptr);
}

} // namespace memory_host

std::uint64_t TAVIK::SelectionChanges() {
    return memory_host::selectionChanges;
}

bool TAVIK::GetSelectedChildren(Compound* composite, SelectedChildren& told) {
    HostItem& record = HostItem::of(composite);
    return record.isHolder() && record.asHolder().tellSelected(told);
}
