// From what is seen in the samples of a tile to their colours: two lights, and depth cueing.
//
// Light falls from the upper left, and weaker from the lower right; some is everywhere. Blinn's
// model adds a highlight of the first light (J. F. Blinn, Models of light reflection for computer
// synthesized pictures, SIGGRAPH 1977).
#pragma once

#include "Lighting.h"
#include "Tile.h"
#include "TriangleSurfaces.h"

#include <array>
#include <cstdint>

namespace view {

struct Look {
    Colour background = 0;
    float depthCue = 0; ///< part of the background in the colour of the farthest thing, 0 to 1
};

/// What the samples of a tile look like and what they show, tileSide a row.
struct TileShades {
    alignas(16) std::array<std::int32_t, tileSide * tileSide> colours; ///< 0xFFRRGGBB
    alignas(16) std::array<std::int32_t, tileSide * tileSide> ids;
};

/// Shades where something was drawn. `triangles` may remember those of other tiles of the picture.
void shade(const Tile& tile, const Frame& frame, const Look& look, TriangleSurfaces& triangles,
           TileShades& shades);

} // namespace view
