#include "tune/score.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "render/midi_song.h"
#include "tune/midi_writer.h"
#include "tune/score_tokens.h"

namespace norava {
namespace {

using ::testing::HasSubstr;

std::string ErrorOf(const std::string& text) {
    try {
        ParseScore(text);
    } catch (const ScoreError& error) {
        return error.what();
    }
    return "";
}

TEST(Score, NamesKeysAndLengths) {
    EXPECT_EQ(ParseKey("C4"), 60);
    EXPECT_EQ(ParseKey("A4"), 69);
    EXPECT_EQ(ParseKey("G#1"), 32);
    EXPECT_EQ(ParseKey("Cb4"), 59);
    EXPECT_EQ(ParseKey("G9"), 127);
    for (const char* text : {"H4", "A", "A#", "c4", "G#9", "C-1", ""})
        EXPECT_FALSE(ParseKey(text));
    EXPECT_EQ(ParseLength("4"), kTicksPerQuarter);
    EXPECT_EQ(ParseLength("8."), 360);
    EXPECT_EQ(ParseLength("4.."), 840);
    EXPECT_EQ(ParseLength("2.+8"), 1680);
    for (const char* text : {"", "0", "7", "64", "4...", "4+", "-4"}) {
        EXPECT_FALSE(ParseLength(text)) << text;
    }
}

TEST(Score, BecomesAMidiFileThatPlaysAsWritten) {
    const Score score = ParseScore(
        "title Two voices  ; not a third\n"
        "meter 4 4\n"
        "high: @60 C5/8 | D5 - | @120 ~[C5 E5]/4 |\n"
        "low:  -/8 | C4/4 | C4/8 C4 |\n");
    EXPECT_EQ(score.title, "Two voices");
    const MidiSong song = ReadMidiSong(WriteMidiFile(score));
    EXPECT_DOUBLE_EQ(song.lengthSeconds, 0.5 + 1.0 + 0.5);

    std::vector<double> starts;
    for (const SongEvent& event : song.events) {
        if ((event.bytes[0] & 0xF0) == 0x90) starts.push_back(event.seconds);
    }
    ASSERT_EQ(starts.size(), 7u);
    EXPECT_THAT(std::span(starts).first(5), testing::ElementsAre(0.0, 0.5, 0.5, 1.5, 1.5));
    EXPECT_NEAR(starts[5] - starts[4], 0.015, 0.01);  // the roll
    EXPECT_DOUBLE_EQ(starts[6], 1.75);
}

TEST(Score, AKeyThatTwoVoicesHoldIsLetGoBeforeItIsStruckAgain) {
    const MidiSong song =
        ReadMidiSong(WriteMidiFile(ParseScore("meter 2 4\n"
                                              "one: C4/2 |\n"
                                              "two: -/4 C4 |\n")));
    std::vector<int> kinds;
    for (const SongEvent& event : song.events)
        kinds.push_back(event.bytes[0]);
    EXPECT_THAT(kinds, testing::ElementsAre(0x90, 0x80, 0x90, 0x80));
    EXPECT_DOUBLE_EQ(song.events[1].seconds, 0.5);
}

TEST(Score, SlipsOfThePenAreFoundWithTheirLine) {
    const std::string head = "meter 2. 4.\n";
    EXPECT_THAT(ErrorOf(head + "a: C4/8 | C4/2. | C4/2 |\n"), HasSubstr("line 2: a bar lasts 960"));
    EXPECT_THAT(ErrorOf(head + "\na: H4/8\n"), HasSubstr("line 3: 'H4/8'"));
    EXPECT_THAT(ErrorOf(head + "a: [C4 E4/8\n"), HasSubstr("neither"));
    EXPECT_THAT(ErrorOf(head + "a: C4/2.\nb: C4/4\n"), HasSubstr("differ in length"));
    EXPECT_THAT(ErrorOf(head + "a: @5 C4/2.\n"), HasSubstr("no tempo"));
    EXPECT_THAT(ErrorOf(head + "a: @99999999999 C4\n"), HasSubstr("no tempo"));
    EXPECT_THAT(ErrorOf("metre 2. 4.\n"), HasSubstr("'metre'"));
    EXPECT_THAT(ErrorOf("meter x 4.\n"), HasSubstr("'x' is no length"));
    EXPECT_THAT(ErrorOf(""), HasSubstr("no voice"));
}

}  // namespace
}  // namespace norava
