#pragma once

#include <array>

#include "dsp/tape_store.h"

namespace norava {

class StringGroup;

// A plucked string: a feedback delay of fractional length with a one-pole low-pass in the loop,
//     state += (delayed - state) * damping,   written = in + feedback * state
// A phase runs from 0 to 1 once a period; what was written one period ago at the same phase is read
// back, interpolated between the two entries around it (see CTapeDelayBuffer), so the delay is
// exactly 1 / rate frames. Audio thread only, construction apart.
class CStringDelay {
  public:
    // Longest delay in frames, raised to at least 4. Half of it, no feedback, silent.
    explicit CStringDelay(long length = 0);
    virtual ~CStringDelay() { takeBack(); }
    CStringDelay(const CStringDelay&) = delete;
    CStringDelay& operator=(const CStringDelay&) = delete;

    // As newly constructed with `length`. Takes memory if too little is reserved. Not on the audio
    // thread.
    void setLength(long length);

    // Takes memory for lines of up to `length` frames out of `memory`; the line is to be given its
    // length afterwards. `bytesFor` tells how much that is.
    void reserve(long length, LineMemory& memory);
    static std::size_t bytesFor(long length);

    // The delay as a fraction of the length, 0..0.99 (not a number: 0.5): (length - 2) * fraction +
    // 2 frames, but at least 5 if the length allows.
    void setDelay(double fraction);

    // Gain round the loop; not limited (infinite or not a number: 0).
    void setFdbk(double gain);

    // Advances by one frame and returns the delayed sample, taken before the loop filter.
    float GetFrame(float input);

    // Silence, at the start of a period. Takes the same short time for any length.
    void reset();

    double rate() const { return rate_; }  // periods per frame

    // To be set before setDelay or setFdbk: a group that the line runs in reads it afterwards.
    float damping = 1.0f;  // coefficient of the low-pass, 0..1 (1: none)

  private:
    friend class StringGroup;

    void takeBack();
    void endPass(float value);

    StringGroup* group_ = nullptr;  // keeps the state for this line while it runs with others
    float state_ = 0.0f;
    float feedback_ = 0.0f;
    CTapeDelayBuffer::Pair stores_;
    CTapeDelayBuffer* write_ = &stores_[0];
    CTapeDelayBuffer* read_ = &stores_[1];
    long length_ = 0;
    double rate_ = 0.0;
    double phase_ = 0.0;
    double minimumRate_ = 0.0;
};

}  // namespace norava
