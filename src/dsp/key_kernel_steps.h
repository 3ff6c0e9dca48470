#pragma once

// When the strings step, and what each step hears. Internal linkage, see key_kernel_impl.h.

#include <cstdint>

#include "dsp/key_kernel_lanes.h"

namespace norava {
namespace {

// Frame by frame and key by key: how far the key's phase is, and how many string steps it has made
// since the piece began, this frame's included.
struct StepSchedule {
    alignas(32) double phase[kPieceFrames][kScheduledKeys];
    alignas(32) std::int64_t stepsDone[kPieceFrames][kScheduledKeys];
};

// Each frame the phase grows by the pitch ratio, and every whole number passed is a step: the whole
// part of phase + ratio is floor(ratio) or one more.
template <class L>
NORAVA_INLINE void scheduleSteps(KeyStrings* const* keys, int frames, StepSchedule& schedule) {
    using D = typename L::D;
    using I = typename L::L;
    constexpr int kWidth = 2 * L::kHalves;
    constexpr int kVectors = kScheduledKeys / kWidth;
    alignas(32) double phases[kScheduledKeys], ratios[kScheduledKeys], wholes[kScheduledKeys];
    alignas(32) std::int64_t wholeSteps[kScheduledKeys];
    for (int k = 0; k < kScheduledKeys; ++k) {
        phases[k] = keys[k]->phase;
        ratios[k] = keys[k]->pitchRatio;
        wholeSteps[k] = static_cast<std::int64_t>(ratios[k]);
        wholes[k] = static_cast<double>(wholeSteps[k]);
    }
    const D one = D{} + 1.0;
    D phase[kVectors], ratio[kVectors], whole[kVectors];
    I steps[kVectors], count[kVectors];
    for (int v = 0; v < kVectors; ++v) {
        phase[v] = loadLanes<D>(phases + kWidth * v);
        ratio[v] = loadLanes<D>(ratios + kWidth * v);
        whole[v] = loadLanes<D>(wholes + kWidth * v);
        steps[v] = loadLanes<I>(wholeSteps + kWidth * v);
        count[v] = I{};
    }
    for (int i = 0; i < frames; ++i) {
#pragma GCC unroll 4
        for (int v = 0; v < kVectors; ++v) {
            const D moved = phase[v] + ratio[v];
            const I over = bitsAs<I>(moved >= whole[v] + one);
            phase[v] = moved - (whole[v] + bitsAs<D>(bitsAs<I>(one) & over));
            count[v] = count[v] + steps[v] - over;
            storeLanes(&schedule.phase[i][kWidth * v], phase[v]);
            storeLanes(&schedule.stepsDone[i][kWidth * v], count[v]);
        }
    }
    for (int k = 0; k < kScheduledKeys; ++k)
        keys[k]->phase = schedule.phase[frames - 1][k];
}

// Every step hears the exciter of the frame it falls in. `signal` points to the key's lane in the
// first frame; returns the number of steps.
NORAVA_INLINE int spreadExciter(const StepSchedule& schedule, int key, double ratio,
                                const float* signal, int frames, float* exciter) {
    std::int64_t done = 0;
    if (ratio < 1.0) {
        // A frame without a step is overwritten by the next one.
        for (int i = 0; i < frames; ++i) {
            exciter[done] = signal[i * 4 * kMaxGroups];
            done = schedule.stepsDone[i][key];
        }
        return static_cast<int>(done);
    }
    for (int i = 0; i < frames; ++i) {
        const std::int64_t next = schedule.stepsDone[i][key];
        for (; done < next; ++done)
            exciter[done] = signal[i * 4 * kMaxGroups];
    }
    return static_cast<int>(done);
}

}  // namespace
}  // namespace norava
