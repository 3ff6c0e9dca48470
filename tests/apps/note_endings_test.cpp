#include "render/note_endings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "apps/midi_bytes.h"

namespace norava {
namespace {

using namespace test;
using ::testing::ElementsAre;

// "on 60@1.5" and the like, in order; everything but notes left out.
std::vector<std::string> NotesOf(const MidiSong& song) {
    std::vector<std::string> notes;
    for (const SongEvent& event : song.events) {
        const int kind = event.bytes[0] & 0xF0;
        if (kind != 0x80 && kind != 0x90) continue;
        const bool on = kind == 0x90 && event.bytes[2] > 0;
        std::ostringstream text;
        text << (on ? "on " : "off ") << int(event.bytes[1]) << "@" << event.seconds;
        notes.push_back(text.str());
    }
    return notes;
}

constexpr std::uint8_t kSecond = 96;
constexpr std::uint8_t kPedal = 64;

// Ticks of a second each.
MidiSong Song(const Bytes& events) {
    return ReadMidiSong(OneTrackFile(Bytes{0, 0xFF, 0x51, 3, 0x0F, 0x42, 0x40} + events));
}

TEST(Pedal, HoldsNoteOffsUntilItGoesUp) {
    MidiSong song =
        Song({0,       0x90, 60, 80, kSecond, 0xB0, kPedal, 64, kSecond, 0x80, 60,     0,  //
              kSecond, 0x90, 62, 80, kSecond, 0x90, 62,     0,  kSecond, 0xB0, kPedal, 63});
    HoldNotesByPedal(song);
    EXPECT_THAT(NotesOf(song), ElementsAre("on 60@0", "on 62@3", "off 60@5", "off 62@5"));
}

TEST(Pedal, AKeyStruckAgainStaysWhenItGoesUp) {
    MidiSong song =
        Song({0,       0xB0, kPedal, 127, 0,       0x90, 60,     80, kSecond, 0x80, 60, 0,  //
              kSecond, 0x90, 60,     80,  kSecond, 0xB0, kPedal, 0,  kSecond, 0x80, 60, 0});
    HoldNotesByPedal(song);
    EXPECT_THAT(NotesOf(song), ElementsAre("on 60@0", "on 60@2", "off 60@4"));
}

TEST(Pedal, EachChannelHasItsOwnAndTheSongsEndLiftsAll) {
    MidiSong song = Song({0,       0xB0, kPedal, 127, 0, 0x90, 60, 80, 0,       0x91, 72, 80,  //
                          kSecond, 0x80, 60,     0,   0, 0x81, 72, 0,  kSecond, 0xB1, 1,  0});
    HoldNotesByPedal(song);
    EXPECT_THAT(NotesOf(song), ElementsAre("on 60@0", "on 72@0", "off 72@1", "off 60@2"));
}

TEST(HangingNotes, AreReleasedAtTheEndInTheChannelThatHoldsThem) {
    MidiSong song = Song({0, 0x90, 60, 80, 0, 0x93, 60, 80, kSecond, 0x80, 60, 0,  //
                          0, 0x90, 61, 80, 0, 0x90, 61, 0,  kSecond, 0xB0, 1,  0});
    ReleaseHangingNotes(song);
    EXPECT_THAT(NotesOf(song),
                ElementsAre("on 60@0", "on 60@0", "off 60@1", "on 61@1", "off 61@1", "off 60@2"));
    EXPECT_EQ(song.events.back().bytes[0], 0x83);
}

}  // namespace
}  // namespace norava
