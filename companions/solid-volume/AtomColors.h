// The command that colours surfaces by the atoms they were made of.
#pragma once

namespace solid {

/// Gives the selected surfaces, or all that are shown where none is selected, the colours that
/// their atoms have now, and their default colour, which shows them; in one change. A vertex whose
/// atom is gone keeps its colour, unless that shows a value. Surfaces without atoms, as contours,
/// stay as they are.
void colorSurfacesByAtoms();

} // namespace solid
