#include "tune/score.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "render/midi_song.h"
#include "tune/midi_writer.h"

namespace norava {
namespace {

TEST(Score, BecomesAMidiFileThatPlaysAsWritten) {
    const Score score = ParseScore(
        "title Two voices  ; not a third\n"
        "meter 4 4\n"
        "high: @60 C5/8 | Db5 - | @120 ~[C5 E5]/4 |\n"
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

TEST(Score, SlipsOfThePenAreFoundWithTheirLine) {
    for (const auto& [score, complaint] : {
             std::pair{"meter 2. 4.\na: C4/8 | C4/2. | C4/2 |\n", "line 2: a bar lasts 960"},
             {"meter 2. 4.\n\na: H4/8\n", "line 3: 'H4/8'"},
             {"meter 2. 4.\na: @99999999999 C4\n", "no tempo"},
         })
        EXPECT_THAT([&text = score] { ParseScore(text); },
                    testing::ThrowsMessage<ScoreError>(testing::HasSubstr(complaint)));
}

}  // namespace
}  // namespace norava
