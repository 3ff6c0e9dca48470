#include "synth/engine_parameters.h"

#include "parameters/parameter_table.h"
#include "synth/parameter_conversion.h"

namespace norava {

static_assert(kMatrixSlots == kModulationSlots && kResonatorBands == CResonator::kBands);

EngineParameters::EngineParameters(SoundSettings& sound, CNoravaFX& effects)
    : sound_(sound), effects_(effects) {
    values_[param::kMasterLevel] = &masterGain_;
    values_[param::kLfoRate] = &lfoRateHz_;
    BindVoices();
    BindEffects();
}

void EngineParameters::BindVoices() {
    values_[param::kTune] = &sound_.tuneSemitones;
    values_[param::kAmpAttack] = &sound_.ampAttackSeconds;
    values_[param::kAmpDecay] = &sound_.ampDecaySeconds;
    values_[param::kAmpSustain] = &sound_.ampSustain;
    values_[param::kAmpRelease] = &sound_.ampReleaseSeconds;
    values_[param::kString1Decay] = &sound_.string1.decay;
    switches_[param::kString1DecayInvert] = &sound_.string1.decayInverted;
    values_[param::kString1DampOffset] = &sound_.string1.dampOffset;
    values_[param::kString1DampAmount] = &sound_.string1.dampAmount;
    values_[param::kString1DampSharpness] = &sound_.string1.dampSharpness;
    values_[param::kString2Decay] = &sound_.string2.decay;
    switches_[param::kString2DecayInvert] = &sound_.string2.decayInverted;
    values_[param::kString2DampOffset] = &sound_.string2.dampOffset;
    values_[param::kString2DampAmount] = &sound_.string2.dampAmount;
    values_[param::kString2DampSharpness] = &sound_.string2.dampSharpness;
    values_[param::kStringSaturation] = &sound_.stringSaturation;
    values_[param::kStringMix] = &sound_.stringMix;
    values_[param::kStringStereoSeparation] = &sound_.stringStereoSeparation;
    values_[param::kCombRatio] = &sound_.combRatio;
    values_[param::kCombFeedback] = &sound_.combFeedback;
    switches_[param::kCombFeedbackInvert] = &sound_.combFeedbackInverted;
    values_[param::kCombLevel] = &sound_.combLevel;
    switches_[param::kCombLevelInvert] = &sound_.combLevelInverted;
    values_[param::kLoCutCutoff] = &sound_.loCutCutoff;
    values_[param::kLoCutResonance] = &sound_.loCutResonance;
    values_[param::kHiCutAttack] = &sound_.hiCutAttack;
    values_[param::kHiCutDecay] = &sound_.hiCutDecay;
    values_[param::kHiCutSustain] = &sound_.hiCutSustain;
    values_[param::kHiCutCutoff] = &sound_.hiCutCutoff;
    values_[param::kHiCutResonance] = &sound_.hiCutResonance;
    values_[param::kNoiseLevel] = &sound_.noiseLevelComplement;
    values_[param::kNoiseRate] = &sound_.noiseRate;
    values_[param::kHiCutDrive] = &sound_.hiCutDrive;
    values_[param::kEgAttack] = &sound_.egAttackSeconds;
    values_[param::kEgDecay] = &sound_.egDecaySeconds;
    values_[param::kEgSustain] = &sound_.egSustain;
    values_[param::kEgRelease] = &sound_.egReleaseSeconds;
    values_[param::kOctave] = &sound_.octaveSelector;
}

void EngineParameters::BindEffects() {
    DelaySettings& delay = effects_.delay;
    values_[param::kDelayTime] = &delay.time;
    values_[param::kDelayFeedback] = &delay.feedback;
    values_[param::kDelayModSpeed] = &delay.modSpeed;
    values_[param::kDelayModDepth] = &delay.modDepth;
    values_[param::kDelayBlur] = &delay.blur;
    values_[param::kDelayWet] = &delay.wet;
    values_[param::kDelayTempo] = &delay.tempoSelector;
}

void EngineParameters::Apply(int index, float raw) {
    const double value = EngineValue(GetParameter(index), raw);
    const auto i = static_cast<std::size_t>(index);
    if (values_[i] != nullptr) {
        *values_[i] = static_cast<float>(value);
    } else if (switches_[i] != nullptr) {
        *switches_[i] = value != 0.0;
    } else if (index == param::kStringRatio) {
        sound_.stringRatio = static_cast<int>(value);
    } else if (index >= param::kMatrix && index < param::kStringRatio) {
        ApplyToMatrix((index - param::kMatrix) / kMatrixSlotSize,
                      (index - param::kMatrix) % kMatrixSlotSize, value);
    } else {
        ApplyToEffects(index, static_cast<float>(value));
    }
    const bool concernsVoices = index < param::kResonatorFrequency || index > param::kReserved;
    if (concernsVoices) RaiseRevision(sound_);
}

void EngineParameters::ApplyToMatrix(int slot, int part, double value) {
    ModulationSlot& routing = sound_.matrix[static_cast<std::size_t>(slot)];
    RoutingKnobs& knobs = knobs_[static_cast<std::size_t>(slot)];
    switch (part) {
        case 0:
            routing.source = static_cast<int>(value);
            return;
        case 1:
            knobs.amount = static_cast<float>(value * value);
            break;
        case 2:
            knobs.inverted = value != 0.0;
            break;
        default:
            routing.destination = static_cast<int>(value);
            return;
    }
    routing.amount = knobs.inverted ? -knobs.amount : knobs.amount;
}

void EngineParameters::ApplyToEffects(int index, float value) {
    if (index >= param::kResonatorFrequency && index < param::kDelayOn) {
        const long band = (index - param::kResonatorFrequency) % kResonatorBands;
        CResonator& resonator = effects_.resonator();
        if (index < param::kResonatorFeedback) return resonator.setBandFreq(band, value);
        if (index < param::kResonatorOn) return resonator.setBandFdbk(band, value);
        return resonator.setBandOn(band, value);
    }
    switch (index) {
        case param::kDelayOn:
            return effects_.setDelayEnable(value != 0.0f);
        case param::kChorusOn:
            return effects_.chorus().setEnable(value);
        case param::kChorusRate:
            return effects_.chorus().setRate(value);
        case param::kChorusDepth:
            return effects_.chorus().setDelay(value);
        case param::kChorusWet:
            return effects_.chorus().setWet(value);
        case param::kReverbOn:
            return effects_.setReverbEnable(value != 0.0f);
        case param::kReverbMix:
            return effects_.reverb().setParameter(fxReverb::kReverb, value);
        case param::kReverbDecay:
            return effects_.reverb().setParameter(fxReverb::kDecay, value);
        case param::kReverbColor:
            return effects_.reverb().setParameter(fxReverb::kHighCut, value);
        default:
            return;  // reserved
    }
}

}  // namespace norava
