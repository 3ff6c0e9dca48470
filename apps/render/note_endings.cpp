#include "render/note_endings.h"

#include <bitset>

namespace norava {

namespace {

constexpr std::uint8_t kNoteOff = 0x80;
constexpr std::uint8_t kNoteOn = 0x90;
constexpr std::uint8_t kController = 0xB0;
constexpr std::uint8_t kSustainPedal = 64;
constexpr std::uint8_t kPedalDown = 64;
constexpr int kChannels = 16;
constexpr int kKeys = 128;

enum class Kind { noteOn, noteOff, pedalDown, pedalUp, other };

Kind KindOf(const SongEvent& event) {
    const auto [status, data1, data2] = event.bytes;
    switch (status & 0xF0) {
        case kNoteOff:
            return Kind::noteOff;
        case kNoteOn:
            return data2 == 0 ? Kind::noteOff : Kind::noteOn;
        case kController:
            if (data1 != kSustainPedal) return Kind::other;
            return data2 >= kPedalDown ? Kind::pedalDown : Kind::pedalUp;
        default:
            return Kind::other;
    }
}

struct Channel {
    std::bitset<kKeys> down;      // struck and not let go
    std::bitset<kKeys> withheld;  // let go while the pedal was down
    bool pedal = false;
};

using Channels = std::array<Channel, kChannels>;

void AddNoteOffs(std::vector<SongEvent>& events, double seconds, int channel,
                 const std::bitset<kKeys>& keys) {
    for (int key = 0; key < kKeys; ++key) {
        if (!keys[std::size_t(key)]) continue;
        events.push_back(
            {seconds, {std::uint8_t(kNoteOff | channel), std::uint8_t(key), std::uint8_t{0}}});
    }
}

}  // namespace

void HoldNotesByPedal(MidiSong& song) {
    Channels channels;
    std::vector<SongEvent> events;
    events.reserve(song.events.size());
    const auto raisePedal = [&](int number, double seconds) {
        Channel& channel = channels[std::size_t(number)];
        AddNoteOffs(events, seconds, number, channel.withheld);
        channel.withheld.reset();
        channel.pedal = false;
    };

    for (const SongEvent& event : song.events) {
        const int number = event.bytes[0] & 0x0F;
        const std::size_t key = event.bytes[1];
        Channel& channel = channels[std::size_t(number)];
        const Kind kind = KindOf(event);
        if (kind == Kind::pedalUp) raisePedal(number, event.seconds);
        if (kind == Kind::pedalDown) channel.pedal = true;
        if (kind == Kind::noteOn) channel.withheld[key] = false;
        if (kind == Kind::noteOff && channel.pedal) {
            channel.withheld[key] = true;
        } else {
            events.push_back(event);
        }
    }
    for (int number = 0; number < kChannels; ++number)
        raisePedal(number, song.lengthSeconds);
    song.events = std::move(events);
}

void ReleaseHangingNotes(MidiSong& song) {
    Channels channels;
    for (const SongEvent& event : song.events) {
        Channel& channel = channels[event.bytes[0] & 0x0F];
        const Kind kind = KindOf(event);
        if (kind == Kind::noteOn || kind == Kind::noteOff) {
            channel.down[event.bytes[1]] = kind == Kind::noteOn;
        }
    }
    for (int number = 0; number < kChannels; ++number) {
        AddNoteOffs(song.events, song.lengthSeconds, number, channels[std::size_t(number)].down);
    }
}

}  // namespace norava
