#include "framework/text_copy.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace norava {

namespace {

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0u) == 0x80u;
}

// The longest start of `text` of at most `limit` bytes that does not end inside a character. Bytes
// that are no UTF-8 (a run of four or more continuation bytes) are cut where they stand.
std::size_t BoundedLength(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return text.size();
    std::size_t length = limit;
    while (length > 0 && limit - length < 3 && IsContinuation(text[length]))
        --length;
    return IsContinuation(text[length]) ? limit : length;
}

}  // namespace

std::size_t CopyText(std::span<char> to, std::string_view text) noexcept {
    if (to.empty()) return 0;
    text = text.substr(0, std::min(text.find('\0'), text.size()));
    const std::size_t length = BoundedLength(text, to.size() - 1);
    // The source may be the target itself, shifted: a name that is cut in place.
    if (length > 0) std::memmove(to.data(), text.data(), length);
    to[length] = '\0';
    return length;
}

std::size_t AppendText(std::span<char> to, std::string_view text) noexcept {
    const auto end = std::find(to.begin(), to.end(), '\0');
    if (end == to.end()) return to.size();
    const auto used = static_cast<std::size_t>(end - to.begin());
    return used + CopyText(to.subspan(used), text);
}

std::size_t CopyNumber(std::span<char> to, double value, int decimals) noexcept {
    // The largest double has 309 digits before the point.
    std::array<char, 400> digits;
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                            std::chars_format::fixed, std::clamp(decimals, 0, 60));
    const auto length = static_cast<std::size_t>(end - digits.data());
    return CopyText(to, error == std::errc() ? std::string_view(digits.data(), length) : "");
}

std::size_t CopyNumber(std::span<char> to, int value) noexcept {
    std::array<char, 16> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return CopyText(to, {digits.data(), static_cast<std::size_t>(end - digits.data())});
}

}  // namespace norava
