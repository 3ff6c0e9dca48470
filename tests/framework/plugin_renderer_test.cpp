#include "framework/plugin_renderer.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <limits>
#include <string>

#include "framework/test_definition.h"

namespace norava {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

class RendererTest : public testing::Test {
  protected:
    TestDefinition definition{1, 2};
    CPluginRenderer renderer;
    std::array<char, 64> text{};

    std::string Name(int index) {
        renderer.GetParamName(index, text);
        return text.data();
    }
    std::string Display(int index) {
        renderer.GetParamDisplay(index, text);
        return text.data();
    }
};

TEST_F(RendererTest, KeepsParametersWithinTheirRange) {
    constexpr int kBeyond = TestDefinition::kParams;
    renderer.SetParamValue(2, 0.25f);
    renderer.SetParamName(2, "Tune");
    for (int index : {-1, kBeyond, std::numeric_limits<int>::max()}) {
        renderer.SetParamValue(index, 0.5f);
        renderer.SetParamName(index, "nobody");
        renderer.SetParamNeedUpdate(index);
        EXPECT_EQ(renderer.GetParamValue(index), 0.0f);
        EXPECT_EQ(Name(index), "<out of range>");
        EXPECT_FALSE(renderer.TakeParamNeedUpdate(index));
        EXPECT_EQ(Display(index), "0.0");
    }
    EXPECT_EQ(renderer.GetParamValue(2), 0.25f);
    EXPECT_EQ(Name(2), "Tune");
    EXPECT_EQ(Name(1), "");
    renderer.SetParamName(1, std::string(500, 'n'));
    EXPECT_EQ(Name(1).size(), text.size() - 1);
}

TEST_F(RendererTest, ShowsParametersInPercent) {
    renderer.SetParamValue(0, 0.3456f);
    EXPECT_EQ(Display(0), "34.6");
    renderer.SetParamValue(0, std::numeric_limits<float>::max());
    EXPECT_EQ(Display(0).size(), 43u);
    renderer.GetParamLabel(0, text);
    EXPECT_STREQ(text.data(), "");
}

TEST_F(RendererTest, ReturnsTheBitsOfAValueAsTheyCame) {
    for (const std::uint32_t bits : {0x7FA00001u, 0xFFC12345u, 0x80000000u, 0x00000001u}) {
        renderer.SetParamValue(1, std::bit_cast<float>(bits));
        EXPECT_EQ(std::bit_cast<std::uint32_t>(renderer.GetParamValue(1)), bits);
    }
}

TEST_F(RendererTest, TellsThePanelOnceOfEachChange) {
    renderer.SetParamNeedUpdate(3);
    EXPECT_FALSE(renderer.TakeParamNeedUpdate(2));
    EXPECT_TRUE(renderer.TakeParamNeedUpdate(3));
    EXPECT_FALSE(renderer.TakeParamNeedUpdate(3));
    const auto before = renderer.GetAllChangedCount();
    renderer.SetAllChanged();
    EXPECT_NE(renderer.GetAllChangedCount(), before);
}

TEST_F(RendererTest, KeepsTheRateWhereItCanWork) {
    EXPECT_EQ(renderer.GetSampleRate(), 0.0);
    for (const auto& [asked, expected] : {std::pair{44100.0, 44100.0},
                                          {0.0, 44100.0},
                                          {-1.0, 44100.0},
                                          {kNaN, 44100.0},
                                          {-kInfinity, 44100.0},
                                          {500.0, 1000.0},
                                          {1e-300, 1000.0},
                                          {kInfinity, 768000.0}}) {
        renderer.Reset(asked);
        EXPECT_EQ(renderer.GetSampleRate(), expected) << asked;
    }
}

TEST_F(RendererTest, IgnoresTimesThatAreNone) {
    EXPECT_EQ(renderer.GetSongTempo(), 120.0);
    EXPECT_EQ(renderer.GetSongBeatPos(), -1.0);
    renderer.SetSongTempo(90.5);
    renderer.SetSongBeatPos(-4.0);
    for (double tempo : {0.0, -120.0, kNaN, kInfinity})
        renderer.SetSongTempo(tempo);
    for (double position : {kNaN, kInfinity, -kInfinity})
        renderer.SetSongBeatPos(position);
    EXPECT_EQ(renderer.GetSongTempo(), 90.5);
    EXPECT_EQ(renderer.GetSongBeatPos(), -4.0);
    EXPECT_TRUE(renderer.TransportChanged(true));
    EXPECT_FALSE(renderer.TransportChanged(false));
}

TEST_F(RendererTest, MakesTheBuffersItsDefinitionAsksFor) {
    EXPECT_EQ(renderer.GetInputAudioBuffer()->GetNumChannels(), 2);
    EXPECT_EQ(renderer.GetOutputAudioBuffer()->GetNumChannels(), 4);
    EXPECT_EQ(renderer.GetOutputAudioBuffer()->GetMaxNumFrames(), kMaxSliceFrames);
    TestDefinition silent(0, 0);
    CPluginRenderer none;
    EXPECT_EQ(none.GetInputAudioBuffer()->GetMaxNumFrames(), 0);
    EXPECT_EQ(none.GetOutputAudioBuffer()->GetMaxNumFrames(), 0);
}

TEST_F(RendererTest, StartsWithNeutralTablesAndHooks) {
    for (int note : {0, 127}) {
        EXPECT_EQ(renderer.GetKeyGainLeft()[note], 1.0f);
        EXPECT_EQ(renderer.GetKeyGainRight()[note], 1.0f);
        EXPECT_EQ(renderer.GetKeyTuning()[note], 0.0f);
        EXPECT_EQ(renderer.GetKeyActivity(note), 0.0f);
    }
    EXPECT_EQ(renderer.GetKeyActivity(128), 0.0f);
    EXPECT_EQ(renderer.GetController(-1), 0.0f);
    EXPECT_EQ(renderer.SaveState(nullptr), 0);
    EXPECT_TRUE(renderer.LoadState(nullptr, 0));
    EXPECT_EQ(renderer.TQ_GetOutputIndex(3), 0);
    EXPECT_EQ(renderer.TQ_GetMIDIPortNumber(), -1);
    text[0] = '#';
    renderer.TQ_GetKeyName(60, text);
    EXPECT_EQ(text[0], '#');
}

TEST_F(RendererTest, KeepsLongProgramNamesAndCutsThemForReaders) {
    renderer.SetProgramName(std::string(1000, 'p'));
    std::array<char, 2000> name;
    EXPECT_EQ(renderer.GetProgramName(name), 1000u);
    EXPECT_EQ(renderer.GetProgramName(text), text.size() - 1);
}

}  // namespace
}  // namespace norava
