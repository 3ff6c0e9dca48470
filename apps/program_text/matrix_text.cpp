#include "program_text/matrix_text.h"

#include <cmath>

#include "parameters/parameter_table.h"
#include "program_text/text_tokens.h"
#include "program_text/value_text.h"
#include "render/bad_input.h"

namespace norava {

namespace {

enum Field : std::size_t { kSource, kAmount, kInvert, kDestination };

// The slots are alike; the first one's rows speak for all.
const Parameter& Row(Field field) {
    return GetParameter(param::kMatrix + int(field));
}

float ParseItem(Field field, std::string_view text) {
    const Parameter& row = Row(field);
    if (const std::optional<float> item = FindItem(row, text)) return *item;
    throw BadInput(std::string("no ") + (field == kSource ? "source " : "destination ") +
                   Quoted(text) + "; there are " + ItemsOf(row));
}

bool IsItem(Field field, float value) {
    return value >= 0.0f && value <= HighestValue(Row(field)) && value == std::trunc(value) &&
           !std::signbit(value);
}

}  // namespace

std::optional<std::string> FormatMatrixSlot(ConstMatrixSlot slot) {
    const float amount = slot[kAmount];
    const bool plain = IsItem(kSource, slot[kSource]) && IsItem(kDestination, slot[kDestination]) &&
                       amount >= 0.0f && amount <= 1.0f && !std::signbit(amount) &&
                       IsItem(kInvert, slot[kInvert]);
    if (!plain) return std::nullopt;
    std::string text = FormatValue(Row(kSource), slot[kSource]);
    text += " > ";
    text += FormatValue(Row(kDestination), slot[kDestination]);
    text += slot[kInvert] != 0.0f ? " -" : " ";
    text += FormatValue(Row(kAmount), amount);
    return text;
}

void ParseMatrixSlot(std::string_view text, MatrixSlot slot) {
    const std::size_t arrow = text.find('>');
    const std::string_view target =
        arrow == std::string_view::npos ? std::string_view{} : Trim(text.substr(arrow + 1));
    const std::size_t blank = target.rfind(' ');
    if (blank == std::string_view::npos) {
        throw BadInput(Quoted(text) + " is not of the form SOURCE > DESTINATION AMOUNT");
    }
    std::string_view amount = target.substr(blank + 1);
    const bool inverted = amount.starts_with('-');
    if (inverted) amount.remove_prefix(1);
    slot[kSource] = ParseItem(kSource, Trim(text.substr(0, arrow)));
    slot[kDestination] = ParseItem(kDestination, Trim(target.substr(0, blank)));
    slot[kAmount] = ParseValue(Row(kAmount), amount);
    slot[kInvert] = inverted ? 1.0f : 0.0f;
}

}  // namespace norava
