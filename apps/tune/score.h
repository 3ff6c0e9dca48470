#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// A tune as readable text; assets/demo/README.md describes the notation.

namespace norava {

inline constexpr int kTicksPerQuarter = 480;

struct ScoreNote {
    int tick = 0;
    int lengthTicks = 0;
    int key = 0;       // MIDI note
    int velocity = 0;  // 1..127
};

struct ScoreTempo {
    int tick = 0;
    int microsecondsPerQuarter = 0;
};

struct Score {
    std::string title;
    std::vector<ScoreNote> notes;  // voice after voice
    std::vector<ScoreTempo> tempos;
    int lengthTicks = 0;
};

// The text is no tune; what() begins with the line's number.
class ScoreError : public std::runtime_error {
  public:
    ScoreError(int line, const std::string& what)
        : std::runtime_error("line " + std::to_string(line) + ": " + what) {}
};

Score ParseScore(std::string_view text);  // throws ScoreError

}  // namespace norava
