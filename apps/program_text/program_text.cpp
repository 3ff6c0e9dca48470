#include "program_text/program_text.h"

#include <algorithm>
#include <bit>
#include <bitset>
#include <cstdint>

#include "parameters/parameter_table.h"
#include "program_text/matrix_text.h"
#include "program_text/text_tokens.h"
#include "program_text/value_text.h"
#include "render/bad_input.h"
#include "synth/state_block.h"

namespace norava {

namespace {

constexpr std::string_view kSlotWord = "Mod ";

// Control bytes that a foreign program's name may hold are written as "\x0a", so that a name
// never breaks its line; the backslash itself as "\x5c".
std::string EscapeName(std::string_view name) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto byte = static_cast<unsigned char>(name[i]);
        const bool edgeBlank = byte == ' ' && (i == 0 || i + 1 == name.size());
        if (byte >= 0x20 && byte != 0x7f && byte != '\\' && !edgeBlank) {
            text += name[i];
        } else {
            text += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return text;
}

std::string UnescapeName(std::string_view text) {
    constexpr std::size_t kEscapeSize = 4;
    std::string name;
    while (!text.empty()) {
        // It would end the name in a block.
        if (text.front() == '\0') throw BadInput("the name holds a zero byte");
        if (text.front() != '\\') {
            name += text.front();
            text.remove_prefix(1);
            continue;
        }
        unsigned byte = 0;
        const char* const last = text.data() + std::min(kEscapeSize, text.size());
        if (text.size() < kEscapeSize || text[1] != 'x' ||
            std::from_chars(text.data() + 2, last, byte, 16).ptr != last || byte == 0) {
            throw BadInput("a backslash in a name begins \\x and two hexadecimal digits");
        }
        name += static_cast<char>(byte);
        text.remove_prefix(kEscapeSize);
    }
    if (name.empty()) throw BadInput("the name is empty");
    if (name.size() >= std::size_t(kStateNameSize)) {
        throw BadInput("the name is longer than " + std::to_string(kStateNameSize - 1) + " bytes");
    }
    return name;
}

std::vector<std::string> ParseTags(std::string_view text) {
    std::vector<std::string> tags;
    while (!text.empty()) {
        const std::size_t comma = std::min(text.find(','), text.size());
        const std::string_view tag = Trim(text.substr(0, comma));
        if (tag.empty()) throw BadInput("tags are words with commas between them");
        tags.emplace_back(tag);
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return tags;
}

// Takes the lines of one text, one after the other.
class Reader {
  public:
    void TakeLine(std::string_view line) {
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) {
            throw BadInput(Quoted(line) + " is not of the form NAME = VALUE");
        }
        const std::string_view name = Trim(line.substr(0, equals));
        const std::string_view value = Trim(line.substr(equals + 1));
        if (TakeHeading(name, value) || TakeSlot(name, value)) return;
        const int index = FindParameter(name);
        if (index < 0) throw BadInput("there is no parameter " + Quoted(name));
        Claim(index, name);
        program_.values[std::size_t(index)] = ParseValue(GetParameter(index), value);
    }

    Program TakeProgram() {
        if (program_.name.empty()) throw BadInput("the line 'Name = ...' is missing");
        return std::move(program_);
    }

  private:
    bool TakeHeading(std::string_view name, std::string_view value) {
        enum { kName = kNumParameters, kAuthor, kTags, kDescription };
        if (name == "Name") {
            Claim(kName, name);
            program_.name = UnescapeName(value);
        } else if (name == "Author") {
            Claim(kAuthor, name);
            program_.author = value;
        } else if (name == "Tags") {
            Claim(kTags, name);
            program_.tags = ParseTags(value);
        } else if (name == "Description") {
            Claim(kDescription, name);
            program_.description = value;
        } else {
            return false;
        }
        return true;
    }

    bool TakeSlot(std::string_view name, std::string_view value) {
        if (!name.starts_with(kSlotWord)) return false;
        const int number = ParseNumber<int>(name.substr(kSlotWord.size())).value_or(0);
        if (number < 1 || number > kMatrixSlots) {
            throw BadInput("slots of the matrix are Mod 1 to Mod " + std::to_string(kMatrixSlots));
        }
        const int first = param::kMatrix + (number - 1) * kMatrixSlotSize;
        for (int i = 0; i < kMatrixSlotSize; ++i)
            Claim(first + i, name);
        ParseMatrixSlot(value, MatrixSlot(&program_.values[std::size_t(first)], kMatrixSlotSize));
        return true;
    }

    void Claim(int item, std::string_view name) {
        const auto bit = std::size_t(item);
        if (seen_[bit]) throw BadInput(Quoted(name) + " is there twice");
        seen_.set(bit);
    }

    static constexpr int kHeadings = 4;
    Program program_;
    std::bitset<kNumParameters + kHeadings> seen_;
};

bool IsDefault(const Program& program, int index) {
    // Bits, not numbers: -0 is not what the table says.
    return std::bit_cast<std::uint32_t>(program.values[std::size_t(index)]) ==
           std::bit_cast<std::uint32_t>(GetParameter(index).defaultValue);
}

std::string ParameterLine(const Program& program, int index) {
    if (IsDefault(program, index)) return {};
    const Parameter& parameter = GetParameter(index);
    return std::string(parameter.name) + " = " +
           FormatValue(parameter, program.values[std::size_t(index)]) + "\n";
}

std::string SlotLines(const Program& program, int slot) {
    const int first = param::kMatrix + slot * kMatrixSlotSize;
    std::string single;
    for (int i = 0; i < kMatrixSlotSize; ++i)
        single += ParameterLine(program, first + i);
    if (single.empty()) return {};
    const auto text =
        FormatMatrixSlot(ConstMatrixSlot(&program.values[std::size_t(first)], kMatrixSlotSize));
    if (!text) return single;
    return std::string(kSlotWord) + std::to_string(slot + 1) + " = " + *text + "\n";
}

}  // namespace

Program::Program() {
    for (const Parameter& parameter : kParameters)
        values[std::size_t(parameter.index)] = parameter.defaultValue;
}

bool Program::HasTag(std::string_view tag) const {
    return std::ranges::find(tags, tag) != tags.end();
}

Program ParseProgram(std::string_view text, std::string_view source) {
    Reader reader;
    int number = 0;
    text = SkipByteOrderMark(text);
    try {
        while (!text.empty()) {
            ++number;
            const std::size_t end = std::min(text.find('\n'), text.size());
            const std::string_view line = Trim(text.substr(0, end));
            if (!line.empty() && line.front() != '#') reader.TakeLine(line);
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return reader.TakeProgram();
    } catch (const BadInput& error) {
        throw BadInput(std::string(source) + ":" + std::to_string(number) + ": " + error.what());
    }
}

std::string WriteProgram(const Program& program) {
    std::string text = "Name = " + EscapeName(program.name) + "\n";
    if (!program.author.empty()) text += "Author = " + program.author + "\n";
    if (!program.tags.empty()) {
        text += "Tags = ";
        for (std::size_t i = 0; i < program.tags.size(); ++i)
            text += (i == 0 ? "" : ", ") + program.tags[i];
        text += "\n";
    }
    if (!program.description.empty()) text += "Description = " + program.description + "\n";
    text += "\n";
    for (int index = 0; index < param::kMatrix; ++index)
        text += ParameterLine(program, index);
    for (int index = param::kStringRatio; index < kNumParameters; ++index)
        text += ParameterLine(program, index);
    for (int slot = 0; slot < kMatrixSlots; ++slot)
        text += SlotLines(program, slot);
    return text;
}

}  // namespace norava
