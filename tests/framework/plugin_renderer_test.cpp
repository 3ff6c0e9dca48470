#include "framework/plugin_renderer.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <vector>

#include "framework/block_runner.h"
#include "framework/denormal_guard.h"
#include "framework/plugin_instance.h"

namespace norava {
namespace {

// A plug-in with a few parameters; an effect when it has inputs.
class TestDefinition : public CPluginInstance {
  public:
    static constexpr int kParams = 5;

    explicit TestDefinition(std::int8_t inputPairs = 0) {
        numParams = kParams;
        numInputStereoChannels = inputPairs;
        numOutputStereoChannels = 1;
    }
};

TEST(PluginInstance, IsTheNewestAndStartsUnknown) {
    CPluginInstance instance;
    std::array<char, 2000> name;
    instance.GetHostName(name);
    EXPECT_STREQ(name.data(), "<unknown>");
    instance.SetHostName(std::string(1000, 'x'));
    EXPECT_EQ(instance.GetHostName(name), kNameCapacity - 1);
    instance.GetOutputChannelName(-2, name);
    EXPECT_STREQ(name.data(), "Channel -2");
    {
        TestDefinition newer;
        EXPECT_EQ(GetPluginInstance(), &newer);
    }
    EXPECT_EQ(GetPluginInstance(), nullptr);
}

TEST(MIDITranslation, KeepsDataWithinSevenBits) {
    TestDefinition definition;
    CPluginRenderer renderer;
    const auto translate = [&](std::array<unsigned char, 4> bytes) {
        return renderer.TranslateMIDIEvent(renderer.CreateMIDIEvent(0, bytes.data(), 4));
    };
    EXPECT_TRUE(translate({0x9F, 0xFF, 0xFF}));
    EXPECT_EQ(renderer.GetNoteVelocity(127), 1.0f);
    EXPECT_TRUE(translate({0x90, 0xFF, 0x80}));  // 0 but for the bit that does not count
    EXPECT_EQ(renderer.GetNoteVelocity(127), 0.0f);
    renderer.MIDITrnsl_CC(255, 1);  // past the table, if it were taken as it is
    EXPECT_EQ(renderer.GetController(127), 1.0f / 127.0f);
    EXPECT_FALSE(translate({0x7F, 60, 100}));
    EXPECT_FALSE(translate({0xF0, 60, 100}));
    EXPECT_FALSE(renderer.TranslateMIDIEvent(renderer.CreateEvent(0, 5)));
    EXPECT_FALSE(renderer.TranslateMIDIEvent(nullptr));
}

TEST(PluginRenderer, KeepsParametersWithinTheirRange) {
    TestDefinition definition;
    CPluginRenderer renderer;
    std::array<char, 64> text{};
    renderer.SetParamValue(2, 0.3456f);
    for (int index : {-1, TestDefinition::kParams, std::numeric_limits<int>::max()}) {
        renderer.SetParamValue(index, 0.5f);
        renderer.SetParamName(index, "nobody");
        renderer.SetParamNeedUpdate(index);
        EXPECT_EQ(renderer.GetParamValue(index), 0.0f);
        EXPECT_FALSE(renderer.TakeParamNeedUpdate(index));
    }
    EXPECT_EQ(renderer.GetParamValue(2), 0.3456f);
    renderer.GetParamDisplay(2, text);
    EXPECT_STREQ(text.data(), "34.6");
    renderer.SetParamName(2, "Tune");
    renderer.GetParamName(2, text);
    EXPECT_STREQ(text.data(), "Tune");
    renderer.SetParamNeedUpdate(2);
    EXPECT_TRUE(renderer.TakeParamNeedUpdate(2));
    EXPECT_FALSE(renderer.TakeParamNeedUpdate(2)) << "the panel hears of it once";
}

TEST(PluginRenderer, IgnoresRatesAndTimesThatAreNone) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    TestDefinition definition;
    CPluginRenderer renderer;
    renderer.SetSongTempo(90.5);
    renderer.SetSongBeatPos(-4.0);
    renderer.Reset(kInfinity);
    for (double none : {0.0, -120.0, -kInfinity, kNaN}) {
        renderer.Reset(none);
        renderer.SetSongTempo(none);
    }
    for (double none : {kNaN, kInfinity, -kInfinity})
        renderer.SetSongBeatPos(none);
    EXPECT_EQ(renderer.GetSampleRate(), 768000.0);
    EXPECT_EQ(renderer.GetSongTempo(), 90.5);
    EXPECT_EQ(renderer.GetSongBeatPos(), -4.0);
}

// Adds the number of the frame to the input.
class CountingEffect : public CPluginRenderer {
  public:
    void ProcessAudioBuffers() override {
        for (int i = 0; i < outputBuffer.GetNumFrames(); ++i) {
            for (int channel : {0, 1})
                outputBuffer.GetBuf(channel)[i] += inputBuffer.GetBuf(channel)[i] + frame;
            frame += 1.0f;
        }
        product = Denormal();
    }
    void ReportChangedValues() override { hostsProduct = Denormal(); }
    static float Denormal() {
        volatile float tiny = 1e-38f;
        return tiny * 1e-3f;
    }
    float frame = 0.0f;
    float product = -1.0f;
    float hostsProduct = -1.0f;
};

TEST(BlockRunner, FeedsInputsOfAnEffectInPlace) {
    TestDefinition definition(1);
    CountingEffect effect;
    std::vector<float> left(700, 1000.0f);
    std::vector<float> right(700, 2000.0f);
    const std::array<const float*, 2> inputs{left.data(), nullptr};
    const std::array<float*, 2> outputs{left.data(), right.data()};
    RunBlock(effect, {inputs, outputs, 700, false}, {});
    EXPECT_EQ(left[699], 1699.0f);
    EXPECT_EQ(right[699], 699.0f);  // a channel that is not connected is silent
}

#if defined(NORAVA_DENORMALS_X86)
TEST(BlockRunner, FlushesDenormalsAndGivesTheHostsModeBack) {
    TestDefinition definition(1);
    CountingEffect effect;
    const unsigned roundDown = 0x2000;
    const unsigned before = _mm_getcsr();
    _mm_setcsr(before | roundDown);
    RunBlock(effect, {{}, {}, 4, false}, {});
    const unsigned after = _mm_getcsr();
    _mm_setcsr(before);
    EXPECT_EQ(effect.product, 0.0f);
    EXPECT_GT(effect.hostsProduct, 0.0f) << "what the host is told, it hears in its own mode";
    // But for the flags of what the host's own denormal number raised.
    EXPECT_EQ(after & ~0x3Fu, (before | roundDown) & ~0x3Fu);
}
#endif

}  // namespace
}  // namespace norava
