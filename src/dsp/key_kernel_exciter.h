#pragma once

// The render kernel's exciter and filters, packed by key: lane i is key i. Internal linkage, see
// key_kernel_impl.h.

#include "dsp/key_kernel_lanes.h"

namespace norava {
namespace {

// Noise: seed' = seed * A + C modulo 2^32, one generator for the whole instrument. Each frame of
// each group of four draws four numbers, in key order; a lane therefore moves four steps a frame.

constexpr std::uint32_t kNoiseA = 0x0BB38435u;
constexpr std::uint32_t kNoiseC = 0x3619636Bu;

struct NoiseJump {
    std::uint32_t multiplier;
    std::uint32_t increment;
    constexpr std::uint32_t operator()(std::uint32_t seed) const {
        return seed * multiplier + increment;
    }
};

// The generator's `steps` steps as one.
constexpr NoiseJump noiseJump(std::uint32_t steps) {
    NoiseJump result{1, 0};
    NoiseJump power{kNoiseA, kNoiseC};
    for (; steps != 0; steps >>= 1) {
        if (steps & 1u)
            result = {result.multiplier * power.multiplier,
                      result.increment * power.multiplier + power.increment};
        power = {power.multiplier * power.multiplier,
                 power.increment * power.multiplier + power.increment};
    }
    return result;
}

// KeyExciter, a vector for each of its floats.
template <class F>
struct ExciterLanes {
    F noiseCoefficient, noiseMix, noiseOffset, loCutB;
    F loCutC1, loCutC2, hiCutEnvTarget, hiCutEnvRate;
    F hiCutCutoff, hiCutFeedback, hiCutClip, ampTarget;
    F ampRate, amp, heldNoise, hiCutEnv;
    F x1, x2, y1, y2;
    F stage1, stage2, stage3, stage4;
};

// `rows` of a group's keys, turned into lanes; the last two arguments are the first row and the
// end.
NORAVA_INLINE void gather(KeyKernelData* const* keys, v128 (&fields)[4 * kExciterRows]) {
    for (int row = 0; row < kExciterRows; ++row) {
        v128* f = fields + 4 * row;
        for (int i = 0; i < 4; ++i)
            f[i] = loadLanes<v128>(reinterpret_cast<const float*>(&keys[i]->exciter) + 4 * row);
        transpose(f[0], f[1], f[2], f[3]);
    }
}

NORAVA_INLINE void scatter(KeyKernelData* const* keys, v128 (&fields)[4 * kExciterRows]) {
    for (int row = kFirstExciterStateRow; row < kExciterRows; ++row) {
        v128* f = fields + 4 * row;
        transpose(f[0], f[1], f[2], f[3]);
        for (int i = 0; i < 4; ++i)
            storeLanes(reinterpret_cast<float*>(&keys[i]->exciter) + 4 * row, f[i]);
    }
}

template <class L>
NORAVA_INLINE ExciterLanes<typename L::F> loadExciter(KeyKernelData* const* keys) {
    using F = typename L::F;
    v128 halves[L::kHalves][4 * kExciterRows];
    for (int h = 0; h < L::kHalves; ++h)
        gather(keys + 4 * h, halves[h]);
    F fields[4 * kExciterRows];
    for (int i = 0; i < 4 * kExciterRows; ++i) {
        v128 parts[2] = {halves[0][i], halves[L::kHalves - 1][i]};
        join(parts, fields[i]);
    }
    ExciterLanes<F> lanes;
    static_assert(sizeof lanes == sizeof fields);
    __builtin_memcpy(&lanes, fields, sizeof lanes);
    return lanes;
}

template <class L>
NORAVA_INLINE void storeExciter(const ExciterLanes<typename L::F>& lanes,
                                KeyKernelData* const* keys) {
    using F = typename L::F;
    F fields[4 * kExciterRows];
    __builtin_memcpy(fields, &lanes, sizeof lanes);
    v128 halves[2][4 * kExciterRows];
    for (int i = 0; i < 4 * kExciterRows; ++i) {
        v128 parts[2];
        split(fields[i], parts);
        for (int h = 0; h < L::kHalves; ++h)
            halves[h][i] = parts[h];
    }
    for (int h = 0; h < L::kHalves; ++h)
        scatter(keys + 4 * h, halves[h]);
}

// One piece of the signals that the groups hand to their strings: per frame, a lane for each key.
struct PieceSignals {
    alignas(32) float exciter[kPieceFrames][4 * kMaxGroups];
    alignas(32) float amp[kPieceFrames][4 * kMaxGroups];
};

// Sample-and-hold noise: a draw u in [0, 1] above the key's coefficient becomes the held value.
// Then the lo-cut, y = b (x - 2 x1 + x2) - (c1 y1 + c2 y2).
template <class L, int N>
NORAVA_INLINE void renderNoise(ExciterLanes<typename L::F>* lanes, typename L::U* seeds, int frames,
                               PieceSignals& out) {
    using F = typename L::F;
    using U = typename L::U;
    using I = typename L::I;
    constexpr NoiseJump kFrameStep = noiseJump(4);
    const F two = broadcast<F>(2.0f);
    F held[N], x1[N], x2[N], y1[N], y2[N];
    U seed[N];
    for (int v = 0; v < N; ++v) {
        held[v] = lanes[v].heldNoise;
        x1[v] = lanes[v].x1;
        x2[v] = lanes[v].x2;
        y1[v] = lanes[v].y1;
        y2[v] = lanes[v].y2;
        seed[v] = seeds[v];
    }
    for (int i = 0; i < frames; ++i) {
#pragma GCC unroll 4
        for (int v = 0; v < N; ++v) {
            const ExciterLanes<F>& k = lanes[v];
            // The sum of the two exact halves rounds once, as a conversion of the unsigned number
            // would.
            const F high = __builtin_convertvector(bitsAs<I>(seed[v] >> 16), F);
            const F low = __builtin_convertvector(bitsAs<I>(seed[v] & 0xFFFFu), F);
            const F u = (high * 65536.0f + low) * (1.0f / 4294967296.0f);
            seed[v] = seed[v] * kFrameStep.multiplier + kFrameStep.increment;
            held[v] = select<L>(bitsAs<I>(u > k.noiseCoefficient), u, held[v]);
            const F x = held[v] * k.noiseMix + k.noiseOffset;
            const F y =
                k.loCutB * (x - two * x1[v] + x2[v]) - (k.loCutC1 * y1[v] + k.loCutC2 * y2[v]);
            x2[v] = x1[v];
            x1[v] = x;
            y2[v] = y1[v];
            y1[v] = y;
            storeLanes(&out.exciter[i][4 * L::kHalves * v], y);
        }
    }
    for (int v = 0; v < N; ++v) {
        lanes[v].heldNoise = held[v];
        lanes[v].x1 = x1[v];
        lanes[v].x2 = x2[v];
        lanes[v].y1 = y1[v];
        lanes[v].y2 = y2[v];
        seeds[v] = seed[v];
    }
}

// Hi-cut: four one-pole stages of coefficient g = envelope x cutoff, the last one fed back to the
// first and softly clipped by s / (1 + k s^2); beside it the amplitude, an exponential that stops
// at 1.
template <class L, int N, bool kClips>
NORAVA_INLINE void renderHiCut(ExciterLanes<typename L::F>* lanes, int frames, PieceSignals& out) {
    using F = typename L::F;
    using I = typename L::I;
    const F one = broadcast<F>(1.0f);
    F env[N], s1[N], s2[N], s3[N], s4[N], amp[N];
    for (int v = 0; v < N; ++v) {
        env[v] = lanes[v].hiCutEnv;
        s1[v] = lanes[v].stage1;
        s2[v] = lanes[v].stage2;
        s3[v] = lanes[v].stage3;
        s4[v] = lanes[v].stage4;
        amp[v] = lanes[v].amp;
    }
    for (int i = 0; i < frames; ++i) {
#pragma GCC unroll 4
        for (int v = 0; v < N; ++v) {
            const ExciterLanes<F>& k = lanes[v];
            float* signal = &out.exciter[i][4 * L::kHalves * v];
            const F y = loadLanes<F>(signal);
            env[v] = env[v] + (k.hiCutEnvTarget - env[v]) * k.hiCutEnvRate;
            const F g = env[v] * k.hiCutCutoff;
            s1[v] = s1[v] + g * (y + k.hiCutFeedback * s4[v] - s1[v]);
            s2[v] = s2[v] + g * (s1[v] - s2[v]);
            s3[v] = s3[v] + g * (s2[v] - s3[v]);
            s4[v] = s4[v] + g * (s3[v] - s4[v]);
            if constexpr (kClips) s4[v] = s4[v] / (one + k.hiCutClip * (s4[v] * s4[v]));
            storeLanes(signal, s4[v]);

            storeLanes(&out.amp[i][4 * L::kHalves * v], amp[v]);
            const F next = amp[v] + (k.ampTarget - amp[v]) * k.ampRate;
            amp[v] = select<L>(bitsAs<I>(next > one), one, next);
        }
    }
    for (int v = 0; v < N; ++v) {
        lanes[v].hiCutEnv = env[v];
        lanes[v].stage1 = s1[v];
        lanes[v].stage2 = s2[v];
        lanes[v].stage3 = s3[v];
        lanes[v].stage4 = s4[v];
        lanes[v].amp = amp[v];
    }
}

}  // namespace
}  // namespace norava
