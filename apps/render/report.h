#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "render/options.h"
#include "render/output_plan.h"

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

}  // namespace norava
