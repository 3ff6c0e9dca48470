#include "render/sound.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "parameters/parameter_table.h"
#include "render/bad_input.h"

namespace norava {

namespace {

std::string_view Trim(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string Quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

template <typename Number>
std::optional<Number> ParseNumber(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

int ParseParameter(std::string_view text) {
    const int byName = FindParameter(text);
    const int index = byName >= 0 ? byName : ParseNumber<int>(text).value_or(-1);
    if (!IsParameter(index)) {
        throw BadInput("there is no parameter " + Quoted(text) +
                       " (--list-parameters shows them all)");
    }
    return index;
}

// Selectors run over the items of their menu, everything else over 0..1.
float HighestValue(const Parameter& parameter) {
    return parameter.items.empty() ? 1.0f : float(parameter.items.size() - 1);
}

float ParseValue(const Parameter& parameter, std::string_view text) {
    for (std::size_t item = 0; item < parameter.items.size(); ++item) {
        if (text == parameter.items[item]) return float(item);
    }
    if (parameter.curve.shape == CurveShape::onOff) {
        if (text == "on") return 1.0f;
        if (text == "off") return 0.0f;
    }
    const std::optional<float> value = ParseNumber<float>(text);
    const float highest = HighestValue(parameter);
    if (!value || !(*value >= 0.0f && *value <= highest)) {
        throw BadInput(std::string("parameter ") + Quoted(parameter.name) + " takes 0.." +
                       std::to_string(int(highest)) + ", not " + Quoted(text));
    }
    return *value;
}

}  // namespace

ParameterSetting ParseSetting(std::string_view text) {
    // Names may hold an equals sign one day, values never do.
    const std::size_t equals = text.rfind('=');
    if (equals == std::string_view::npos) {
        throw BadInput(Quoted(text) + " is not of the form NAME=VALUE");
    }
    const int index = ParseParameter(Trim(text.substr(0, equals)));
    return {index, ParseValue(GetParameter(index), Trim(text.substr(equals + 1)))};
}

std::vector<ParameterSetting> LoadPatch(const std::filesystem::path& path) {
    std::ifstream stream(path);
    std::vector<ParameterSetting> settings;
    std::string line;
    int number = 0;
    while (std::getline(stream, line)) {
        ++number;
        const std::string_view text = Trim(line);
        if (text.empty() || text.front() == '#') continue;
        try {
            settings.push_back(ParseSetting(text));
        } catch (const BadInput& error) {
            throw BadInput(path.string() + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    if (number == 0 || stream.bad()) throw BadInput(path.string() + ": cannot be read or is empty");
    return settings;
}

std::vector<char> LoadState(const std::filesystem::path& path) {
    // One byte more than any state is enough to see that a file is something else.
    constexpr std::size_t kEnough = 4096;
    std::ifstream stream(path, std::ios::binary);
    std::vector<char> bytes(kEnough);
    stream.read(bytes.data(), std::streamsize(bytes.size()));
    bytes.resize(std::size_t(stream.gcount()));
    if (bytes.empty()) throw BadInput(path.string() + ": cannot be read or is empty");
    return bytes;
}

}  // namespace norava
