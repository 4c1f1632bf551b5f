// What ties the items of the plain model to those of the host, which are told by their ids.
#pragma once

#include "Comparison.h"

namespace TAVIK {
class Compound;
}

namespace plain {

/// Enters an item of the host, and what it holds, in `parent`. Sets and bonds come after what they
/// list.
Item* enterItem(TAVIK::Compound* real, Host& host, Item* parent);
/// Compares an item and what it holds with the host's.
void compareItem(Comparison& all, const Item& item, TAVIK::Compound* real);
/// Compares what the walks over the whole data space find.
void compareWalks(Comparison& all, Host& host);

} // namespace plain
