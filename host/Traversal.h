// Walks over the data: collecting items by kind, applying a function to atoms, groups or residues,
// and reading the atoms' qualified names. `all` means everywhere: true for every item below the
// root, false for selected ones.
#pragma once

#include "Compound.h"
#include "HostExport.h"
#include "Kinds.h"
#include "detail/ByClass.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace TAVIK {

/// Append the atoms, groups or residues at or below `root` to `out`, depth first in the order of
/// children. What `out` holds already stays. A null root gives nothing.
HOST_EXPORT void GetAtoms(Compound* root, std::vector<Compound*>& out, bool all);
HOST_EXPORT void GetGroups(Compound* root, std::vector<Compound*>& out, bool all);
HOST_EXPORT void GetResidues(Compound* root, std::vector<Compound*>& out, bool all);
/// Appends the selected items below `root` to `out`. If an item is wholly selected, the item itself
/// is appended and nothing inside it.
HOST_EXPORT void GetSelected(Compound* root, std::vector<Compound*>& out);

/// Reads the qualified names of atoms in parts, so that what many have in common is read once. A
/// name is all parts entered and not left, and then the atom's own. The views are valid during the
/// call; the data may not be changed in it.
class AtomNameVisitor {
public:
    virtual ~AtomNameVisitor() = default;
    /// The names of all atoms below `composite` go on with `part`, as "MET 1/". False leaves them
    /// out, and Leave() is not called.
    virtual bool Enter(Compound* composite, std::string_view part) = 0;
    virtual void Leave() = 0;
    /// An atom and the last part of its name, as "CA".
    virtual void Visit(Compound* atom, std::string_view name) = 0;
};

/// Visits the atoms that GetAtoms() appends, in that order. The first part, given for `root`, is
/// all that the names below it begin with, as "/1ubq/A/Groups/"; a root that is an atom is visited
/// with its whole name. Composites that do not appear in names, as groups, are not entered.
HOST_EXPORT void VisitAtomNames(Compound* root, bool all, AtomNameVisitor& visitor);

namespace detail {

/// What a walk that collects items of one kind does with an item.
enum class WalkStep { Take, Enter, Skip };

/// GetItems() for a range of children or parts; `steps` caches the step for each class.
template <class T>
void CollectItems(Compound** begin, Compound** end, std::vector<Compound*>& out, bool all,
                  ByClass<WalkStep>& steps) {
    for (Compound** it = begin; it != end; ++it) {
        Compound* child = *it;
        if (!child)
            continue;
        // Most of the time is waiting for memory, in which hosts are likely to have put items side
        // by side.
        __builtin_prefetch(reinterpret_cast<const char*>(child) + 1024);
        switch (steps.of(child, [](const Compound* item) {
            return dynamic_cast<const T*>(item)           ? WalkStep::Take
                   : dynamic_cast<const Composite*>(item) ? WalkStep::Enter
                                                          : WalkStep::Skip;
        })) {
        case WalkStep::Take:
            if (all || child->IsSelected())
                out.push_back(child);
            break;
        case WalkStep::Enter:
            if (all || child->HasSelected())
                CollectItems<T>(child->ChildBegin(), child->ChildEnd(), out, all, steps);
            break;
        case WalkStep::Skip:
            break;
        }
    }
}

} // namespace detail

/// Appends the items of kind `T` below `root` to `out`, depth first in the order of children; never
/// `root` itself. Items inside a `T` are skipped. With `all` false only selected items are taken,
/// and items with nothing selected inside are not entered. `tag` is not read: it selects `T`.
/// `parts` says whether to search the parts of a root that is no composite; parts further down are
/// never searched.
template <class T>
void GetItems(Compound* root, std::vector<Compound*>& out, bool all, const T* /*tag*/, bool parts) {
    if (!root || (!all && !root->HasSelected()))
        return;
    detail::ByClass<detail::WalkStep> steps;
    if (dynamic_cast<Composite*>(root))
        detail::CollectItems<T>(root->ChildBegin(), root->ChildEnd(), out, all, steps);
    else if (parts)
        detail::CollectItems<T>(root->PartBegin(), root->PartEnd(), out, all, steps);
}

/// Gather everything first, then apply `f` to each item in order, so that `f` may change selection
/// or visibility without disturbing the walk. Return `f` as it stands after the last call.
template <class F> F ForAtoms(Compound* root, bool all, F f) {
    std::vector<Compound*> items;
    GetAtoms(root, items, all);
    return std::for_each(items.begin(), items.end(), f);
}

template <class F> F ForGroups(Compound* root, bool all, F f) {
    std::vector<Compound*> items;
    GetGroups(root, items, all);
    return std::for_each(items.begin(), items.end(), f);
}

template <class F> F ForResidues(Compound* root, bool all, F f) {
    std::vector<Compound*> items;
    GetResidues(root, items, all);
    return std::for_each(items.begin(), items.end(), f);
}

} // namespace TAVIK
