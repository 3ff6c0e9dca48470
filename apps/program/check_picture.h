#pragma once

#include <iosfwd>
#include <span>

#include "program/bank_check.h"

namespace norava {

// The table of the check as an SVG picture: one row a program, one strip a figure with the allowed
// range shaded.
void WriteCheckPicture(std::ostream& out, std::span<const CheckedProgram> programs);

}  // namespace norava
