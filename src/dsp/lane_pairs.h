#pragma once

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "dsp/lanes.h"
#include "dsp/numbers.h"

// Double-precision pairs next to the four single-precision lanes: conversions between them, and
// tests of comparison results.

namespace norava {

typedef std::int64_t v128l __attribute__((vector_size(16)));

// Where compilers do not find the instruction that does it, it is named for SSE2; elsewhere the
// plain form stands. The bits are the same.

NORAVA_INLINE v128d widen(v128 v) {
#if defined(__SSE2__)
    return _mm_cvtps_pd(v);
#else
    return __builtin_convertvector(__builtin_shufflevector(v, v, 0, 1), v128d);
#endif
}
NORAVA_INLINE v128 narrow(v128d v) {
#if defined(__SSE2__)
    return _mm_cvtpd_ps(v);
#else
    const v64 low = __builtin_convertvector(v, v64);
    return __builtin_shufflevector(low, v64{}, 0, 1, 2, 3);
#endif
}

NORAVA_INLINE v128d loadPairD(const void* first, const void* second) {
    double a, b;
    std::memcpy(&a, first, sizeof a);
    std::memcpy(&b, second, sizeof b);
    return v128d{a, b};
}
NORAVA_INLINE v128 loadPairF(const void* first, const void* second) {
    float a, b;
    std::memcpy(&a, first, sizeof a);
    std::memcpy(&b, second, sizeof b);
    return __builtin_shufflevector(v128{a}, v128{b}, 0, 4, 1, 5);
}

// Two pairs, rounded, as four lanes.
NORAVA_INLINE v128 narrow(v128d low, v128d high) {
#if defined(__SSE2__)
    return _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high));
#else
    const v64 a = __builtin_convertvector(low, v64);
    const v64 b = __builtin_convertvector(high, v64);
    return __builtin_shufflevector(a, b, 0, 1, 2, 3);
#endif
}

// Comparisons of pairs, as bits: combining the compiler's own results of them would take it through
// single lanes.
NORAVA_INLINE v128i isLess(v128d a, v128d b) {
    return bitsAs<v128i>(a < b);
}
NORAVA_INLINE v128i isAtMost(v128d a, v128d b) {
    return bitsAs<v128i>(a <= b);
}

NORAVA_INLINE v128d lesser(v128d a, v128d b) {
#if defined(__SSE2__)
    return _mm_min_pd(a, b);
#else
    return a < b ? a : b;
#endif
}

NORAVA_INLINE v128d greater(v128d a, v128d b) {
#if defined(__SSE2__)
    return _mm_max_pd(a, b);
#else
    return a > b ? a : b;
#endif
}

// Whether every lane of a comparison's result is true.
NORAVA_INLINE bool allTrue(v128i mask) {
#if defined(__SSE2__)
    return _mm_movemask_ps(bitsAs<__m128>(mask)) == 15;
#else
    const v128l halves = bitsAs<v128l>(mask);
    return (halves[0] & halves[1]) == -1;
#endif
}

NORAVA_INLINE v128 magnitude(v128 v) {
    constexpr std::int32_t kAllButSign = 0x7fffffff;
    return bitsAs<v128>(bitsAs<v128i>(v) &
                        v128i{kAllButSign, kAllButSign, kAllButSign, kAllButSign});
}

// The greater lanes; of a lane that is not a number, that of `a`.
NORAVA_INLINE v128 greater(v128 a, v128 b) {
#if defined(__SSE2__)
    return _mm_max_ps(b, a);
#else
    return b > a ? b : a;
#endif
}

// Lanes of a magnitude below 1e-9, as bits.
NORAVA_INLINE v128i isTiny(v128 v) {
    return magnitude(v) < v128_Set(kSilence);
}

NORAVA_INLINE bool anyTiny(v128 v) {
    return !allTrue(~isTiny(v));
}

// `v` with these lanes set to 0.
NORAVA_INLINE v128 flushTiny(v128 v) {
    return bitsAs<v128>(bitsAs<v128i>(v) & ~isTiny(v));
}

}  // namespace norava
