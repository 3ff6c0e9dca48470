#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "render/options.h"
#include "render/output_plan.h"
#include "render/programs.h"

namespace norava {

// How one song ended.
struct Outcome {
    std::optional<RenderResult> result;
    std::string error;  // when there is no result
};

// `outcomes` has one entry for each task. Errors are not part of the text form.
void WriteReport(std::ostream& out, const Options& options, const std::vector<RenderTask>& tasks,
                 const std::vector<Outcome>& outcomes);

void WriteParameterList(std::ostream& out, bool json);

// Category and name, as --program takes them; for machines with the numbers that MIDI selects them
// by.
void WriteProgramList(std::ostream& out, const std::vector<NamedProgram>& programs, bool json);

}  // namespace norava
