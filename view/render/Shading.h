// From what is seen in the samples of a tile to their colours: two lights, and depth cueing.
//
// Light falls from the upper left, and weaker from the lower right; some is everywhere. Blinn's
// model adds a highlight of the first light (J. F. Blinn, Models of light reflection for computer
// synthesized pictures, SIGGRAPH 1977).
#pragma once

#include "Tile.h"
#include "TriangleSurfaces.h"

#include <array>
#include <cstdint>

namespace view {

/// Unit vectors towards the lights: to the right, up, and towards the viewer.
inline constexpr std::array<float, 3> mainLight = {-0.36F, 0.48F, 0.8F};
inline constexpr std::array<float, 3> fillLight = {0.6F, -0.48F, 0.64F};
/// Parts of a colour that are seen by the light from everywhere, from the first and the second one.
inline constexpr float ambientPart = 0.3F;
inline constexpr float mainPart = 0.6F;
inline constexpr float fillPart = 0.25F;
/// Of full white, added where the main light is mirrored; its fall is the cosine's 32nd power.
inline constexpr float highlightPart = 0.3F;

struct Look {
    Colour background = 0;
    float depthCue = 0; ///< part of the background in the colour of the farthest thing, 0 to 1
};

/// The colours of a tile's samples as 0xFFRRGGBB, tileSide a row.
using TileColours = std::array<std::int32_t, tileSide * tileSide>;

/// `triangles` may remember those of other tiles of the picture.
void shade(const Tile& tile, const Frame& frame, const Look& look, TriangleSurfaces& triangles,
           TileColours& colours);

/// What the thing with a number is.
Id idOf(const Frame& frame, Number number);

} // namespace view
