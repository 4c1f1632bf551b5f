// What all functions that make items share: what is refused, and how new items are attached.
#pragma once

#include "Attaching.h"
#include "DataVersion.h"
#include "HostItem.h"

#include <memory>
#include <string>

namespace memory_host {

// These functions warn of what cannot be done; the warning begins with `what`.

/// The record of `parent`; null, with a warning, when nothing can be made in `parent`.
Holder* holderOf(Compound* parent, const char* what, const std::string& name);
/// Whether DataMaker::makeCore() knows a kind; warns when it does not.
bool findKind(const std::string& className, const std::string& name, Kind& kind);
/// Whether `parent`, or a composite above it, is already of that kind, so that a new item of the
/// kind cannot stand in it. If so, warns.
bool isNested(Kind kind, const std::string& name, Holder& parent, const char* what);
/// The same for a detached item with all that it holds.
bool isNested(const HostItem& item, Holder& parent, const char* what);

/// Attaches an item and returns it; frees it if attaching throws.
template <class ItemClass> ItemClass* attachNew(std::unique_ptr<ItemClass> item, Holder& parent) {
    attachTo(item.get(), parent);
    noteDataChange(HostItem::of(item.get()));
    return item.release();
}

} // namespace memory_host
