// A MIDI file as norava-render reads it: what is taken is a song in order, within its bounds and
// made of channel messages, and every key that it presses is let go. Some songs are played.

#include <cmath>
#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "render/bad_input.h"
#include "render/instrument.h"
#include "render/midi_song.h"
#include "render/note_endings.h"
#include "render/song_player.h"
#include "states.h"
#include "target.h"

namespace norava::fuzz {
namespace {

constexpr unsigned kPlayed = 262144;  // one in so many: each play makes an instrument
constexpr double kSampleRate = 48000.0;
constexpr int kBlockFrames = 64;
constexpr int kPlayedBlocks = 16;

void CheckTimes(const MidiSong& song) {
    Require(song.lengthSeconds >= 0.0 && song.lengthSeconds <= kLongestSongSeconds,
            "a song has a length");
    double now = 0.0;
    for (const SongEvent& event : song.events) {
        Require(event.seconds >= now, "events are in order");
        now = event.seconds;
    }
    Require(now <= song.lengthSeconds, "events lie in the song");
    Require(!song.tempos.empty() && song.tempos.front().seconds == 0.0, "there is a first tempo");
    const SongTempo* last = nullptr;
    for (const SongTempo& tempo : song.tempos) {
        Require(tempo.beatsPerMinute > 0.0 && std::isfinite(tempo.beatsPerMinute), "a tempo");
        Require(last == nullptr || tempo.seconds > last->seconds, "tempos are in order");
        Require(last == nullptr || tempo.quarters >= last->quarters, "time goes on");
        last = &tempo;
    }
}

void CheckMessages(const MidiSong& song) {
    for (const SongEvent& event : song.events) {
        const auto [status, data1, data2] = event.bytes;
        Require(status >= 0x80 && status < 0xF0, "channel messages only");
        Require(data1 < 0x80 && data2 < 0x80, "data bytes have seven bits");
    }
}

bool EndsSilent(const MidiSong& song) {
    std::array<bool, 16 * 128> down{};
    for (const SongEvent& event : song.events) {
        const auto [status, key, velocity] = event.bytes;
        const std::size_t place = std::size_t{status & 0x0Fu} * 128 + key;
        if ((status & 0xF0) == 0x90) down[place] = velocity > 0;
        if ((status & 0xF0) == 0x80) down[place] = false;
    }
    return std::ranges::none_of(down, [](bool held) { return held; });
}

// Songs that were played join the inputs, which come again unchanged: a quarter of the time.
bool IsFirstTime(std::string_view file) {
    static std::set<std::string, std::less<>> files;
    return files.emplace(file).second;
}

void Play(const MidiSong& song) {
    Instrument instrument(kSampleRate, {});
    SongPlayer player(song, instrument, kSampleRate, kBlockFrames);
    for (int i = 0; i < kPlayedBlocks; ++i) {
        for (const float sample : player.NextBlock())
            Require(std::isfinite(sample), "the output is finite");
    }
}

void Run(std::span<const std::uint8_t> file, bool isPlayed) {
    MidiSong song = ReadMidiSong(file);
    CheckTimes(song);
    CheckMessages(song);
    HoldNotesByPedal(song);
    ReleaseHangingNotes(song);
    CheckTimes(song);
    CheckMessages(song);
    Require(EndsSilent(song), "every key is let go");
    if (isPlayed) Play(song);
}

}  // namespace
}  // namespace norava::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norava::fuzz;
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    try {
        Run({data, size}, IsOneOf(kPlayed, file) && IsFirstTime(file));
    } catch (const norava::BadInput& refused) {
        Require(*refused.what() != '\0', "a refusal says why");
    }
    return 0;
}
