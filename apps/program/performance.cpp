#include "program/performance.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "parameters/parameter_table.h"
#include "program_text/program_file.h"
#include "render/instrument.h"

namespace norava {

namespace {

constexpr int kBlockFrames = 64;
constexpr double kBeat = 0.5;          // seconds, at 120 beats a minute
constexpr double kLongestTail = 30.0;  // seconds
// Longer than the pause between two echoes of the longest delay.
constexpr double kSilentSeconds = 2.1;

struct Message {
    std::int64_t frame;
    std::array<std::uint8_t, 3> bytes;
};

std::vector<Message> ToMessages(const Performance& performance) {
    constexpr std::uint8_t kNoteOff = 0x80, kNoteOn = 0x90, kController = 0xB0, kPressure = 0xD0;
    constexpr std::uint8_t kWheel = 1;
    std::vector<Message> messages;
    messages.push_back({0, {kController, kWheel, std::uint8_t(performance.wheel)}});
    messages.push_back({0, {kPressure, std::uint8_t(performance.pressure), 0}});
    const auto frame = [](double seconds) { return std::llround(seconds * kCheckRateHz); };
    for (const PlayedNote& note : performance.notes) {
        const auto key = std::uint8_t(note.note);
        messages.push_back({frame(note.seconds), {kNoteOn, key, std::uint8_t(note.velocity)}});
        messages.push_back({frame(note.seconds + note.length), {kNoteOff, key, 0}});
    }
    std::ranges::stable_sort(messages, {}, &Message::frame);
    return messages;
}

void SwitchEffectsOff(std::vector<ParameterSetting>& settings) {
    for (const int index : {param::kDelayOn, param::kChorusOn, param::kReverbOn})
        settings.push_back({index, 0.0f});
    for (int band = 0; band < kResonatorBands; ++band)
        settings.push_back({param::kResonatorOn + band, 0.0f});
}

Sound ToSound(const Program& program, bool dry) {
    const StateBlock block = ToBlock(program);
    Sound sound;
    sound.state.assign(block.begin(), block.end());
    if (dry) SwitchEffectsOff(sound.settings);
    return sound;
}

bool IsSilent(std::span<const float> samples) {
    return std::ranges::all_of(samples, [](float x) { return std::fabs(x) < kSilentLevel; });
}

constexpr std::array<int, 4> kFullChord{48, 55, 60, 64};

void AddChord(Performance& performance, double beat, double beats, std::array<int, 4> notes,
              int velocity) {
    for (const int note : notes)
        performance.notes.push_back({beat * kBeat, beats * kBeat, note, velocity});
}

}  // namespace

Performance ReferencePhrase() {
    Performance phrase;
    const std::array<int, 8> arpeggio{36, 48, 52, 55, 60, 64, 67, 72};
    for (std::size_t i = 0; i < arpeggio.size(); ++i) {
        const int velocity = i % 2 == 0 ? 116 : 96;
        phrase.notes.push_back({double(i) * kBeat / 2, kBeat / 2, arpeggio[i], velocity});
    }
    for (const double beat : {4.0, 6.0, 7.0})
        AddChord(phrase, beat, 0.95, {41, 48, 57, 65}, 112);
    AddChord(phrase, 8.0, 3.8, {43, 50, 59, 67}, 116);
    AddChord(phrase, 12.0, 3.8, {36, 43, 52, 60}, 108);
    const std::array<int, 8> melody{74, 71, 67, 71, 72, 67, 64, 67};
    for (std::size_t i = 0; i < melody.size(); ++i)
        phrase.notes.push_back({(8.0 + double(i)) * kBeat, 0.9 * kBeat, melody[i], 112});
    phrase.seconds = 16.5 * kBeat;
    return phrase;
}

Performance FullChord() {
    Performance chord;
    AddChord(chord, 0.0, 6.0, kFullChord, 127);
    chord.seconds = 6.0 * kBeat + kLongestTail;
    chord.untilSilent = true;
    return chord;
}

Performance LongChord() {
    Performance chord;
    AddChord(chord, 0.0, 16.0, kFullChord, 127);
    chord.seconds = 18.0 * kBeat;
    return chord;
}

Performance SingleNote(int note, int velocity, double length, double seconds) {
    Performance performance;
    performance.notes.push_back({0.0, length, note, velocity});
    performance.seconds = seconds;
    return performance;
}

Recording Play(const Program& program, const Performance& performance) {
    Instrument instrument(kCheckRateHz, ToSound(program, performance.dry));
    const std::vector<Message> messages = ToMessages(performance);
    const auto frames = std::llround(performance.seconds * kCheckRateHz);
    Recording recording;
    std::array<float, kBlockFrames> left{}, right{};
    BlockTime time;
    time.tempo = 60.0 / kBeat;
    std::size_t next = 0;
    std::int64_t silentFrames = 0;
    for (std::int64_t at = 0; at < frames; at += kBlockFrames) {
        for (; next < messages.size() && messages[next].frame < at + kBlockFrames; ++next)
            instrument.Send(int(messages[next].frame - at), messages[next].bytes);
        time.beatPos = double(at) / kCheckRateHz / kBeat;
        instrument.Render(left, right, time);
        recording.left.insert(recording.left.end(), left.begin(), left.end());
        recording.right.insert(recording.right.end(), right.begin(), right.end());
        silentFrames = IsSilent(left) && IsSilent(right) ? silentFrames + kBlockFrames : 0;
        recording.died = double(silentFrames) >= kSilentSeconds * kCheckRateHz;
        if (performance.untilSilent && recording.died && next == messages.size()) break;
    }
    return recording;
}

}  // namespace norava
