// The files that top-level items were read from; in a map beside the items, as few have one.
#pragma once

#include "HostItem.h"

#include <cstddef>
#include <string>

namespace memory_host {

/// Keeps the file that an item is read from, by its path in bytes as the system has it; a relative
/// one is taken from the working directory.
void setOrigin(const Compound* item, const std::string& path);
/// Called before an item is freed. Only items at the top level, or outside of the space, are known.
void forgetOrigin(const HostItem& item);
/// Number of items with a known origin.
std::size_t originCount();

} // namespace memory_host
