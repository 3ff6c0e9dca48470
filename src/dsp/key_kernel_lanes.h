#pragma once

// What the parts of the render kernel share: the vector widths it is built for and the sizes of a
// piece of work. Internal linkage throughout, see key_kernel_impl.h.

#include <cstdint>

#include "dsp/key_kernel_data.h"

namespace norava {
namespace {

constexpr int kPieceFrames = 64;
constexpr int kPieceSteps = 128;   // string steps of one key in a piece
constexpr int kMaxGroups = 4;      // groups of four keys whose filters run side by side
constexpr int kScheduledKeys = 8;  // keys whose string steps are timed side by side
constexpr int kKeysInFlight = 4;   // keys whose strings run side by side

struct BaselineLanes {
    using F = v128;
    using U = v128u;
    using I = v128i;
    using D = v128d;
    typedef std::int64_t L __attribute__((vector_size(16)));
    static constexpr int kHalves = 1;
};

struct WideLanes {
    using F = v256;
    using U = v256u;
    using I = v256i;
    using D = v256d;
    typedef std::int64_t L __attribute__((vector_size(32)));
    static constexpr int kHalves = 2;
};

// One or two vectors of four lanes as one of four or eight, and back.
NORAVA_INLINE void join(const v128* halves, v128& joined) {
    joined = halves[0];
}
NORAVA_INLINE void join(const v128* halves, v256& joined) {
    joined = __builtin_shufflevector(halves[0], halves[1], 0, 1, 2, 3, 4, 5, 6, 7);
}
NORAVA_INLINE void join(const v128i* halves, v128i& joined) {
    joined = halves[0];
}
NORAVA_INLINE void join(const v128i* halves, v256i& joined) {
    joined = __builtin_shufflevector(halves[0], halves[1], 0, 1, 2, 3, 4, 5, 6, 7);
}
NORAVA_INLINE void join(const v128u* halves, v128u& joined) {
    joined = halves[0];
}
NORAVA_INLINE void join(const v128u* halves, v256u& joined) {
    joined = __builtin_shufflevector(halves[0], halves[1], 0, 1, 2, 3, 4, 5, 6, 7);
}
NORAVA_INLINE void split(v128 v, v128* halves) {
    halves[0] = v;
}
NORAVA_INLINE void split(v256 v, v128* halves) {
    halves[0] = __builtin_shufflevector(v, v, 0, 1, 2, 3);
    halves[1] = __builtin_shufflevector(v, v, 4, 5, 6, 7);
}
NORAVA_INLINE void split(v128i v, v128i* halves) {
    halves[0] = v;
}
NORAVA_INLINE void split(v256i v, v128i* halves) {
    halves[0] = __builtin_shufflevector(v, v, 0, 1, 2, 3);
    halves[1] = __builtin_shufflevector(v, v, 4, 5, 6, 7);
}
template <class F>
NORAVA_INLINE F broadcast(float x) {
    return F{} + x;
}

template <class L>
NORAVA_INLINE typename L::F select(typename L::I mask, typename L::F yes, typename L::F no) {
    using I = typename L::I;
    return bitsAs<typename L::F>((mask & bitsAs<I>(yes)) | (~mask & bitsAs<I>(no)));
}

}  // namespace
}  // namespace norava
