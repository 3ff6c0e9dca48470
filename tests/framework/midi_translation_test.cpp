#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "framework/event_buffer.h"

namespace norava {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LoggingBuffer : public CEventBuffer {
  public:
    unsigned char MIDITrnsl_NoteOn(unsigned char note, unsigned char velocity) override {
        return Log("on", note, velocity);
    }
    unsigned char MIDITrnsl_NoteOff(unsigned char note, unsigned char velocity) override {
        return Log("off", note, velocity);
    }
    float MIDITrnsl_PitchWheel(float position) override {
        wheel = position;
        Log("wheel", 0, 0);
        return position;
    }
    unsigned char MIDITrnsl_CC(unsigned char number, unsigned char value) override {
        return Log("cc", number, value);
    }
    unsigned char MIDITrnsl_NoteAftertouch(unsigned char note, unsigned char pressure) override {
        return Log("touch", note, pressure);
    }
    unsigned char MIDITrnsl_ChnAftertouch(unsigned char pressure) override {
        return Log("pressure", pressure, 0);
    }
    unsigned char MIDITrnsl_ProgramNum(unsigned char program) override {
        return Log("program", program, 0);
    }

    bool Translate(std::vector<unsigned char> bytes, unsigned short size = 4) {
        Event* const event = CreateEvent(0, size);
        std::copy_n(bytes.begin(), std::min<std::size_t>(bytes.size(), size), event->data);
        const bool handled = TranslateMIDIEvent(event);
        DeleteAllEvents();
        return handled;
    }

    std::vector<std::string> calls;
    float wheel = 0.0f;

  private:
    unsigned char Log(const std::string& name, int data1, int data2) {
        calls.push_back(name + " " + std::to_string(data1) + " " + std::to_string(data2));
        return 0;
    }
};

TEST(MIDITranslation, ReachesTheTranslatorOfEachMessage) {
    LoggingBuffer buffer;
    for (const auto& message : std::vector<std::vector<unsigned char>>{{0x80, 60, 64},
                                                                       {0x9F, 61, 1},
                                                                       {0x93, 61, 0},
                                                                       {0xA0, 62, 5},
                                                                       {0xB1, 7, 127},
                                                                       {0xC2, 9},
                                                                       {0xD3, 11},
                                                                       {0xE4, 0, 64}})
        EXPECT_TRUE(buffer.Translate(message));
    EXPECT_THAT(buffer.calls, ElementsAre("off 60 64", "on 61 1", "off 61 0", "touch 62 5",
                                          "cc 7 127", "program 9 0", "pressure 11 0", "wheel 0 0"));
}

TEST(MIDITranslation, IgnoresEverythingElse) {
    LoggingBuffer buffer;
    for (const unsigned status : {0x00u, 0x3Cu, 0x7Fu, 0xF0u, 0xF7u, 0xF8u, 0xFFu})
        EXPECT_FALSE(buffer.Translate({static_cast<unsigned char>(status), 60, 100})) << status;
    EXPECT_FALSE(buffer.Translate({0x90, 60, 100}, 3));
    EXPECT_FALSE(buffer.Translate({0x90, 60, 100, 0, 0}, 5));
    EXPECT_FALSE(buffer.TranslateMIDIEvent(buffer.CreateEvent(0, 0)));
    EXPECT_FALSE(buffer.TranslateMIDIEvent(nullptr));
    EXPECT_THAT(buffer.calls, IsEmpty());
}

TEST(MIDITranslation, KeepsDataWithinSevenBits) {
    LoggingBuffer buffer;
    buffer.Translate({0x90, 0xFF, 0xE4});
    buffer.Translate({0x90, 0xBC, 0x80});  // velocity 0 but for the bit that does not count
    EXPECT_THAT(buffer.calls, ElementsAre("on 127 100", "off 60 0"));
}

TEST(MIDITranslation, SpreadsTheWheelOverItsFullTravel) {
    LoggingBuffer buffer;
    buffer.Translate({0xE0, 0, 0});
    EXPECT_EQ(buffer.wheel, -1.0f);
    buffer.Translate({0xE0, 127, 127});
    EXPECT_EQ(buffer.wheel, 1.0f);
    buffer.Translate({0xE0, 0, 64});
    EXPECT_NEAR(buffer.wheel, 0.0000610f, 1e-7f);
}

}  // namespace
}  // namespace norava
