#pragma once

#include <cstdint>
#include <cstring>

// Vector types of the signal blocks, on the compiler's own vector extension, so that one source
// serves SSE2, AVX2 and 64-bit Arm. `v128` is four single-precision lanes, `v64` half of it; `v256`
// is two of it side by side and only worth using in a file that is compiled for a machine with
// 32-byte registers.

namespace norava {

typedef float v64 __attribute__((vector_size(8)));

typedef float v128 __attribute__((vector_size(16)));
typedef std::int32_t v128i __attribute__((vector_size(16)));
typedef std::uint32_t v128u __attribute__((vector_size(16)));
typedef double v128d __attribute__((vector_size(16)));

typedef float v256 __attribute__((vector_size(32)));
typedef std::int32_t v256i __attribute__((vector_size(32)));
typedef std::uint32_t v256u __attribute__((vector_size(32)));
typedef double v256d __attribute__((vector_size(32)));

#define NORAVA_INLINE [[gnu::always_inline]] inline

NORAVA_INLINE v128 v128_Set(float x) {
    return v128{x, x, x, x};
}
NORAVA_INLINE v128 v128_Set(float a, float b, float c, float d) {
    return v128{a, b, c, d};
}
NORAVA_INLINE v128 v128_Add(v128 a, v128 b) {
    return a + b;
}
NORAVA_INLINE v128 v128_Sub(v128 a, v128 b) {
    return a - b;
}
NORAVA_INLINE v128 v128_Mul(v128 a, v128 b) {
    return a * b;
}
NORAVA_INLINE v128 v128_Div(v128 a, v128 b) {
    return a / b;
}
NORAVA_INLINE float v128_Get1(v128 v) {
    return v[0];
}
NORAVA_INLINE float v128_Get2(v128 v) {
    return v[1];
}
NORAVA_INLINE float v128_Get3(v128 v) {
    return v[2];
}
NORAVA_INLINE float v128_Get4(v128 v) {
    return v[3];
}
NORAVA_INLINE void v128_Set1(v128& v, float x) {
    v[0] = x;
}
NORAVA_INLINE void v128_Set2(v128& v, float x) {
    v[1] = x;
}
NORAVA_INLINE void v128_Set3(v128& v, float x) {
    v[2] = x;
}
NORAVA_INLINE void v128_Set4(v128& v, float x) {
    v[3] = x;
}

// Unaligned load and store of any vector or number. The compilers see through a pointer of this
// kind better than through a copy of bytes, which they like to route through integer registers.
template <class V>
struct __attribute__((packed, may_alias)) Anywhere {
    V value;
};
template <class V>
NORAVA_INLINE V loadLanes(const void* from) {
    return static_cast<const Anywhere<V>*>(from)->value;
}
template <class V>
NORAVA_INLINE void storeLanes(void* to, V v) {
    static_cast<Anywhere<V>*>(to)->value = v;
}

// The bits of one vector type read as another of the same size.
template <class To, class From>
NORAVA_INLINE To bitsAs(From v) {
    static_assert(sizeof(To) == sizeof(From));
    To to;
    std::memcpy(&to, &v, sizeof to);
    return to;
}

// Turns rows into columns: lane i of row j goes to lane j of row i.
NORAVA_INLINE void transpose(v128& r0, v128& r1, v128& r2, v128& r3) {
    const v128 a = __builtin_shufflevector(r0, r1, 0, 4, 1, 5);
    const v128 b = __builtin_shufflevector(r2, r3, 0, 4, 1, 5);
    const v128 c = __builtin_shufflevector(r0, r1, 2, 6, 3, 7);
    const v128 d = __builtin_shufflevector(r2, r3, 2, 6, 3, 7);
    r0 = __builtin_shufflevector(a, b, 0, 1, 4, 5);
    r1 = __builtin_shufflevector(a, b, 2, 3, 6, 7);
    r2 = __builtin_shufflevector(c, d, 0, 1, 4, 5);
    r3 = __builtin_shufflevector(c, d, 2, 3, 6, 7);
}

}  // namespace norava
