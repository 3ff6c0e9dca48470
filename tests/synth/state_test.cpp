#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "synth/player.h"
#include "synth/state_block.h"

namespace norava {
namespace {

using test::Player;
using Block = std::vector<char>;

Block Save(CNoravaSynth& synth) {
    Block block(kStateSize, '#');
    EXPECT_EQ(synth.SaveState(block.data()), kStateSize);
    return block;
}

std::string ProgramName(CNoravaSynth& synth) {
    std::array<char, 256> name;
    synth.GetProgramName(name);
    return name.data();
}

TEST(State, StartsWithTheDefaults) {
    Player player;
    EXPECT_EQ(ProgramName(player.synth), "<noname>");
    for (int i = 0; i < kNumParameters; ++i) {
        EXPECT_EQ(player.synth.GetParamValue(i), player.synth.GetParamDefaultValue(i)) << i;
    }
    EXPECT_EQ(player.synth.GetParamDefaultValue(kNumParameters), 0.0f);
    EXPECT_EQ(player.synth.SaveState(nullptr), 588);
}

TEST(State, IsTheSameBytesForTheSameSound) {
    Player source, player;
    for (int i = 0; i < kNumParameters; ++i)
        source.Set({{i, 0.25f + 0.001f * static_cast<float>(i)}});
    source.synth.SetProgramName("Dusty Zither");
    Block block = Save(source.synth);
    EXPECT_EQ(std::memcmp(block.data(), "1qzW", 4), 0);
    EXPECT_EQ(std::string(&block[460]), "Dusty Zither");

    const Block before = Save(player.synth);
    EXPECT_FALSE(player.synth.LoadState(nullptr, kStateSize));
    EXPECT_FALSE(player.synth.LoadState(block.data(), -1));
    EXPECT_FALSE(player.synth.LoadState(block.data(), std::numeric_limits<int>::min()));
    EXPECT_EQ(Save(player.synth), before);
    ASSERT_TRUE(player.synth.LoadState(block.data(), kStateSize));
    EXPECT_EQ(Save(player.synth), block) << "nothing of the caller's memory shows";

    std::fill(block.begin() + 460, block.end(), 'x');
    ASSERT_TRUE(player.synth.LoadState(block.data(), kStateSize));
    EXPECT_EQ(ProgramName(player.synth), std::string(128, 'x'));
    EXPECT_EQ(std::string(&Save(player.synth)[460], 128), std::string(127, 'x') + '\0');
}

}  // namespace
}  // namespace norava
