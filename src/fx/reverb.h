#pragma once

#include <array>
#include <cstddef>

#include "fx/reverb_tank.h"

namespace norava {

// Stereo plate reverb: the figure-of-eight tank of J. Dattorro, "Effect Design, Part 1:
// Reverberator and Other Filters", J. Audio Eng. Soc. 45(9), 1997, with early reflections, bass
// shelf and width of its own.
//
// It is an effect complete in itself, with its own 18 normalised parameters, texts, one program and
// meters; the chain sets three of the parameters from the panel. Audio thread only, construction
// and setSampleRate apart.
class fxReverb {
  public:
    // One absolute peak and one indicator a channel; the indicator stays lit until it is cleared.
    struct Meter {
        float peak = 0.0f;  // of the last block
        bool clipped = false;

        void see(const float* samples, int frames);
    };

    // Indices as in ReverbParameter; the names that callers outside the reverb use.
    static constexpr int kHighCut = kReverbHighCut;
    static constexpr int kDiffusion = kReverbDiffusion;
    static constexpr int kDecay = kReverbDecay;
    static constexpr int kHighDamping = kReverbHighDamping;
    static constexpr int kReverb = kReverbReverb;

    fxReverb();  // at 44.1 kHz, default program

    // Makes the lines for the rate in Hz (1 kHz..768 kHz, clamped); they are silent. Not on the
    // audio thread.
    void setSampleRate(float sampleRate);

    // Takes memory for lines at this sample rate out of `memory`, to be followed by setSampleRate.
    // `bytesFor` tells how much that is.
    void reserve(float sampleRate, LineMemory& memory);
    static std::size_t bytesFor(float sampleRate);

    // Indices 0..17, values 0..1; others are ignored, or kept as they came and used within the
    // range.
    void setParameter(int index, float value);
    float getParameter(int index) const;
    // At most `size` bytes each with the terminating zero; an empty text for other indices.
    void getParameterName(int index, char* text, std::size_t size) const;
    void getParameterLabel(int index, char* text, std::size_t size) const;
    void getParameterDisplay(int index, char* text, std::size_t size) const;

    void setProgram(int index);  // 0, the only one
    void getProgramName(char* text, std::size_t size) const;

    // Forgets all sound. Takes a short time for any sample rate.
    void suspend();
    // Clears the clip indicators and takes all parameters over anew.
    void resume();

    // While on, the input passes unchanged.
    void setBypass(bool on) { bypass_ = on; }
    // The input passes unchanged until blocks of `frames` frames together are through; below 0
    // stops it.
    void startBypassCountdown(int frames) { bypassCountdown_ = frames < 0 ? -1 : frames; }

    // Two channels in, two out; in place is allowed. `process` adds to the outputs, the other
    // replaces them.
    void process(float** inputs, float** outputs, int frames);
    void processReplacing(float** inputs, float** outputs, int frames);

    const std::array<Meter, 2>& inputMeters() const { return inputMeters_; }
    const std::array<Meter, 2>& outputMeters() const { return outputMeters_; }

  private:
    void AllocBuffer();
    void CookParameters();
    void passThrough(float** inputs, float** outputs, int frames, bool accumulate);
    template <bool kAccumulate>
    void run(float** inputs, float** outputs, int frames);

    float sampleRate_ = 44100.0f;
    fxReverbProgram program_ = kDefaultReverbProgram;
    ReverbValues values_{};
    ReverbCoefficients c_;
    int cookedRoomSize_ = 0;
    bool parametersChanged_ = true;
    bool notReady_ = true;
    bool bypass_ = false;
    int bypassCountdown_ = -1;  // frames; -1: none

    ReverbTank tank_;
    std::array<Meter, 2> inputMeters_;
    std::array<Meter, 2> outputMeters_;
};

}  // namespace norava
