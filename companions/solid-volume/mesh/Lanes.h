// Four single-precision numbers at a time.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace solid {

inline constexpr std::size_t lanes = 4;

using Floats = float __attribute__((vector_size(16)));
using Ints = std::int32_t __attribute__((vector_size(16)));
using Lanes = std::array<float, lanes>;

inline Floats load(const Lanes& from) {
    Floats x;
    std::memcpy(&x, from.data(), sizeof x);
    return x;
}
inline Floats all(float x) {
    return Floats{x, x, x, x};
}
/// A bit a lane, of what a comparison gave.
inline unsigned bitsOf(Ints mask) {
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_ps(__m128(Floats(mask))));
#else
    return (mask[0] & 1U) | (mask[1] & 2U) | (mask[2] & 4U) | (mask[3] & 8U);
#endif
}
inline Floats squareRoot(Floats x) {
#ifdef __SSE2__
    return _mm_sqrt_ps(x);
#else
    return Floats{std::sqrt(x[0]), std::sqrt(x[1]), std::sqrt(x[2]), std::sqrt(x[3])};
#endif
}
/// The greater of each lane; of a NaN and a number, the number given second.
inline Floats greater(Floats a, Floats b) {
    return a > b ? a : b;
}

} // namespace solid
