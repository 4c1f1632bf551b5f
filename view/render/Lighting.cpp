#include "Lighting.h"

#include "Lanes.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace view {

namespace {

/// Half-way between a light and the viewer.
std::array<float, 3> halfway(const std::array<float, 3>& towards) {
    const float z = towards[2] + 1;
    const float length = std::sqrt(towards[0] * towards[0] + towards[1] * towards[1] + z * z);
    return {towards[0] / length, towards[1] / length, z / length};
}

/// `yes` for -1, `no` for 0.
inline float select(std::int32_t mask, float yes, float no) {
    return std::bit_cast<float>((std::bit_cast<std::int32_t>(yes) & mask) |
                                (std::bit_cast<std::int32_t>(no) & ~mask));
}
inline float atLeast(float least, float x) {
    return select(-static_cast<std::int32_t>(x > least), x, least);
}
inline float atMost(float most, float x) {
    return select(-static_cast<std::int32_t>(x < most), x, most);
}

/// The background's colour, channel by channel.
struct Background {
    float red, green, blue;
    explicit Background(Colour colour)
        : red(static_cast<float>(colour >> 16 & 255U)),
          green(static_cast<float>(colour >> 8 & 255U)), blue(static_cast<float>(colour & 255U)) {}
};

// What follows is written so that compilers turn the loops over samples into such over vectors.
// Each operation is exact by IEEE 754, however long the vectors are.

/// The colours of a run in the haze; near(colour, i) is a channel of what it hides, 0 to 255.
template <class Near>
[[gnu::always_inline]] inline void writeHazy(const Haze& haze, const Background& background,
                                             const LitRun& run, const Near& near,
                                             std::int32_t* colours) {
    alignas(32) std::array<std::int32_t, LitRun::length> result;
    for (std::size_t i = 0; i < LitRun::length; ++i) {
        const float away = atMost(1, atLeast(0, (haze.nearest - run.depth[i]) * haze.factor));
        const auto seen = [&](int shift, float behind) {
            const float own = near(i, static_cast<float>(run.colour[i] >> shift & 255));
            return static_cast<std::int32_t>(own + (behind - own) * away + 0.5F) << shift;
        };
        result[i] = static_cast<std::int32_t>(0xFF000000U) | seen(16, background.red) |
                    seen(8, background.green) | seen(0, background.blue);
    }
    std::memcpy(colours, result.data(), sizeof result);
}

/// What the lights do to samples.
struct Light {
    alignas(32) std::array<float, LitRun::length> factor; ///< of each channel
    alignas(32) std::array<float, LitRun::length> shine;  ///< added to it
};

[[gnu::always_inline]] inline void setLight(const LitRun& run, const std::array<float, 3>& mirror,
                                            Light& light) {
    for (std::size_t i = 0; i < LitRun::length; ++i) {
        const auto cosine = [&](const std::array<float, 3>& axis) {
            return run.x[i] * axis[0] + run.y[i] * axis[1] + run.z[i] * axis[2];
        };
        // No power of less is seen, nor is it so small that processors take long to calculate with
        // it.
        constexpr float dark = 0.125F;
        float shine = atLeast(dark, cosine(mirror));
        shine *= shine;
        shine *= shine;
        shine *= shine;
        shine *= shine;
        shine *= shine;
        const float factor = ambientPart + mainPart * atLeast(0, cosine(mainLight)) +
                             fillPart * atLeast(0, cosine(fillLight));
        light.factor[i] = select(run.isLit[i], factor, 1);
        light.shine[i] = select(run.isLit[i], shine * (highlightPart * 255), 0);
    }
}

bool isAnyLit(const LitRun& run) {
    return isAny(load(run.isLit.data()) | load(run.isLit.data() + 4));
}

[[gnu::always_inline]] inline void lightRuns(const Haze& haze, std::span<const LitRun> runs,
                                             std::int32_t* colours) {
    const std::array<float, 3> mirror = halfway(mainLight);
    const Background background(haze.background);
    for (const LitRun& run : runs) {
        if (isAnyLit(run)) {
            Light light;
            setLight(run, mirror, light);
            writeHazy(
                haze, background, run,
                [&](std::size_t i, float own) {
                    return atMost(255, own * light.factor[i] + light.shine[i]);
                },
                colours);
        } else {
            writeHazy(
                haze, background, run, [](std::size_t, float own) { return own; }, colours);
        }
        colours += LitRun::length;
    }
}

#ifdef __x86_64__
[[gnu::target("avx2")]] void lightWide(const Haze& haze, std::span<const LitRun> runs,
                                       std::int32_t* colours) {
    lightRuns(haze, runs, colours);
}
#endif

} // namespace

void light(const Haze& haze, std::span<const LitRun> runs, std::int32_t* colours) {
#ifdef __x86_64__
    static const bool isWide = __builtin_cpu_supports("avx2") != 0;
    if (isWide)
        return lightWide(haze, runs, colours);
#endif
    lightRuns(haze, runs, colours);
}

} // namespace view
