// The commands that contour a map.
#pragma once

namespace solid {

/// Adds the contour of the selected grid, else of the first one that is shown, at a level, between
/// the grid's shown bounds: around what is at least so high, or at most so low.
void addContour(double level, bool isHigh);

} // namespace solid
