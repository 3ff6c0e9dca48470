#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "render/audio_file.h"
#include "render/render_song.h"

namespace norava {

// The command line, checked as far as it can be without opening a file.
struct Options {
    std::vector<std::filesystem::path> inputs;
    std::filesystem::path output;         // empty: not given
    std::optional<Container> container;   // unless the output's name decides
    std::optional<SampleFormat> samples;  // unless the container's default is wanted
    std::filesystem::path state;          // empty: the defaults
    std::filesystem::path patch;          // empty: none
    std::string program;                  // "Category/Name" or a file; empty: the defaults
    std::filesystem::path library;        // folder of programs; empty: the built-in ones
    std::vector<std::string> settings;    // NAME=VALUE
    RenderSettings render;
    int jobs = 1;
    bool listParameters = false;
    bool listPrograms = false;
    bool allPrograms = false;
    bool json = false;
    bool quiet = false;
};

// Throws BadInput for anything that cannot be meant. Without a value the program has said all it
// was asked for (help, version) and ends with status 0.
std::optional<Options> ParseOptions(int argc, const char* const* argv);

}  // namespace norava
