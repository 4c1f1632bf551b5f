#include "Arrivals.h"

#include "Holder.h"
#include "Recording.h"
#include "Selection.h"

#include <algorithm>
#include <new>
#include <unordered_map>
#include <utility>

namespace memory_host {

namespace {

struct Arrivals {
    std::unordered_map<std::uint32_t, std::uint32_t> numbers; ///< by the identifiers of items
    std::uint32_t last = 0;
};

Arrivals& arrivals() {
    // Never destroyed: items may outlive every static object.
    static auto* const all = new Arrivals;
    return *all;
}

} // namespace

void noteArrival(const HostItem& item) {
    Arrivals& all = arrivals();
    all.numbers[item.id] = ++all.last;
}

Arrangement arrangementOf(Holder& space) {
    Arrangement now;
    now.reserve(space.childCount());
    for (Compound** child = space.childBegin(); child != space.childEnd(); ++child) {
        const HostItem& record = HostItem::of(*child);
        now.push_back({*child, arrivals().numbers.at(record.id), Name(record.name.text())});
    }
    return now;
}

void swapArrangement(Holder& space, Arrangement& other) noexcept {
    Compound** const children = space.childBegin();
    std::uint32_t slot = space.begin;
    for (std::size_t i = 0; i != other.size(); ++i) {
        TopLevel& top = other[i];
        HostItem& record = HostItem::of(top.item);
        std::swap(arrivals().numbers.find(record.id)->second, top.arrival);
        std::swap(record.name, top.name);
        children[i] = top.item;
        record.position = slot++;
        space.markChild(record.position, record.has(HostItem::Selected));
    }
    std::ranges::sort(other, {}, &TopLevel::arrival);
    ++space.version;
    ++selectionChanges;
}

void rearrange(Holder& space, Arrangement other) {
    if (Step* const step = stepFor(space); step && !step->recordArrangement(space))
        throw std::bad_alloc();
    for (TopLevel& top : other)
        top.arrival = ++arrivals().last;
    swapArrangement(space, other);
}

void forgetArrival(const HostItem& item) noexcept {
    arrivals().numbers.erase(item.id);
}

std::uint32_t orderIn(const HostItem& holder, const HostItem& child) {
    return holder.kind == Kind::Space ? arrivals().numbers.at(child.id) : child.id;
}

} // namespace memory_host
