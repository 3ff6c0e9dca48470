#include "tune/score.h"

#include <algorithm>
#include <map>

#include "tune/score_tokens.h"

namespace norava {

namespace {

// Lute players roll a chord from the bass up, about 20 ms from string to string.
constexpr int kRollTicks = 15;
constexpr int kAccent = 14;
// The beats of a bar are felt, not heard one by one.
constexpr int kDownbeat = 5;
constexpr int kOffBeat = -5;
constexpr double kMicrosecondsPerMinute = 60e6;

struct Voice {
    int tick = 0;
    int barStart = 0;
    int lengthTicks = kTicksPerQuarter;
    int velocity = 74;
    bool inFirstBar = true;
};

class ScoreParser {
  public:
    Score Parse(std::string_view text) {
        while (!text.empty()) {
            ++line_;
            const std::size_t end = std::min(text.find('\n'), text.size());
            ParseLine(SplitWords(text.substr(0, end)));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        Finish();
        return std::move(score_);
    }

  private:
    [[noreturn]] void Fail(const std::string& what) const { throw ScoreError(line_, what); }

    void ParseLine(const std::vector<std::string>& words) {
        if (words.empty()) return;
        const std::string& first = words.front();
        if (first.back() == ':') {
            Voice& voice = voices_[first];
            for (auto word = words.begin() + 1; word != words.end(); ++word)
                Play(voice, *word);
        } else if (first == "title") {
            for (auto word = words.begin() + 1; word != words.end(); ++word) {
                score_.title += (score_.title.empty() ? "" : " ") + *word;
            }
        } else if (first == "meter" && words.size() == 3) {
            barTicks_ = Length(words[1]);
            beatTicks_ = Length(words[2]);
        } else {
            Fail("'" + first + "' begins no line that is known");
        }
    }

    int Length(const std::string& text) const {
        const std::optional<int> ticks = ParseLength(text);
        if (!ticks) Fail("'" + text + "' is no length");
        return *ticks;
    }

    void Play(Voice& voice, const std::string& word) {
        if (word == "|") return EndBar(voice);
        if (word.front() == '@') return SetTempo(voice.tick, word.substr(1));
        if (const auto dynamic = ParseDynamic(word)) {
            voice.velocity = *dynamic;
            return;
        }
        const std::optional<Stroke> stroke = ParseStroke(word);
        if (!stroke) Fail("'" + word + "' is neither a note nor a sign");
        Strike(voice, *stroke);
    }

    void Strike(Voice& voice, const Stroke& stroke) {
        voice.lengthTicks = stroke.lengthTicks.value_or(voice.lengthTicks);
        const int inBar = voice.tick - voice.barStart;
        int velocity = voice.velocity + (stroke.accented ? kAccent : 0);
        if (inBar == 0 && !voice.inFirstBar) velocity += kDownbeat;
        if (inBar % beatTicks_ != 0) velocity += kOffBeat;
        int delay = 0;
        for (const int key : stroke.keys) {
            score_.notes.push_back({voice.tick + delay, std::max(1, voice.lengthTicks - delay), key,
                                    std::clamp(velocity, 1, 127)});
            if (stroke.rolled) delay += kRollTicks;
        }
        voice.tick += voice.lengthTicks;
    }

    // Bars are full, or several are taken up by one long note; only the first may be an upbeat.
    void EndBar(Voice& voice) {
        const int length = voice.tick - voice.barStart;
        if (length % barTicks_ != 0 && !(voice.inFirstBar && length < barTicks_)) {
            Fail("a bar lasts " + std::to_string(length) + " ticks, not " +
                 std::to_string(barTicks_));
        }
        voice.barStart = voice.tick;
        voice.inFirstBar = false;
    }

    void SetTempo(int tick, const std::string& text) {
        int beatsPerMinute = 0;
        for (const char c : text) {
            if (c < '0' || c > '9' || beatsPerMinute > 999) Fail("'@" + text + "' is no tempo");
            beatsPerMinute = 10 * beatsPerMinute + (c - '0');
        }
        constexpr int kSlowest = 10;
        if (beatsPerMinute < kSlowest) Fail("'@" + text + "' is no tempo");
        const double quartersPerMinute = double(beatsPerMinute) * beatTicks_ / kTicksPerQuarter;
        score_.tempos.push_back({tick, int(kMicrosecondsPerMinute / quartersPerMinute)});
    }

    void Finish() {
        if (voices_.empty()) Fail("there is no voice");
        score_.lengthTicks = voices_.begin()->second.tick;
        for (const auto& [name, voice] : voices_) {
            if (voice.tick != score_.lengthTicks) {
                Fail("the voices differ in length: '" + name + "' has " +
                     std::to_string(voice.tick) + " ticks, another " +
                     std::to_string(score_.lengthTicks));
            }
        }
        std::ranges::stable_sort(score_.tempos, {}, &ScoreTempo::tick);
    }

    Score score_;
    std::map<std::string, Voice> voices_;
    int line_ = 0;
    int barTicks_ = 4 * kTicksPerQuarter;
    int beatTicks_ = kTicksPerQuarter;
};

}  // namespace

Score ParseScore(std::string_view text) {
    return ScoreParser().Parse(text);
}

}  // namespace norava
