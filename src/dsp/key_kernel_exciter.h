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

// What four keys draw in one frame, the first key's draw being `seed` itself.
NORAVA_INLINE v128u laneSeeds(std::uint32_t seed) {
    const std::uint32_t second = seed * kNoiseA + kNoiseC;
    const std::uint32_t third = second * kNoiseA + kNoiseC;
    return v128u{seed, second, third, third * kNoiseA + kNoiseC};
}

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

// KeyExciter, a vector for each of its floats, as the keys' ExciterBank holds them.
template <class F>
struct __attribute__((may_alias)) ExciterLanes {
    F noiseCoefficient, noiseMix, noiseOffset, loCutB;
    F loCutC1, loCutC2, hiCutEnvTarget, hiCutEnvRate;
    F hiCutCutoff, hiCutFeedback, hiCutClip, ampTarget;
    F ampRate, amp, heldNoise, hiCutEnv;
    F x1, x2, y1, y2;
    F stage1, stage2, stage3, stage4;
};

// One piece of the signals that the groups hand to their strings: per frame, a lane for each key.
struct PieceSignals {
    alignas(32) float exciter[kPieceFrames][4 * kMaxGroups];
    alignas(32) float amp[kPieceFrames][4 * kMaxGroups];
};

// Sample-and-hold noise: a draw u in [0, 1] above the key's coefficient becomes the held value.
// Then the lo-cut, y = b (x - 2 x1 + x2) - (c1 y1 + c2 y2). Returns y.
template <class L, class F = typename L::F>
NORAVA_INLINE F noiseFrame(const ExciterLanes<F>& k, typename L::U& seed, F& held, F& x1, F& x2,
                           F& y1, F& y2) {
    using I = typename L::I;
    constexpr NoiseJump kFrameStep = noiseJump(4);
    // The sum of the two exact halves rounds once, as a conversion of the unsigned number would.
    const F high = __builtin_convertvector(bitsAs<I>(seed >> 16), F);
    const F low = __builtin_convertvector(bitsAs<I>(seed & 0xFFFFu), F);
    const F u = (high * 65536.0f + low) * (1.0f / 4294967296.0f);
    seed = seed * kFrameStep.multiplier + kFrameStep.increment;
    held = select<L>(bitsAs<I>(u > k.noiseCoefficient), u, held);
    const F x = held * k.noiseMix + k.noiseOffset;
    const F y = k.loCutB * (x - broadcast<F>(2.0f) * x1 + x2) - (k.loCutC1 * y1 + k.loCutC2 * y2);
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    return y;
}

// Hi-cut: four one-pole stages of coefficient g = envelope x cutoff, the last one fed back to the
// first and softly clipped by s / (1 + k s^2). Where no key clips the division would be by exactly
// 1, which changes nothing. Returns the last stage.
template <class L, bool kClips, class F = typename L::F>
NORAVA_INLINE F hiCutFrame(const ExciterLanes<F>& k, F y, F& env, F& s1, F& s2, F& s3, F& s4) {
    env = env + (k.hiCutEnvTarget - env) * k.hiCutEnvRate;
    const F g = env * k.hiCutCutoff;
    s1 = s1 + g * (y + k.hiCutFeedback * s4 - s1);
    s2 = s2 + g * (s1 - s2);
    s3 = s3 + g * (s2 - s3);
    s4 = s4 + g * (s3 - s4);
    if constexpr (kClips) s4 = s4 / (broadcast<F>(1.0f) + k.hiCutClip * (s4 * s4));
    return s4;
}

// The amplitude's next frame: an exponential that stops at 1.
template <class L, class F = typename L::F>
NORAVA_INLINE F nextAmp(const ExciterLanes<F>& k, F amp) {
    using I = typename L::I;
    const F one = broadcast<F>(1.0f);
    const F next = amp + (k.ampTarget - amp) * k.ampRate;
    return select<L>(bitsAs<I>(next > one), one, next);
}

// Noise and lo-cut of N vectors of keys for one piece.
template <class L, int N>
NORAVA_INLINE void renderNoise(ExciterLanes<typename L::F>* lanes, typename L::U* seeds, int frames,
                               PieceSignals& out) {
    using F = typename L::F;
    F held[N], x1[N], x2[N], y1[N], y2[N];
    typename L::U seed[N];
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
        for (int v = 0; v < N; ++v)
            storeLanes(&out.exciter[i][4 * L::kHalves * v],
                       noiseFrame<L>(lanes[v], seed[v], held[v], x1[v], x2[v], y1[v], y2[v]));
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

// Hi-cut and amplitude of N vectors of keys for one piece.
template <class L, int N, bool kClips>
NORAVA_INLINE void renderHiCut(ExciterLanes<typename L::F>* lanes, int frames, PieceSignals& out) {
    using F = typename L::F;
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
            float* signal = &out.exciter[i][4 * L::kHalves * v];
            storeLanes(signal, hiCutFrame<L, kClips>(lanes[v], loadLanes<F>(signal), env[v], s1[v],
                                                     s2[v], s3[v], s4[v]));
            storeLanes(&out.amp[i][4 * L::kHalves * v], amp[v]);
            amp[v] = nextAmp<L>(lanes[v], amp[v]);
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
