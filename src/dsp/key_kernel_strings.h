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
    float exciter[kPieceSteps + 2];  // one value a step
    // (string 1, string 2) of each step, behind room for the two steps before the piece
    alignas(16) float output[2 * (kPieceSteps + 2)];
    OpenLine lines[kKeyLines];
    LineWindow windows[kKeyLines];
};

NORAVA_INLINE void openLines(StringPiece& piece) {
    KeyStrings& s = *piece.strings;
    for (int i = 0; i < kKeyLines; ++i)
        piece.lines[i] = openLine(s.lines[i], s.memory, piece.steps, piece.windows[i]);
}

NORAVA_INLINE void closeLines(StringPiece& piece) {
    KeyStrings& s = *piece.strings;
    for (int i = 0; i < kKeyLines; ++i)
        closeLine(s.lines[i], s.memory, piece.steps, piece.windows[i]);
}

NORAVA_INLINE v128 loadHeads(const OpenLine* lines, int step) {
    const auto a = loadLanes<double>(lines[kString1Pair].read + 8 * step);
    const auto b = loadLanes<double>(lines[kString2Pair].read + 8 * step);
    return bitsAs<v128>(v128d{a, b});
}

NORAVA_INLINE void storeHeads(v128 v, const OpenLine* lines, int step) {
    const v128d pairs = bitsAs<v128d>(v);
    storeLanes(lines[kString1Pair].write + 8 * step, double{pairs[0]});
    storeLanes(lines[kString2Pair].write + 8 * step, double{pairs[1]});
}

NORAVA_INLINE v128 loadCombs(const OpenLine* lines, int step) {
    return v128{loadLanes<float>(lines[kComb1].read + 4 * step),
                loadLanes<float>(lines[kComb2].read + 4 * step), 0.0f, 0.0f};
}

NORAVA_INLINE void storeCombs(v128 v, const OpenLine* lines, int step) {
    storeLanes(lines[kComb1].write + 4 * step, float{v[0]});
    storeLanes(lines[kComb2].write + 4 * step, float{v[1]});
}

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
};

template <class L>
NORAVA_INLINE void loadStrings(StringLanes<L>& k, const StringPiece* pieces) {
    using F = typename L::F;
    v128 part[9][2];
    for (int h = 0; h < L::kHalves; ++h) {
        const KeyStrings& s = *pieces[h].strings;
        const v128 values[9] = {s.damping,
                                s.sharpness,
                                s.gain,
                                s.inverseLength,
                                v128_Set(s.combLevel),
                                v128_Set(s.combFeedback),
                                s.filter1,
                                s.filter2,
                                s.mean};
        for (int i = 0; i < 9; ++i)
            part[i][h] = values[i];
    }
    k.damping = join(part[0], F{});
    k.sharpness = join(part[1], F{});
    k.gain = join(part[2], F{});
    k.inverseLength = join(part[3], F{});
    k.combLevel = join(part[4], F{});
    k.combFeedback = join(part[5], F{});
    k.filter1 = join(part[6], F{});
    k.filter2 = join(part[7], F{});
    k.mean = join(part[8], F{});
}

template <class L>
NORAVA_INLINE void storeStrings(const StringLanes<L>& k, StringPiece* pieces) {
    v128 filter1[2], filter2[2], mean[2];
    split(k.filter1, filter1);
    split(k.filter2, filter2);
    split(k.mean, mean);
    for (int h = 0; h < L::kHalves; ++h) {
        KeyStrings& s = *pieces[h].strings;
        s.filter1 = filter1[h];
        s.filter2 = filter2[h];
        s.mean = mean[h];
    }
}

// Steps `first` to `last` of N vectors of keys. Per step and line: the exciter without its running
// average is added to the loop, whose head passes two one-poles (with the sharpness fed back from
// the second) and a soft clipper. Line a of each string is heard together with the comb line that
// line b feeds. The loop gain needs no glide: each control block begins with its new value.
template <class L, int N, bool kSaturates>
NORAVA_INLINE void runSteps(StringPiece* pieces, int first, int last, float saturationAmount) {
    using F = typename L::F;
    constexpr int kKeys = L::kHalves;
    const F one = broadcast<F>(1.0f);
    const F saturation = broadcast<F>(saturationAmount);
    StringLanes<L> lanes[N];
    for (int v = 0; v < N; ++v)
        loadStrings<L>(lanes[v], pieces + kKeys * v);

    for (int step = first; step < last; ++step) {
#pragma GCC unroll 4
        for (int v = 0; v < N; ++v) {
            StringLanes<L>& k = lanes[v];
            StringPiece* piece = pieces + kKeys * v;
            v128 e[2], h[2], c[2];
            for (int i = 0; i < kKeys; ++i) {
                e[i] = v128_Set(piece[i].exciter[step]);
                h[i] = loadHeads(piece[i].lines, step);
                c[i] = loadCombs(piece[i].lines, step);
            }
            const F exciter = join(e, F{});
            const F head = join(h, F{});
            const F comb = join(c, F{});

            k.mean = k.mean + (exciter - k.mean) * k.inverseLength;
            const F driven = exciter - k.mean;
            k.filter1 = k.filter1 + k.damping * (head + k.sharpness * k.filter2 - k.filter1);
            k.filter2 = k.filter2 + k.damping * (k.filter1 - k.filter2);
            if constexpr (kSaturates)
                k.filter2 = k.filter2 / (one + saturation * (k.filter2 * k.filter2));
            split(k.filter2 * k.gain + driven, h);
            v128 o[2];
            split(linesA(head) + comb * k.combLevel, o);
            split(comb * k.combFeedback + linesB(head), c);
            for (int i = 0; i < kKeys; ++i) {
                storeHeads(h[i], piece[i].lines, step);
                storeCombs(c[i], piece[i].lines, step);
                storeLanes(&piece[i].output[2 * (step + 2)], double{bitsAs<v128d>(o[i])[0]});
            }
        }
    }
    for (int v = 0; v < N; ++v)
        storeStrings<L>(lanes[v], pieces + kKeys * v);
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
        openLines(pieces[k]);
        common = smaller(common, pieces[k].steps);
    }
    runSteps<L, N>(pieces, 0, common, saturation);
    for (int k = 0; k < kKeys; ++k) {
        runSteps<BaselineLanes, 1>(pieces + k, common, pieces[k].steps, saturation);
        closeLines(pieces[k]);
    }
}

}  // namespace
}  // namespace norava
