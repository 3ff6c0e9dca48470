#pragma once

#include <array>

#include "dsp/resonator.h"
#include "dsp/stereo_high_pass.h"
#include "fx/chorus.h"
#include "fx/reverb.h"
#include "fx/tape_pair.h"

namespace norava {

// The delay's knobs as the panel has them. Written and read on the audio thread; `process` applies
// them block by block.
struct DelaySettings {
    float time = 0.0f;  // 0..1: 0.01 + time^2 of the lines' lengths
    // Menu position: 1..9 "1/16".."16/4"; 0, as any other, leaves the time free.
    float tempoSelector = 0.0f;
    float feedback = 0.0f;  // 0..1
    float modSpeed = 0.0f;  // 0..1: 0..20 Hz
    float modDepth = 0.0f;  // 0..1
    float blur = 0.0f;      // 0..1: how much the second and third line of a channel add
    float wet = 0.0f;       // 0..1

    bool operator==(const DelaySettings&) const = default;
};

// The effects after the voices, in fixed order: a 32 Hz high-pass per channel, resonator bank,
// chorus, reverb (if on), delay (if on). Audio thread only, construction and setSampleRate apart.
class CNoravaFX {
  public:
    static constexpr double kLowestSampleRate = 1000.0;
    static constexpr double kHighestSampleRate = 768000.0;

    CNoravaFX();

    // Makes all lines for the rate in Hz (1 kHz..768 kHz, clamped) and silences everything. Takes
    // memory, so not on the audio thread; what is there is used again if it suffices.
    void setSampleRate(double sampleRate);

    // Silence everywhere; settings stay. Takes a short time for any sample rate.
    void reset();

    // Processes `inL` and `inR` in place; if the outputs are other buffers, they receive a copy. No
    // limit on `frames`.
    void process(float* inL, float* inR, float* outL, float* outR, long frames);

    // Beats per minute. What is not above 0 and finite leaves the last tempo in force; 120 before
    // any.
    void setTempo(double bpm);

    // Nothing is cleared or faded: what is on the tapes sounds again when the effect comes back.
    void setDelayEnable(bool on) { delayOn_ = on; }
    void setReverbEnable(bool on) { reverbOn_ = on; }

    // Silences the one effect at the start of the next block.
    void requestDelayReset() { delayResetRequested_ = true; }
    void requestReverbReset() { reverbResetRequested_ = true; }

    CResonator& resonator() { return resonator_; }
    CChorus& chorus() { return chorus_; }
    fxReverb& reverb() { return reverb_; }

    DelaySettings delay;

  private:
    // Lines in series on the left, and as many on the right behind them.
    static constexpr std::size_t kDelaySeries = 3;

    void reserveLines();
    void resetDelayLines();
    void updateDelayLines();
    void applyDelaySettings();
    void processDelay(float* left, float* right, long frames);

    fxReverb reverb_;
    CResonator resonator_;
    CChorus chorus_;
    std::array<CTapeDelay, 2 * kDelaySeries> delayLines_;
    std::array<TapePair, kDelaySeries> delayPairs_;
    double tempo_ = 120.0;
    // What the lines were last set up with; no tempo before that.
    DelaySettings appliedDelay_;
    double appliedTempo_ = 0.0;
    double sampleRate_ = 0.0;    // Hz; 0 until the first setSampleRate
    double reservedRate_ = 0.0;  // Hz; up to here the long lines have their memory
    bool reverbOn_ = false;
    bool delayOn_ = false;
    bool delayResetRequested_ = false;
    bool reverbResetRequested_ = false;
    StereoHighPass highPass_;
};

}  // namespace norava
