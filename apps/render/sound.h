#pragma once

#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

namespace norava {

struct ParameterSetting {
    int index = 0;
    float value = 0.0f;
};

// What the user asks of the instrument's sound; everything not named keeps its default.
struct Sound {
    std::vector<char> state;                 // a state block, or empty
    std::vector<ParameterSetting> settings;  // in order, after the state
};

// "name = value" with a parameter's name (in any case) or number, and a value in its range or,
// where the parameter has a menu, an item of it. Throws BadInput.
ParameterSetting ParseSetting(std::string_view text);

// A text file of such lines; empty lines and lines that start with # count for nothing. Throws
// BadInput, naming the line.
std::vector<ParameterSetting> LoadPatch(const std::filesystem::path& path);

// The instrument's whole state as hosts keep it. Throws BadInput when the file is not one.
std::vector<char> LoadState(const std::filesystem::path& path);

}  // namespace norava
