#include "Ancestry.h"

#include "Holder.h"

TAVIK::Compound* TAVIK::GetParent(const Compound* item) {
    const memory_host::Holder* const parent = item ? HostItem::of(item).parent : nullptr;
    return parent ? parent->self : nullptr;
}
