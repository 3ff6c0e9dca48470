#include "render/midi_song.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "apps/midi_bytes.h"
#include "render/bad_input.h"
#include "render/note_endings.h"

namespace norava {
namespace {

using namespace test;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

// "91 60 100 @0.5; " and the like, in order: the status in hexadecimal, data and seconds.
std::string EventsOf(const MidiSong& song) {
    std::ostringstream text;
    for (const auto& [seconds, bytes] : song.events) {
        text << std::hex << int(bytes[0]) << std::dec << ' ' << int(bytes[1]) << ' '
             << int(bytes[2]) << " @" << seconds << "; ";
    }
    return text.str();
}

TEST(MidiSong, HoldsChannelMessagesAtTheirTimes) {
    const std::tuple<const char*, Bytes, const char*, double> cases[] = {
        {"running status across every kind of message, and the end of a note as velocity 0",
         OneTrackFile({0, 0x91, 60, 100, 0, 62, 90,   96, 60, 0,  //
                       0, 0xC3, 5,  0,   6, 0,  0xE0, 0,  64, 0, 1, 65}),
         "91 60 100 @0; 91 62 90 @0; 91 60 0 @0.5; c3 5 0 @0.5; c3 6 0 @0.5; e0 0 64 @0.5; "
         "e0 1 65 @0.5; ",
         0.5},
        {"what no instrument plays: a long text, an exclusive message, an escape, nothing at all",
         OneTrackFile(Bytes{0, 0xFF, 1, 0x81, 0x48} + Bytes(200, 'x') +
                      Bytes{0, 0xF0, 3, 1, 2, 0xF7, 48, 0xF7, 2, 0xF3, 1,  //
                            0, 0xFF, 0x7F, 0, 48, 0x90, 60, 1}),
         "90 60 1 @0.5; ", 0.5},
        {"film frames, which tick at their own rate whatever the tempo",
         Header(0, 1, 0x100 - 25, 40) +
             Track({0, 0xFF, 0x51, 3, 0x03, 0xD0, 0x90, 100, 0x90, 60, 1}),
         "90 60 1 @0.1; ", 0.1},
        {"the longest track's end, and what follows it",
         Header(1, 2) + Chunk("MTrk", {0, 0x90, 60, 1, 96, 0xFF, 0x2F, 0, 1, 2, 3}) +
             Chunk("MTrk", {0x81, 0x40, 0xFF, 0x2F, 0}) + Bytes{'j', 'u', 'n', 'k'},
         "90 60 1 @0; ", 1.0},
    };
    for (const auto& [what, file, events, lengthSeconds] : cases) {
        const MidiSong song = ReadMidiSong(file);
        EXPECT_EQ(EventsOf(song), events) << what;
        EXPECT_DOUBLE_EQ(song.lengthSeconds, lengthSeconds) << what;
    }
}

TEST(MidiSong, TracksAreMergedByTimeAndTempoAppliesToAll) {
    // The tempo track doubles the speed after one quarter; notes sit in two further tracks, the
    // last of which takes it back.
    const Bytes tempo = Track({96, 0xFF, 0x51, 3, 0x03, 0xD0, 0x90});  // 250000 microseconds
    const Bytes first = Track({96, 0x90, 60, 1, 96, 0x90, 61, 1});
    const Bytes second = Track({0, 0x95, 40, 1, 0x81, 0x40, 0x95, 41, 1,  // 192 ticks later
                                0, 0xFF, 0x51, 3, 0x07, 0xA1, 0x20});
    const MidiSong song =
        ReadMidiSong(Header(1, 3) + tempo + Chunk("XFIH", {1, 2, 3}) + first + second);
    // Of two at once, the earlier track's comes first.
    EXPECT_EQ(EventsOf(song), "95 40 1 @0; 90 60 1 @0.5; 90 61 1 @0.75; 95 41 1 @0.75; ");
    ASSERT_EQ(song.tempos.size(), 3u);
    EXPECT_DOUBLE_EQ(song.tempos[2].seconds, 0.75);
    EXPECT_DOUBLE_EQ(song.tempos[1].beatsPerMinute, 240.0);
    EXPECT_DOUBLE_EQ(song.tempos[1].quarters, 1.0);
}

TEST(MidiSong, SaysWhatIsWrong) {
    const Bytes note = {0, 0x90, 60, 100};
    const std::pair<Bytes, const char*> cases[] = {
        {Header(2, 1) + Track(note), "format 2"},
        {Header(0, 0), "no tracks"},
        {Header(0, 1, 0, 0) + Track(note), "division"},
        {Header(1, 2) + Track(note), "1 of 2 tracks"},
        {OneTrackFile({0, 60, 100}), "running status"},
        {Header(0, 1) + Chunk("MTrk", {0, 0x90, 60}), "truncated"},
        {OneTrackFile({0, 0x90, 0x80, 100}), "above 127"},
        {OneTrackFile({0, 0xF4}), "damaged"},
        {OneTrackFile({0, 0xFF, 0x51, 0}), "tempo"},
        {OneTrackFile({0, 0xFF, 0x51, 3, 0, 0, 0}), "infinite"},
        // A delta time whose sum leaves 64 bits.
        {OneTrackFile(Bytes(9, 0xFF) + Bytes{0x7F, 0x90, 1, 1}), "out of bounds"},
        {OneTrackFile({0x87, 0xFF, 0xFF, 0x7F, 0x90, 1, 1}), "a day"},
    };
    for (const auto& [file, complaint] : cases)
        EXPECT_THAT([&bytes = file] { ReadMidiSong(bytes); },
                    ThrowsMessage<BadInput>(HasSubstr(complaint)));
}

TEST(Pedal, HoldsNoteOffsUntilItGoesUp) {
    const std::tuple<const char*, Bytes, const char*> cases[] = {
        {"a key let go under the pedal, and one struck and let go",
         {0, 0x90, 60, 80, 1, 0xB0, 64, 64, 1, 0x80, 60, 0,  //
          1, 0x90, 62, 80, 1, 0x90, 62, 0,  1, 0xB0, 64, 63},
         "90 60 80 @0; 90 62 80 @3; 80 60 0 @5; 80 62 0 @5; "},
        {"a key struck again, which stays when the pedal goes up",
         {0, 0xB0, 64, 127, 0, 0x90, 60, 80, 1, 0x80, 60, 0,  //
          1, 0x90, 60, 80,  1, 0xB0, 64, 0,  1, 0x80, 60, 0},
         "90 60 80 @0; 90 60 80 @2; 80 60 0 @4; "},
        {"each channel has its own, and the song's end lifts all",
         {0, 0xB0, 64, 127, 0, 0x90, 60, 80, 0, 0x91, 72, 80,  //
          1, 0x80, 60, 0,   0, 0x81, 72, 0,  1, 0xB1, 1,  0},
         "90 60 80 @0; 91 72 80 @0; 81 72 0 @1; 80 60 0 @2; "},
    };
    for (const auto& [what, events, played] : cases) {
        // Ticks of a second each, and the pedal as controller 64.
        MidiSong song = ReadMidiSong(Header(0, 1, 0, 1) +
                                     Track(Bytes{0, 0xFF, 0x51, 3, 0x0F, 0x42, 0x40} + events));
        HoldNotesByPedal(song);
        std::erase_if(song.events, [](const SongEvent& e) { return (e.bytes[0] & 0xF0) == 0xB0; });
        EXPECT_EQ(EventsOf(song), played) << what;
    }
}

}  // namespace
}  // namespace norava
