#pragma once

#include <array>
#include <cstdint>

#include "dsp/exciter_bank.h"
#include "dsp/modulation.h"

// What a key voice knows of the instrument it belongs to: sound settings already in engine units,
// the modulation matrix, controller positions, per-note tables and the noise seed. The instrument
// owns one and fills it on the audio thread; every value in it is finite and within the range that
// is stated here. (Others would sound like anything, but never reach memory that is not the
// voice's.)

namespace norava {

inline constexpr int kFirstKeyNote = 24;
inline constexpr int kNumKeys = 84;
// Frames per second of the key voices, whatever the host's rate.
inline constexpr int kInternalRate = 48000;

struct StringSettings {
    float decay = 1.0f;  // 0..1
    bool decayInverted = false;
    float dampOffset = 0.0f;     // 0..1, knob squared
    float dampAmount = 0.0f;     // 0..1
    float dampSharpness = 0.0f;  // 0..1, knob squared
};

struct SoundSettings {
    // Raised by the instrument after any change below except `lfoValue` and `noiseSeed`: the voices
    // keep what they computed while it stands still.
    std::uint32_t revision = 1;

    float tuneSemitones = 0.0f;  // -0.99..0.99

    float ampAttackSeconds = 0.001f;  // times are 0.001 and more
    float ampDecaySeconds = 50.001f;
    float ampSustain = 1.0f;  // 0..1
    float ampReleaseSeconds = 0.1f;

    StringSettings string1;
    StringSettings string2;
    float stringSaturation = 0.0f;        // 0..1, knob squared
    float stringMix = 0.0f;               // 0..1: 0 string 1, 1 string 2
    float stringStereoSeparation = 0.5f;  // 0..1

    float combRatio = 0.5f;     // comb length as a fraction of the string's, 0..1
    float combFeedback = 0.0f;  // 0..1, square root of the knob
    bool combFeedbackInverted = false;
    float combLevel = 0.0f;  // 0..1
    bool combLevelInverted = false;

    float loCutCutoff = 0.0f;     // 0..1
    float loCutResonance = 0.0f;  // 0..1

    float hiCutAttack = 0.0f;     // 0..1, shaped by the voice
    float hiCutDecay = 0.2f;      // 0..1, shaped by the voice
    float hiCutSustain = 0.0f;    // 0..1
    float hiCutCutoff = 0.5f;     // 0..1
    float hiCutResonance = 0.0f;  // 0..1
    float hiCutDrive = 0.0f;      // soft-clip amount, 0..1000

    float noiseLevelComplement = 0.0f;  // 1 - knob, 0..1
    float noiseRate = 0.0f;             // 0..1

    float egAttackSeconds = 0.001f;
    float egDecaySeconds = 50.001f;
    float egSustain = 1.0f;  // 0..1
    float egReleaseSeconds = 50.1f;

    int stringRatio = 3;          // 0..6: "4 : 1" .. "1 : 4"; any other value sounds as "1 : 1"
    float octaveSelector = 0.5f;  // knob, 0..1: seven positions k / 6

    std::array<ModulationSlot, kModulationSlots> matrix{};

    float modWheel = 0.0f;           // controller 1, 0..1
    float pitchWheel = 0.0f;         // -1..1
    float channelAftertouch = 0.0f;  // 0..1

    // Per-note tables, 128 entries each, indexed by MIDI note. They belong to the renderer; null
    // stands for a table of neutral values (0 semitones, gain 1).
    const float* keyTuningSemitones = nullptr;
    const float* keyGainLeft = nullptr;
    const float* keyGainRight = nullptr;

    float lfoValue = 0.0f;        // -1..1, this block's LFO output
    std::uint32_t noiseSeed = 0;  // of this instrument alone, so that every rendering is repeatable

    // The keys that sound (key k is note 24 + k), kept by the keys themselves.
    KeyMask activeKeys{};

    // The matrix as the voices use it, kept by the voices themselves.
    ModulationPlan plan;

    // Kept by the voices and their kernel.
    ExciterBank exciters;
};

}  // namespace norava
