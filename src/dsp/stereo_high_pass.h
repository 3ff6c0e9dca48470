#pragma once

#include "dsp/iir_filters.h"

namespace norava {

// The high-passes of the two channels of a stereo signal, run side by side. The same bits as
// GetFrame of each.
class StereoHighPass {
  public:
    void Set(float frequency, float q, float sampleRate);
    void Reset();

    // In place, any number of frames. Silence into filters at rest costs no more than looking at
    // it.
    void process(float* left, float* right, long frames);

    // True when silence in gives silence out.
    bool atRest() const { return left_.atRest() && right_.atRest(); }

  private:
    void processPiece(float* left, float* right, int frames);

    CFilterIIR_HP left_;
    CFilterIIR_HP right_;
};

}  // namespace norava
