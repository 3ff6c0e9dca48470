#pragma once

#include <string>
#include <vector>

#include "program/fingerprint.h"
#include "program_text/program_text.h"

// What every program of the bank is held to.

namespace norava {

inline constexpr double kLoudnessTarget = -18.0;    // LUFS of the reference phrase
inline constexpr double kLoudnessTolerance = 1.5;   // LU
inline constexpr double kHighestPeak = -1.0;        // dBFS, true peak of a full chord
inline constexpr double kHighestDc = -50.0;         // dB below the phrase
inline constexpr double kLongestDecay = 30.0;       // seconds after the chord's release
inline constexpr double kPitchTolerance = 5.0;      // cents, of A3 and C5 where tagged "pitched"
inline constexpr double kLeastVelocityRange = 3.0;  // dB between velocities 32 and 120
inline constexpr double kLeastWheelChange = -20.0;  // dB of what the wheel changes, to the note
inline constexpr double kLeastDistance = 3.0;       // dB, see Distance

struct ProgramFigures {
    double loudness = 0.0;      // LUFS
    double chordPeak = 0.0;     // dBFS, true peak
    double raisedPeak = 0.0;    // dBFS, the highest with the wheel or the keys' pressure up
    double dc = 0.0;            // dB below the phrase
    double decaySeconds = 0.0;  // after the chord's release
    double centsA3 = 0.0;       // of the strings, without effects
    double centsC5 = 0.0;
    double velocityRange = 0.0;  // dB
    double wheelChange = 0.0;    // dB
    bool finite = false;
    Fingerprint print;
};

// Any thread; an engine of its own for each piece that is played.
ProgramFigures MeasureProgram(const Program& program);

// One short text for each rule that is broken.
std::vector<std::string> FindFaults(const Program& program, const ProgramFigures& figures);

}  // namespace norava
