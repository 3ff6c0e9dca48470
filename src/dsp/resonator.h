#pragma once

#include <array>

#include "dsp/stereo_high_pass.h"
#include "dsp/string_delay.h"
#include "dsp/string_group.h"

namespace norava {

// Eight tuned strings that colour the stereo mix: each band is two string lines in series, tuned 1
// : 1.05 and fed with the mono sum; the bands lean to the right and to the left in turn. Their sum
// is high-passed at 32 Hz and added to the mix. Audio thread only, construction and setSampleRate
// apart.
class CResonator {
  public:
    static constexpr int kBands = 8;

    CResonator();

    // Makes the lines, 100 ms long; what sounds is lost, the bands' settings stay. Rates in Hz,
    // finite, above 0. Takes memory if too little is reserved.
    void setSampleRate(double sampleRate);

    // Takes memory for lines at this sample rate out of `memory`, to be followed by setSampleRate.
    // `bytesFor` tells how much that is.
    void reserve(double sampleRate, LineMemory& memory);
    static std::size_t bytesFor(double sampleRate);

    // Silences all lines and both filters.
    void reset();

    // Bands 0..7 (others are ignored), values 0..1 (outside: the nearer end; not a number: 0).
    void setBandFreq(long band,
                     float value);  // delay fraction 1 - value^0.1: higher values sound higher
    void setBandFdbk(long band, float value);  // loop gain 0.9999 sqrt(value)
    // On for any value but 0. Each call that says on restarts the band from silence.
    void setBandOn(long band, float value);

    // Adds the bank's output to the two buffers in place.
    void process(float* left, float* right, long frames);

  private:
    static constexpr int kPieceFrames = 64;

    struct Band {
        float delay = 0.0f;     // fraction of the line's length
        float feedback = 0.0f;  // loop gain
        bool on = false;
        bool changed = true;  // the lines have not taken over delay and feedback yet
        CStringDelay first;
        CStringDelay second;
    };

    // Four bands that sound, side by side: their first lines and their second ones.
    struct Quartet {
        StringGroup firsts;
        StringGroup seconds;
    };

    static void applySettings(Band& band);
    int soundingBands(std::array<int, kBands>& bands);
    void processPiece(const std::array<int, kBands>& sounding, int count, float* left, float* right,
                      int frames);

    bool hasLines_ = false;
    std::array<Band, kBands> bands_;
    std::array<Quartet, kBands / StringGroup::kLanes> quartets_;
    StereoHighPass highPass_;
};

}  // namespace norava
