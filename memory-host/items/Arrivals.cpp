#include "Arrivals.h"

#include "Holder.h"

#include <algorithm>
#include <unordered_map>

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

void rearrange(Holder& space, std::span<Compound* const> order) {
    Compound** const children = space.childBegin();
    std::uint32_t slot = space.begin;
    for (Compound* const child : order) {
        HostItem& record = HostItem::of(child);
        noteArrival(record);
        record.position = slot++;
        space.markChild(record.position, record.has(HostItem::Selected));
    }
    std::copy(order.begin(), order.end(), children);
    ++space.version;
}

void forgetArrival(const HostItem& item) noexcept {
    arrivals().numbers.erase(item.id);
}

std::uint32_t orderIn(const HostItem& holder, const HostItem& child) {
    return holder.kind == Kind::Space ? arrivals().numbers.at(child.id) : child.id;
}

} // namespace memory_host
