#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "dsp/envelope.h"
#include "dsp/input_memo.h"
#include "dsp/key_kernel_data.h"
#include "dsp/line_memory.h"
#include "dsp/sound_settings.h"

namespace norava {

// One key of the instrument: a noise exciter, two strings of two delay lines and a comb line each,
// lo-cut and hi-cut, an amplitude and a modulation envelope. This class holds a note's life and
// turns the instrument's settings into the coefficients that the render kernel (key_kernel.h) uses,
// once per control block. All calls belong to the audio thread, except construction, which takes
// the memory: as much as the key's lowest tuning can need.
class CNoravaKey {
  public:
    // key: MIDI note number, kFirstKeyNote .. kFirstKeyNote + kNumKeys - 1. `settings` must outlive
    // the key. Takes its lines out of `memory`, or makes memory of its own.
    CNoravaKey(int key, SoundSettings& settings, LineMemory& memory);
    CNoravaKey(int key, SoundSettings& settings);
    // What the key takes out of the memory.
    static std::size_t bytesFor(int key);
    CNoravaKey(const CNoravaKey&) = delete;
    CNoravaKey& operator=(const CNoravaKey&) = delete;

    // Silences the key and forgets its sound. Takes constant time: the lines are not cleared but
    // marked as stale.
    void reset();
    // Begins a note, also while the key sounds. velocity: 0..1. Takes constant time.
    void start(float velocity);
    // Begins the release; a second call begins it anew.
    void release();
    // Computes the coefficients for the next `frames` frames at kInternalRate. May end the note
    // (see isActive).
    void updateParams(int frames);
    // The same for a key that hasSettled.
    void letTimePass(int frames, double seconds);
    // Whether the next control block leaves every coefficient as it is, or ends the note.
    bool hasSettled() const { return settledRevision_ == settings_.revision; }
    // The matrix's sum for one destination code (see ModulationDestination), -64..64; "lfo ampl"
    // and "level" are 1 when no slot with a source leads to them.
    float getModulator(int destination) const;

    bool isActive() const { return active_; }
    // Of the amplitude envelope, as the last rendered frame left it; 0 before that.
    float amplitude() const { return settings_.exciters.amplitude(index()); }
    float keyFrequencyHz() const { return keyFrequencyHz_; }
    KeyKernelData& kernelData() { return data_; }
    const KeyKernelData& kernelData() const { return data_; }

  private:
    int index() const { return key_ - kFirstKeyNote; }
    void setActive(bool active);
    void setStringLengths();
    float modulate(ModulationDestination d) const { return getModulator(static_cast<int>(d)); }
    double sourceValue(int source) const;

    void updatePitch();
    void updateNoise();
    void updateHiCut(std::uint32_t due);
    void updateLoCut();
    void updateStringDamping(int string);
    void updateStringGain(int string);
    void updateOutputGains();
    void updateUnmodulated();
    void updateHiCutEnvelope();
    bool updateAmpEnvelope(double blockSeconds);

    // What every control block needs stands side by side.
    SoundSettings& settings_;
    std::uint32_t seenRevision_ = 0;     // 0: everything is due, whatever the instrument's revision
    std::uint32_t settledRevision_ = 0;  // 0: has not settled
    double secondsSinceStart_ = 0.0;
    double secondsSinceRelease_ = -1.0;  // -1 while the key is held
    float envelopeValue_ = 0.0f;
    float lfoAmplitude_ = 0.0f;
    float lfoValue_ = 0.0f;
    float velocity_ = 0.0f;
    float releaseFlag_ = 0.0f;
    bool active_ = false;
    CEgADSR modulationEnvelope_;
    KeyKernelData data_;

    const int key_;
    const float keyFrequencyHz_;
    std::shared_ptr<std::byte[]> memory_;
    std::array<int, kKeyLines> capacityFrames_{};

    double baseRatio_ = 1.0;  // corrects the string's truncation to whole frames
    double hiCutAttackSeconds_ = 0.0;
    float hiCutAttackRate_ = 1.0f;
    float hiCutDecayRate_ = 0.0f;
    float ampAttackRate_ = 0.0f;
    float ampDecayRate_ = 0.0f;
    float ampReleaseRate_ = 0.0f;

    // What each formula was last evaluated for.
    struct Memos {
        InputMemo<4> pitch;
        InputMemo<1> noise;
        InputMemo<2> hiCutTimes;
        InputMemo<2> hiCut;
        InputMemo<2> loCut;
        InputMemo<3> damping[2];
        InputMemo<2> gain[2];
        InputMemo<6> output;
        InputMemo<3> amp;
    };
    Memos memos_;
};

inline void CNoravaKey::letTimePass(int frames, double seconds) {
    envelopeValue_ = modulationEnvelope_.GetFrame(frames);
    lfoValue_ = settings_.lfoValue * lfoAmplitude_;
    if (secondsSinceRelease_ >= 0.0) {
        if (secondsSinceRelease_ > static_cast<double>(settings_.ampReleaseSeconds)) return reset();
        secondsSinceRelease_ += seconds;
    }
    secondsSinceStart_ += seconds;
}

}  // namespace norava
