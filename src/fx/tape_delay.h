#pragma once

#include <array>

#include "dsp/iir_filters.h"
#include "dsp/tape_store.h"

namespace norava {

class TapePair;

// A delay line as a loop of tape that runs at a variable speed: a change of delay time glides and
// bends the pitch of what is on the tape, and a triangle LFO on the speed gives wow. What was
// recorded one pass ago at the same place is played back, interpolated between the two entries
// around it (see CTapeDelayBuffer).
//     step = rate * (1 + depth * smoothstep(triangle(LFO))),  minimumRate <= step <= 0.2 passes per
//     frame recorded = in + feedback * played,  out = played * wet
// Rate and wet glide towards what was set. Audio thread only, construction and setLength apart.
class CTapeDelay {
  public:
    // Longest pass in frames (raised to at least 4) and the tape position, 0..1, that `reset`
    // restores. Half a loop of delay, wet 1, no feedback, no wow, filters off.
    explicit CTapeDelay(int length = 0, double initialPosition = 0.0);
    ~CTapeDelay() { takeBack(); }
    CTapeDelay(const CTapeDelay&) = delete;
    CTapeDelay& operator=(const CTapeDelay&) = delete;

    // As newly constructed. Takes memory if too little is reserved. Not on the audio thread.
    void setLength(int length, double initialPosition);

    // Takes memory for passes of up to `length` frames out of `memory`; the delay is to be given
    // its length afterwards. `bytesFor` tells how much that is.
    void reserve(int length, LineMemory& memory);
    static std::size_t bytesFor(int length);

    // Pass length as a fraction of the loop, 0..0.99 (not a number: 0.5): (length - 2) * fraction +
    // 2 frames.
    void setDelay(double fraction);
    void setSpeed(double hz, double sampleRate);  // of the wow; below 0 and nonsense: 0
    void setDepth(double depth);                  // of the wow, 0..1
    void setWet(double gain);                     // may be negative; nonsense: 0
    void setFdbk(double gain);  // negative: repeats alternate in sign; nonsense: 0

    // Filters on what is played, before both the output and the feedback. Cut-off in
    // Hz, 10..sampleRate / 2.1; q at least 0. A filter that is switched on or off forgets its
    // state.
    void setLowPass(float frequency, float q, double sampleRate);
    void setHighPass(float frequency, float q, double sampleRate);
    void setLowEnable(bool on);
    void setHiEnable(bool on);

    bool hasFilterOn() const { return lowPassOn_ || highPassOn_; }

    // An empty tape, wet from 0. Takes the same short time for any length.
    void reset();

    // Advances by one frame and returns the wet output.
    float GetFrame(float input);

  private:
    friend class TapePair;

    void takeBack();
    double advanceWow();
    float play();
    void record(float value, double wow);
    void endPass(float value);

    TapePair* pair_ = nullptr;  // keeps the state for this line while it runs with another
    CTapeDelayBuffer::Pair stores_;
    CTapeDelayBuffer* write_ = &stores_[0];
    CTapeDelayBuffer* read_ = &stores_[1];
    int length_ = 0;
    double lfoPhase_ = 0.0;
    double lfoIncrement_ = 0.0;  // cycles per frame
    double targetRate_ = 0.0;    // passes per frame
    double currentRate_ = 0.0;
    double position_ = 0.0;
    double initialPosition_ = 0.0;
    double minimumRate_ = 0.0;
    float currentWet_ = 0.0f;
    float feedback_ = 0.0f;
    float targetWet_ = 0.0f;
    float depth_ = 0.0f;
    CFilterIIR_LP lowPass_;
    CFilterIIR_HP highPass_;
    bool lowPassOn_ = false;
    bool highPassOn_ = false;
};

}  // namespace norava
