// The default colours of items: atoms by their element, in CPK colours (after the models of Corey,
// Pauling and Koltun).
#pragma once

#include "Color.h"
#include "HostItem.h"

namespace memory_host {

/// The default colour of an item.
Color defaultColor(const HostItem& item);

} // namespace memory_host
