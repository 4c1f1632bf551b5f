// The light on surfaces, and the haze of what is far away.
#pragma once

#include "Scene.h"

#include <array>
#include <cstdint>
#include <span>

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

/// What all samples of a picture share.
struct Haze {
    float nearest = 0; ///< z of what keeps its colour, in samples
    float factor = 0;  ///< how much of the background's colour there is a sample behind that
    Colour background = 0;
};

/// Samples of a row that follow each other.
struct LitRun {
    static constexpr int length = 8;

    alignas(32) std::array<float, length> x, y, z; ///< which way the surface faces: a unit vector
    alignas(32) std::array<float, length> depth;
    alignas(32) std::array<std::int32_t, length> colour; ///< 0xRRGGBB, of the surface
    alignas(32) std::array<std::int32_t, length> isLit;  ///< -1, or 0: it has just the haze
};

/// The colours that runs are seen in, 0xFFRRGGBB. They are the same on every machine.
void light(const Haze& haze, std::span<const LitRun> runs, std::int32_t* colours);

} // namespace view
