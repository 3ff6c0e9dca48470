#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "parameters/parameter_index.h"

// A program (one sound of the instrument) as readable text; assets/programs/README.md describes it.

namespace norava {

struct Program {
    std::string name;
    std::string author;
    std::vector<std::string> tags;
    std::string description;
    std::array<float, kNumParameters> values;

    Program();  // the table's defaults
    bool HasTag(std::string_view tag) const;
};

// Throws BadInput that begins with `source` and the number of the line.
Program ParseProgram(std::string_view text, std::string_view source);

// Parameters at their default are left out; what is written reads back to the same bits.
std::string WriteProgram(const Program& program);

}  // namespace norava
