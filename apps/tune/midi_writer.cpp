#include "tune/midi_writer.h"

#include <algorithm>
#include <tuple>

namespace norava {

namespace {

using Bytes = std::vector<std::uint8_t>;

// Of simultaneous events: the tempo, then what ends, then what begins.
enum class Order { tempo, noteOff, noteOn };

struct Event {
    int tick = 0;
    Order order = Order::tempo;
    Bytes message;
};

void AppendBigEndian(Bytes& bytes, std::uint32_t value, int count) {
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) {
        bytes.push_back(std::uint8_t(value >> shift & 0xFF));
    }
}

// Seven bits a byte, the most significant first, the top bit set on all but the last.
void AppendVariableLength(Bytes& bytes, std::uint32_t value) {
    for (int shift = 21; shift > 0; shift -= 7) {
        if (value >> shift != 0) bytes.push_back(std::uint8_t(0x80 | (value >> shift & 0x7F)));
    }
    bytes.push_back(std::uint8_t(value & 0x7F));
}

void AppendChunk(Bytes& bytes, const char* letters, const Bytes& content) {
    bytes.insert(bytes.end(), letters, letters + 4);
    AppendBigEndian(bytes, std::uint32_t(content.size()), 4);
    bytes.insert(bytes.end(), content.begin(), content.end());
}

// No key sounds twice at a time, for one note-off would end both.
std::vector<ScoreNote> WithoutOverlaps(std::vector<ScoreNote> notes) {
    std::ranges::stable_sort(notes, [](const ScoreNote& a, const ScoreNote& b) {
        return std::tie(a.key, a.tick) < std::tie(b.key, b.tick);
    });
    std::vector<ScoreNote> result;
    for (const ScoreNote& note : notes) {
        if (!result.empty() && result.back().key == note.key) {
            ScoreNote& before = result.back();
            if (before.tick == note.tick) {
                before.lengthTicks = std::max(before.lengthTicks, note.lengthTicks);
                before.velocity = std::max(before.velocity, note.velocity);
                continue;
            }
            before.lengthTicks = std::min(before.lengthTicks, note.tick - before.tick);
        }
        result.push_back(note);
    }
    return result;
}

std::vector<Event> EventsOf(const Score& score) {
    std::vector<Event> events;
    for (const ScoreTempo& tempo : score.tempos) {
        Event event{tempo.tick, Order::tempo, {0xFF, 0x51, 3}};
        AppendBigEndian(event.message, std::uint32_t(tempo.microsecondsPerQuarter), 3);
        events.push_back(event);
    }
    for (const ScoreNote& note : WithoutOverlaps(score.notes)) {
        const auto key = std::uint8_t(note.key);
        events.push_back({note.tick, Order::noteOn, {0x90, key, std::uint8_t(note.velocity)}});
        events.push_back({note.tick + note.lengthTicks, Order::noteOff, {0x80, key, 64}});
    }
    std::ranges::stable_sort(events, [](const Event& a, const Event& b) {
        return std::tie(a.tick, a.order) < std::tie(b.tick, b.order);
    });
    return events;
}

}  // namespace

Bytes WriteMidiFile(const Score& score) {
    Bytes track = {0, 0xFF, 3};
    AppendVariableLength(track, std::uint32_t(score.title.size()));
    track.insert(track.end(), score.title.begin(), score.title.end());
    int tick = 0;
    for (const Event& event : EventsOf(score)) {
        AppendVariableLength(track, std::uint32_t(event.tick - tick));
        track.insert(track.end(), event.message.begin(), event.message.end());
        tick = event.tick;
    }
    AppendVariableLength(track, std::uint32_t(std::max(0, score.lengthTicks - tick)));
    const Bytes endOfTrack = {0xFF, 0x2F, 0};
    track.insert(track.end(), endOfTrack.begin(), endOfTrack.end());

    Bytes header;
    for (const int field : {0, 1, kTicksPerQuarter}) {
        AppendBigEndian(header, std::uint32_t(field), 2);
    }
    Bytes file;
    AppendChunk(file, "MThd", header);
    AppendChunk(file, "MTrk", track);
    return file;
}

}  // namespace norava
