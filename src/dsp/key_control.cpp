// The control block of a key voice: from the instrument's settings and the modulation matrix to the
// coefficients that the render kernel uses. Formulas are evaluated in double precision and stored
// as the kernel reads them. What neither a changed setting nor a moving source touches is not
// evaluated again.

#include <algorithm>
#include <cmath>
#include <numbers>

#include "dsp/key_voice.h"
#include "dsp/numbers.h"

namespace norava {

namespace {

constexpr double kRate = kInternalRate;
constexpr std::uint32_t kAllDestinations = (1u << kModulationDestinations) - 1;

// e^-8.82 is -76.6 dB: what is left of a segment's distance after its stated time.
constexpr double kSegmentDecay = 8.82;
// An attack aims at 5 and stops at 1; this stretch makes it cross 1 almost exactly at the attack
// time.
constexpr double kAttackStretch = 39.441975;
constexpr float kAttackTarget = 5.0f;

double clamp01(double x) {
    return std::clamp(x, 0.0, 1.0);
}

constexpr std::uint32_t bit(ModulationDestination d) {
    return 1u << static_cast<int>(d);
}

}  // namespace

NORAVA_INLINE void CNoravaKey::updateHiCutEnvelope() {
    KeyExciter& exciter = data_.exciter;
    if (secondsSinceRelease_ >= 0.0) {
        exciter.hiCutEnvTarget = 0.0f;
        exciter.hiCutEnvRate = 0.002f;
    } else if (secondsSinceStart_ <= hiCutAttackSeconds_) {
        exciter.hiCutEnvTarget = 1.0f;
        exciter.hiCutEnvRate = hiCutAttackRate_;
    } else {
        const double sustain = settings_.hiCutSustain;
        exciter.hiCutEnvTarget = static_cast<float>(sustain * sustain);
        exciter.hiCutEnvRate = hiCutDecayRate_;
    }
}

// Returns false when the release is over: the key has then been reset.
NORAVA_INLINE bool CNoravaKey::updateAmpEnvelope(double blockSeconds) {
    KeyExciter& exciter = data_.exciter;
    if (secondsSinceRelease_ >= 0.0) {
        if (secondsSinceRelease_ > settings_.ampReleaseSeconds) {
            reset();
            return false;
        }
        exciter.ampTarget = 0.0f;
        exciter.ampRate = ampReleaseRate_;
        secondsSinceRelease_ += blockSeconds;
    } else if (settings_.ampAttackSeconds > secondsSinceStart_) {
        exciter.ampTarget = kAttackTarget;
        exciter.ampRate = ampAttackRate_;
    } else {
        exciter.ampTarget = settings_.ampSustain;
        exciter.ampRate = ampDecayRate_;
    }
    return true;
}

void CNoravaKey::updateParams(int frames) {
    if (!active_) return;
    using enum ModulationDestination;
    const ModulationPlan& plan = settings_.plan;
    if (plan.revision != settings_.revision)
        settings_.plan.decode(settings_.matrix, settings_.revision);
    std::uint32_t due = plan.moving;
    if (seenRevision_ != settings_.revision) {
        seenRevision_ = settings_.revision;
        due = kAllDestinations;
        updateUnmodulated();
    }
    // The pitch comes before the envelope and the LFO have moved on: it follows their previous
    // values.
    if (due & bit(pitch)) updatePitch();
    envelopeValue_ = modulationEnvelope_.GetFrame(frames);
    if (due & bit(lfoAmplitude)) lfoAmplitude_ = modulate(lfoAmplitude);
    lfoValue_ = settings_.lfoValue * lfoAmplitude_;
    if (due != 0) {
        if (due & bit(noiseRate)) updateNoise();
        if (due & (bit(hiCutAttack) | bit(hiCutDecay) | bit(hiCutCutoff))) updateHiCut(due);
        if (due & bit(loCutCutoff)) updateLoCut();
        if (due & (bit(bothStringsDamp) | bit(string1Damp))) updateStringDamping(0);
        if (due & (bit(bothStringsDecay) | bit(string1Decay))) updateStringGain(0);
        if (due & (bit(bothStringsDamp) | bit(string2Damp))) updateStringDamping(1);
        if (due & (bit(bothStringsDecay) | bit(string2Decay))) updateStringGain(1);
        if (due & (bit(level) | bit(pan))) updateOutputGains();
    }
    updateHiCutEnvelope();
    const double blockSeconds = frames / kRate;
    if (!updateAmpEnvelope(blockSeconds)) return;
    const bool isAttacking = secondsSinceRelease_ < 0.0 &&
                             (secondsSinceStart_ <= hiCutAttackSeconds_ ||
                              secondsSinceStart_ < static_cast<double>(settings_.ampAttackSeconds));
    settledRevision_ = plan.moving != 0 || isAttacking ? 0 : seenRevision_;
    secondsSinceStart_ += blockSeconds;
}

// The strings step through their lines at the base ratio, bent by tuning (semitones) and modulation
// (whole tones).
void CNoravaKey::updatePitch() {
    const double modulation = modulate(ModulationDestination::pitch);
    const double keyTuning =
        settings_.keyTuningSemitones ? settings_.keyTuningSemitones[key_ & 127] : 0.0;
    if (!memos_.pitch.changed({modulation, keyTuning, settings_.tuneSemitones, baseRatio_})) return;
    const double octaves =
        modulation / 6.0 + (keyTuning + static_cast<double>(settings_.tuneSemitones)) / 12.0;
    // The kernel counts steps by this number, so it is one whatever the tuning tables hold.
    data_.strings.pitchRatio =
        clampOr(baseRatio_ * std::exp2(octaves), 0.0, kMaxPitchRatio, baseRatio_);
}

void CNoravaKey::updateNoise() {
    const double modulation = modulate(ModulationDestination::noiseRate);
    const double rate = clamp01(settings_.noiseRate + modulation);
    if (!memos_.noise.changed({rate})) return;
    data_.exciter.noiseCoefficient = static_cast<float>(std::pow(1.0 - rate, 0.25) * 0.996);
}

// Times of the hi-cut's own envelope (seconds), its cutoff as a one-pole coefficient, and its
// resonance, which is reduced as the cutoff rises.
void CNoravaKey::updateHiCut(std::uint32_t due) {
    using enum ModulationDestination;
    if (due & (bit(hiCutAttack) | bit(hiCutDecay))) {
        const double attackKnob =
            clamp01(settings_.hiCutAttack + static_cast<double>(modulate(hiCutAttack)));
        const double decayKnob =
            clamp01(settings_.hiCutDecay + static_cast<double>(modulate(hiCutDecay)));
        if (memos_.hiCutTimes.changed({attackKnob, decayKnob})) {
            const double attack = 0.5 * attackKnob * attackKnob;
            const double decay = 0.001 + 3.0 * decayKnob * decayKnob * decayKnob;
            hiCutAttackSeconds_ = attack;
            hiCutAttackRate_ = attack < 0.001 ? 1.0f : static_cast<float>(0.0002 / attack);
            hiCutDecayRate_ = static_cast<float>(0.0002 / decay);
        }
    }
    if (due & bit(hiCutCutoff)) {
        const double knob = settings_.hiCutCutoff + 0.5 * modulate(hiCutCutoff);
        const double resonance = settings_.hiCutResonance;
        if (!memos_.hiCut.changed({knob, resonance})) return;
        const double cutoff = clamp01(knob * knob);
        data_.exciter.hiCutCutoff = static_cast<float>(cutoff);
        data_.exciter.hiCutFeedback =
            static_cast<float>(std::max(-10.0 * resonance * (1.0 - cutoff), -4.0));
    }
}

// y = b (x - 2 x1 + x2) - c1 y1 - c2 y2, a high-pass from 32 Hz to 20.2 kHz. The input gain is
// normalised for twice the quality that the poles have: the sound of this filter, shared with
// CFilterIIR_HP.
void CNoravaKey::updateLoCut() {
    const double modulation = modulate(ModulationDestination::loCutCutoff);
    const double knob = clamp01(settings_.loCutCutoff + 0.5 * modulation);
    if (!memos_.loCut.changed({knob, settings_.loCutResonance})) return;
    const double cutoffHz = std::exp2(9.3 * knob + 5.0);
    const double q = settings_.loCutResonance * 10.0 + 1.0;
    const double w = 2.0 * std::numbers::pi * cutoffHz / kRate;
    const double s = std::sin(w);
    const double c = std::cos(w);
    data_.exciter.loCutB = static_cast<float>((1.0 + c) / (2.0 + s / q));
    data_.exciter.loCutC1 = static_cast<float>(-2.0 * q * c / (q + s));
    data_.exciter.loCutC2 = static_cast<float>((q - s) / (q + s));
}

// Loop filter coefficients of a string's two lines: line a at the damping frequency, line b below
// it by the offset. `sharpness` subtracts part of the filter's own output, the more the darker the
// string is.
void CNoravaKey::updateStringDamping(int string) {
    using enum ModulationDestination;
    const StringSettings& sound = string == 0 ? settings_.string1 : settings_.string2;
    const double modulation = static_cast<double>(modulate(bothStringsDamp)) +
                              modulate(string == 0 ? string1Damp : string2Damp);
    const double x = clamp01(sound.dampAmount + modulation);
    if (!memos_.damping[string].changed({x, sound.dampOffset, sound.dampSharpness})) return;
    const double hz = std::pow(50.0, 2.57 * (1.0 - 0.35 * x * x * x));
    const auto dampingA = static_cast<float>(std::min(hz / 22050.0, 1.0));
    const auto dampingB =
        static_cast<float>(std::min(hz * (1.0 - sound.dampOffset) / 22050.0, 1.0));
    const double sharpness = -0.5 * sound.dampSharpness;
    const int a = 2 * string;
    KeyStrings& strings = data_.strings;
    strings.damping[a] = dampingA;
    strings.damping[a + 1] = dampingB;
    strings.sharpness[a] = static_cast<float>(sharpness * (1.0 - dampingA));
    strings.sharpness[a + 1] = static_cast<float>(sharpness * (1.0 - dampingB));
}

void CNoravaKey::updateStringGain(int string) {
    using enum ModulationDestination;
    const StringSettings& sound = string == 0 ? settings_.string1 : settings_.string2;
    const double modulation = static_cast<double>(modulate(bothStringsDecay)) +
                              modulate(string == 0 ? string1Decay : string2Decay);
    const double y = clamp01(sound.decay + modulation);
    if (!memos_.gain[string].changed({y, sound.decayInverted ? 1.0 : 0.0})) return;
    const auto magnitude = static_cast<float>(std::pow(y, static_cast<double>(0.05f)));
    // Subtracted from zero rather than negated: a closed string has a gain of +0, not -0.
    const float gain = sound.decayInverted ? 0.0f - magnitude : magnitude;
    data_.strings.gain[2 * string] = gain;
    data_.strings.gain[2 * string + 1] = gain;
}

void CNoravaKey::updateOutputGains() {
    using enum ModulationDestination;
    const double levelModulation = modulate(level);
    const double panModulation = modulate(pan);
    const double gainLeft = settings_.keyGainLeft ? settings_.keyGainLeft[key_ & 127] : 1.0;
    const double gainRight = settings_.keyGainRight ? settings_.keyGainRight[key_ & 127] : 1.0;
    const double mix = settings_.stringMix;
    const double separation = settings_.stringStereoSeparation;
    if (!memos_.output.changed(
            {levelModulation, panModulation, mix, separation, gainLeft, gainRight}))
        return;
    // A level beyond what single precision holds is silenced by the instrument's guard; keep it a
    // number here.
    const double amplitude = std::min(std::pow(10.0, 2.0 * levelModulation), 1e30);
    const double k1 = amplitude * (1.0 - mix) * 0.05;
    const double k2 = amplitude * mix * 0.05;
    const double p1 = clamp01(separation + panModulation);
    const double p2 = clamp01(1.0 - separation + panModulation);
    data_.strings.outputGain = v128_Set(
        static_cast<float>(k1 * (1.0 - p1) * gainLeft), static_cast<float>(k1 * p1 * gainRight),
        static_cast<float>(k2 * (1.0 - p2) * gainLeft), static_cast<float>(k2 * p2 * gainRight));
}

void CNoravaKey::updateUnmodulated() {
    const double g = settings_.noiseLevelComplement;
    data_.exciter.noiseMix = static_cast<float>(g * g);
    data_.exciter.noiseOffset = static_cast<float>(1.0 - g);
    data_.exciter.hiCutClip = settings_.hiCutDrive;
    data_.strings.combFeedback =
        v128_Set(settings_.combFeedbackInverted ? -settings_.combFeedback : settings_.combFeedback);
    data_.strings.combLevel =
        v128_Set(settings_.combLevelInverted ? -settings_.combLevel : settings_.combLevel);

    const double attack = settings_.ampAttackSeconds;
    const double decay = settings_.ampDecaySeconds;
    const double releaseSeconds = settings_.ampReleaseSeconds;
    if (!memos_.amp.changed({attack, decay, releaseSeconds})) return;
    ampAttackRate_ = static_cast<float>(kSegmentDecay / (attack * kAttackStretch * kRate));
    ampDecayRate_ = static_cast<float>(kSegmentDecay / (decay * kRate));
    ampReleaseRate_ = static_cast<float>(kSegmentDecay / (releaseSeconds * kRate));
}

}  // namespace norava
