#pragma once

// The render kernel, written once for every vector width and included by one file per instruction
// set. Everything here has internal linkage and calls nothing that is shared between those files,
// so that no code built for a wider machine can end up where a narrower one runs it.
//
// A block is cut into pieces of at most kPieceFrames. In each piece the exciter and filters run for
// several groups of four keys side by side (lanes = keys), because one group alone would wait for
// its own recurrence most of the time; then the strings run key by key (lanes = lines), several
// keys in flight for the same reason; last, each group's keys are interpolated to frames and
// summed. No lane or grouping ever changes a result: every value is computed from the same operands
// in the same order as for one key alone.

#include <cstdint>

#include "dsp/exciter_bank.h"
#include "dsp/key_kernel_brief.h"
#include "dsp/key_kernel_exciter.h"
#include "dsp/key_kernel_output.h"
#include "dsp/key_kernel_paths.h"
#include "dsp/key_kernel_strings.h"

namespace norava {
namespace {

// The most steps that a key can make in a piece: its phase may stand just below the first of them.
constexpr int mostSteps(int frames, double ratio) {
    return static_cast<int>(1.0 + frames * ratio);
}

// Frames of a piece in which no key of at most this pitch ratio makes more than kPieceSteps steps.
NORAVA_INLINE int pieceFrames(double ratio) {
    constexpr double kFewSteps = 1.9;
    constexpr double kMoreSteps = 7.9;
    constexpr int kShorter = kPieceFrames / 4;
    constexpr int kShortest = kPieceFrames / 8;
    static_assert(mostSteps(kPieceFrames, kFewSteps) <= kPieceSteps);
    static_assert(mostSteps(kShorter, kMoreSteps) <= kPieceSteps);
    static_assert(mostSteps(kShortest, kMaxPitchRatio) <= kPieceSteps);
    return ratio < kFewSteps ? kPieceFrames : ratio < kMoreSteps ? kShorter : kShortest;
}

// What is at work while one block is rendered; under 40 KB with all it calls, on the stack of the
// audio thread.
template <class L>
struct Kernel {
    static constexpr int kLanes = 4 * L::kHalves;                // keys in a vector
    static constexpr int kMaxVectors = kMaxGroups / L::kHalves;  // vectors side by side

    KernelJob& job;
    const NoiseJump blockJump;  // what a group of four draws in the block
    const bool clips;           // every key carries the instrument's one clip amount
    v128 peaks;
    PieceSignals signals;
    StepSchedule schedule;
    StringPiece pieces[kKeysInFlight];
    KeyStrings spare;  // stands in for keys that a group lacks; nobody hears it

    explicit Kernel(KernelJob& j)
        : job(j),
          blockJump(noiseJump(4 * static_cast<std::uint32_t>(j.frames))),
          clips(j.keys[0]->exciter.hiCutClip != 0.0f) {
        spare.phase = spare.pitchRatio = 0.0;
    }

    // The noise and the filters of N vectors of keys for one piece.
    template <int N>
    void renderSignals(int firstKey, typename L::U* seeds, int frames) {
        auto* const lanes = reinterpret_cast<ExciterLanes<typename L::F>*>(
            job.exciterLanes + ExciterBank::kFields * firstKey);
        renderNoise<L, N>(lanes, seeds, frames, signals);
        // A division by exactly 1 changes nothing.
        if (clips)
            renderHiCut<L, N, true>(lanes, frames, signals);
        else
            renderHiCut<L, N, false>(lanes, frames, signals);
    }

    // N vectors of keys, from `firstKey` on, through all frames of a block of a few.
    template <int N>
    void renderVectorsBriefly(int firstKey) {
        const int sounding = smaller(job.numSounding - firstKey, kLanes * N);
        for (int k = 0; k < 4 && firstKey == 0; ++k)
            fetchLines(job.keys[firstKey + k]->strings);
        typename L::U seeds[N];
        drawSeeds<N>(firstKey, seeds);
        renderSignals<N>(firstKey, seeds, job.frames);
        for (int k = 0; k < sounding; k += 4)
            renderGroupBriefly(job, firstKey + k, smaller(sounding - k, 4), &signals.exciter[0][k],
                               &signals.amp[0][k], peaks);
    }

    // N vectors of keys, from `firstKey` on, through all frames of the block.
    template <int N>
    void renderVectors(int firstKey) {
        constexpr int kKeys = kLanes * N;
        typename L::U seeds[N];
        drawSeeds<N>(firstKey, seeds);
        double fastest = 0.0;
        for (int k = 0; k < kKeys; ++k) {
            const double ratio = job.keys[firstKey + k]->strings.pitchRatio;
            if (ratio > fastest) fastest = ratio;
        }
        const int sounding = smaller(job.numSounding - firstKey, kKeys);
        const int step = pieceFrames(fastest);
        for (int done = 0; done < job.frames; done += step) {
            const int n = smaller(job.frames - done, step);
            renderSignals<N>(firstKey, seeds, n);
            for (int k = 0; k < sounding; k += kScheduledKeys) {
                KeyStrings* strings[kScheduledKeys];
                for (int i = 0; i < kScheduledKeys; ++i)
                    strings[i] = k + i < sounding ? &job.keys[firstKey + k + i]->strings : &spare;
                scheduleSteps<L>(strings, n, schedule);
                for (int i = 0; i < kScheduledKeys && k + i < sounding; i += kKeysInFlight)
                    renderGroup(firstKey, k, i, smaller(sounding - k - i, kKeysInFlight), done, n);
            }
        }
    }

