#pragma once

#include <array>

#include "fx/tape_pair.h"

namespace norava {

// Three short tape delays whose speeds wobble at their own rates, fed with the mono sum: one on the
// left, one on the right and one on both sides, added to the dry signal. Audio thread only,
// construction and setSampleRate apart.
class CChorus {
  public:
    // Makes the lines (20 ms) for a rate in Hz. Each change of rate turns the sign of the wet gain
    // over, because the setting is kept negated; the sound of saved projects rests on that.
    void setSampleRate(double sampleRate);

    void setRate(float rate);    // 0..1: the wobbles' speed, 0.1..5.1 Hz for the centre line
    void setDelay(float depth);  // 0..1: how far the speed wobbles, depth^3
    void setWet(float gain);     // 0..1
    void setEnable(float on);    // on for any value but 0; nothing is cleared

    // Silences the lines.
    void reset();

    // Adds the chorus to the two buffers in place; leaves them alone while it is off.
    void process(float* left, float* right, long frames);

  private:
    void processPiece(float* left, float* right, int frames);

    static constexpr int kLines = 3;  // left, both sides, right

    float delaySetting_ = 0.0f;
    float wetSetting_ = 0.0f;  // negated
    float rateSetting_ = 0.0f;
    bool enabled_ = false;
    bool hasLines_ = false;
    std::array<CTapeDelay, kLines> lines_;
    TapePair leftAndCentre_;
    TapePair right_;  // the one line in both lanes
    double sampleRate_ = 44100.0;
};

}  // namespace norava
