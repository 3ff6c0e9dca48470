#pragma once

#include <cstdint>

#include "dsp/lanes.h"

// What the render kernel reads and writes of one key voice: coefficients set once per control block
// by the voice, states kept by the kernel. Plain data, so that the kernel can be built for several
// instruction sets.

namespace norava {

// Packed by key: the kernel takes them with a lane for each key (see ExciterBank). Coefficients
// first, states after them.
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

// The circular stores of a key, as lanes: the two lines of string 1, those of string 2, comb 1,
// comb 2. The lines of a string are stored as pairs (line a, line b), because they have one length
// and move together. All values are byte offsets in the key's one block of memory.
enum KeyLine { kString1Pair = 0, kString2Pair = 1, kComb1 = 2, kComb2 = 3, kKeyLines = 4 };

struct KeyLines {
    v128i start;   // first frame
    v128i stride;  // bytes a frame: 8 for a pair, 4 for a comb line
    v128i length;  // bytes in use, set when a note starts
    v128i end;     // start + length
    v128i next;    // the frame to read and overwrite; at `end` it goes back to `start` when due
    v128i valid;   // below this a line is up to date; from it on it counts as silence
};

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

    v128 combLevel;                     // the same value in every lane
    v128 combFeedback;                  // the same value in every lane
    float previousLeft, previousRight;  // outputs of the string step before the last
    float currentLeft, currentRight;    // outputs of the last string step
    double phase;                       // fraction of a string step, 0..1
    double pitchRatio;                  // string steps a frame, 0..kMaxPitchRatio

    KeyLines lines;
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
