#pragma once

// From string steps to frames. Internal linkage, see key_kernel_impl.h.

#include "dsp/key_kernel_steps.h"
#include "dsp/key_kernel_strings.h"

namespace norava {
namespace {

typedef float v64 __attribute__((vector_size(8)));

// Turns the step outputs (string 1, string 2) into (left, right) and notes the strings' peaks.
NORAVA_INLINE void mixStrings(StringPiece& piece, v128& peaks) {
    KeyStrings& s = *piece.strings;
    const v128 g = s.outputGain;
    const v128 string1 = __builtin_shufflevector(g, g, 0, 1, 0, 1);
    const v128 string2 = __builtin_shufflevector(g, g, 2, 3, 2, 3);
    const v128 both =
        __builtin_shufflevector(g, g, 0, 2, 0, 2) + __builtin_shufflevector(g, g, 1, 3, 1, 3);
    float* out = piece.output;
    storeLanes(out, v128_Set(s.previousLeft, s.previousRight, s.currentLeft, s.currentRight));
    // Two steps at a time; an odd last one is mixed together with a copy of itself.
    if (piece.steps & 1)
        storeLanes(out + 2 * (piece.steps + 2), loadLanes<double>(out + 2 * (piece.steps + 1)));
    for (int step = 0; step < piece.steps; step += 2) {
        float* at = out + 2 * (step + 2);
        const v128 o = loadLanes<v128>(at);
        const v128 magnitude = bitsAs<v128>(bitsAs<v128i>(o * both) & 0x7FFFFFFF);
        peaks = select<BaselineLanes>(bitsAs<v128i>(magnitude > peaks), magnitude, peaks);
        storeLanes(at, __builtin_shufflevector(o, o, 0, 0, 2, 2) * string1 +
                           __builtin_shufflevector(o, o, 1, 1, 3, 3) * string2);
    }
    const auto last = loadLanes<v128>(out + 2 * piece.steps);
    s.previousLeft = last[0];
    s.previousRight = last[1];
    s.currentLeft = last[2];
    s.currentRight = last[3];
}

// A group's frames: each key between its last two step outputs by its phase, times its amplitude,
// in double precision; the keys are summed in order. `amp` points to the first key's lane.
template <int Keys>
NORAVA_INLINE void sumFrames(const StringPiece* pieces, const StepSchedule& schedule,
                             const float* amp, int frames, v64* sums) {
    for (int i = 0; i < frames; ++i) {
        v128d sum{};
#pragma GCC unroll 4
        for (int k = 0; k < Keys; ++k) {
            const float* last = pieces[k].output + 2 * schedule.stepsDone[i][k];
            const v128d previous = __builtin_convertvector(loadLanes<v64>(last), v128d);
            const v128d current = __builtin_convertvector(loadLanes<v64>(last + 2), v128d);
            const auto gain = static_cast<double>(amp[i * 4 * kMaxGroups + k]);
            sum = sum + (previous + (current - previous) * schedule.phase[i][k]) * gain;
        }
        sums[i] = __builtin_convertvector(sum, v64);
    }
}

}  // namespace
}  // namespace norava
