#pragma once

#include <iosfwd>

#include "program/bank_check.h"

namespace norava {

// Rewrites values in a program's text so that the check is met; comments and all other lines stay
// as they are. Returns whether anything changed. Throws OutputError, and BadInput where the text
// with the new line could not be read again; the file is then as it was.

// Master Level, to bring the phrase to the target; lower, down to the tolerance, when the chord
// would clip.
bool AdjustLevel(const CheckedProgram& checked);

// Tune and the last slot of the matrix ("key num > pitch"), to bring A3 and C5 to their pitch. A
// last slot that does something else is kept: Tune alone brings them as near as it can, and a line
// in `notes` says so.
bool AdjustPitch(const CheckedProgram& checked, std::ostream& notes);

}  // namespace norava
