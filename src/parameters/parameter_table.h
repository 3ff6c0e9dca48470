#pragma once

#include <array>
#include <string_view>

#include "parameters/parameter.h"
#include "parameters/parameter_index.h"

// The instrument's parameters, the one list that the engine, the host adapter, the panel and the
// tools read.

namespace norava {

namespace parameter_curves {

constexpr Curve Power(double offset, double scale, int exponent) {
    return {CurveShape::power, offset, scale, exponent};
}
// A time: never 0, and most of the knob's way spent on the short ones.
constexpr Curve Seconds(double shortest, double range, int exponent) {
    return Power(shortest, range, exponent);
}
inline constexpr Curve kLinear = Power(0.0, 1.0, 1);
inline constexpr Curve kSquare = Power(0.0, 1.0, 2);
inline constexpr Curve kComplement = Power(1.0, -1.0, 1);
inline constexpr Curve kSquareRoot{CurveShape::squareRoot};
// -18..30 with a divisor of 10, so the knob spans 0.0158..1000 as an amplitude factor and
// gives 3.98 at its centre.
inline constexpr Curve kMasterGain{CurveShape::decibels, -18.0, 48.0};
inline constexpr Curve kCents{CurveShape::steps, 0.0, 0.01};  // in semitones
inline constexpr Curve kSwitch{CurveShape::onOff};
inline constexpr Curve kMenu{CurveShape::menu};
inline constexpr Curve kRouting{CurveShape::routing};
inline constexpr Curve kPositions{CurveShape::positions};
inline constexpr Curve kUnused{CurveShape::unused};

}  // namespace parameter_curves

namespace param {

using namespace parameter_curves;
using enum ControlKind;
using enum TextForm;
using enum Unit;

// clang-format off
inline constexpr std::array<Parameter, kNumParameters> kRows{{
    {kMasterLevel, "Master Level", 0.5f, kMasterGain, knob},
    {kTune, "Tune", 0.5f, kCents, knobWithCentre},
    {kAmpAttack, "Amp Attack", 0.0f, Seconds(0.001, 35.0, 5), knob},
    {kAmpDecay, "Amp Decay", 1.0f, Seconds(0.001, 50.0, 5), knob},
    {kAmpSustain, "Amp Sustain", 1.0f, kSquare, knob},
    {kAmpRelease, "Amp Release", 0.0f, Seconds(0.1, 10.0, 5), knob},
    {kString1Decay, "Str1 Decay", 1.0f, kLinear, knob},
    {kString1DecayInvert, "Str1 Decay Inv", 0.0f, kSwitch, button},
    {kString1DampOffset, "Str1 Damp Offset", 0.0f, kSquare, knob},
    {kString1DampAmount, "Str1 Damp Amount", 0.0f, kLinear, knob},
    {kString1DampSharpness, "Str1 Damp Shrp", 0.0f, kSquare, knob},
    {kString2Decay, "Str2 Decay", 1.0f, kLinear, knob},
    {kString2DecayInvert, "Str2 Decay Inv", 0.0f, kSwitch, button},
    {kString2DampOffset, "Str2 Damp Offset", 0.0f, kSquare, knob},
    {kString2DampAmount, "Str2 Damp Amount", 0.0f, kLinear, knob},
    {kString2DampSharpness, "Str2 Damp Shrp", 0.0f, kSquare, knob},
    {kStringSaturation, "Str Saturation", 0.0f, kSquare, knob},
    {kStringMix, "Str Mix", 0.0f, kLinear, knobWithCentre},
    {kStringStereoSeparation, "Str Stereo Sep", 0.5f, kLinear, faderWithCentre},
    {kCombRatio, "Comb Ratio", 0.5f, kLinear, fader},
    {kCombFeedback, "Comb Fdbk", 0.0f, kSquareRoot, knob},
    {kCombFeedbackInvert, "Comb Fdbk Inv", 0.0f, kSwitch, button},
    {kCombLevel, "Comb Level", 0.0f, kLinear, knob},
    {kCombLevelInvert, "Comb Level Inv", 0.0f, kSwitch, button},
    {kLoCutCutoff, "Lo-Cut Cutoff", 0.0f, kLinear, knob},
    {kLoCutResonance, "Lo-Cut Res", 0.0f, kLinear, knob},
    {kHiCutAttack, "Hi-Cut Attack", 0.0f, kLinear, knob},
    {kHiCutDecay, "Hi-Cut Decay", 0.2f, kLinear, knob},
    {kHiCutSustain, "Hi-Cut Sustain", 0.0f, kLinear, knob},
    {kHiCutCutoff, "Hi-Cut Cutoff", 0.5f, kLinear, knob},
    {kHiCutResonance, "Hi-Cut Res", 0.0f, kLinear, knob},
    {kNoiseLevel, "Exc Noise Level", 1.0f, kComplement, fader},
    {kNoiseRate, "Exc Noise Rate", 0.0f, kLinear, knob},
    {kHiCutDrive, "Hi-Cut Drive", 0.0f, Power(0.0, 1000.0, 4), knob},
    {kEgAttack, "EG Attack", 0.0f, Seconds(0.001, 10.0, 3), knob},
    {kEgDecay, "EG Decay", 1.0f, Seconds(0.001, 50.0, 5), knob},
    {kEgSustain, "EG Sustain", 1.0f, kSquare, knob},
    {kEgRelease, "EG Release", 1.0f, Seconds(0.1, 50.0, 5), knob},
    {kLfoRate, "LFO Rate", 0.0f, Power(0.01, 10.0, 3), knob},
    {kResonatorFrequency, "Resonator Frq 1", 0.0f, kLinear, fader},
    {kResonatorFrequency + 1, "Resonator Frq 2", 0.0f, kLinear, fader},
    {kResonatorFrequency + 2, "Resonator Frq 3", 0.0f, kLinear, fader},
    {kResonatorFrequency + 3, "Resonator Frq 4", 0.0f, kLinear, fader},
    {kResonatorFrequency + 4, "Resonator Frq 5", 0.0f, kLinear, fader},
    {kResonatorFrequency + 5, "Resonator Frq 6", 0.0f, kLinear, fader},
    {kResonatorFrequency + 6, "Resonator Frq 7", 0.0f, kLinear, fader},
    {kResonatorFrequency + 7, "Resonator Frq 8", 0.0f, kLinear, fader},
    {kResonatorFeedback, "Resonator Fdbk 1", 0.0f, kLinear, knob},
    {kResonatorFeedback + 1, "Resonator Fdbk 2", 0.0f, kLinear, knob},
    {kResonatorFeedback + 2, "Resonator Fdbk 3", 0.0f, kLinear, knob},
    {kResonatorFeedback + 3, "Resonator Fdbk 4", 0.0f, kLinear, knob},
    {kResonatorFeedback + 4, "Resonator Fdbk 5", 0.0f, kLinear, knob},
    {kResonatorFeedback + 5, "Resonator Fdbk 6", 0.0f, kLinear, knob},
    {kResonatorFeedback + 6, "Resonator Fdbk 7", 0.0f, kLinear, knob},
    {kResonatorFeedback + 7, "Resonator Fdbk 8", 0.0f, kLinear, knob},
    {kResonatorOn, "Resonator On 1", 0.0f, kSwitch, button},
    {kResonatorOn + 1, "Resonator On 2", 0.0f, kSwitch, button},
    {kResonatorOn + 2, "Resonator On 3", 0.0f, kSwitch, button},
    {kResonatorOn + 3, "Resonator On 4", 0.0f, kSwitch, button},
    {kResonatorOn + 4, "Resonator On 5", 0.0f, kSwitch, button},
    {kResonatorOn + 5, "Resonator On 6", 0.0f, kSwitch, button},
    {kResonatorOn + 6, "Resonator On 7", 0.0f, kSwitch, button},
    {kResonatorOn + 7, "Resonator On 8", 0.0f, kSwitch, button},
    {kDelayOn, "Delay ON/OFF", 0.0f, kSwitch, button},
    {kDelayTime, "Delay Time", 0.5f, kLinear, knob},
    {kDelayFeedback, "Delay Fdbk", 0.6f, kLinear, knob},
    {kDelayModSpeed, "Delay Mod Speed", 0.24f, kLinear, knob},
    {kDelayModDepth, "Delay Mod Depth", 0.2f, kLinear, knob},
    {kDelayBlur, "Delay Blur", 0.5f, kLinear, knob},
    {kDelayWet, "Delay Wet", 0.35f, kLinear, knob},
    {kChorusOn, "Chorus ON/OFF", 0.0f, kSwitch, button, {}, offOn},
    {kChorusRate, "Chorus Rate", 0.5f, kLinear, knob, {}, chorusHertz, hertz},
    {kChorusDepth, "Chorus Depth", 0.5f, kLinear, knob, {}, wholePercent},
    {kChorusWet, "Chorus Wet", 0.4f, kLinear, knob, {}, wholePercent},
    {kReverbOn, "Reverb ON/OFF", 0.0f, kSwitch, button},
    {kReverbMix, "Reverb Mix", 0.5f, Power(0.001, 0.999, 1), knob},
    {kReverbDecay, "Reverb Decay", 0.5f, Power(0.0, 0.6, 3), knob},
    {kReverbColor, "Reverb Color", 0.5f, Power(0.0, 1.0, 3), knob},
    {kReserved, "Reserved", 0.0f, kUnused, none},
    {kMatrix, "Matrix 1 Source", 6.0f, kRouting, menu, kMatrixSourceItems},
    {kMatrix + 1, "Matrix 1 Amount", 1.0f, kLinear, knob},
    {kMatrix + 2, "Matrix 1 Invert", 0.0f, kSwitch, button},
    {kMatrix + 3, "Matrix 1 Destination", 1.0f, kRouting, menu, kMatrixDestinationItems},
    {kMatrix + 4, "Matrix 2 Source", 4.0f, kRouting, menu, kMatrixSourceItems},
    {kMatrix + 5, "Matrix 2 Amount", 1.0f, kLinear, knob},
    {kMatrix + 6, "Matrix 2 Invert", 0.0f, kSwitch, button},
    {kMatrix + 7, "Matrix 2 Destination", 3.0f, kRouting, menu, kMatrixDestinationItems},
    {kMatrix + 8, "Matrix 3 Source", 0.0f, kRouting, menu, kMatrixSourceItems},
    {kMatrix + 9, "Matrix 3 Amount", 0.0f, kLinear, knob},
    {kMatrix + 10, "Matrix 3 Invert", 0.0f, kSwitch, button},
    {kMatrix + 11, "Matrix 3 Destination", 0.0f, kRouting, menu, kMatrixDestinationItems},
    {kMatrix + 12, "Matrix 4 Source", 0.0f, kRouting, menu, kMatrixSourceItems},
    {kMatrix + 13, "Matrix 4 Amount", 0.0f, kLinear, knob},
    {kMatrix + 14, "Matrix 4 Invert", 0.0f, kSwitch, button},
    {kMatrix + 15, "Matrix 4 Destination", 0.0f, kRouting, menu, kMatrixDestinationItems},
    {kMatrix + 16, "Matrix 5 Source", 0.0f, kRouting, menu, kMatrixSourceItems},
    {kMatrix + 17, "Matrix 5 Amount", 0.0f, kLinear, knob},
    {kMatrix + 18, "Matrix 5 Invert", 0.0f, kSwitch, button},
    {kMatrix + 19, "Matrix 5 Destination", 0.0f, kRouting, menu, kMatrixDestinationItems},
    {kMatrix + 20, "Matrix 6 Source", 0.0f, kRouting, menu, kMatrixSourceItems},
    {kMatrix + 21, "Matrix 6 Amount", 0.0f, kLinear, knob},
    {kMatrix + 22, "Matrix 6 Invert", 0.0f, kSwitch, button},
    {kMatrix + 23, "Matrix 6 Destination", 0.0f, kRouting, menu, kMatrixDestinationItems},
    {kMatrix + 24, "Matrix 7 Source", 0.0f, kRouting, menu, kMatrixSourceItems},
    {kMatrix + 25, "Matrix 7 Amount", 0.0f, kLinear, knob},
    {kMatrix + 26, "Matrix 7 Invert", 0.0f, kSwitch, button},
    {kMatrix + 27, "Matrix 7 Destination", 0.0f, kRouting, menu, kMatrixDestinationItems},
    {kMatrix + 28, "Matrix 8 Source", 0.0f, kRouting, menu, kMatrixSourceItems},
    {kMatrix + 29, "Matrix 8 Amount", 0.0f, kLinear, knob},
    {kMatrix + 30, "Matrix 8 Invert", 0.0f, kSwitch, button},
    {kMatrix + 31, "Matrix 8 Destination", 0.0f, kRouting, menu, kMatrixDestinationItems},
    {kStringRatio, "String Ratio", 3.0f, kMenu, menu, kStringRatioItems},
    {kDelayTempo, "Delay Tempo", 0.0f, kMenu, menu, kDelayTempoItems},
    {kOctave, "Octave", 0.5f, kPositions, knobWithPositions, {}, position},
}};
// clang-format on

constexpr bool EachRowHasItsIndex() {
    for (int i = 0; i < kNumParameters; ++i) {
        if (kRows[static_cast<std::size_t>(i)].index != i) return false;
    }
    return true;
}
static_assert(EachRowHasItsIndex());

}  // namespace param

inline constexpr const std::array<Parameter, kNumParameters>& kParameters = param::kRows;

constexpr bool IsParameter(int index) {
    return index >= 0 && index < kNumParameters;
}

// The row of a parameter; index in 0..kNumParameters - 1.
constexpr const Parameter& GetParameter(int index) {
    return kParameters[static_cast<std::size_t>(index)];
}

// The index of the parameter with that name, small and capital letters alike, or -1.
int FindParameter(std::string_view name);

}  // namespace norava
