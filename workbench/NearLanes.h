// Points and boxes around points, eight at a time, and which of them are within a distance.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace workbench {

/// Four numbers, which the compiler works on at once.
using Lanes = float __attribute__((vector_size(4 * sizeof(float))));
/// Of a comparison: -1 in a lane where it holds, else 0.
using LaneMask = std::int32_t __attribute__((vector_size(4 * sizeof(float))));

inline Lanes all(float x) {
    return Lanes{x, x, x, x};
}
inline Lanes lesser(Lanes a, Lanes b) {
#ifdef __SSE2__
    return _mm_min_ps(a, b);
#else
    return a < b ? a : b;
#endif
}
inline Lanes greater(Lanes a, Lanes b) {
#ifdef __SSE2__
    return _mm_max_ps(a, b);
#else
    return a > b ? a : b;
#endif
}
/// A bit for each lane.
inline unsigned bitsOf(LaneMask mask) {
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_ps(__m128(Lanes(mask))));
#else
    return static_cast<unsigned>((mask[0] & 1) | (mask[1] & 2) | (mask[2] & 4) | (mask[3] & 8));
#endif
}

/// Calls `f` with the number of each bit that is set.
template <class F> void forEachBit(std::uint64_t bits, const F& f) {
    for (; bits != 0; bits &= bits - 1)
        f(static_cast<std::uint32_t>(std::countr_zero(bits)));
}

/// Squares of distances are taken in single precision first. Only those around the radius's are
/// taken again, in double precision.
struct NearLimits {
    double square;
    float surelyIn;
    float surelyOut;

    /// Of a distance in Å.
    explicit NearLimits(double radius)
        : square(radius * radius), surelyIn(static_cast<float>(square * 0.99999 - 1e-30)),
          surelyOut(static_cast<float>(square * 1.00001 + 1e-30)) {}
};

/// Eight numbers.
struct Eight {
    std::array<Lanes, 2> lanes;

    float get(std::size_t i) const { return lanes[i / 4][i % 4]; }
    void set(std::size_t i, float x) { lanes[i / 4][i % 4] = x; }
};

/// Eight points (Å), by axis.
using EightPoints = std::array<Eight, 3>;

struct Box {
    std::array<float, 3> low;
    std::array<float, 3> high;

    Box() = default; ///< of no value yet
    explicit Box(const std::array<float, 3>& point) : low(point), high(point) {}

    void add(const Box& other) {
        for (std::size_t axis = 0; axis != 3; ++axis) {
            low[axis] = other.low[axis] < low[axis] ? other.low[axis] : low[axis];
            high[axis] = high[axis] < other.high[axis] ? other.high[axis] : high[axis];
        }
    }
};

inline Box boxAround(const EightPoints& points) {
    Box box;
    for (std::size_t axis = 0; axis != 3; ++axis) {
        const Eight& at = points[axis];
        const Lanes low = lesser(at.lanes[0], at.lanes[1]);
        const Lanes high = greater(at.lanes[0], at.lanes[1]);
        box.low[axis] = std::min({low[0], low[1], low[2], low[3]});
        box.high[axis] = std::max({high[0], high[1], high[2], high[3]});
    }
    return box;
}

/// Up to eight boxes; those that are missing are near nothing.
struct EightBoxes {
    std::array<Eight, 3> low;
    std::array<Eight, 3> high;

    EightBoxes() {
        constexpr float infinite = std::numeric_limits<float>::infinity();
        low.fill({all(infinite), all(infinite)});
        high.fill({all(-infinite), all(-infinite)});
    }
    void set(std::size_t i, const Box& box) {
        for (std::size_t axis = 0; axis != 3; ++axis) {
            low[axis].set(i, box.low[axis]);
            high[axis].set(i, box.high[axis]);
        }
    }
};

/// Which of eight boxes are near something, a bit for each.
struct EightNear {
    unsigned wholly = 0; ///< any two of their places are near each other
    unsigned partly = 0; ///< some may be
    Eight greatest{};    ///< squares of the distances between the places that are farthest apart
};

inline EightNear nearOf(const EightBoxes& boxes, const Box& box, const NearLimits& limits) {
    EightNear near;
    for (std::size_t half = 0; half != 2; ++half) {
        Lanes least{};
        Lanes greatest{};
        const auto add = [&](std::size_t axis) {
            const Lanes above = all(box.low[axis]) - boxes.high[axis].lanes[half];
            const Lanes below = boxes.low[axis].lanes[half] - all(box.high[axis]);
            const Lanes gap = greater(greater(above, below), Lanes{});
            const Lanes span = lesser(above, below);
            least += gap * gap;
            greatest += span * span;
        };
        add(0);
        add(1);
        add(2);
        near.greatest.lanes[half] = greatest;
        near.wholly |= bitsOf(greatest < all(limits.surelyIn)) << 4 * half;
        near.partly |= bitsOf(least <= all(limits.surelyOut)) << 4 * half;
    }
    return near;
}

/// Which of eight points may be near something in a box, a bit for each.
inline unsigned mayBeNear(const EightPoints& points, const Box& box, const NearLimits& limits) {
    unsigned near = 0;
    for (std::size_t half = 0; half != 2; ++half) {
        const auto square = [&](std::size_t axis) {
            const Lanes at = points[axis].lanes[half];
            const Lanes gap =
                greater(greater(all(box.low[axis]) - at, at - all(box.high[axis])), Lanes{});
            return gap * gap;
        };
        const Lanes least = square(0) + square(1) + square(2);
        near |= bitsOf(least <= all(limits.surelyOut)) << 4 * half;
    }
    return near;
}

} // namespace workbench
