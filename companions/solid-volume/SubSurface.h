// The command that cuts a part out of a surface.
#pragma once

namespace solid {

/// Adds the part of the selected surface, else of the first one that is shown and has values, where
/// these are at least `limit`.
void addSubSurface(double limit);

} // namespace solid
