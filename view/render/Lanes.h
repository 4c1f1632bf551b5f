// Four numbers that are calculated with at once. Every operation is exact by IEEE 754, so that the
// results are the same on every machine.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace view {

using Floats = float __attribute__((vector_size(16)));
/// Also the result of a comparison: -1 in a lane where it holds, else 0.
using Ints = std::int32_t __attribute__((vector_size(16)));

inline Floats all(float x) {
    return Floats{x, x, x, x};
}
inline Ints all(std::int32_t x) {
    return Ints{x, x, x, x};
}

inline Floats load(const float* from) {
    Floats x;
    std::memcpy(&x, from, sizeof x);
    return x;
}
inline Ints load(const std::int32_t* from) {
    Ints x;
    std::memcpy(&x, from, sizeof x);
    return x;
}
inline void store(float* to, Floats x) {
    std::memcpy(to, &x, sizeof x);
}
inline void store(std::int32_t* to, Ints x) {
    std::memcpy(to, &x, sizeof x);
}

/// `yes` in the lanes where `mask` is -1, `no` where it is 0.
inline Ints select(Ints mask, Ints yes, Ints no) {
    return (mask & yes) | (~mask & no);
}
inline Floats select(Ints mask, Floats yes, Floats no) {
    return Floats(select(mask, Ints(yes), Ints(no)));
}

/// `b` where a lane of one of them is NaN.
inline Floats larger(Floats a, Floats b) {
#ifdef __SSE2__
    return _mm_max_ps(a, b);
#else
    return select(a > b, a, b);
#endif
}
inline Floats smaller(Floats a, Floats b) {
#ifdef __SSE2__
    return _mm_min_ps(a, b);
#else
    return select(a < b, a, b);
#endif
}

inline Floats least(Floats a, Floats b, Floats c) {
    return smaller(smaller(a, b), c);
}
inline Floats greatest(Floats a, Floats b, Floats c) {
    return larger(larger(a, b), c);
}

inline Floats toFloats(Ints x) {
    return __builtin_convertvector(x, Floats);
}
/// Towards 0.
inline Ints toInts(Floats x) {
    return __builtin_convertvector(x, Ints);
}

inline Floats squareRoot(Floats x) {
#ifdef __SSE2__
    return _mm_sqrt_ps(x);
#else
    return Floats{std::sqrt(x[0]), std::sqrt(x[1]), std::sqrt(x[2]), std::sqrt(x[3])};
#endif
}

/// Exchanges rows and columns.
inline void transpose(Floats& a, Floats& b, Floats& c, Floats& d) {
    const Floats ab = __builtin_shufflevector(a, b, 0, 4, 1, 5);
    const Floats abHigh = __builtin_shufflevector(a, b, 2, 6, 3, 7);
    const Floats cd = __builtin_shufflevector(c, d, 0, 4, 1, 5);
    const Floats cdHigh = __builtin_shufflevector(c, d, 2, 6, 3, 7);
    a = __builtin_shufflevector(ab, cd, 0, 1, 4, 5);
    b = __builtin_shufflevector(ab, cd, 2, 3, 6, 7);
    c = __builtin_shufflevector(abHigh, cdHigh, 0, 1, 4, 5);
    d = __builtin_shufflevector(abHigh, cdHigh, 2, 3, 6, 7);
}

/// A bit for each lane, set where `mask` is -1.
inline unsigned bits(Ints mask) {
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_ps(__m128(Floats(mask))));
#else
    return (mask[0] & 1U) | (mask[1] & 2U) | (mask[2] & 4U) | (mask[3] & 8U);
#endif
}
inline bool isAny(Ints mask) {
#ifdef __SSE2__
    return _mm_movemask_ps(__m128(Floats(mask))) != 0;
#else
    return (mask[0] | mask[1] | mask[2] | mask[3]) != 0;
#endif
}

/// The first lane in which a mask holds, which has one.
inline int firstLane(Ints mask) {
#ifdef __SSE2__
    return std::countr_zero(static_cast<unsigned>(_mm_movemask_ps(__m128(Floats(mask)))));
#else
    int lane = 0;
    while (mask[lane] == 0)
        ++lane;
    return lane;
#endif
}

} // namespace view
