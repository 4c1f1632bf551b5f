// What the renderer makes: a picture, and for each pixel what it shows and how far away that is.
#pragma once

#include "Scene.h"

#include <QImage>

#include <array>
#include <cstdint>
#include <vector>

namespace view {

/// Where something was drawn into a tile, as Tile says.
using DrawnRuns = std::array<std::uint64_t, 8>;

struct Picture {
    QImage image; ///< Format_RGB32
    /// By pixel, row by row from the upper left one, at the resolution of the image.
    std::vector<Id> ids;
    /// Distance from the camera's centre towards the viewer in Å; -infinity where nothing is seen.
    std::vector<float> depths;
    /// Likewise, of the see-through surface in front of what is opaque; empty where the picture
    /// shows none. Where nothing opaque is seen, `ids` and `depths` are those of the surface.
    std::vector<Id> seeThroughIds;
    std::vector<float> seeThroughDepths;

    /// For the next picture in the same memory: where this one shows something. The rest need not
    /// be written again. For the renderer alone.
    struct Drawn {
        std::vector<DrawnRuns> tiles;
        int width = 0;  ///< samples; 0 when nothing is known
        int height = 0; ///< likewise
        Colour background = 0;
    };
    Drawn drawn;
};

} // namespace view
