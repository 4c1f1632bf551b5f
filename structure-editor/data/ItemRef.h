// Finds an item again after a dialog: while the dialog was open, the host may have destroyed the
// item and made another one at the same address.
#pragma once

#include "Compound.h"

/// Remembers an item by address and identifier, and dereferences it only once it is known to exist.
class ItemRef {
public:
    /// `item` exists now. Null is never found again.
    explicit ItemRef(TAVIK::Compound* item);

    /// The item if it still is a direct child of `parent`, which exists; else null.
    TAVIK::Compound* among(TAVIK::Compound* parent) const;
    /// The item if it still is in the data space as a top-level item, or is the space itself.
    TAVIK::Compound* inSpace() const;
    /// The item if it still is anywhere below `root`, which exists; else null. Walks the data: call
    /// it once a dialog, never once an item.
    TAVIK::Compound* below(TAVIK::Compound* root) const;

private:
    bool is(TAVIK::Compound* candidate) const;

    TAVIK::Compound* m_item;
    unsigned int m_id;
};
