// The colour of the hints in empty fields.
#pragma once

namespace workbench {

/// Makes the hints of all fields legible. Where a theme gives all colours but theirs, it is that of
/// another palette: black on black. To be called again when the palette has changed.
void makeHintsLegible();

} // namespace workbench
