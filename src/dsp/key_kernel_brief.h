#pragma once

// The kernel for blocks of a few frames, as hosts send them that cut at every event: with so little
// to do per key, setting up the long loops would cost several times the work itself. One group at a
// time, frame by frame, straight on the keys' own states; the arithmetic is the long loops'.
// Internal linkage, see key_kernel_impl.h.

#include "dsp/key_kernel_exciter.h"
#include "dsp/key_kernel_output.h"
#include "dsp/key_kernel_paths.h"
#include "dsp/key_kernel_strings.h"
#include "dsp/sound_settings.h"

namespace norava {
namespace {

constexpr int kBriefFrames = 6;

// Asks for what a step of the key will need, while the filters are at work.
NORAVA_INLINE void fetchLines(const KeyStrings& strings) {
    for (int i = 0; i < kKeyLines; ++i)
        __builtin_prefetch(strings.memory + strings.lines.next[i], 1);
}

// One string step of N keys, stage by stage for all of them: a key alone would wait for each stage.
template <int N, bool kSaturates>
NORAVA_INLINE void stepBriefly(KeyStrings* const* keys, const float* exciter, v128 saturation,
                               v128& peaks) {
    StringLanes<BaselineLanes> lanes[N];
    alignas(16) std::int32_t offsets[N][kKeyLines];
    LineHeads heads[N];
    v128 head[N], comb[N], heard[N];
#pragma GCC unroll 4
    for (int k = 0; k < N; ++k) {
        if (!keys[k]->allValid) [[unlikely]]
            prepareLines(*keys[k], 1);
        loadStrings<BaselineLanes>(lanes[k], keys + k);
        lanes[k].offsets.step(offsets[k]);
    }
#pragma GCC unroll 4
    for (int k = 0; k < N; ++k) {
        heads[k].find(keys[k]->memory, offsets[k]);
        head[k] = heads[k].loadStrings();
        comb[k] = heads[k].loadCombs();
    }
#pragma GCC unroll 4
    for (int k = 0; k < N; ++k)
        heard[k] = stepLines<BaselineLanes, kSaturates>(lanes[k], v128_Set(exciter[k]), saturation,
                                                        head[k], comb[k]);
#pragma GCC unroll 4
    for (int k = 0; k < N; ++k) {
        heads[k].storeStrings(head[k]);
        heads[k].storeCombs(comb[k]);
        storeStrings<BaselineLanes>(lanes[k], keys + k);
        KeyStrings& s = *keys[k];
        const OutputGains gains(s.outputGain);
        const v128 o = __builtin_shufflevector(heard[k], heard[k], 0, 1, 0, 1);
        peaks = raisePeaks(peaks, o * gains.both);
        const v128 mixed = gains.mix(o);
        const auto last = loadLanes<v128>(&s.previousLeft);
        storeLanes(&s.previousLeft, __builtin_shufflevector(last, mixed, 2, 3, 4, 5));
    }
}

// One frame of a group of N keys; returns their sum.
template <int N, bool kSaturates>
NORAVA_INLINE v128d frameBriefly(KeyStrings* const* keys, const float* exciter, const float* amp,
                                 v128 saturation, v128& peaks) {
    int steps[N];
    bool oneEach = true;
#pragma GCC unroll 4
    for (int k = 0; k < N; ++k) {
        const double moved = keys[k]->phase + keys[k]->pitchRatio;
        steps[k] = static_cast<int>(moved);
        keys[k]->phase = moved - steps[k];
        oneEach = oneEach && steps[k] == 1;
    }
    if (oneEach) [[likely]]
        stepBriefly<N, kSaturates>(keys, exciter, saturation, peaks);
    else
        for (int k = 0; k < N; ++k)
            for (int i = 0; i < steps[k]; ++i)
                stepBriefly<1, kSaturates>(keys + k, exciter + k, saturation, peaks);
    v128d sum{};
#pragma GCC unroll 4
    for (int k = 0; k < N; ++k) {
        const v128d last[2] = {widen(&keys[k]->previousLeft), widen(&keys[k]->currentLeft)};
        const double phase = keys[k]->phase;
        const auto gain = static_cast<double>(amp[k]);
        sum = sum + betweenSteps(last, v128d{phase, phase}, v128d{gain, gain});
    }
    return sum;
}

template <int N, bool kSaturates>
NORAVA_INLINE void renderGroupBriefly(KernelJob& job, int first, const float* exciter,
                                      const float* amp, v128& peaks) {
    KeyStrings* keys[N];
    for (int k = 0; k < N; ++k)
        keys[k] = &job.keys[first + k]->strings;
    const v128 saturation = v128_Set(job.saturation);
    if (first + 4 < job.numSounding)
        for (int k = 0; k < 4; ++k)
            fetchLines(job.keys[first + 4 + k]->strings);
    for (int i = 0; i < job.frames; ++i) {
        const int row = i * 4 * kMaxGroups;
        const v64 sum = __builtin_convertvector(
            frameBriefly<N, kSaturates>(keys, exciter + row, amp + row, saturation, peaks), v64);
        job.left[i] = first == 0 ? sum[0] : job.left[i] + sum[0];
        job.right[i] = first == 0 ? sum[1] : job.right[i] + sum[1];
    }
}

// The strings of a group of `count` keys. `exciter` and `amp` point to its lanes in the first
// frame.
NORAVA_INLINE void renderGroupBriefly(KernelJob& job, int first, int count, const float* exciter,
                                      const float* amp, v128& peaks) {
    const auto render = [&]<int N>() {
        // A division by exactly 1 changes nothing.
        if (job.saturation == 0.0f)
            renderGroupBriefly<N, false>(job, first, exciter, amp, peaks);
        else
            renderGroupBriefly<N, true>(job, first, exciter, amp, peaks);
    };
    if (count == 4) [[likely]]
        render.template operator()<4>();
    else if (count == 3)
        render.template operator()<3>();
    else if (count == 2)
        render.template operator()<2>();
    else
        render.template operator()<1>();
}

}  // namespace
}  // namespace norava
