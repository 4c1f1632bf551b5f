// What a picture shows at a place.
#pragma once

#include "Picture.h"

namespace view {

/// What the pixel shows; `noId` outside of the picture.
Id idAt(const Picture& picture, int x, int y);

/// What is shown within `radius` pixels of a place, so that thin lines can be hit: the pixel's own
/// thing, else the nearest on the screen, of equally near ones the one in front, and then the one
/// with the smaller id.
Id idNear(const Picture& picture, int x, int y, int radius);

} // namespace view
