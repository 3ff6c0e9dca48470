#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

// What readers of text lines share.

namespace norava {

inline std::string_view Trim(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Two names mean the same when these are equal: case does not matter, nor do runs of blanks, which
// texts of menus hold and nobody types.
inline std::string Folded(std::string_view text) {
    std::string result;
    for (const char c : text) {
        const bool isCapital = c >= 'A' && c <= 'Z';
        if (c != ' ' || result.empty() || result.back() != ' ')
            result += isCapital ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
}

// Some editors begin a text with these three bytes.
inline std::string_view SkipByteOrderMark(std::string_view text) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
    return text;
}

inline std::string Quoted(std::string_view text) {
    std::string quoted(1, '\'');
    quoted += text;
    quoted += '\'';
    return quoted;
}

// All of the text must be the number; the locale does not matter.
template <typename Number>
std::optional<Number> ParseNumber(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

}  // namespace norava
