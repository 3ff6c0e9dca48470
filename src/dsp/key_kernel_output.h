#pragma once

// From string steps to frames. Internal linkage, see key_kernel_impl.h.

#include "dsp/key_kernel_steps.h"
#include "dsp/key_kernel_strings.h"

namespace norava {
namespace {

// Two floats in memory as doubles.
NORAVA_INLINE v128d widen(const float* pair) {
    return __builtin_convertvector(loadLanes<v64>(pair), v128d);
}

// A key's output gains, laid out for two steps at a time: o = (string 1, string 2) of one step,
// then of the next.
struct OutputGains {
    v128 string1, string2, both;

    NORAVA_INLINE explicit OutputGains(v128 g)
        : string1(__builtin_shufflevector(g, g, 0, 1, 0, 1)),
          string2(__builtin_shufflevector(g, g, 2, 3, 2, 3)),
          both(__builtin_shufflevector(g, g, 0, 2, 0, 2) +
               __builtin_shufflevector(g, g, 1, 3, 1, 3)) {}
    // (left, right) of one step, then of the next.
    NORAVA_INLINE v128 mix(v128 o) const {
        return __builtin_shufflevector(o, o, 0, 0, 2, 2) * string1 +
               __builtin_shufflevector(o, o, 1, 1, 3, 3) * string2;
    }
};

// The larger of each lane of `peaks` and the magnitude of each lane of `heard`.
NORAVA_INLINE v128 raisePeaks(v128 peaks, v128 heard) {
    const v128 magnitude = bitsAs<v128>(bitsAs<v128i>(heard) & 0x7FFFFFFF);
    return select<BaselineLanes>(bitsAs<v128i>(magnitude > peaks), magnitude, peaks);
}

// Between the last two step outputs by the phase, times the amplitude, in double precision. phase
// and amp stand in both lanes.
NORAVA_INLINE v128d betweenSteps(const v128d* last, v128d phase, v128d amp) {
    return (last[0] + (last[1] - last[0]) * phase) * amp;
}

// Turns the step outputs (string 1, string 2) into (left, right) and returns the strings'
// peaks, raised.
NORAVA_INLINE v128 mixStrings(StringPiece& piece, v128 peaks) {
    KeyStrings& s = *piece.strings;
    const OutputGains gains(s.outputGain);
    v128d* wide = piece.output;
    wide[0] = v128d{s.previousLeft, s.previousRight};
    wide[1] = v128d{s.currentLeft, s.currentRight};
    // Two steps at a time; an odd last one is mixed together with a copy of itself.
    float* out = piece.strings12;
    const int steps = piece.steps;
    if (steps & 1) storeLanes(out + 2 * steps, loadLanes<double>(out + 2 * (steps - 1)));
    for (int step = 0; step < steps; step += 2) {
        const v128 o = loadLanes<v128>(out + 2 * step);
        peaks = raisePeaks(peaks, o * gains.both);
        storeLanes(out + 2 * step, gains.mix(o));
        wide[step + 2] = widen(out + 2 * step);
        wide[step + 3] = widen(out + 2 * step + 2);
    }
    const v128d previous = wide[steps];
    const v128d current = wide[steps + 1];
    s.previousLeft = static_cast<float>(previous[0]);
    s.previousRight = static_cast<float>(previous[1]);
    s.currentLeft = static_cast<float>(current[0]);
    s.currentRight = static_cast<float>(current[1]);
    return peaks;
}

// A group's frames, the keys summed in order. `group` is its first key among the scheduled
// ones; `amp` points to that key's lane.
template <int Keys>
NORAVA_INLINE void sumFrames(const StringPiece* pieces, const StepSchedule& schedule, int group,
                             const float* amp, int frames, v64* sums) {
    for (int i = 0; i < frames; ++i) {
        const float* gains = amp + i * 4 * kMaxGroups;
        const std::int64_t* steps = schedule.stepsDone[i] + group;
        v128d sum{};
#pragma GCC unroll 2
        for (int k = 0; k < Keys; k += 2) {
            const v128d phase = loadLanes<v128d>(&schedule.phase[i][group + k]);
            const v128d gain = widen(gains + k);
            sum = sum + betweenSteps(pieces[k].output + steps[k],
                                     __builtin_shufflevector(phase, phase, 0, 0),
                                     __builtin_shufflevector(gain, gain, 0, 0));
            if (k + 1 < Keys)
                sum = sum + betweenSteps(pieces[k + 1].output + steps[k + 1],
                                         __builtin_shufflevector(phase, phase, 1, 1),
                                         __builtin_shufflevector(gain, gain, 1, 1));
        }
        sums[i] = __builtin_convertvector(sum, v64);
    }
}

}  // namespace
}  // namespace norava
