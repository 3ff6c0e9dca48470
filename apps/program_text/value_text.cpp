#include "program_text/value_text.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>

#include "program_text/text_tokens.h"
#include "render/bad_input.h"

namespace norava {

namespace {

constexpr std::string_view kRawMark = "raw 0x";
constexpr int kRawBase = 16;

std::optional<float> ParseRaw(std::string_view text) {
    if (!text.starts_with(kRawMark)) return std::nullopt;
    text.remove_prefix(kRawMark.size());
    std::uint32_t bits = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), bits, kRawBase);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return std::bit_cast<float>(bits);
}

std::string FormatRaw(float value) {
    std::array<char, 8> digits{};
    const auto bits = std::bit_cast<std::uint32_t>(value);
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), bits, kRawBase);
    return std::string(kRawMark) + std::string(digits.data(), end.ptr);
}

// The named values of menus and switches.
const char* NameOf(const Parameter& parameter, float value) {
    for (std::size_t item = 0; item < parameter.items.size(); ++item) {
        if (value == float(item) && !(item == 0 && std::signbit(value))) {
            return parameter.items[item];
        }
    }
    if (parameter.curve.shape != CurveShape::onOff || std::signbit(value)) return nullptr;
    if (value == 1.0f) return "on";
    return value == 0.0f ? "off" : nullptr;
}

}  // namespace

float HighestValue(const Parameter& parameter) {
    return parameter.items.empty() ? 1.0f : float(parameter.items.size() - 1);
}

std::string FormatValue(const Parameter& parameter, float value) {
    const bool inRange = value >= 0.0f && value <= HighestValue(parameter);
    if (!inRange) return FormatRaw(value);
    if (const char* name = NameOf(parameter, value)) return name;
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end.ptr};
}

std::optional<float> FindItem(const Parameter& parameter, std::string_view text) {
    for (std::size_t item = 0; item < parameter.items.size(); ++item) {
        if (Folded(text) == Folded(parameter.items[item])) return float(item);
    }
    return std::nullopt;
}

std::string ItemsOf(const Parameter& parameter) {
    std::string known;
    for (const char* item : parameter.items)
        known += (known.empty() ? "" : ", ") + Folded(item);
    return known;
}

float ParseValue(const Parameter& parameter, std::string_view text) {
    if (const std::optional<float> item = FindItem(parameter, text)) return *item;
    const bool isSwitch = parameter.curve.shape == CurveShape::onOff;
    if (isSwitch && Folded(text) == "on") return 1.0f;
    if (isSwitch && Folded(text) == "off") return 0.0f;
    if (const std::optional<float> raw = ParseRaw(text)) return *raw;
    const std::optional<float> value = ParseNumber<float>(text);
    const float highest = HighestValue(parameter);
    if (!value || !(*value >= 0.0f && *value <= highest)) {
        std::string names = isSwitch ? "on, off" : ItemsOf(parameter);
        if (!names.empty()) names = " (" + names + ")";
        throw BadInput("parameter " + Quoted(parameter.name) + " takes 0.." +
                       std::to_string(int(highest)) + names + ", not " + Quoted(text));
    }
    return *value;
}

}  // namespace norava
