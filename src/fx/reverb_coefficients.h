#pragma once

#include <array>

#include "fx/reverb_parameters.h"

// Everything that the reverb's frame loop needs and that changes only with a parameter or the
// sample rate.

namespace norava {

// The fourteen circular lines, in the order they lie in memory.
enum ReverbLineIndex : std::size_t {
    kInputDiffuser1 = 0,
    kInputDiffuser2 = 1,
    kInputDiffuser3 = 2,
    kInputDiffuser4 = 3,
    kLeftDiffuser1 = 4,
    kLeftDelay1 = 5,
    kLeftDiffuser2 = 6,
    kLeftDelay2 = 7,
    kRightDiffuser1 = 8,
    kRightDelay1 = 9,
    kRightDiffuser2 = 10,
    kRightDelay2 = 11,
    kPredelayLine = 12,
    kEarlyLine = 13,
};
inline constexpr std::size_t kReverbTankLines =
    12;  // diffusers and tank delays, which grow with the room
inline constexpr std::size_t kReverbLines = 14;
inline constexpr std::size_t kReverbOutputTaps = 7;
inline constexpr std::size_t kReverbEarlyTaps = 8;

using ReverbLengths = std::array<int, kReverbLines>;  // frames

// Longest length of each line at a sample rate of `rate` Hz, 1 kHz..768 kHz.
ReverbLengths reverbLineCapacities(int rate);

// The lines that the output taps read, in the order in which they are summed.
inline constexpr std::array<ReverbLineIndex, kReverbOutputTaps> kLeftTapLines{
    kRightDelay1, kRightDelay1,   kRightDiffuser2, kRightDelay2,
    kLeftDelay1,  kLeftDiffuser2, kLeftDelay2};
inline constexpr std::array<ReverbLineIndex, kReverbOutputTaps> kRightTapLines{
    kLeftDelay1,  kLeftDelay1,     kLeftDiffuser2, kLeftDelay2,
    kRightDelay1, kRightDiffuser2, kRightDelay2};

// Where everything is in time, in frames.
struct ReverbGeometry {
    ReverbLengths lengths{};
    // Behind the position after a frame, 0..length.
    std::array<int, kReverbOutputTaps> leftTaps{};
    std::array<int, kReverbOutputTaps> rightTaps{};
    // Behind the position before a frame, at least 1.
    std::array<int, kReverbEarlyTaps> earlyLeftTaps{};
    std::array<int, kReverbEarlyTaps> earlyRightTaps{};

    bool operator==(const ReverbGeometry&) const = default;
};

struct ReverbCoefficients {
    ReverbGeometry geometry;

    // Weights of the taps, with their signs. The eighth early tap on the left is not used; the room
    // was tuned without.
    std::array<float, kReverbOutputTaps> leftWeights{};
    std::array<float, kReverbOutputTaps> rightWeights{};
    std::array<float, kReverbEarlyTaps - 1> earlyLeftWeights{};
    std::array<float, kReverbEarlyTaps> earlyRightWeights{};

    float inputGain = 0.0f;
    float lowCut = 0.0f;   // all-pass coefficient; exactly 0 switches the low cut off
    float highCut = 1.0f;  // one-pole coefficient; 1 lets everything through
    float damping = 1.0f;  // the same inside the tank
    float diffusion1 = 0.0f;
    float diffusion2 = 0.0f;
    float diffusion3 = 0.0f;
    float diffusion4 = 0.0f;
    float decay = 0.0f;      // gain of a quarter of the way round the tank
    float bassShelf = 0.0f;  // share of low frequencies added (or, below 0, taken away)
    float bassAllPass = 0.0f;
    float dryGain = 0.0f;
    float earlyGain = 0.0f;
    float reverbGain = 0.0f;
    float width = 1.0f;
};

// Coefficients for `values` (each within its parameter's range) at `sampleRate` Hz, 1 kHz..768 kHz.
// Every length is at least 1 and at most its capacity.
ReverbCoefficients cookReverb(const ReverbValues& values, float sampleRate);

}  // namespace norava
