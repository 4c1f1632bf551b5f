// The record of a composite: its children, and the counters from which its state is read in
// constant time.
#pragma once

#include "Counters.h"
#include "HostItem.h"
#include "SelectedChildren.h"

#include <cstdint>
#include <utility>

namespace memory_host {

/// The record of a composite. Destroyed children leave holes in the vector, which are closed when
/// the vector is next read: destroying an item costs the same for any number of siblings.
struct Holder : HostItem {
    Holder(Kind ofKind, Name itsName, Compound* item)
        : HostItem(ofKind, std::move(itsName)), self(item) {}
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder();

    std::uint32_t childCount() const { return end - begin - holes; }
    Compound** childBegin() {
        settle();
        return children + begin;
    }
    Compound** childEnd() {
        settle();
        return children + end;
    }
    /// Whether its name is a component of the qualified names of what it holds.
    bool isInNames() const { return kind != Kind::Group && kind != Kind::Space; }
    /// Appends to the vector only; the caller updates the counters.
    void appendChild(Compound* child);
    /// Leaves a hole; the caller updates the counters.
    void removeChild(std::uint32_t slot);
    /// Puts back a child that was removed. It takes its place in the order when the vector is next
    /// read, so that putting back many costs little more than one. Never allocates: the vector has
    /// had room for the child. The caller updates the counters.
    void restoreChild(Compound* child);
    /// Keeps the mark of the child in a slot: whether it is selected.
    void markChild(std::uint32_t slot, bool selected) {
        if (slot >= TAVIK::SelectedChildren::most)
            return;
        const std::uint64_t bit = std::uint64_t{1} << slot;
        marks = selected ? marks | bit : marks & ~bit;
    }
    /// Tells of all children, from childBegin() on; false where that is not known.
    bool tellSelected(TAVIK::SelectedChildren& told) {
        settle();
        if (end > TAVIK::SelectedChildren::most || directLeaves != childCount() || has(HeldSet))
            return false;
        told = {marks >> begin, version};
        return true;
    }
    /// Whether a child is, or holds, or held, what may take much memory: neither atom nor bond.
    static bool holdsLarge(const HostItem& child) {
        return child.isHolder() ? child.has(HeldLarge)
                                : child.kind != Kind::Atom && child.kind != Kind::Bond;
    }
    /// Frees unused capacity of the vector.
    void shrink();

    // First, to be next to the marks in memory: changes of an atom touch both.
    Contribution sum;               ///< of all children
    std::uint32_t directLeaves = 0; ///< children that are no composites
    /// Which slots hold a selected child; of composites and sets, nothing is known.
    std::uint64_t marks = 0;
    std::uint32_t version = 0; ///< rises when children come or go
    Compound** children = nullptr;
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
    std::uint32_t holes = 0; ///< null children between begin and end
    std::uint32_t capacity = 0;
    /// Slots from here on hold children that were put back, in any order; 0 if there are none.
    std::uint32_t restored = 0;
    std::uint32_t directAtoms = 0; ///< children that are atoms
    /// Of a residue: how many of its atoms belong to the active model.
    std::uint32_t modelAtoms = 0;
    Compound* self;

private:
    void settle() {
        if (restored)
            sortRestored();
        else if (holes)
            closeHoles(begin);
    }
    void sortRestored();
    void place(Compound* child, std::uint32_t slot);
    /// Moves the children together, the first to `slot`, which is not beyond `begin`.
    void closeHoles(std::uint32_t slot);
    void resize(std::uint32_t slotCount);
};

/// The nearest composite of that kind: `holder`, which may be null, or one above it; null if there
/// is none.
Holder* nearest(Kind kind, Holder* holder);
/// The residue around an item, or null.
Holder* residueAround(const HostItem& item);

} // namespace memory_host

inline memory_host::Holder& TAVIK::HostItem::asHolder() {
    return static_cast<memory_host::Holder&>(*this);
}
