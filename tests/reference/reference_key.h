#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "dsp/envelope.h"
#include "dsp/sound_settings.h"

// The key voice and its kernel as plainly as they can be said: one key, one line, one sample at a
// time, every formula evaluated whenever its result is used, every buffer cleared in one go. The
// product's voice must give the same bits.

namespace norava::reference {

struct Line {
    std::vector<float> data;
    int position = 0;
    int end = 1;

    float& head() { return data[static_cast<std::size_t>(position)]; }
    void wrap() {
        if (position >= end) position = 0;
    }
};

struct Key {
    Key(int note, const SoundSettings& instrument);
    void reset();
    void start(float noteVelocity);
    void release();
    void updateParams(int frames);
    float modulation(int destination) const;
    void stringStep(float exciter, float saturationAmount, float* peak1, float* peak2);

    const SoundSettings& settings;
    int key;
    float keyFrequency;
    CEgADSR envelope;

    bool active, firstBlock;
    float envelopeValue, lfoValue, velocity, releaseFlag;
    double sinceStart, sinceRelease, stringFrequency, baseFrequency, pitchRatio, phase;
    float saturation, noiseCoefficient, clip, mix1, mix2;
    float ampTarget, ampRate, amp, envTarget, envRate, env, cutoff, feedback;
    float b, c1, c2, x1, x2, y1, y2, held;
    float combLevel, combFeedback;
    std::array<float, 4> stage, damping, sharpness, gain, smoothedGain, f1, f2, mean;
    std::array<float, 4> output, smoothedOutput;  // string 1 left, right, string 2 left, right
    float previousLeft, previousRight, currentLeft, currentRight;
    float inverse1, inverse2;
    std::array<Line, 6> lines;  // 1a, 1b, 2a, 2b, comb 1, comb 2
};

// processKeys over `keys` in note order, in groups of four; `seed` is the instrument's.
void processKeys(std::vector<Key>& keys, std::uint32_t& seed, float* left, float* right, int frames,
                 float* peak1, float* peak2);

}  // namespace norava::reference
