#include "render/midi_song.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "apps/midi_bytes.h"
#include "render/bad_input.h"

namespace norava {
namespace {

using namespace test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::string ErrorOf(const Bytes& file) {
    try {
        ReadMidiSong(file);
    } catch (const BadInput& error) {
        return error.what();
    }
    return "";
}

std::vector<double> TimesOf(const MidiSong& song) {
    std::vector<double> times;
    for (const SongEvent& event : song.events)
        times.push_back(event.seconds);
    return times;
}

TEST(MidiSong, RunningStatusHoldsAcrossEveryKindOfChannelMessage) {
    const MidiSong song = ReadMidiSong(OneTrackFile({0,  0x91, 60, 100, 0, 62, 90,  // note-ons
                                                     96, 60,   0,                   // velocity 0
                                                     0,  0xC3, 5,  0,   6,          // one data byte
                                                     0,  0xE0, 0,  64,  0, 1,  65}));
    ASSERT_EQ(song.events.size(), 7u);
    using Message = std::array<std::uint8_t, 3>;
    EXPECT_EQ(song.events[1].bytes, (Message{0x91, 62, 90}));
    EXPECT_EQ(song.events[2].bytes, (Message{0x91, 60, 0}));
    EXPECT_EQ(song.events[4].bytes, (Message{0xC3, 6, 0}));
    EXPECT_EQ(song.events[6].bytes, (Message{0xE0, 1, 65}));
    EXPECT_DOUBLE_EQ(song.events[2].seconds, 0.5);  // a quarter at 120 beats a minute
}

TEST(MidiSong, WhatNoInstrumentPlaysIsPassedOver) {
    Bytes longText = {0, 0xFF, 1, 0x81, 0x48};  // 200 letters
    longText.insert(longText.end(), 200, 'x');
    const MidiSong song =
        ReadMidiSong(OneTrackFile(longText + Bytes{0, 0xF0, 3, 1, 2, 0xF7,  // exclusive
                                                   48, 0xF7, 2, 0xF3, 1,    // an escape
                                                   0, 0xFF, 0x7F, 0,        // empty
                                                   48, 0x90, 60, 1}));
    ASSERT_EQ(song.events.size(), 1u);
    EXPECT_DOUBLE_EQ(song.events[0].seconds, 0.5);
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

    EXPECT_THAT(TimesOf(song), ElementsAre(0.0, 0.5, 0.75, 0.75));
    EXPECT_EQ(song.events[2].bytes[1], 61);  // of two at once, the earlier track's first
    ASSERT_EQ(song.tempos.size(), 3u);
    EXPECT_DOUBLE_EQ(song.tempos[2].seconds, 0.75);
    EXPECT_DOUBLE_EQ(song.tempos[0].beatsPerMinute, 120.0);
    EXPECT_DOUBLE_EQ(song.tempos[1].beatsPerMinute, 240.0);
    EXPECT_DOUBLE_EQ(song.tempos[1].seconds, 0.5);
    EXPECT_DOUBLE_EQ(song.tempos[1].quarters, 1.0);
}

TEST(MidiSong, FilmFramesTickAtTheirOwnRateWhateverTheTempo) {
    const Bytes events = {0, 0xFF, 0x51, 3, 0x03, 0xD0, 0x90, 100, 0x90, 60, 1};
    const MidiSong song = ReadMidiSong(Header(0, 1, 0x100 - 25, 40) + Track(events));
    EXPECT_DOUBLE_EQ(song.events[0].seconds, 100.0 / (25 * 40));
    EXPECT_DOUBLE_EQ(song.tempos[0].beatsPerMinute, 240.0);
    EXPECT_THAT(ErrorOf(Header(0, 1, 0x100 - 26, 40) + Track(events)), HasSubstr("division"));
}

TEST(MidiSong, EndsWithTheLongestTrackAndIgnoresWhatFollowsTheEnd) {
    const MidiSong song = ReadMidiSong(
        Header(1, 2) + Chunk("MTrk", Bytes{0, 0x90, 60, 1, 96, 0xFF, 0x2F, 0, 1, 2, 3}) +
        Chunk("MTrk", Bytes{0x81, 0x40, 0xFF, 0x2F, 0}) + Bytes{'j', 'u', 'n', 'k'});
    EXPECT_EQ(song.events.size(), 1u);
    EXPECT_DOUBLE_EQ(song.lengthSeconds, 1.0);
}

TEST(MidiSong, AFileCutAtAnyByteIsRefused) {
    const Bytes file = Header(1, 2) + Track({0, 0xFF, 0x51, 3, 7, 0xA1, 0x20}) +
                       Track({0, 0x90, 60, 100, 96, 60, 0, 0, 0xF0, 2, 1, 0xF7});
    ASSERT_EQ(ErrorOf(file), "");
    for (std::size_t length = 0; length < file.size(); ++length) {
        const Bytes cut(file.begin(), file.begin() + std::ptrdiff_t(length));
        EXPECT_NE(ErrorOf(cut), "") << length << " bytes";
    }
}

TEST(MidiSong, ATrackCutAtAnyByteIsRefusedEvenInAWholeChunk) {
    const Bytes events = {0, 0x90, 60, 100, 0x81, 0x00, 0x80, 60, 0, 0, 0xFF, 0x51, 3, 7, 0xA1, 1};
    const std::size_t messageEnds[] = {0, 4, 9, 16};
    for (std::size_t length = 0; length <= events.size(); ++length) {
        const Bytes cut(events.begin(), events.begin() + std::ptrdiff_t(length));
        const bool whole = std::count(std::begin(messageEnds), std::end(messageEnds), length) > 0;
        EXPECT_EQ(ErrorOf(Header(0, 1) + Chunk("MTrk", cut)).empty(), whole) << length << " bytes";
    }
}

TEST(MidiSong, SaysWhatIsWrong) {
    const Bytes note = {0, 0x90, 60, 100};
    EXPECT_THAT(ErrorOf({}), HasSubstr("not a MIDI file"));
    EXPECT_THAT(ErrorOf(Bytes(100, 'x')), HasSubstr("not a MIDI file"));
    EXPECT_THAT(ErrorOf(Header(2, 1) + Track(note)), HasSubstr("format 2"));
    EXPECT_THAT(ErrorOf(Header(0, 0)), HasSubstr("no tracks"));
    EXPECT_THAT(ErrorOf(Header(0, 1, 0, 0) + Track(note)), HasSubstr("division"));
    EXPECT_THAT(ErrorOf(Header(1, 2) + Track(note)), HasSubstr("1 of 2 tracks"));
    EXPECT_THAT(ErrorOf(OneTrackFile({0, 60, 100})), HasSubstr("running status"));
    EXPECT_THAT(ErrorOf(OneTrackFile({0, 0x90, 0x80, 100})), HasSubstr("above 127"));
    EXPECT_THAT(ErrorOf(OneTrackFile({0, 0xF4})), HasSubstr("damaged"));
    EXPECT_THAT(ErrorOf(OneTrackFile({0, 0xFF, 0x51, 0})), HasSubstr("tempo"));
    EXPECT_THAT(ErrorOf(OneTrackFile({0, 0xFF, 0x51, 3, 0, 0, 0})), HasSubstr("infinite"));
    // Delta times of more than four bytes, up to sums that leave 64 bits.
    EXPECT_THAT(ErrorOf(OneTrackFile({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 0x90, 1, 1})),
                HasSubstr("out of bounds"));
    EXPECT_THAT(ErrorOf(OneTrackFile(Bytes(9, 0xFF) + Bytes{0x7F, 0x90, 1, 1})),
                HasSubstr("out of bounds"));
    EXPECT_THAT(ErrorOf(OneTrackFile({0x87, 0xFF, 0xFF, 0x7F, 0x90, 1, 1})), HasSubstr("a day"));
}

}  // namespace
}  // namespace norava
