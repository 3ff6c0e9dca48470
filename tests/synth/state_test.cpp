#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <random>
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

// Loads the first `size` bytes from memory that ends right behind them.
bool LoadPart(CNoravaSynth& synth, const Block& block, std::size_t size) {
    const Block part(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(size));
    return synth.LoadState(part.data(), static_cast<int>(part.size()));
}

class State : public testing::Test {
  protected:
    // A block whose values and name differ from the defaults in every place.
    Block Different() {
        CNoravaSynth& other = source_.synth;
        for (int i = 0; i < kNumParameters; ++i) {
            other.SetParamValue(i, 0.25f + 0.001f * static_cast<float>(i));
        }
        other.SetProgramName("Dusty Zither");
        return Save(other);
    }

    Player source_;
    Player player_;
    CNoravaSynth& synth_ = player_.synth;
};

TEST_F(State, StartsWithTheDefaults) {
    EXPECT_EQ(ProgramName(synth_), "<noname>");
    for (int i = 0; i < kNumParameters; ++i) {
        EXPECT_EQ(synth_.GetParamValue(i), synth_.GetParamDefaultValue(i)) << i;
    }
    EXPECT_EQ(synth_.GetParamValue(79), 6.0f);
    EXPECT_EQ(synth_.GetParamValue(82), 1.0f);
    EXPECT_EQ(synth_.GetParamDefaultValue(114), 0.0f);
    EXPECT_EQ(synth_.SaveState(nullptr), 588);
}

TEST_F(State, IsTheSameBytesForTheSameSound) {
    const Block block = Different();
    EXPECT_EQ(std::memcmp(block.data(), "1qzW", 4), 0);
    EXPECT_EQ(std::string(&block[460]), "Dusty Zither");
    ASSERT_TRUE(LoadPart(synth_, block, block.size()));
    EXPECT_EQ(Save(synth_), block) << "nothing of the caller's memory shows";
}

TEST_F(State, KeepsEveryBitPattern) {
    std::mt19937 random(7);
    Block block = Different();
    for (std::size_t i = 4; i < 460; ++i)
        block[i] = static_cast<char>(random());
    ASSERT_TRUE(LoadPart(synth_, block, block.size()));
    player_.NoteOn(60);
    EXPECT_TRUE(player_.Render(2048).IsFinite());
    EXPECT_EQ(Save(synth_), block);
}

TEST_F(State, TakesWhatAShorterBlockHolds) {
    const Block block = Different();
    const Block defaults = Save(synth_);
    for (const std::size_t size : {0u, 3u}) {
        EXPECT_FALSE(LoadPart(synth_, block, size)) << size;
    }
    for (const std::size_t size : {4u, 6u}) {
        EXPECT_TRUE(LoadPart(synth_, block, size)) << size;
    }
    EXPECT_EQ(Save(synth_), defaults);

    // Three bytes of a value are its lower ones; the fourth counts as 0.
    ASSERT_TRUE(LoadPart(synth_, block, 4 + 4 + 3));
    EXPECT_EQ(synth_.GetParamValue(0), 0.25f);
    const auto second = std::bit_cast<std::uint32_t>(0.251f) & 0x00ffffffu;
    EXPECT_EQ(std::bit_cast<std::uint32_t>(synth_.GetParamValue(1)), second);
    EXPECT_EQ(synth_.GetParamValue(2), synth_.GetParamDefaultValue(2));

    for (const std::size_t size : {460u, 462u, 587u}) {
        ASSERT_TRUE(LoadPart(synth_, block, size));
        EXPECT_EQ(synth_.GetParamValue(113), source_.synth.GetParamValue(113));
        EXPECT_EQ(ProgramName(synth_), "<noname>") << size;
    }
    Block longer = block;
    longer.resize(1000, '#');
    ASSERT_TRUE(LoadPart(synth_, longer, longer.size()));
    EXPECT_EQ(Save(synth_), block);
}

TEST_F(State, RefusesWhatIsNoBlock) {
    const Block before = Save(synth_);
    Block block = Different();
    EXPECT_FALSE(synth_.LoadState(nullptr, kStateSize));
    EXPECT_FALSE(synth_.LoadState(block.data(), -1));
    EXPECT_FALSE(synth_.LoadState(block.data(), std::numeric_limits<int>::min()));
    for (std::size_t i = 0; i < 4; ++i) {
        Block broken = block;
        broken[i] = static_cast<char>(broken[i] ^ 1);
        EXPECT_FALSE(LoadPart(synth_, broken, broken.size()));
    }
    EXPECT_EQ(Save(synth_), before);
}

TEST_F(State, NameFieldKeepsItsTerminator) {
    Block block = Different();
    std::fill(block.begin() + 460, block.end(), 'x');
    ASSERT_TRUE(LoadPart(synth_, block, block.size()));
    EXPECT_EQ(ProgramName(synth_), std::string(128, 'x'));
    const Block saved = Save(synth_);
    EXPECT_EQ(std::string(&saved[460], 128), std::string(127, 'x') + '\0');
}

}  // namespace
}  // namespace norava
