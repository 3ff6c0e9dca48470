#include "tune/score_tokens.h"

#include <array>
#include <charconv>
#include <utility>

#include "tune/score.h"

namespace norava {

namespace {

constexpr int kHighestKey = 127;
constexpr int kTicksPerWhole = 4 * kTicksPerQuarter;

std::optional<int> ParseInt(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

bool TakeFront(std::string_view& text, char wanted) {
    if (text.empty() || text.front() != wanted) return false;
    text.remove_prefix(1);
    return true;
}

// One length without ties.
std::optional<int> ParseSingleLength(std::string_view text) {
    int dots = 0;
    while (!text.empty() && text.back() == '.') {
        text.remove_suffix(1);
        ++dots;
    }
    const std::optional<int> part = ParseInt(text);
    constexpr int kShortestPart = 32;
    if (!part || *part < 1 || *part > kShortestPart || kTicksPerWhole % *part != 0 || dots > 2) {
        return std::nullopt;
    }
    // Each dot adds half of what the one before added.
    const int plain = kTicksPerWhole / *part;
    return plain + (dots > 0 ? plain / 2 : 0) + (dots > 1 ? plain / 4 : 0);
}

bool ParseKeys(std::string_view text, std::vector<int>& keys) {
    if (text == "-") return true;
    const bool chord = TakeFront(text, '[');
    if (chord) {
        if (text.empty() || text.back() != ']') return false;
        text.remove_suffix(1);
    }
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::optional<int> key = ParseKey(text.substr(0, end));
        if (!key) return false;
        keys.push_back(*key);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return !keys.empty() && (chord || keys.size() == 1);
}

}  // namespace

std::optional<int> ParseKey(std::string_view text) {
    if (text.size() < 2 || text.front() < 'A' || text.front() > 'G') return std::nullopt;
    constexpr std::array kSemitones = {9, 11, 0, 2, 4, 5, 7};  // A to G above C
    int semitone = kSemitones[std::size_t(text.front() - 'A')];
    text.remove_prefix(1);
    if (TakeFront(text, '#'))
        ++semitone;
    else if (TakeFront(text, 'b'))
        --semitone;
    const std::optional<int> octave = ParseInt(text);
    constexpr int kHighestOctave = 9;
    if (!octave || *octave < 0 || *octave > kHighestOctave) return std::nullopt;
    const int key = 12 * (*octave + 1) + semitone;
    return key <= kHighestKey ? std::optional(key) : std::nullopt;
}

std::optional<int> ParseLength(std::string_view text) {
    int total = 0;
    while (true) {
        const std::size_t end = text.find('+');
        const std::optional<int> length = ParseSingleLength(text.substr(0, end));
        if (!length) return std::nullopt;
        total += *length;
        if (end == std::string_view::npos) return total;
        text.remove_prefix(end + 1);
    }
}

std::optional<int> ParseDynamic(std::string_view text) {
    constexpr std::array<std::pair<std::string_view, int>, 6> kDynamics = {
        {{"pp", 36}, {"p", 50}, {"mp", 62}, {"mf", 74}, {"f", 88}, {"ff", 102}}};
    for (const auto& [name, velocity] : kDynamics) {
        if (text == name) return velocity;
    }
    return std::nullopt;
}

std::optional<Stroke> ParseStroke(std::string_view text) {
    Stroke stroke;
    stroke.accented = TakeFront(text, '>');
    stroke.rolled = TakeFront(text, '~');
    const std::size_t slash = text.find('/');
    if (slash != std::string_view::npos) {
        stroke.lengthTicks = ParseLength(text.substr(slash + 1));
        if (!stroke.lengthTicks) return std::nullopt;
    }
    if (!ParseKeys(text.substr(0, slash), stroke.keys)) return std::nullopt;
    return stroke;
}

std::vector<std::string> SplitWords(std::string_view line) {
    std::vector<std::string> words;
    std::string word;
    bool inChord = false;
    for (const char c : line) {
        if (c == ';') break;
        if (c == '[') inChord = true;
        if (c == ']') inChord = false;
        const bool blank = c == ' ' || c == '\t' || c == '\r';
        if (!blank || inChord) {
            word += c;
        } else if (!word.empty()) {
            words.push_back(std::exchange(word, {}));
        }
    }
    if (!word.empty()) words.push_back(word);
    return words;
}

}  // namespace norava
