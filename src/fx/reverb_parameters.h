#pragma once

#include <array>
#include <cstddef>

// The reverb's own parameters: 18 normalised floats, each converted at once to the small integer
// that the algorithm uses.

namespace norava {

enum ReverbParameter : std::size_t {
    kReverbInput = 0,
    kReverbLowCut = 1,
    kReverbHighCut = 2,
    kReverbPredelay = 3,
    kReverbRoomSize = 4,
    kReverbDiffusion = 5,
    kReverbBassMultiplier = 6,
    kReverbCrossover = 7,
    kReverbDecay = 8,
    kReverbHighDamping = 9,
    kReverbDry = 10,
    kReverbER = 11,
    kReverbReverb = 12,
    kReverbWidth = 13,
    kReverbMuteInput = 14,
    kReverbMuteDry = 15,
    kReverbMuteER = 16,
    kReverbMuteReverb = 17,
};
inline constexpr int kReverbParameters = 18;

inline constexpr int kReverbLevelOff = -361;  // tenths of a decibel: below -36 dB is silence
inline constexpr int kReverbLowCutOff = 19;   // Hz
inline constexpr int kReverbFilterOff =
    221;  // hundreds of Hz, of the high cut and the high damping

using ReverbValues = std::array<int, kReverbParameters>;

// 18 normalised values under a name.
struct fxReverbProgram {
    std::array<float, kReverbParameters> values;
    const char* name;
};

// "[1] Default Reverb", the only one there is.
extern const fxReverbProgram kDefaultReverbProgram;

// floor(min + span * normalised + 0.5), with `normalised` taken within 0..1 (not a number: the
// default program's).
int reverbValueOf(ReverbParameter parameter, float normalised);

// Texts, at most `size` bytes with the terminating zero. A value's text shows it in the unit of its
// label.
void reverbParameterName(ReverbParameter parameter, char* text, std::size_t size);
void reverbParameterLabel(ReverbParameter parameter, char* text, std::size_t size);
void reverbParameterDisplay(ReverbParameter parameter, int value, char* text, std::size_t size);

// Tenths of a decibel as "%d.%d", "-Inf" at the bottom. The whole part carries the sign, so -0.5
// reads "0.5".
void FormatdB(int tenths, char* text, std::size_t size);

// 10^(tenths / 200), or 0 for `floor` and below.
double SfGetRatioFromdB(int tenths, int floor);

}  // namespace norava
