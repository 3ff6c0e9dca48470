#pragma once

namespace norava {

inline constexpr int kNumParameters = 114;
inline constexpr int kNumHostParameters =
    78;  // the leading ones: named in the host and automatable
inline constexpr int kResonatorBands = 8;
inline constexpr int kMatrixSlots = 8;
inline constexpr int kMatrixSlotSize = 4;  // source, amount, invert, destination

namespace param {

// The number of a parameter is the same in the store, the state block, the table and the panel's
// control ids, and is saved in users' projects: a number never changes its meaning.
enum Index : int {
    kMasterLevel,
    kTune,
    kAmpAttack,
    kAmpDecay,
    kAmpSustain,
    kAmpRelease,
    kString1Decay,
    kString1DecayInvert,
    kString1DampOffset,
    kString1DampAmount,
    kString1DampSharpness,
    kString2Decay,
    kString2DecayInvert,
    kString2DampOffset,
    kString2DampAmount,
    kString2DampSharpness,
    kStringSaturation,
    kStringMix,
    kStringStereoSeparation,
    kCombRatio,
    kCombFeedback,
    kCombFeedbackInvert,
    kCombLevel,
    kCombLevelInvert,
    kLoCutCutoff,
    kLoCutResonance,
    kHiCutAttack,
    kHiCutDecay,
    kHiCutSustain,
    kHiCutCutoff,
    kHiCutResonance,
    kNoiseLevel,
    kNoiseRate,
    kHiCutDrive,
    kEgAttack,
    kEgDecay,
    kEgSustain,
    kEgRelease,
    kLfoRate,
    kResonatorFrequency,  // eight bands from here
    kResonatorFeedback = kResonatorFrequency + kResonatorBands,
    kResonatorOn = kResonatorFeedback + kResonatorBands,
    kDelayOn = kResonatorOn + kResonatorBands,
    kDelayTime,
    kDelayFeedback,
    kDelayModSpeed,
    kDelayModDepth,
    kDelayBlur,
    kDelayWet,
    kChorusOn,
    kChorusRate,
    kChorusDepth,
    kChorusWet,
    kReverbOn,
    kReverbMix,
    kReverbDecay,
    kReverbColor,
    kReserved,  // stored and saved, read by nothing
    kMatrix,    // eight slots of four from here
    kStringRatio = kMatrix + kMatrixSlots * kMatrixSlotSize,
    kDelayTempo,
    kOctave,
};
static_assert(kReverbColor == kNumHostParameters - 1 && kOctave == kNumParameters - 1);

}  // namespace param

}  // namespace norava
