#include "Arrivals.h"

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

void forgetArrival(const HostItem& item) noexcept {
    arrivals().numbers.erase(item.id);
}

std::uint32_t orderIn(const HostItem& holder, const HostItem& child) {
    return holder.kind == Kind::Space ? arrivals().numbers.at(child.id) : child.id;
}

} // namespace memory_host
