// The colours that items have from the start: atoms by their element, as molecular graphics has
// used them since the plastic models of Corey, Pauling and Koltun.
#pragma once

#include "Color.h"
#include "HostItem.h"

namespace memory_host {

/// The colour that an item has from the start.
Color defaultColor(const HostItem& item);

} // namespace memory_host
