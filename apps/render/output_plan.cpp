#include "render/output_plan.h"

#include <set>
#include <system_error>

#include "render/bad_input.h"

namespace norava {

namespace {

namespace fs = std::filesystem;

bool NamesFolder(const fs::path& path) {
    std::error_code ignored;
    return !path.has_filename() || fs::is_directory(path, ignored);
}

// A name with an ending looks like a file's, and was hardly meant for a new folder.
void MakeFolder(const fs::path& folder) {
    std::error_code error;
    if (!folder.has_extension()) fs::create_directories(folder, error);
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored)) {
        throw BadInput(folder.string() + ": several songs need a folder to go to" +
                       (error ? ": " + error.message() : ""));
    }
}

// A song may have any name, also that of the sound that it becomes.
void RequireSongsKept(const Options& options, const std::vector<RenderTask>& tasks) {
    std::error_code ignored;
    std::set<fs::path> songs;
    for (const fs::path& input : options.inputs)
        songs.insert(fs::canonical(input, ignored));
    songs.erase(fs::path());
    for (const RenderTask& task : tasks) {
        if (songs.contains(fs::canonical(task.output, ignored))) {
            throw BadInput(task.output.string() + ": the sound would replace the song");
        }
    }
}

std::vector<RenderTask> PlanSongs(const Options& options) {
    std::vector<RenderTask> tasks;
    const bool writes = !options.output.empty() || !options.render.hash;
    if (!writes) {
        for (const fs::path& input : options.inputs)
            tasks.push_back({.input = input, .output = {}});
        return tasks;
    }
    const bool oneFile =
        options.inputs.size() == 1 && !options.output.empty() && !NamesFolder(options.output);
    if (oneFile) return {{.input = options.inputs.front(), .output = options.output}};

    const fs::path folder = options.output.empty() ? fs::path(".") : options.output;
    MakeFolder(folder);
    std::set<fs::path> names;
    for (const fs::path& input : options.inputs) {
        fs::path name = input.stem();
        name += EndingOf(options.container.value_or(Container::wav));
        if (!names.insert(name).second) {
            throw BadInput("two songs would both become " + name.string());
        }
        tasks.push_back({.input = input, .output = options.output.empty() ? name : folder / name});
    }
    return tasks;
}

}  // namespace

std::string RenderTask::Name() const {
    const bool both = !input.empty() && !program.empty();
    return input.string() + (both ? " - " : "") + program;
}

std::vector<RenderTask> PlanOutputs(const Options& options) {
    std::vector<RenderTask> tasks = PlanSongs(options);
    RequireSongsKept(options, tasks);
    return tasks;
}

std::vector<RenderTask> PlanOutputs(const Options& options,
                                    const std::vector<NamedProgram>& programs) {
    const bool writes = !options.output.empty() || !options.render.hash;
    const fs::path folder = options.output.empty() ? fs::path(".") : options.output;
    if (writes) MakeFolder(folder);
    std::vector<fs::path> inputs = options.inputs;
    if (inputs.empty()) inputs.emplace_back();
    std::vector<RenderTask> tasks;
    std::set<fs::path> names;
    for (const NamedProgram& program : programs) {
        for (const fs::path& input : inputs) {
            fs::path name = input.empty() ? fs::path() : input.stem() += " - ";
            name += program.category + " - " + program.name;
            name += EndingOf(options.container.value_or(Container::wav));
            if (!names.insert(name).second) {
                throw BadInput("two programs would both become " + name.string());
            }
            tasks.push_back({.input = input,
                             .output = writes ? folder / name : fs::path(),
                             .state = program.state,
                             .program = program.FullName()});
        }
    }
    RequireSongsKept(options, tasks);
    return tasks;
}

}  // namespace norava
