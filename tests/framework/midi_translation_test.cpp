#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "framework/plugin_renderer.h"
#include "framework/test_definition.h"

// From the bytes of a message to the hook of the instrument, which finds the state kept already.

namespace norava {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<unsigned char>;

class HookRenderer : public CPluginRenderer {
  public:
    void MIDINoteOn(int note) override { Log("on", note, GetNoteVelocity(note)); }
    void MIDINoteOff(int note) override { Log("off", note, GetNoteVelocity(note)); }
    void MIDIPitchWheelMoved() override { Log("wheel", 0, GetPitchWheel()); }
    void MIDICCChanged(int number) override { Log("cc", number, GetController(number)); }
    void MIDIAftertouchChanged() override { Log("pressure", 0, GetChannelAftertouch()); }
    void MIDIAftertouchChanged(int note) override { Log("touch", note, GetNoteAftertouch(note)); }
    void MIDIProgramChanged(int program) override { Log("program", program, 0.0f); }

    bool Translate(const Bytes& bytes, unsigned short size = 4) {
        Event* const event = CreateEvent(0, size);
        std::copy_n(bytes.begin(), std::min<std::size_t>(bytes.size(), size), event->data);
        const bool handled = TranslateMIDIEvent(event);
        DeleteAllEvents();
        return handled;
    }
    std::vector<std::string> calls;

  private:
    void Log(const std::string& name, int number, float state) {
        calls.push_back(name + " " + std::to_string(number) + " " +
                        std::to_string(std::lround(state * 127.0f)));
    }
};

class MIDITranslation : public testing::Test {
  protected:
    TestDefinition definition;
    HookRenderer renderer;
};

TEST_F(MIDITranslation, ReachesTheHookOfEachMessage) {
    for (const Bytes& message : {Bytes{0x9F, 61, 1},
                                 {0x93, 61, 0},
                                 {0x90, 60, 127},
                                 {0x80, 60, 64},
                                 {0xA0, 62, 5},
                                 {0xB1, 7, 127},
                                 {0xC2, 9},
                                 {0xD3, 11},
                                 {0xE4, 0, 64}})
        EXPECT_TRUE(renderer.Translate(message));
    EXPECT_THAT(renderer.calls,
                ElementsAre("on 61 1", "off 61 0", "on 60 127", "off 60 0", "touch 62 5",
                            "cc 7 127", "program 9 0", "pressure 0 11", "wheel 0 0"));
}

TEST_F(MIDITranslation, IgnoresEverythingElse) {
    for (const unsigned status : {0x00u, 0x3Cu, 0x7Fu, 0xF0u, 0xF7u, 0xF8u, 0xFFu})
        EXPECT_FALSE(renderer.Translate({static_cast<unsigned char>(status), 60, 100})) << status;
    EXPECT_FALSE(renderer.Translate({0x90, 60, 100}, 3));
    EXPECT_FALSE(renderer.Translate({0x90, 60, 100, 0, 0}, 5));
    EXPECT_FALSE(renderer.TranslateMIDIEvent(renderer.CreateEvent(0, 0)));
    EXPECT_FALSE(renderer.TranslateMIDIEvent(nullptr));
    EXPECT_THAT(renderer.calls, IsEmpty());
}

TEST_F(MIDITranslation, KeepsDataWithinSevenBits) {
    renderer.Translate({0x90, 0xFF, 0xE4});
    renderer.Translate({0x90, 0xBC, 0x80});  // velocity 0 but for the bit that does not count
    EXPECT_THAT(renderer.calls, ElementsAre("on 127 100", "off 60 0"));
    renderer.MIDITrnsl_CC(255, 1);  // past the table, if it were taken as it is
    EXPECT_EQ(renderer.GetController(127), 1.0f / 127.0f);
}

TEST_F(MIDITranslation, SpreadsTheWheelOverItsFullTravel) {
    renderer.Translate({0xE0, 0, 0});
    EXPECT_EQ(renderer.GetPitchWheel(), -1.0f);
    renderer.Translate({0xE0, 127, 127});
    EXPECT_EQ(renderer.GetPitchWheel(), 1.0f);
    renderer.Translate({0xE0, 0, 64});
    EXPECT_NEAR(renderer.GetPitchWheel(), 0.0000610f, 1e-7f);
}

}  // namespace
}  // namespace norava
