#include "render/options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <iostream>
#include <map>

#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"
#include "render/bad_input.h"
#include "render/meters.h"

namespace norava {

namespace {

constexpr int kMaxBlockFrames = 65536;
constexpr int kMaxJobs = 64;
constexpr double kMaxTailSeconds = 3600.0;
constexpr double kQuietestTarget = -70.0;  // LUFS; below it nothing counts as signal

constexpr const char* kAbout =
    "Plays Standard MIDI Files on the Norava string synthesizer and writes what it hears.\n"
    "The sound starts from the instrument's defaults; --state, --program, --patch and --set change "
    "it.";

constexpr const char* kExamples =
    "Examples:\n"
    "  norava-render song.mid -o song.wav\n"
    "  norava-render song.mid --set \"Reverb ON/OFF=1\" --set \"Reverb Mix=0.3\" -o song.flac\n"
    "  norava-render -j 2 --normalize -18 -o rendered/ *.mid";

const std::map<std::string, Container> kContainers = {
    {"wav", Container::wav}, {"flac", Container::flac}, {"ogg", Container::ogg}};
const std::map<std::string, SampleFormat> kSampleFormats = {
    {"16", SampleFormat::int16}, {"24", SampleFormat::int24}, {"32f", SampleFormat::float32}};

// "auto" leaves the length to the sound.
std::optional<double> ParseTail(const std::string& text) {
    if (text == "auto") return std::nullopt;
    double seconds = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (error != std::errc{} || end != text.data() + text.size() ||
        !(seconds >= 0.0 && seconds <= kMaxTailSeconds)) {
        throw BadInput("--tail takes 'auto' or 0..3600 seconds, not '" + text + "'");
    }
    return seconds;
}

// What the parser fills besides the options themselves: texts that are looked at afterwards.
struct RawOptions {
    std::string container;
    std::string samples;
    std::string tail = "auto";
    std::optional<double> normalize;
};

void AddSoundOptions(CLI::App& app, Options& options) {
    app.add_option("--state", options.state, "Start from this 588-byte state, as hosts save it")
        ->type_name("FILE");
    app.add_option("--program", options.program,
                   "Start from this program: \"Category/Name\" or a program file")
        ->type_name("PROGRAM");
    app.add_option("--library", options.library,
                   "Take programs from this folder of categories, not the built-in ones")
        ->type_name("FOLDER");
    app.add_flag("--all-programs", options.allPrograms,
                 "Render the songs, or a short phrase without any, with each program");
    app.add_option("--patch", options.patch, "Then take the lines 'name = value' of this text file")
        ->type_name("FILE");
    app.add_option("--set", options.settings,
                   "Then set one parameter, by name or number; may be repeated")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    app.add_flag("--pedal", options.render.pedal,
                 "Let controller 64 sustain notes; the instrument itself has no pedal");
}

void AddOutputOptions(CLI::App& app, Options& options, RawOptions& raw) {
    app.add_option("-o,--output", options.output,
                   "File to write, or the folder for several songs; without it each song's name "
                   "in the current folder")
        ->type_name("PATH");
    app.add_option("--format", raw.container,
                   "wav, flac or ogg; else the output's ending, else wav")
        ->type_name("FORMAT")
        ->check(CLI::IsMember(kContainers));
    app.add_option("--bits", raw.samples, "16, 24 or 32f (wav only); 24 unless given")
        ->type_name("BITS")
        ->check(CLI::IsMember(kSampleFormats));
    app.add_option("--tail", raw.tail,
                   "Sound kept after the song's end: 'auto' until it has died away (at most a "
                   "minute), or seconds")
        ->type_name("auto|SECONDS");
    app.add_option("--normalize", raw.normalize,
                   "Bring the whole to this loudness, as far as its peak allows; "
                   "without it a song is turned down only where it would clip")
        ->type_name("LUFS")
        ->check(CLI::Range(kQuietestTarget, 0.0));
    app.add_flag("--hash", options.render.hash,
                 "Print the SHA-256 of the samples as rendered (32-bit floats); without -o, "
                 "write no file");
}

void AddEngineOptions(CLI::App& app, Options& options) {
    app.add_option("--rate", options.render.sampleRateHz, "Sample rate in Hz, 1000..768000")
        ->type_name("HZ")
        ->check(CLI::Range(int(kMinSampleRate), int(kMaxSampleRate)))
        ->capture_default_str();
    app.add_option("--block", options.render.blockFrames, "Frames a block, as a host would have")
        ->type_name("FRAMES")
        ->check(CLI::Range(1, kMaxBlockFrames))
        ->capture_default_str();
    app.add_option("-j,--jobs", options.jobs, "Songs rendered at the same time")
        ->type_name("N")
        ->check(CLI::Range(1, kMaxJobs))
        ->capture_default_str();
}

void AddReportOptions(CLI::App& app, Options& options) {
    app.add_flag("--list-parameters", options.listParameters,
                 "List the parameters with their numbers, defaults and menus");
    app.add_flag("--list-programs", options.listPrograms,
                 "List the programs in the order of their numbers");
    app.add_flag("--json", options.json, "Write the report or the list for machines");
    app.add_flag("-q,--quiet", options.quiet, "No progress and no report; a hash is still printed");
    app.set_version_flag("--version", [] {
        const CPluginInstance& plugin = *GetPluginInstance();
        return std::string("norava-render ") + plugin.GetPluginVersionLabel();
    });
}

// The format that was named, or else what the ending of a single file's name says.
void ChooseContainer(Options& options, const std::string& named) {
    const std::filesystem::path& output = options.output;
    std::error_code ignored;
    const bool namesFile = options.inputs.size() == 1 && output.has_extension() &&
                           !std::filesystem::is_directory(output, ignored);
    if (!named.empty()) options.container = kContainers.at(named);
    if (!namesFile) return;
    const Container byName = ContainerOf(output);
    if (options.container.value_or(byName) != byName) {
        throw BadInput("--format " + named + " does not fit the name " + output.string());
    }
    options.container = byName;
}

// The parser's range lets through what is not a number.
void CheckTarget(const Options& options) {
    const std::optional<double> target = options.render.loudnessTarget;
    if (!target) return;
    if (!std::isfinite(*target)) throw BadInput("--normalize takes -70..0 LUFS");
    if (options.render.sampleRateHz < kLowestLoudnessRateHz) {
        throw BadInput("--normalize needs a --rate of " + std::to_string(kLowestLoudnessRateHz) +
                       " Hz at least: below it there is no loudness to measure");
    }
}

void CheckTogether(const Options& options) {
    const int starts =
        int(!options.state.empty()) + int(!options.program.empty()) + int(options.allPrograms);
    if (starts > 1) throw BadInput("takes one of --state, --program and --all-programs");
    const bool choosesProgram =
        options.listPrograms || options.allPrograms || !options.program.empty();
    if (!options.library.empty() && !choosesProgram) {
        throw BadInput("--library needs --program, --all-programs or --list-programs");
    }
    if (options.output == "-") {
        throw BadInput("the sound cannot go to standard output; -o takes a file or a folder");
    }
    const bool onlyLists = options.listParameters || options.listPrograms;
    if (options.inputs.empty() && !onlyLists && !options.allPrograms) {
        throw BadInput("needs a MIDI file (--help explains)");
    }
    const bool compressed = options.container == Container::ogg;
    if (compressed && options.samples) throw BadInput("--bits has no meaning for ogg");
    if (options.container == Container::flac && options.samples == SampleFormat::float32) {
        throw BadInput("flac holds 16 or 24 bits, not 32f");
    }
}

}  // namespace

std::optional<Options> ParseOptions(int argc, const char* const* argv) {
    Options options;
    RawOptions raw;
    CLI::App app{kAbout, "norava-render"};
    app.footer(kExamples);
    app.add_option("songs", options.inputs, "MIDI files of format 0 or 1")->type_name("MIDI");
    AddSoundOptions(app, options);
    AddOutputOptions(app, options, raw);
    AddEngineOptions(app, options);
    AddReportOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& answer) {
        app.exit(answer);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw BadInput(error.what());
    }
    ChooseContainer(options, raw.container);
    if (!raw.samples.empty()) options.samples = kSampleFormats.at(raw.samples);
    options.render.tailSeconds = ParseTail(raw.tail);
    options.render.loudnessTarget = raw.normalize;
    CheckTarget(options);
    CheckTogether(options);
    return options;
}

}  // namespace norava
