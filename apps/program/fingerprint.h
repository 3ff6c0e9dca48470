#pragma once

#include <array>

#include "program/performance.h"

// What tells one sound from another, apart from its loudness: the colour of a phrase, the colour of
// a note's beginning and of its rest, and how the note swells and fades.

namespace norava {

inline constexpr int kColourBands = 24;    // a third of an octave each, from 50 Hz
inline constexpr int kEnvelopeSteps = 24;  // 100 ms each

struct Fingerprint {
    std::array<double, kColourBands> phrase{};  // all in dB below the loudest
    std::array<double, kColourBands> onset{};
    std::array<double, kColourBands> rest{};
    std::array<double, kEnvelopeSteps> envelope{};
};

Fingerprint TakeFingerprint(const Recording& phrase, const Recording& note);

// The mean of the four root-mean-square differences, in dB.
double Distance(const Fingerprint& a, const Fingerprint& b);

}  // namespace norava
