#pragma once

#include <span>

// The texts of the panel's menus, spelt as the user sees them. The value of an item is its
// position, counted from 0.

namespace norava {

using Menu = std::span<const char* const>;

inline constexpr const char* kMatrixSourceItems[] = {
    "---", "envelope", "lfo", "mod whl", "ptch whl", "aftch", "velocity", "key num", "release",
};

inline constexpr const char* kMatrixDestinationItems[] = {
    "lfo ampl",    "level",      "pan",        "pitch",      "lo-cut ctf",
    "hi-cut ctf",  "hi-cut atk", "hi-cut dec", "str1 decay", "str2 decay",
    "stri1&2 dec", "str1 damp",  "str2  damp", "str1&2 dmp", "noise rate",
};

// Length of the second string's line to the first's.
inline constexpr const char* kStringRatioItems[] = {
    "4 : 1", "3 : 1", "2 : 1", "1 : 1", "1 : 2", "1 : 3", "1 : 4",
};

// Fractions of a 4/4 bar; the first leaves the delay time to its knob.
inline constexpr const char* kDelayTempoItems[] = {
    "---", "1/16", "2/16", "3/16", "1/4", "2/4", "3/4", "4/4", "8/4", "16/4",
};

}  // namespace norava
