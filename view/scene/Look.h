// How the view shows what it has read: its own choices, which change no data.
#pragma once

#include "render/Scene.h"

#include <cstdint>
#include <map>

namespace view {

enum class Representation : std::uint8_t {
    Automatic, ///< for each entry by its size and its residues
    Points,
    Lines,
    Sticks,
    BallAndStick,
    Spheres,
    Ribbon ///< of polymers; what else there is as sticks, ions as spheres
};

/// How a surface is drawn.
enum class SurfaceStyle : std::uint8_t {
    Opaque,
    SeeThrough,
    MeshLines ///< lines across it, see linesOf()
};

struct Look {
    Representation representation = Representation::Automatic;
    /// Without it, waters are drawn only in an entry that holds nothing else.
    bool showWaters = false;
    /// Against it lines and dots keep a contrast, in the hue that they have; what is shaded does
    /// not need it.
    Colour background = 0xff000000;
    /// The atoms from `focusBegin` up to, not including, `focusEnd` are sticks where they would not
    /// be drawn at all, as in a ribbon.
    std::uint32_t focusBegin = 0;
    std::uint32_t focusEnd = 0;
    SurfaceStyle surfaces = SurfaceStyle::Opaque;
    /// Of the surfaces that have a style of their own: by the identifiers of their items.
    std::map<unsigned int, SurfaceStyle> ownSurfaceStyles = {};

    SurfaceStyle surfaceStyle(unsigned int identifier) const {
        const auto own = ownSurfaceStyles.find(identifier);
        return own == ownSurfaceStyles.end() ? surfaces : own->second;
    }

    bool operator==(const Look&) const = default;
};

} // namespace view
