// norava-render: plays MIDI files on the instrument and writes what it hears.

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <thread>
#include <vector>

#include "render/bad_input.h"
#include "render/instrument.h"
#include "render/options.h"
#include "render/output_plan.h"
#include "render/programs.h"
#include "render/progress.h"
#include "render/report.h"

namespace norava {
namespace {

constexpr int kBadInputStatus = 2;

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

void Interrupt(int) {
    interrupted = true;
}

// A signal that whoever started the program wants ignored, as nohup does, stays ignored.
void InterruptAt(int signal) {
    if (std::signal(signal, Interrupt) == SIG_IGN) std::signal(signal, SIG_IGN);
}

// Whatever ends a rendering, its unfinished file has to go. A reader of the progress that has left
// is no reason to end it: writing to nobody fails, and that is all.
void CatchSignals() {
    InterruptAt(SIGINT);
    InterruptAt(SIGTERM);
#ifndef _WIN32
    InterruptAt(SIGHUP);
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

void Complain(const std::string& what) {
    std::fprintf(stderr, "norava-render: %s\n", what.c_str());
}

Outcome Render(const RenderTask& task, const RenderSettings& settings, Progress& progress,
               std::size_t number) {
    Outcome outcome;
    progress.Begin(task.Name());
    try {
        RenderSettings own = settings;
        if (!task.program.empty()) {
            if (!IsProgram(task.state)) throw BadInput("this is not a program of the instrument");
            own.sound.state = task.state;
        }
        outcome.result = RenderSong(
            task.input, task.output, own, [&](double part) { progress.Update(number, part); },
            interrupted);
    } catch (const OutputError& error) {
        outcome.error = task.output.string() + ": " + error.what();
    } catch (const std::exception& error) {
        outcome.error = task.Name() + ": " + error.what();
    }
    progress.Update(number, 1.0);
    return outcome;
}

// Every thread takes the next song that nobody has begun.
std::vector<Outcome> RenderAll(const std::vector<RenderTask>& tasks, const Options& options) {
    std::vector<Outcome> outcomes(tasks.size());
    Progress progress(tasks.size(), options.quiet);
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < tasks.size(); i = next++) {
            outcomes[i] = Render(tasks[i], options.render, progress, i);
        }
    };
    std::vector<std::jthread> helpers;
    const auto count = std::min(std::size_t(options.jobs), tasks.size());
    for (std::size_t i = 1; i < count; ++i)
        helpers.emplace_back(work);
    work();
    helpers.clear();
    progress.End();
    return outcomes;
}

void PrepareRender(Options& options) {
    RenderSettings& render = options.render;
    if (!options.state.empty()) {
        render.sound.state = LoadState(options.state);
        if (!IsState(render.sound.state)) {
            throw BadInput(options.state.string() + ": this is not a state of the instrument");
        }
    }
    if (!options.program.empty()) {
        render.sound.state = FindProgram(options.program, options.library).state;
        if (!IsProgram(render.sound.state)) {
            throw BadInput(options.program + ": this is not a program of the instrument");
        }
    }
    if (!options.patch.empty()) render.sound.settings = LoadPatch(options.patch);
    for (const std::string& text : options.settings) {
        render.sound.settings.push_back(ParseSetting(text));
    }
    render.format.container = options.container.value_or(Container::wav);
    render.format.samples = options.samples.value_or(SampleFormat::int24);
    render.format.sampleRateHz = render.sampleRateHz;
}

int Run(int argc, const char* const* argv) {
    std::optional<Options> options = ParseOptions(argc, argv);
    if (!options) return 0;
    if (options->listParameters) {
        WriteParameterList(std::cout, options->json);
        return 0;
    }
    if (options->listPrograms) {
        WriteProgramList(std::cout, ListPrograms(options->library), options->json);
        return 0;
    }
    PrepareRender(*options);
    const std::vector<RenderTask> tasks =
        options->allPrograms ? PlanOutputs(*options, ListPrograms(options->library))
                             : PlanOutputs(*options);
    CatchSignals();
    const std::vector<Outcome> outcomes = RenderAll(tasks, *options);

    WriteReport(std::cout, *options, tasks, outcomes);
    int status = 0;
    for (const Outcome& outcome : outcomes) {
        if (outcome.result) continue;
        Complain(outcome.error);
        status = kBadInputStatus;
    }
    return status;
}

}  // namespace
}  // namespace norava

int main(int argc, char** argv) {
    try {
        const int status = norava::Run(argc, argv);
        norava::RequireWritten(std::cout, "standard output");
        return status;
    } catch (const std::exception& error) {
        norava::Complain(error.what());
        return norava::kBadInputStatus;
    }
}
