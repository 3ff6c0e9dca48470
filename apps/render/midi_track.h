#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace norava {

// A channel message of a MIDI file: status and two data bytes, the second 0 where a message has
// only one.
struct TrackEvent {
    std::int64_t tick = 0;
    std::array<std::uint8_t, 3> bytes{};
};

struct TempoChange {
    std::int64_t tick = 0;
    int microsecondsPerQuarter = 0;
};

struct MidiTrack {
    std::vector<TrackEvent> events;  // by tick
    std::vector<TempoChange> tempos;
    std::int64_t lengthTicks = 0;
};

// Reads the events of one track chunk, its head included; system exclusive and text messages are
// passed over. Throws BadInput when the track is damaged.
MidiTrack ReadMidiTrack(std::span<const std::uint8_t> chunk);

}  // namespace norava
