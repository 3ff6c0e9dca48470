#pragma once

#include <array>

#include "fx/reverb_coefficients.h"
#include "fx/reverb_memory.h"

namespace norava {

// The sound of the reverb: input filters and diffusers, early reflections, the two halves of the
// tank and their output taps. Signal path, top to bottom:
//
//     mono sum -> high cut -> low cut -> diffuser 1 -> early-reflection line -> early taps
//                                          |
//                                     diffusers 2..4 -> predelay --+--> left half -> (line 7) -->
//                                     right half
//                                                                  |        ^ |
//                                                                  +--------|--------> right half |
//                                                                           +-------- (line 11)
//                                                                           <-----+
//     half: * decay -> bass shelf -> + predelayed -> damping -> diffuser -> delay -> * decay ->
//     diffuser -> delay
//
// Samples that a line hands out were written a whole line ago, so up to a certain number of frames
// every stage can be done for all of them at once; only the one-pole recursions go frame by frame.
// Geometries (and blocks) too small for that take the frames one after the other. The bits are the
// same.
class ReverbTank {
  public:
    static constexpr int kMostFrames = ReverbMemory::kMostFrames;

    void allocate(const ReverbLengths& capacities, std::size_t reserve) {
        memory_.allocate(capacities, reserve);
    }
    void reserve(std::size_t floats, LineMemory& memory) { memory_.reserve(floats, memory); }
    void setCoefficients(const ReverbCoefficients& coefficients);
    void clearRoom() { memory_.clearRoom(); }
    void suspend();

    // 1..kMostFrames frames. The inputs carry the input gain already; the wet signals, early
    // reflections included, carry their gains.
    void process(const float* inLeft, const float* inRight, float* wetLeft, float* wetRight,
                 int frames);

  private:
    struct Stereo {
        float left = 0.0f;
        float right = 0.0f;
    };
    struct Half {
        float shelfInput = 0.0f;
        float shelfOutput = 0.0f;
        float damping = 0.0f;
    };
    struct State {
        float highCut = 0.0f;
        float lowCutInput = 0.0f;
        float lowCutOutput = 0.0f;
        std::array<Half, 2> halves;
        Stereo early;
        float gain = -1000.0f;  // below -99: jumps to its target at the next frame
    };
    using Piece = std::array<float, kMostFrames>;

    // The steps that both ways share.
    float filterInput(float inLeft, float inRight);
    float damp(Half& half, float y, float predelayed) const;
    float glideGain();

    Stereo frame(float inLeft, float inRight);
    void earlyFrame();
    void halfFrame(Half& half, std::size_t firstLine, float input, float predelayed);

    void piece(const float* inLeft, const float* inRight, float* wetLeft, float* wetRight,
               int frames);
    void diffuse(std::size_t line, float* samples, int frames, float outCoefficient,
                 float storeCoefficient);
    void delay(std::size_t line, float* samples, int frames);
    void halfPiece(std::size_t firstLine, float* damped, int frames);
    void earlyPiece(float* left, float* right, int frames);
    void outputPiece(float* left, float* right, int frames) const;
    int longestPiece() const;

    ReverbCoefficients c_;
    int longestPiece_ = 1;  // frames
    ReverbMemory memory_;
    State state_;
};

}  // namespace norava
