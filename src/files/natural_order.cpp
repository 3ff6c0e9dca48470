#include "files/natural_order.h"

#include <cstddef>
#include <cstdint>

namespace norava {

namespace {

// The next character, which is taken off the text.
char32_t TakeCharacter(std::string_view& text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(0);
    const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    bool good = first < 0x80 || (first >= 0xC2 && first < 0xF5 && text.size() >= length);
    char32_t character = length == 1 ? first : first & (0x7Fu >> length);
    for (std::size_t i = 1; good && i < length; ++i) {
        good = (byte(i) & 0xC0u) == 0x80u;
        character = character << 6 | (byte(i) & 0x3Fu);
    }
    text.remove_prefix(good ? length : 1);
    constexpr char32_t kBeyondUnicode = 0x110000;
    return good ? character : kBeyondUnicode + first;
}

// The small letter of a capital one.
char32_t Folded(char32_t c) {
    const auto within = [c](char32_t from, char32_t to) { return c >= from && c <= to; };
    if (within('A', 'Z')) return c + 32;
    if (c < 0x80) return c;
    if (within(0xC0, 0xDE) && c != 0xD7) return c + 32;  // Latin-1
    // Latin Extended-A: capital and small letters take turns, in two kinds of pairs.
    if (within(0x100, 0x137) || within(0x14A, 0x177)) return c | 1;
    if (within(0x139, 0x148) || within(0x179, 0x17E)) return c + (c & 1);
    if (within(0x391, 0x3A9) || within(0x410, 0x42F)) return c + 32;  // Greek, Cyrillic
    if (within(0x400, 0x40F)) return c + 80;
    return c;
}

bool StartsWithDigit(std::string_view text) {
    return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

// The digits at the start without their leading zeros, which are taken off the text.
std::string_view TakeNumber(std::string_view& text) {
    while (text.size() > 1 && text.front() == '0' && StartsWithDigit(text.substr(1)))
        text.remove_prefix(1);
    std::size_t length = 0;
    while (StartsWithDigit(text.substr(length)))
        ++length;
    const std::string_view number = text.substr(0, length);
    text.remove_prefix(length);
    return number;
}

int CompareNumbers(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    return a.compare(b);
}

}  // namespace

char32_t WithoutAccent(char32_t character) {
    constexpr char kLetters[] = "AAAAAAACEEEEIIIIDNOOOOOxOUUUUYTsaaaaaaaceeeeiiiidnooooo/ouuuuyty";
    constexpr char32_t kFirst = 0xC0;
    static_assert(sizeof kLetters == 64 + 1);
    const bool has = character >= kFirst && character < kFirst + 64;
    return has ? static_cast<unsigned char>(kLetters[character - kFirst]) : character;
}

std::u32string FoldCase(std::string_view name) {
    std::u32string folded;
    while (!name.empty())
        folded += Folded(TakeCharacter(name));
    return folded;
}

int CompareNaturally(std::string_view a, std::string_view b) {
    std::string_view restA = a;
    std::string_view restB = b;
    while (!restA.empty() && !restB.empty()) {
        if (StartsWithDigit(restA) && StartsWithDigit(restB)) {
            const std::string_view numberA = TakeNumber(restA);
            if (const int order = CompareNumbers(numberA, TakeNumber(restB))) return order;
            continue;
        }
        const char32_t letterA = Folded(TakeCharacter(restA));
        const char32_t letterB = Folded(TakeCharacter(restB));
        if (letterA != letterB) return letterA < letterB ? -1 : 1;
    }
    if (restA.empty() != restB.empty()) return restA.empty() ? -1 : 1;
    return a.compare(b);
}

}  // namespace norava
