#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace norava {

// "C#5" is 73, "C4" is middle C, 60; nothing for a text that names no MIDI note.
std::optional<int> ParseKey(std::string_view text);

// "4" is a quarter, "8." a dotted eighth, "2.+8" the two tied; in ticks.
std::optional<int> ParseLength(std::string_view text);

// "pp" to "ff" as a MIDI velocity.
std::optional<int> ParseDynamic(std::string_view text);

// What is struck at once: a note, a chord or a rest.
struct Stroke {
    std::vector<int> keys;  // low to high as written; none is a rest
    bool rolled = false;
    bool accented = false;
    std::optional<int> lengthTicks;  // else that of the stroke before
};

// ">~[A2 E3 C4]/4.", "C#5/8", "E5", "-/4"; nothing for a text that is no stroke.
std::optional<Stroke> ParseStroke(std::string_view text);

// Words of a line, chords in brackets kept whole, comments left out.
std::vector<std::string> SplitWords(std::string_view line);

}  // namespace norava
