// What all that makes items has in common: what is refused, and how new items come to their place.
#pragma once

#include "Attaching.h"
#include "HostItem.h"

#include <memory>
#include <string>

namespace memory_host {

// What cannot be done is said once, here, as a warning that begins with `what`.

/// The record of `parent`; null, with a warning, when it is none that `name` can be made in.
Holder* holderOf(Compound* parent, const char* what, const std::string& name);
/// Whether DataMaker::makeCore() knows a kind; warns when it does not.
bool findKind(const std::string& className, const std::string& name, Kind& kind);
/// Whether a new item of that kind cannot stand in `parent`, as it or something around it is of
/// that kind; then it warns.
bool isNested(Kind kind, const std::string& name, Holder& parent, const char* what);
/// The same for a detached item with all that it holds.
bool isNested(const HostItem& item, Holder& parent, const char* what);

/// Owns an item until it is attached, also when something throws in between.
template <class ItemClass> ItemClass* attachNew(std::unique_ptr<ItemClass> item, Holder& parent) {
    attachTo(item.get(), parent);
    return item.release();
}

} // namespace memory_host
