#include "render/sound.h"

#include <fstream>
#include <iterator>
#include <string>

#include "parameters/parameter_table.h"
#include "program_text/program_file.h"
#include "program_text/text_tokens.h"
#include "program_text/value_text.h"
#include "render/bad_input.h"

namespace norava {

namespace {

int ParseParameter(std::string_view text) {
    const int byName = FindParameter(text);
    const int index = byName >= 0 ? byName : ParseNumber<int>(text).value_or(-1);
    if (!IsParameter(index)) {
        throw BadInput("there is no parameter " + Quoted(text) +
                       " (--list-parameters shows them all)");
    }
    return index;
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
    RequireReadable(path);
    std::ifstream stream(path);
    std::vector<ParameterSetting> settings;
    std::string line;
    int number = 0;
    while (std::getline(stream, line)) {
        ++number;
        const std::string_view text = Trim(number == 1 ? SkipByteOrderMark(line) : line);
        if (text.empty() || text.front() == '#') continue;
        try {
            settings.push_back(ParseSetting(text));
        } catch (const BadInput& error) {
            throw BadInput(path.string() + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    if (stream.bad()) throw BadInput(path.string() + ": cannot be read to its end");
    if (number == 0) throw BadInput(path.string() + ": is empty");
    return settings;
}

std::vector<char> LoadState(const std::filesystem::path& path) {
    // One byte more than any state is enough to see that a file is something else.
    constexpr std::size_t kEnough = 4096;
    RequireReadable(path);
    std::ifstream stream(path, std::ios::binary);
    std::vector<char> bytes(kEnough);
    stream.read(bytes.data(), std::streamsize(bytes.size()));
    bytes.resize(std::size_t(stream.gcount()));
    if (bytes.empty()) throw BadInput(path.string() + ": is empty");
    return bytes;
}

}  // namespace norava
