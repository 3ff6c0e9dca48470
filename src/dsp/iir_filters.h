#pragma once

#include "dsp/numbers.h"

namespace norava {

// Second-order recursive filters, one sample a call. With w = 2 pi frequency / sampleRate, s = sin
// w, c = cos w:
//
//   high-pass   y = b (x - 2 x1 + x2) - c1 y1 - c2 y2     b = (1 + c) / (2 + s / q)
//   low-pass    y = b (x + 2 x1 + x2) - c1 y1 - c2 y2     b = (1 - c) / (2 + s / q)
//               c1 = -2 q c / (q + s),  c2 = (q - s) / (q + s)
//   band-pass   y = b (x - x2) + c1 y1 - c2 y2            b = s / (2 + s / q)
//               c1 = 2 c / (1 + a),  c2 = (1 - a) / (1 + a),  a = s / (2 q)
//
// The input gain of high- and low-pass is normalised with 1 + s / (2 q) but their poles with 1 + s
// / q: they ring as a filter of half the given q would, at the level of one with all of it. The
// instrument is voiced with that.
//
// Inputs, outputs and coefficients below 1e-9 become 0, so the recursion never reaches denormal
// numbers, and a filter whose input has gone silent comes to rest at exactly 0.
struct IirCoefficients {
    float b = 0.0f;
    float c1 = 0.0f;
    float c2 = 0.0f;
};

struct IirMemory {
    float x2 = 0.0f;
    float x1 = 0.0f;
    float y2 = 0.0f;
    float y1 = 0.0f;

    // True when zeros in give zeros out from here on.
    bool atRest() const { return x2 == 0.0f && x1 == 0.0f && y2 == 0.0f && y1 == 0.0f; }
    // y2 and y1 become 0 in turn, as x2 and x1 do: the sample is moved in and the older ones along.
    void shift(float x, float y) {
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
    }
};

// What was last given to Set, so that setting the same again costs nothing.
struct IirSettings {
    float frequency = 0.0f;  // Hz
    float q = 0.0f;
    float sampleRate = 0.0f;  // Hz

    bool operator==(const IirSettings&) const = default;
};

class CFilterIIR_HP {
  public:
    CFilterIIR_HP() { Set(100.0f, 1.0f, 44100.0f); }

    // Frequency in Hz, 0..sampleRate / 2; q above 0; the state is kept.
    void Set(float frequency, float q, float sampleRate);
    void Reset() { memory_ = {}; }

    float GetFrame(float input) {
        const float x = flushTiny(input);
        const IirMemory& m = memory_;
        const float y = flushTiny(coefficients_.b * (x - 2.0f * m.x1 + m.x2) -
                                  coefficients_.c1 * m.y1 - coefficients_.c2 * m.y2);
        memory_.shift(x, y);
        return y;
    }

    bool atRest() const { return memory_.atRest(); }
    const IirCoefficients& coefficients() const { return coefficients_; }

  private:
    friend class StereoHighPass;

    IirSettings settings_;
    IirCoefficients coefficients_;
    IirMemory memory_;
};

class CFilterIIR_LP {
  public:
    CFilterIIR_LP() { Set(100.0f, 1.0f, 44100.0f); }

    // As the high-pass.
    void Set(float frequency, float q, float sampleRate);
    void Reset() { memory_ = {}; }

    float GetFrame(float input) {
        const float x = flushTiny(input);
        const IirMemory& m = memory_;
        const float y = flushTiny(coefficients_.b * (x + 2.0f * m.x1 + m.x2) -
                                  coefficients_.c1 * m.y1 - coefficients_.c2 * m.y2);
        memory_.shift(x, y);
        return y;
    }

    const IirCoefficients& coefficients() const { return coefficients_; }

  private:
    IirSettings settings_;
    IirCoefficients coefficients_;
    IirMemory memory_;
};

// Constant skirt gain: the gain at the centre equals q.
class CFilterIIR_BP {
  public:
    CFilterIIR_BP() { Set(100.0f, 1.0f, 44100.0f); }

    // As the high-pass, `frequency` being the centre.
    void Set(float frequency, float q, float sampleRate);
    void Reset() { memory_ = {}; }

    float GetFrame(float input) {
        const float x = flushTiny(input);
        const IirMemory& m = memory_;
        const float y = flushTiny(coefficients_.b * (x - m.x2) + coefficients_.c1 * m.y1 -
                                  coefficients_.c2 * m.y2);
        memory_.shift(x, y);
        return y;
    }

    const IirCoefficients& coefficients() const { return coefficients_; }

  private:
    IirSettings settings_;
    IirCoefficients coefficients_;
    IirMemory memory_;
};

}  // namespace norava
