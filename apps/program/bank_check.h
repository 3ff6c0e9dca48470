#pragma once

#include <string>
#include <vector>

#include "program/program_check.h"
#include "program_text/program_file.h"

namespace norava {

struct CheckedProgram {
    BankEntry entry;
    ProgramFigures figures;
    double nearestDistance = 0.0;  // dB
    std::string nearestName;
    std::vector<std::string> faults;
};

// Measures all programs on `threads` threads and compares each with every other.
std::vector<CheckedProgram> CheckBank(std::vector<BankEntry> bank, int threads);

}  // namespace norava
