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
constexpr int kMaxBriefGroups = kNumKeys / 4;

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
        // (left, right) of string 1 and of string 2, side by side.
        KeyStrings& s = *keys[k];
        const v128 g = s.outputGain;
        const v128 o = __builtin_shufflevector(heard[k], heard[k], 0, 0, 1, 1);
        peaks = raisePeaks(peaks, o * (g + __builtin_shufflevector(g, g, 1, 0, 3, 2)));
        const v128 sides = o * g;
        const v128 mixed = sides + __builtin_shufflevector(sides, sides, 2, 3, 2, 3);
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

// What the strings of one group hear and how loud its keys are, frame by frame.
struct BriefSignals {
    v128 exciter[kBriefFrames];
    v128 amp[kBriefFrames];
};

// The filters of all groups come first, then all strings: each group's recurrences are long, and
// only others' work can fill the time that they take.
template <bool kClips>
NORAVA_INLINE void filterBriefly(KernelJob& job, BriefSignals* signals) {
    for (int first = 0; first < job.numSounding; first += 4) {
        BriefSignals& out = signals[first / 4];
        ExciterLanes<v128> k;
        loadExciter(job.keys + first, k);
        v128u seed = laneSeeds(job.noiseSeed);
        for (int i = 0; i < job.frames; ++i) {
            const v128 y = noiseFrame<BaselineLanes>(k, seed, k.heldNoise, k.x1, k.x2, k.y1, k.y2);
            out.exciter[i] = hiCutFrame<BaselineLanes, kClips>(k, y, k.hiCutEnv, k.stage1, k.stage2,
                                                               k.stage3, k.stage4);
            out.amp[i] = k.amp;
            k.amp = nextAmp<BaselineLanes>(k, k.amp);
        }
        // Each group goes on where the one before it stopped drawing.
        job.noiseSeed = seed[0];
        storeExciter(k, job.keys + first);
    }
}

template <int N, bool kSaturates>
NORAVA_INLINE void renderGroupBriefly(KernelJob& job, int first, const BriefSignals& signals,
                                      v128& peaks) {
    KeyStrings* keys[N];
    for (int k = 0; k < N; ++k)
        keys[k] = &job.keys[first + k]->strings;
    const v128 saturation = v128_Set(job.saturation);
    for (int i = 0; i < job.frames; ++i) {
        alignas(16) float exciter[4], amp[4];
        storeLanes(exciter, signals.exciter[i]);
        storeLanes(amp, signals.amp[i]);
        const v64 sum = __builtin_convertvector(
            frameBriefly<N, kSaturates>(keys, exciter, amp, saturation, peaks), v64);
        job.left[i] = first == 0 ? sum[0] : job.left[i] + sum[0];
        job.right[i] = first == 0 ? sum[1] : job.right[i] + sum[1];
    }
}

template <bool kSaturates>
NORAVA_INLINE void renderBriefly(KernelJob& job, v128& peaks) {
    BriefSignals signals[kMaxBriefGroups];
    // Every key carries the instrument's one clip amount.
    if (job.keys[0]->exciter.hiCutClip != 0.0f)
        filterBriefly<true>(job, signals);
    else
        filterBriefly<false>(job, signals);
    int first = 0;
    for (; first + 4 <= job.numSounding; first += 4)
        renderGroupBriefly<4, kSaturates>(job, first, signals[first / 4], peaks);
    const BriefSignals& rest = signals[first / 4 % kMaxBriefGroups];
    if (job.numSounding - first == 3) renderGroupBriefly<3, kSaturates>(job, first, rest, peaks);
    if (job.numSounding - first == 2) renderGroupBriefly<2, kSaturates>(job, first, rest, peaks);
    if (job.numSounding - first == 1) renderGroupBriefly<1, kSaturates>(job, first, rest, peaks);
}

NORAVA_INLINE void renderBriefly(KernelJob& job) {
    v128 peaks = v128_Set(job.peak1, job.peak1, job.peak2, job.peak2);
    if (job.saturation == 0.0f)
        renderBriefly<false>(job, peaks);
    else
        renderBriefly<true>(job, peaks);
    job.peak1 = peaks[0];
    job.peak2 = peaks[2];
}

}  // namespace
}  // namespace norava
