#include "framework/plugin_renderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "framework/test_definition.h"

namespace norava {
namespace {

using Bytes = std::vector<unsigned char>;

TEST(PluginInstance, IsTheNewestAndStartsUnknown) {
    CPluginInstance instance;
    EXPECT_EQ(GetPluginInstance(), &instance);
    std::array<char, 2000> name;
    instance.GetHostName(name);
    EXPECT_STREQ(name.data(), "<unknown>");
    instance.SetHostName(std::string(1000, 'x'));
    EXPECT_EQ(instance.GetHostName(name), kNameCapacity - 1);
    instance.GetOutputChannelName(-2, name);
    EXPECT_STREQ(name.data(), "Channel -2");
    instance.SetUIScalingFactor(-3);
    EXPECT_EQ(instance.GetUIScalingFactor(), 1);
    {
        TestDefinition newer;
        EXPECT_EQ(GetPluginInstance(), &newer);
    }
    EXPECT_EQ(GetPluginInstance(), nullptr);
}

// Writes down which hook a message reaches, and the state that the hook finds kept already.
class HookRenderer : public CPluginRenderer {
  public:
    void MIDINoteOn(int note) override { Log("on", note, GetNoteVelocity(note)); }
    void MIDINoteOff(int note) override { Log("off", note, GetNoteVelocity(note)); }
    void MIDIPitchWheelMoved() override { Log("wheel", 0, GetPitchWheel()); }
    void MIDICCChanged(int number) override { Log("cc", number, GetController(number)); }
    void MIDIAftertouchChanged() override { Log("pressure", 0, GetChannelAftertouch()); }
    void MIDIAftertouchChanged(int note) override { Log("touch", note, GetNoteAftertouch(note)); }
    void MIDIProgramChanged(int program) override { Log("program", program, 0.0f); }

    // The call that a message leads to; empty when it is not handled.
    std::string Translate(const Bytes& bytes, unsigned short size = kMIDIEventSize) {
        call.clear();
        Event* const event = CreateEvent(0, size);
        std::copy_n(bytes.begin(), std::min<std::size_t>(bytes.size(), size), event->data);
        const bool handled = TranslateMIDIEvent(event);
        EXPECT_EQ(handled, !call.empty());
        DeleteAllEvents();
        return call;
    }

  private:
    void Log(const std::string& name, int number, float state) {
        call =
            name + " " + std::to_string(number) + " " + std::to_string(std::lround(state * 127.0f));
    }
    std::string call;
};

class MIDITranslation : public testing::Test {
  protected:
    TestDefinition definition;
    HookRenderer renderer;
};

TEST_F(MIDITranslation, ReachesTheHookOfEachMessageAndIgnoresEverythingElse) {
    const std::pair<Bytes, const char*> cases[] = {
        {{0x9F, 61, 1}, "on 61 1"},
        {{0x93, 61, 0}, "off 61 0"},
        {{0x90, 60, 127}, "on 60 127"},
        {{0x80, 60, 64}, "off 60 0"},
        {{0xA0, 62, 5}, "touch 62 5"},
        {{0xB1, 7, 127}, "cc 7 127"},
        {{0xC2, 9}, "program 9 0"},
        {{0xD3, 11}, "pressure 0 11"},
        {{0xE4, 0, 0}, "wheel 0 -127"},
        {{0xE4, 0, 64}, "wheel 0 0"},
        {{0xE4, 127, 127}, "wheel 0 127"},
        {{0x7F, 60, 100}, ""},
        {{0xF0, 60, 100}, ""},
        {{0xFF, 60, 100}, ""},
    };
    for (const auto& [message, call] : cases)
        EXPECT_EQ(renderer.Translate(message), call);
    EXPECT_EQ(renderer.Translate({0x90, 60, 100, 0, 0}, 5), "");
    EXPECT_FALSE(renderer.TranslateMIDIEvent(renderer.CreateEvent(0, 0)));
    EXPECT_FALSE(renderer.TranslateMIDIEvent(nullptr));
}

TEST_F(MIDITranslation, KeepsDataWithinSevenBits) {
    EXPECT_EQ(renderer.Translate({0x90, 0xFF, 0xE4}), "on 127 100");
    // Velocity 0 but for the bit that does not count.
    EXPECT_EQ(renderer.Translate({0x90, 0xBC, 0x80}), "off 60 0");
    renderer.MIDITrnsl_CC(255, 1);  // past the table, if it were taken as it is
    EXPECT_EQ(renderer.GetController(127), 1.0f / 127.0f);
}

TEST(PluginRenderer, KeepsParametersWithinTheirRange) {
    TestDefinition definition;
    CPluginRenderer renderer;
    std::array<char, 64> text{};
    const auto name = [&](int index) {
        renderer.GetParamName(index, text);
        return std::string(text.data());
    };
    renderer.SetParamValue(2, 0.3456f);
    renderer.SetParamName(2, "Tune");
    for (int index : {-1, TestDefinition::kParams, std::numeric_limits<int>::max()}) {
        renderer.SetParamValue(index, 0.5f);
        renderer.SetParamName(index, "nobody");
        renderer.SetParamNeedUpdate(index);
        EXPECT_EQ(renderer.GetParamValue(index), 0.0f);
        EXPECT_EQ(name(index), "<out of range>");
        EXPECT_FALSE(renderer.TakeParamNeedUpdate(index));
    }
    EXPECT_EQ(renderer.GetParamValue(2), 0.3456f);
    EXPECT_EQ(name(2), "Tune");
    renderer.GetParamDisplay(2, text);
    EXPECT_STREQ(text.data(), "34.6");
    renderer.SetParamNeedUpdate(2);
    EXPECT_TRUE(renderer.TakeParamNeedUpdate(2));
    EXPECT_FALSE(renderer.TakeParamNeedUpdate(2)) << "the panel hears of it once";
}

TEST(PluginRenderer, IgnoresRatesAndTimesThatAreNone) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
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

}  // namespace
}  // namespace norava
