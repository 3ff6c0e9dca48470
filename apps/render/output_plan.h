#pragma once

#include <filesystem>
#include <vector>

#include "render/options.h"

namespace norava {

struct RenderTask {
    std::filesystem::path input;
    std::filesystem::path output;  // empty: nothing is written
};

// Which song goes into which file. Makes the folder that several songs go to; throws BadInput when
// that is impossible or two songs would have one name.
std::vector<RenderTask> PlanOutputs(const Options& options);

}  // namespace norava
