// An outline around what is selected, on a finished picture: a changed selection needs no new one.
#pragma once

#include "Picture.h"

#include <vector>

namespace view {

/// Colours, on the opaque things of a picture and then on its see-through surfaces, the pixels of
/// selected things that are within `width` pixels of one that is not selected, or of one that lies
/// further behind than atoms in contact do. Nothing is drawn along the edges of the picture.
/// `isSelected` has a place for each id; ids beyond its end are not selected. `image` has the
/// picture's size and the format RGB32, and may be its image.
void outline(QImage& image, const Picture& picture, const std::vector<bool>& isSelected,
             Colour colour, int width = 2);

} // namespace view
