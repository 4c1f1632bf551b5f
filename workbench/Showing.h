// Showing only what is selected, and showing everything again.
#pragma once

namespace workbench {

enum class Showing {
    Done,
    NothingSelected, ///< and so nothing was changed
    Refused          ///< by the host, as another change is under way
};

/// Shows what is selected in all that is open, and hides all else, as one change. Bonds and sets
/// are left as they are: they are seen where their atoms and members are.
Showing showOnlySelected();

/// Shows all that is open, as one change.
Showing showEverything();

} // namespace workbench
