#pragma once

#include <iosfwd>
#include <span>

#include "program/bank_check.h"

namespace norava {

// One line a program, the ranges of all figures at the end.
void WriteCheckTable(std::ostream& out, std::span<const CheckedProgram> programs);

}  // namespace norava
