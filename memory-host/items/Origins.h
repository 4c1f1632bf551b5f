// The files that top-level items were read from or saved to; in a map beside the items, as few have
// one.
#pragma once

#include "HostItem.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace memory_host {

/// What is kept of an item's file; lives as long as the item.
class ItemSource {
public:
    ItemSource() = default;
    ItemSource(const ItemSource&) = delete;
    ItemSource& operator=(const ItemSource&) = delete;
    virtual ~ItemSource();
};

struct KnownOrigin {
    std::uint32_t item = 0; ///< its identifier
    std::string path;
    std::shared_ptr<ItemSource> source;
};

/// Keeps the file that an item is read from or saved to, by its path in bytes as the system has it;
/// a relative one is taken from the working directory. Throws std::bad_alloc, and changes nothing.
void setOrigin(const Compound* item, const std::string& path,
               std::shared_ptr<ItemSource> source = nullptr);
/// The path; empty for an item without a file.
std::string originPath(const Compound* item);
/// What setOrigin() was given last, or null.
std::shared_ptr<ItemSource> sourceOf(const Compound* item);
/// The sources of all items, also of those that are not in the space now but may come back; null
/// for those without one.
std::vector<KnownOrigin> knownOrigins();
/// Called before an item is freed. Only items at the top level, or outside of the space, are known.
void forgetOrigin(const HostItem& item);
/// Number of items with a known origin.
std::size_t originCount();

} // namespace memory_host
