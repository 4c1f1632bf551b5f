#include "Holder.h"

#include "Arrivals.h"
#include "Slabs.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>

namespace memory_host {

namespace {

// Prefetches a child that a walk over them comes to soon.
void prefetchIn(std::span<Compound* const> children, std::size_t i) {
    constexpr std::size_t ahead = 16;
    if (i + ahead < children.size())
        __builtin_prefetch(children[i + ahead], 1);
}

// Sorts children of a composite, from the one that came first. Their order is read once from each,
// as that mostly waits for memory; without memory to keep it, it is read for each comparison.
void sortByOrder(const Holder& holder, std::span<Compound*> children) {
    struct Ordered {
        std::uint32_t order;
        Compound* child;
    };
    const auto orderOf = [&](const Compound* child) {
        return orderIn(holder, HostItem::of(child));
    };
    if (std::ranges::is_sorted(children, {}, orderOf))
        return;
    const std::unique_ptr<Ordered[]> all(new (std::nothrow) Ordered[children.size()]); // NOLINT
    if (!all) {
        std::ranges::sort(children, {}, orderOf);
        return;
    }
    const std::span<Ordered> sorted(all.get(), children.size());
    for (std::size_t i = 0; i != children.size(); ++i) {
        prefetchIn(children, i);
        sorted[i] = {orderOf(children[i]), children[i]};
    }
    std::ranges::sort(sorted, {}, &Ordered::order);
    std::ranges::transform(sorted, children.begin(), &Ordered::child);
}

} // namespace

Holder::~Holder() {
    std::free(children);
} // NOLINT: see resize()

void Holder::resize(std::uint32_t slotCount) {
    // realloc, because a chain of a million bonds grows in place more often than not.
    auto** const resized = static_cast<Compound**>(
        std::realloc(children, std::max<std::size_t>(slotCount, 1) * sizeof(Compound*))); // NOLINT
    if (!resized)
        throw std::bad_alloc();
    children = resized;
    capacity = slotCount;
}

void Holder::appendChild(Compound* child) {
    if (end == capacity) {
        if (begin + holes > capacity / 2)
            closeHoles(0);
        if (end == capacity)
            resize(std::max<std::uint32_t>(4, capacity * 2));
    }
    place(child, end++);
}

void Holder::place(Compound* child, std::uint32_t slot) {
    HostItem& record = HostItem::of(child);
    record.position = slot;
    directLeaves += record.isHolder() ? 0 : 1;
    directAtoms += record.kind == Kind::Atom ? 1 : 0;
    if (record.kind == Kind::Set)
        set(HeldSet, true);
    if (holdsLarge(record))
        for (Holder* holder = this; holder && !holder->has(HeldLarge); holder = holder->parent)
            holder->set(HeldLarge, true);
    markChild(slot, record.has(Selected));
    ++version;
    children[slot] = child;
}

void Holder::restoreChild(Compound* child) {
    // A child that stood first, or last, finds its slot free, unless others have taken it.
    if (end == capacity)
        closeHoles(0);
    if (!restored)
        restored = end + 1;
    place(child, end++);
}

void Holder::sortRestored() {
    if (holes)
        closeHoles(begin);
    const std::uint32_t first = std::max(begin, restored - 1);
    restored = 0;
    const auto isOlder = [this](const Compound* a, const Compound* b) {
        return orderIn(*this, HostItem::of(a)) < orderIn(*this, HostItem::of(b));
    };
    Compound** const middle = children + first;
    Compound** const last = children + end;
    // What is taken back last was removed first.
    if (last - middle > 1 && !isOlder(middle[0], middle[1]))
        std::reverse(middle, last);
    sortByOrder(*this, {middle, last});
    Compound** const from =
        first == begin ? middle : std::upper_bound(children + begin, middle, *middle, isOlder);
    std::inplace_merge(from, middle, last, isOlder);
    const std::span<Compound* const> moved(from, last);
    for (std::size_t i = 0; i != moved.size(); ++i) {
        prefetchIn(moved, i);
        const auto slot =
            static_cast<std::uint32_t>(from - children + static_cast<std::ptrdiff_t>(i));
        HostItem& record = HostItem::of(moved[i]);
        record.position = slot;
        markChild(slot, record.has(Selected));
    }
    ++version;
}

void Holder::removeChild(std::uint32_t slot) {
    const HostItem& record = HostItem::of(children[slot]);
    directLeaves -= record.isHolder() ? 0 : 1;
    directAtoms -= record.kind == Kind::Atom ? 1 : 0;
    children[slot] = nullptr;
    markChild(slot, false);
    ++version;
    ++holes;
    // Holes at either end are closed at once, so that emptying from an end never moves anything.
    while (begin != end && !children[begin]) {
        ++begin;
        --holes;
    }
    while (begin != end && !children[end - 1]) {
        --end;
        --holes;
    }
    if (begin == end)
        begin = end = holes = 0;
    if (restored > end)
        restored = 0;
}

void Holder::closeHoles(std::uint32_t slot) {
    std::uint32_t to = slot;
    const std::uint32_t firstRestored = restored ? std::max(begin, restored - 1) : end;
    for (std::uint32_t from = begin; from != end; ++from) {
        Compound* const child = children[from];
        if (from == firstRestored)
            restored = to + 1;
        if (!child)
            continue;
        // Only those that move are touched: most of the time is waiting for memory.
        if (from != to) {
            HostItem& record = HostItem::of(child);
            prefetchAfter(&record);
            record.position = to;
            children[to] = child;
            markChild(from, false);
            markChild(to, record.has(Selected));
        }
        ++to;
    }
    begin = slot;
    end = to;
    holes = 0;
    if (restored > end)
        restored = 0;
}

void Holder::shrink() {
    closeHoles(0);
    if (end < capacity)
        resize(end);
}

Holder* nearest(Kind kind, Holder* holder) {
    while (holder && holder->kind != kind)
        holder = holder->parent;
    return holder;
}

Holder* residueAround(const HostItem& item) {
    return nearest(Kind::Residue, item.parent);
}

} // namespace memory_host
