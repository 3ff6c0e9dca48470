#include "gui/utf8.h"

namespace norava::utf8 {

namespace {

constexpr uint32_t kReplacement = 0xFFFD;

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

bool IsCharacter(uint32_t value) {
    return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

struct Decoded {
    uint32_t character;
    size_t bytes;
};

Decoded DecodeAt(std::string_view text, size_t at) {
    const auto first = static_cast<unsigned char>(text[at]);
    if (first < 0x80) return {first, 1};
    const size_t bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || bytes > text.size() - at) return {kReplacement, 1};
    uint32_t character = first & (0x7Fu >> bytes);
    for (size_t i = 1; i < bytes; ++i) {
        if (!IsContinuation(text[at + i])) return {kReplacement, 1};
        character = character << 6 | (static_cast<unsigned char>(text[at + i]) & 0x3Fu);
    }
    const bool isOverlong =
        (bytes == 3 && character < 0x800) || (bytes == 4 && character < 0x10000);
    if (isOverlong || !IsCharacter(character)) return {kReplacement, 1};
    return {character, bytes};
}

}  // namespace

size_t LengthAt(std::string_view text, size_t at) {
    return at < text.size() ? DecodeAt(text, at).bytes : 0;
}

size_t Before(std::string_view text, size_t at) {
    for (size_t back = 1; back <= 4 && back <= at; ++back)
        if (!IsContinuation(text[at - back]))
            return LengthAt(text.substr(0, at), at - back) == back ? at - back : at - 1;
    return at > 0 ? at - 1 : 0;
}

uint32_t CharacterAt(std::string_view text, size_t at) {
    return at < text.size() ? DecodeAt(text, at).character : 0;
}

std::string Encode(uint32_t character) {
    const auto tail = [=](unsigned shift) {
        return static_cast<char>(0x80u | ((character >> shift) & 0x3Fu));
    };
    if (!IsCharacter(character)) return {};
    if (character < 0x80) return {static_cast<char>(character)};
    if (character < 0x800) return {static_cast<char>(0xC0u | character >> 6), tail(0)};
    if (character < 0x10000) return {static_cast<char>(0xE0u | character >> 12), tail(6), tail(0)};
    return {static_cast<char>(0xF0u | character >> 18), tail(12), tail(6), tail(0)};
}

}  // namespace norava::utf8
