#pragma once

#include <filesystem>
#include <vector>

#include "render/options.h"
#include "render/programs.h"

namespace norava {

struct RenderTask {
    std::filesystem::path input;   // empty: the phrase that shows a program
    std::filesystem::path output;  // empty: nothing is written
    std::vector<char> state{};     // a program's, or empty
    std::string program{};         // its "Category/Name"; empty: what all have in common

    std::string Name() const;  // song and program, as far as there are any
};

// Which song goes into which file. Makes the folder that several songs go to; throws BadInput when
// that is impossible, two songs would have one name or a song that of a sound.
std::vector<RenderTask> PlanOutputs(const Options& options);

// The same with each of these programs; files are called after song and program.
std::vector<RenderTask> PlanOutputs(const Options& options,
                                    const std::vector<NamedProgram>& programs);

}  // namespace norava
