#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace norava {

// A channel message at its place in time.
struct SongEvent {
    double seconds = 0.0;
    std::array<std::uint8_t, 3> bytes{};
};

// From here on the song has this tempo.
struct SongTempo {
    double seconds = 0.0;
    double quarters = 0.0;  // since the song's start, as hosts count their position
    double beatsPerMinute = 120.0;
};

// A MIDI file with its tracks merged and its ticks turned into time.
struct MidiSong {
    std::vector<SongEvent> events;  // by time; simultaneous ones by track, then as written
    std::vector<SongTempo> tempos;  // by time; the first is at 0
    double lengthSeconds = 0.0;     // to the last event or the longest track's end
};

// Longest song and largest file that are accepted; beyond them lie only damaged files.
inline constexpr double kLongestSongSeconds = 24.0 * 3600.0;
inline constexpr std::uintmax_t kLargestMidiFileBytes = std::uintmax_t{64} << 20;

// Both throw BadInput, in a text that does not name the file.
MidiSong ReadMidiSong(std::span<const std::uint8_t> file);
MidiSong LoadMidiSong(const std::filesystem::path& path);

}  // namespace norava
