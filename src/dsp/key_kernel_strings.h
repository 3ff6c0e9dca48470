#pragma once

// The render kernel's strings, packed by line: lane 0 string 1 line a, lane 1 string 1 line b,
// lane 2 string 2 line a, lane 3 string 2 line b. Internal linkage, see key_kernel_impl.h.

#include <cstddef>
#include <cstdint>

#include "dsp/key_kernel_lines.h"

namespace norava {
namespace {

// One key's piece on its way through the strings.
struct StringPiece {
    KeyStrings* strings;
    int steps;
    float exciter[kPieceSteps + 2];                      // one value a step
    alignas(16) float strings12[2 * (kPieceSteps + 2)];  // (string 1, string 2) of each step
    // (left, right) of the two steps before the piece, then of each of its steps
    v128d output[kPieceSteps + 4];
};

// The places in one key's memory that a step reads and overwrites.
struct LineHeads {
    unsigned char* at[kKeyLines];

    NORAVA_INLINE void find(unsigned char* memory, const std::int32_t* offsets) {
        for (int i = 0; i < kKeyLines; ++i)
            at[i] = memory + offsets[i];
    }
    NORAVA_INLINE v128 loadStrings() const {
        const auto a = loadLanes<double>(at[kString1Pair]);
        const auto b = loadLanes<double>(at[kString2Pair]);
        return bitsAs<v128>(v128d{a, b});
    }
    NORAVA_INLINE v128 loadCombs() const {
        return v128{loadLanes<float>(at[kComb1]), loadLanes<float>(at[kComb2]), 0.0f, 0.0f};
    }
    NORAVA_INLINE void storeStrings(v128 v) const {
        const auto pairs = bitsAs<v128d>(v);
        storeLanes(at[kString1Pair], double{pairs[0]});
        storeLanes(at[kString2Pair], double{pairs[1]});
    }
    NORAVA_INLINE void storeCombs(v128 v) const {
        storeLanes(at[kComb1], float{v[0]});
        storeLanes(at[kComb2], float{v[1]});
    }
};

// (line 1a, line 2a) and (line 1b, line 2b) of every key in the vector, in its first two lanes.
NORAVA_INLINE v128 linesA(v128 h) {
    return __builtin_shufflevector(h, h, 0, 2, 0, 2);
}
NORAVA_INLINE v128 linesB(v128 h) {
    return __builtin_shufflevector(h, h, 1, 3, 1, 3);
}
NORAVA_INLINE v256 linesA(v256 h) {
    return __builtin_shufflevector(h, h, 0, 2, 0, 2, 4, 6, 4, 6);
}
NORAVA_INLINE v256 linesB(v256 h) {
    return __builtin_shufflevector(h, h, 1, 3, 1, 3, 5, 7, 5, 7);
}

// A vector's worth of keys (one or two) in the step loop.
template <class L>
struct StringLanes {
    using F = typename L::F;
    F damping, sharpness, gain, inverseLength, combLevel, combFeedback;
    F filter1, filter2, mean;
    LineOffsets<L> offsets;
};

// One field of one or two keys as lanes.
template <class V, class Half>
NORAVA_INLINE void loadField(V& lanes, KeyStrings* const* keys, Half KeyStrings::*field) {
    const Half halves[2] = {keys[0]->*field, keys[sizeof(V) / sizeof(Half) - 1]->*field};
    join(halves, lanes);
}

template <class V>
NORAVA_INLINE void loadField(V& lanes, KeyStrings* const* keys, v128i KeyLines::*field) {
    const v128i halves[2] = {keys[0]->lines.*field,
                             keys[sizeof(V) / sizeof(v128i) - 1]->lines.*field};
    join(halves, lanes);
}

template <class L>
NORAVA_INLINE void loadStrings(StringLanes<L>& k, KeyStrings* const* keys) {
    loadField(k.damping, keys, &KeyStrings::damping);
    loadField(k.sharpness, keys, &KeyStrings::sharpness);
    loadField(k.gain, keys, &KeyStrings::gain);
    loadField(k.inverseLength, keys, &KeyStrings::inverseLength);
    loadField(k.combLevel, keys, &KeyStrings::combLevel);
    loadField(k.combFeedback, keys, &KeyStrings::combFeedback);
    loadField(k.filter1, keys, &KeyStrings::filter1);
    loadField(k.filter2, keys, &KeyStrings::filter2);
    loadField(k.mean, keys, &KeyStrings::mean);
    loadField(k.offsets.next, keys, &KeyLines::next);
    loadField(k.offsets.end, keys, &KeyLines::end);
    loadField(k.offsets.length, keys, &KeyLines::length);
    loadField(k.offsets.stride, keys, &KeyLines::stride);
}

template <class L>
NORAVA_INLINE void storeStrings(const StringLanes<L>& k, KeyStrings* const* keys) {
    v128 filter1[2], filter2[2], mean[2];
    v128i next[2];
    split(k.filter1, filter1);
    split(k.filter2, filter2);
    split(k.mean, mean);
    split(k.offsets.next, next);
    for (int h = 0; h < L::kHalves; ++h) {
        KeyStrings& s = *keys[h];
        s.filter1 = filter1[h];
        s.filter2 = filter2[h];
        s.mean = mean[h];
        s.lines.next = next[h];
    }
}

// One step of a vector of keys. Per line: the exciter without its running average is added to the
// loop, whose head passes two one-poles (with the sharpness fed back from the second) and a soft
// clipper; where the saturation is 0 the clipper would divide by exactly 1. Line a of each string
// is heard together with the comb line that line b feeds. In: the lines' heads and the combs'; out:
// what is written in their places. Returns what is heard of string 1 and 2 in the first two lanes.
// The loop gain needs no glide: each control block begins with its new value.
template <class L, bool kSaturates, class F = typename L::F>
NORAVA_INLINE F stepLines(StringLanes<L>& k, F exciter, F saturation, F& head, F& comb) {
    k.mean = k.mean + (exciter - k.mean) * k.inverseLength;
    const F driven = exciter - k.mean;
    k.filter1 = k.filter1 + k.damping * (head + k.sharpness * k.filter2 - k.filter1);
    k.filter2 = k.filter2 + k.damping * (k.filter1 - k.filter2);
    if constexpr (kSaturates)
        k.filter2 = k.filter2 / (broadcast<F>(1.0f) + saturation * (k.filter2 * k.filter2));
    const F heard = linesA(head) + comb * k.combLevel;
    comb = comb * k.combFeedback + linesB(head);
    head = k.filter2 * k.gain + driven;
    return heard;
}

// Steps `first` to `last` of N vectors of keys.
template <class L, int N, bool kSaturates>
NORAVA_INLINE void runSteps(StringPiece* pieces, int first, int last, float saturationAmount) {
    using F = typename L::F;
    constexpr int kKeys = L::kHalves;
    const F saturation = broadcast<F>(saturationAmount);
    KeyStrings* keys[N * kKeys];
    unsigned char* memory[N * kKeys];
    for (int k = 0; k < N * kKeys; ++k) {
        keys[k] = pieces[k].strings;
        memory[k] = keys[k]->memory;
    }
    StringLanes<L> lanes[N];
    for (int v = 0; v < N; ++v)
        loadStrings<L>(lanes[v], keys + kKeys * v);

    for (int step = first; step < last; ++step) {
#pragma GCC unroll 4
        for (int v = 0; v < N; ++v) {
            StringPiece* piece = pieces + kKeys * v;
            alignas(32) std::int32_t offsets[4 * kKeys];
            lanes[v].offsets.step(offsets);
            // Through memory: taking lanes out of a register costs more than loading them back.
            asm("" : "+m"(offsets));
            LineHeads heads[kKeys];
            v128 e[2], h[2], c[2], o[2];
            for (int i = 0; i < kKeys; ++i) {
                heads[i].find(memory[kKeys * v + i], offsets + 4 * i);
                e[i] = v128_Set(piece[i].exciter[step]);
                h[i] = heads[i].loadStrings();
                c[i] = heads[i].loadCombs();
            }
            F exciter, head, comb;
            join(e, exciter);
            join(h, head);
            join(c, comb);
            split(stepLines<L, kSaturates>(lanes[v], exciter, saturation, head, comb), o);
            split(head, h);
            split(comb, c);
            for (int i = 0; i < kKeys; ++i) {
                heads[i].storeStrings(h[i]);
                heads[i].storeCombs(c[i]);
                storeLanes(&piece[i].strings12[2 * step], double{bitsAs<v128d>(o[i])[0]});
            }
        }
    }
    for (int v = 0; v < N; ++v)
        storeStrings<L>(lanes[v], keys + kKeys * v);
}

template <class L, int N>
NORAVA_INLINE void runSteps(StringPiece* pieces, int first, int last, float saturation) {
    if (first >= last) return;
    // A division by exactly 1 changes nothing.
    if (saturation == 0.0f)
        runSteps<L, N, false>(pieces, first, last, saturation);
    else
        runSteps<L, N, true>(pieces, first, last, saturation);
}

// All steps of N vectors of keys: together as long as every key has steps left, then each key's
// rest alone.
template <class L, int N>
NORAVA_INLINE void renderStrings(StringPiece* pieces, float saturation) {
    constexpr int kKeys = N * L::kHalves;
    int common = pieces[0].steps;
    for (int k = 0; k < kKeys; ++k) {
        if (!pieces[k].strings->allValid) prepareLines(*pieces[k].strings, pieces[k].steps);
        common = smaller(common, pieces[k].steps);
    }
    runSteps<L, N>(pieces, 0, common, saturation);
    for (int k = 0; k < kKeys; ++k)
        runSteps<BaselineLanes, 1>(pieces + k, common, pieces[k].steps, saturation);
}

}  // namespace
}  // namespace norava
