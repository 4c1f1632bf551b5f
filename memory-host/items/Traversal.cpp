#include "Traversal.h"

#include "AtomNameWalk.h"
#include "Counters.h"
#include "Holder.h"

#include <algorithm>
#include <limits>

namespace TAVIK {

using namespace memory_host;

namespace {

// Appends the items for which `wanted` is true, depth first, and does not look inside them; `enter`
// says which other composites to enter.
template <class Wanted, class Enter>
void collect(Compound* item, const Wanted& wanted, const Enter& enter,
             std::vector<Compound*>& out) {
    HostItem& record = HostItem::of(item);
    if (wanted(record)) {
        out.push_back(item);
        return;
    }
    if (!record.isHolder() || !enter(record.asHolder()))
        return;
    Holder& holder = record.asHolder();
    Compound** const last = holder.childEnd();
    for (Compound** child = holder.childBegin(); child != last; ++child)
        collect(*child, wanted, enter, out);
}

// The same for a kind of composites; composites that hold only leaves are not entered.
template <Kind kind> void collectHolders(Compound* root, std::vector<Compound*>& out, bool all) {
    if (!root)
        return;
    collect(
        root,
        [all](const HostItem& item) { return item.kind == kind && (all || isSelected(item)); },
        [all](const Holder& holder) {
            // Neither groups nor residues stand inside their own kind, at any depth.
            return holder.kind != kind && holder.directLeaves != holder.childCount() &&
                   (all || hasSelected(holder));
        },
        out);
}

// Most atoms are not visited: the counters tell which composites hold atoms, and the children of a
// composite that holds only atoms are appended as a whole.
void collectAtoms(Holder& holder, std::vector<Compound*>& out, bool all) {
    const Contribution& sum = holder.sum;
    if ((all ? sum.atoms : sum.selectedAtoms) == 0)
        return;
    const bool everyAtom = all || sum.selectedAtoms == sum.atoms;
    Compound** const first = holder.childBegin();
    Compound** const last = holder.childEnd();
    if (everyAtom && holder.directAtoms == holder.childCount()) {
        out.insert(out.end(), first, last);
        return;
    }
    for (Compound** child = first; child != last; ++child) {
        HostItem& record = HostItem::of(*child);
        if (record.isHolder())
            collectAtoms(record.asHolder(), out, all);
        else if (record.kind == Kind::Atom && (everyAtom || record.has(HostItem::Selected)))
            out.push_back(*child);
    }
}

} // namespace

void GetAtoms(Compound* root, std::vector<Compound*>& out, bool all) {
    if (!root)
        return;
    HostItem& record = HostItem::of(root);
    if (record.isHolder()) {
        const Contribution& sum = record.asHolder().sum;
        const std::size_t needed =
            out.size() + static_cast<std::size_t>(all ? sum.atoms : sum.selectedAtoms);
        // At least doubles the capacity, because callers collect from many composites in turn.
        if (needed > out.capacity())
            out.reserve(std::max(needed, 2 * out.capacity()));
        collectAtoms(record.asHolder(), out, all);
    } else if (record.kind == Kind::Atom && (all || isSelected(record))) {
        out.push_back(root);
    }
}

void VisitAtomNames(Compound* root, bool all, AtomNameVisitor& visitor) {
    AtomNameWalk walk(root, all, visitor);
    while (walk.advance(std::numeric_limits<std::size_t>::max())) {
    }
}

void GetGroups(Compound* root, std::vector<Compound*>& out, bool all) {
    collectHolders<Kind::Group>(root, out, all);
}

void GetResidues(Compound* root, std::vector<Compound*>& out, bool all) {
    collectHolders<Kind::Residue>(root, out, all);
}

void GetSelected(Compound* root, std::vector<Compound*>& out) {
    if (!root)
        return;
    const HostItem* const rootRecord = &HostItem::of(root);
    collect(
        root,
        [rootRecord](const HostItem& item) {
            // Members of a set are found where they stand.
            return &item != rootRecord && item.kind != Kind::Set && isSelected(item);
        },
        [](const Holder& holder) { return hasSelected(holder); }, out);
}

} // namespace TAVIK
