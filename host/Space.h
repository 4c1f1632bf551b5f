// The data space: the single root of all data.
#pragma once

#include "Compound.h"

namespace TAVIK {

/// The root composite; its children are the top-level items.
class HOST_EXPORT Space : public Composite {
public:
    ~Space() override;

    /// The one data space; never null while the host runs.
    static Space* instance();
    /// Whether the host draws selected items highlighted.
    static bool GetShowSelection();
    static void SetShowSelection(bool on);
};

} // namespace TAVIK
