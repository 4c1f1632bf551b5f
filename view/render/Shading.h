// From what is seen in the samples of a tile to their colours: two lights, and depth cueing.
//
// Light falls from the upper left, and weaker from the lower right; some is everywhere. Blinn's
// model adds a highlight of the first light (J. F. Blinn, Models of light reflection for computer
// synthesized pictures, SIGGRAPH 1977).
//
// See-through surfaces hide the more of what is behind them the more they turn away from the
// viewer, as thin glass does (D. S. Kay and D. Greenberg, Transparency for computer synthesized
// images, SIGGRAPH 1979, with the power 2).
#pragma once

#include "Lighting.h"
#include "Tile.h"
#include "TriangleSurfaces.h"

#include <array>
#include <cstdint>
#include <span>

namespace view {

struct Look {
    Colour background = 0;
    float depthCue = 0; ///< part of the background in the colour of the farthest thing, 0 to 1
};

/// How much a see-through surface hides where it faces the viewer, and where it is seen edge-on.
inline constexpr float facingOpacity = 0.4F;
inline constexpr float edgeOpacity = 0.85F;

/// What samples of a row of a tile look like and what they show: whole runs of blockSide.
struct ShadedRow {
    std::int32_t* colours; ///< 0xFFRRGGBB
    Id* ids;
};

/// Shades the samples of a picture.
class Shader {
public:
    Shader(const Frame& frame, const Look& look);
    /// Shades the samples of a row from a run's first one to another's last one. `triangles` may
    /// remember those of other tiles of the picture.
    void shade(const Tile& tile, int row, int from, int end, TriangleSurfaces& triangles,
               const ShadedRow& to) const;
    /// Likewise of the see-through surfaces that a tile shows, over the colours that are there.
    void shadeOver(const Tile& tile, int row, int from, int end, TriangleSurfaces& triangles,
                   const ShadedRow& to) const;

private:
    using Runs = std::array<LitRun, Tile::blocksASide>;

    /// Sets the runs, and the ids; of what is not seen the colour is the background's.
    std::span<const LitRun> setRuns(Runs& runs, const Tile& tile, int row, int from, int end,
                                    TriangleSurfaces& triangles, Id* ids) const;

    const Frame& m_frame;
    Haze m_haze;
};

} // namespace view
