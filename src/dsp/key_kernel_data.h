#pragma once

#include <cstdint>

#include "dsp/lanes.h"

// What the render kernel reads and writes of one key voice: coefficients set once per control block
// by the voice, states kept by the kernel. Plain data, so that the kernel can be built for several
// instruction sets.

namespace norava {

// Packed by key: the kernel turns four of these into vectors whose lane i is key i. The order
// groups the values in fours so that a 4 x 4 transposition loads them; coefficients first, states
// after them.
struct alignas(16) KeyExciter {
    float noiseCoefficient;  // a draw above it becomes the held noise value
    float noiseMix;          // gain of the held noise
    float noiseOffset;       // constant added to it
    float loCutB;

    float loCutC1;
    float loCutC2;
    float hiCutEnvTarget;
    float hiCutEnvRate;  // per frame

    float hiCutCutoff;    // one-pole coefficient at full envelope, 0..1
    float hiCutFeedback;  // -4..0
    float hiCutClip;      // 0..1000, amount of the soft clipper behind the last stage
    float ampTarget;

    float ampRate;  // per frame
    float amp;
    float heldNoise;
    float hiCutEnv;

    float loCutX1, loCutX2, loCutY1, loCutY2;

    float stage1, stage2, stage3, stage4;  // hi-cut stages
};
inline constexpr int kExciterRows = sizeof(KeyExciter) / sizeof(v128);
inline constexpr int kFirstExciterStateRow = 3;  // `ampRate` shares its row with the first states

// A circular store inside the key's one block of memory. String lines are stored as pairs (line a,
// line b), because the two lines of a string have one length and move together.
struct KeyLine {
    std::int32_t start = 0;     // byte offset of the first frame
    std::int32_t stride = 0;    // bytes a frame: 8 for a pair, 4 for a comb line
    std::int32_t length = 1;    // frames in use, set when a note starts
    std::int32_t capacity = 1;  // frames that there are
    std::int32_t position =
        0;  // next frame to read and overwrite; `length` when it is about to go back to the start
    std::int32_t valid =
        0;  // frames below this one are up to date; from it on the line counts as silence
};

enum KeyLineIndex { kString1Pair = 0, kString2Pair = 1, kComb1 = 2, kComb2 = 3, kKeyLines = 4 };

// Packed by line: lane 0 string 1 line a, lane 1 string 1 line b, lane 2 string 2 line a, lane 3
// string 2 line b.
struct alignas(16) KeyStrings {
    v128 damping;
    v128 sharpness;
    v128 gain;           // loop gain
    v128 inverseLength;  // 1 / frames
    v128 outputGain;     // string 1 left, string 1 right, string 2 left, string 2 right

    v128 filter1;  // first loop filter state
    v128 filter2;  // second loop filter state, what the line is fed back with
    v128 mean;     // running average of the exciter over about a period

    float combLevel;
    float combFeedback;
    float previousLeft, previousRight;  // outputs of the string step before the last
    float currentLeft, currentRight;    // outputs of the last string step
    double phase;                       // fraction of a string step, 0..1
    double pitchRatio;                  // string steps a frame, 0..kMaxPitchRatio

    KeyLine lines[kKeyLines];
    unsigned char* memory;
    bool allValid;  // no line holds stale frames any more
};

// More than 15 string steps and a fraction a frame is four octaves above the key; the bound keeps a
// runaway pitch modulation from stalling the audio thread.
inline constexpr double kMaxPitchRatio = 15.999;

struct KeyKernelData {
    KeyExciter exciter{};
    KeyStrings strings{};
};

}  // namespace norava
