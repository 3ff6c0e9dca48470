#pragma once

#include <filesystem>

#include "program/bank_check.h"

namespace norava {

// Rewrites values in a program's text so that the check is met; comments and all other lines stay
// as they are. Returns whether anything changed. Throws OutputError.

// Master Level, to bring the phrase to the target; lower, down to the tolerance, when the chord
// would clip.
bool AdjustLevel(const CheckedProgram& checked);

// Tune and the last slot of the matrix ("key num > pitch"), to bring A3 and C5 to their pitch.
bool AdjustPitch(const CheckedProgram& checked);

}  // namespace norava