    // Groups draw their block's numbers one after the other.
    template <int N>
    void drawSeeds(int firstKey, typename L::U* seeds) {
        for (int v = 0; v < N; ++v) {
            v128u groups[2];
            for (int h = 0; h < L::kHalves; ++h) {
                groups[h] = laneSeeds(job.noiseSeed);
                if (firstKey + 4 * (L::kHalves * v + h) < job.numSounding)
                    job.noiseSeed = blockJump(job.noiseSeed);
            }
            join(groups, seeds[v]);
        }
    }

    // The strings of one group of `count` sounding keys for one piece. `scheduled` is the first
    // scheduled key's lane in the signals, `group` the group's first key among the scheduled ones.
    void renderGroup(int firstKey, int scheduled, int group, int count, int done, int frames) {
        const int lane = scheduled + group;
        for (int k = 0; k < count; ++k) {
            KeyStrings& strings = job.keys[firstKey + lane + k]->strings;
            pieces[k].strings = &strings;
            pieces[k].steps =
                spreadExciter(schedule, group + k, strings.pitchRatio,
                              &signals.exciter[0][lane + k], frames, pieces[k].exciter);
        }
        constexpr int kVectors = kKeysInFlight / L::kHalves;
        if (count == 4)
            renderStrings<L, kVectors>(pieces, job.saturation);
        else if (count == 3)
            renderStrings<BaselineLanes, 3>(pieces, job.saturation);
        else if (count == 2)
            renderStrings<L, 2 / L::kHalves>(pieces, job.saturation);
        else
            renderStrings<BaselineLanes, 1>(pieces, job.saturation);
        v64 sums[kPieceFrames];
        for (int k = 0; k < count; ++k)
            peaks = mixStrings(pieces[k], peaks);
        const float* amp = &signals.amp[0][lane];
        if (count == 4)
            sumFrames<4>(pieces, schedule, group, amp, frames, sums);
        else if (count == 3)
            sumFrames<3>(pieces, schedule, group, amp, frames, sums);
        else if (count == 2)
            sumFrames<2>(pieces, schedule, group, amp, frames, sums);
        else
            sumFrames<1>(pieces, schedule, group, amp, frames, sums);
        writeGroup(sums, done, frames, firstKey + lane == 0);
    }

    // The first group stores its sum, so that nobody need clear the buffers; the others add theirs.
    void writeGroup(const v64* sums, int done, int frames, bool first) {
        float* left = job.left + done;
        float* right = job.right + done;
        int i = 0;
        for (; i + 4 <= frames; i += 4) {
            const auto a = loadLanes<v128>(sums + i);
            const auto b = loadLanes<v128>(sums + i + 2);
            const v128 l = __builtin_shufflevector(a, b, 0, 2, 4, 6);
            const v128 r = __builtin_shufflevector(a, b, 1, 3, 5, 7);
            storeLanes(left + i, first ? l : loadLanes<v128>(left + i) + l);
            storeLanes(right + i, first ? r : loadLanes<v128>(right + i) + r);
        }
        for (; i < frames; ++i) {
            left[i] = first ? sums[i][0] : left[i] + sums[i][0];
            right[i] = first ? sums[i][1] : right[i] + sums[i][1];
        }
    }

    // As many vectors as there are keys left for, at most N.
    template <int N>
    void renderVectorsUpTo(int firstKey) {
        if constexpr (N > 1) {
            if (job.numSounding - firstKey <= kLanes * (N - 1))
                return renderVectorsUpTo<N - 1>(firstKey);
        }
        if (job.frames <= kBriefFrames)
            renderVectorsBriefly<N>(firstKey);
        else
            renderVectors<N>(firstKey);
    }

    void render() {
        peaks = v128_Set(job.peak1, job.peak2, job.peak1, job.peak2);
        for (int key = 0; key < job.numSounding; key += kLanes * kMaxVectors)
            renderVectorsUpTo<kMaxVectors>(key);
        job.peak1 = peaks[0] > peaks[2] ? peaks[0] : peaks[2];
        job.peak2 = peaks[1] > peaks[3] ? peaks[1] : peaks[3];
    }
};

template <class L>
void renderKeys(KernelJob& job) {
    Kernel<L> kernel(job);
    kernel.render();
}

}  // namespace
}  // namespace norava
