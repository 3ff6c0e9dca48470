#include "render/midi_song.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>

#include "render/bad_input.h"
#include "render/midi_chunks.h"
#include "render/midi_track.h"

namespace norava {

namespace {

constexpr double kMicroseconds = 1e-6;
constexpr double kMicrosecondsPerMinute = 60e6;
constexpr int kDefaultTempo = 500000;  // microseconds per quarter: 120 beats a minute

// Turns ticks into time. Ticks must be asked for in rising order.
class TempoMap {
  public:
    TempoMap(TickLength tickLength, std::vector<TempoChange> changes)
        : tickLength_(tickLength), changes_(std::move(changes)) {
        std::stable_sort(changes_.begin(), changes_.end(),
                         [](const auto& a, const auto& b) { return a.tick < b.tick; });
        tempos_.push_back({0.0, 0.0, kMicrosecondsPerMinute / kDefaultTempo});
    }

    double SecondsAt(std::int64_t tick) {
        while (next_ < changes_.size() && changes_[next_].tick <= tick)
            Enter(changes_[next_++]);
        return seconds_ + double(tick - tick_) * SecondsPerTick();
    }

    std::vector<SongTempo> TakeTempos() { return std::move(tempos_); }

  private:
    double SecondsPerTick() const {
        if (tickLength_.ticksPerQuarter == 0) return tickLength_.secondsPerTick;
        return microsecondsPerQuarter_ * kMicroseconds / tickLength_.ticksPerQuarter;
    }

    void Enter(const TempoChange& change) {
        const double passed = double(change.tick - tick_) * SecondsPerTick();
        quarters_ += passed / (microsecondsPerQuarter_ * kMicroseconds);
        seconds_ += passed;
        tick_ = change.tick;
        microsecondsPerQuarter_ = change.microsecondsPerQuarter;
        // Of several changes at one place the last counts.
        if (tempos_.back().seconds >= seconds_) tempos_.pop_back();
        tempos_.push_back({seconds_, quarters_, kMicrosecondsPerMinute / microsecondsPerQuarter_});
    }

    TickLength tickLength_;
    std::vector<TempoChange> changes_;
    std::size_t next_ = 0;
    std::int64_t tick_ = 0;
    double seconds_ = 0.0;
    double quarters_ = 0.0;
    int microsecondsPerQuarter_ = kDefaultTempo;
    std::vector<SongTempo> tempos_;
};

// One track out of many, simultaneous events in the order of their tracks.
MidiTrack MergeTracks(const MidiChunks& chunks) {
    MidiTrack all;
    for (const auto& chunk : chunks.tracks) {
        const MidiTrack track = ReadMidiTrack(chunk);
        all.events.insert(all.events.end(), track.events.begin(), track.events.end());
        all.tempos.insert(all.tempos.end(), track.tempos.begin(), track.tempos.end());
        all.lengthTicks = std::max(all.lengthTicks, track.lengthTicks);
    }
    std::stable_sort(all.events.begin(), all.events.end(),
                     [](const auto& a, const auto& b) { return a.tick < b.tick; });
    return all;
}

}  // namespace

MidiSong ReadMidiSong(std::span<const std::uint8_t> file) {
    const MidiChunks chunks = SplitMidiChunks(file);
    MidiTrack track = MergeTracks(chunks);

    MidiSong song;
    song.events.reserve(track.events.size());
    TempoMap map(chunks.tickLength, std::move(track.tempos));
    for (const TrackEvent& event : track.events) {
        song.events.push_back({map.SecondsAt(event.tick), event.bytes});
    }
    song.lengthSeconds = map.SecondsAt(track.lengthTicks);
    song.tempos = map.TakeTempos();
    if (song.lengthSeconds > kLongestSongSeconds) throw BadInput("it lasts more than a day");
    return song;
}

MidiSong LoadMidiSong(const std::filesystem::path& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error) throw BadInput("cannot be read: " + error.message());
    if (size > kLargestMidiFileBytes) throw BadInput("is too large for a MIDI file");

    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw BadInput(std::string("cannot be read: ") + std::strerror(errno));
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    if (stream.bad()) throw BadInput("cannot be read to its end");
    return ReadMidiSong({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

}  // namespace norava
