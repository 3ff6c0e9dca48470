#pragma once

// When the strings step, and what each step hears. Internal linkage, see key_kernel_impl.h.

#include <cstdint>

#include "dsp/key_kernel_lanes.h"

namespace norava {
namespace {

// Frame by frame and key by key: how far the key's phase is, and how many string steps it has made
// since the piece began, this frame's included.
struct StepSchedule {
    alignas(32) double phase[kPieceFrames][kKeysInFlight];
    alignas(32) std::int64_t stepsDone[kPieceFrames][kKeysInFlight];
};

// Each frame the phase grows by the pitch ratio, and every whole number passed is a step: the whole
// part of phase + ratio is floor(ratio) or one more.
template <class L>
NORAVA_INLINE void scheduleSteps(KeyStrings* const* keys, int frames, StepSchedule& schedule) {
    using D = typename L::D;
    using I = typename L::L;
    constexpr int kWidth = 2 * L::kHalves;
    for (int first = 0; first < kKeysInFlight; first += kWidth) {
        double phases[kWidth], ratios[kWidth], wholes[kWidth];
        std::int64_t wholeSteps[kWidth];
        for (int k = 0; k < kWidth; ++k) {
            phases[k] = keys[first + k]->phase;
            ratios[k] = keys[first + k]->pitchRatio;
            wholeSteps[k] = static_cast<std::int64_t>(ratios[k]);
            wholes[k] = static_cast<double>(wholeSteps[k]);
        }
        D phase = loadLanes<D>(phases);
        const D ratio = loadLanes<D>(ratios);
        const D whole = loadLanes<D>(wholes);
        const D one = D{} + 1.0;
        const D limit = whole + one;
        const I steps = loadLanes<I>(wholeSteps);
        I count{};
        for (int i = 0; i < frames; ++i) {
            const D moved = phase + ratio;
            const I over = bitsAs<I>(moved >= limit);
            phase = moved - (whole + bitsAs<D>(bitsAs<I>(one) & over));
            count = count + steps - over;
            storeLanes(&schedule.phase[i][first], phase);
            storeLanes(&schedule.stepsDone[i][first], count);
        }
        for (int k = 0; k < kWidth; ++k)
            keys[first + k]->phase = schedule.phase[frames - 1][first + k];
    }
}

// Every step hears the exciter of the frame it falls in. `signal` points to the key's lane in the
// first frame; returns the number of steps.
NORAVA_INLINE int spreadExciter(const StepSchedule& schedule, int key, const float* signal,
                                int frames, float* exciter) {
    std::int64_t done = 0;
    for (int i = 0; i < frames; ++i) {
        const float e = signal[i * 4 * kMaxGroups];
        const std::int64_t next = schedule.stepsDone[i][key];
        exciter[done] = e;
        if (next > done + 1) [[unlikely]]
            for (std::int64_t s = done + 1; s < next; ++s)
                exciter[s] = e;
        done = next;
    }
    return static_cast<int>(done);
}

}  // namespace
}  // namespace norava
