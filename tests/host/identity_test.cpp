#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "host/vst_host.h"
#include "parameters/parameter_table.h"
#include "synth/hostile_floats.h"

namespace norava {
namespace {

using namespace vst;

TEST(ModuleIdentity, FillsTheRecord) {
    VstInstance instance;
    const AEffect& effect = *instance.effect;
    EXPECT_EQ(effect.magic, 0x56737450);
    EXPECT_EQ(effect.numPrograms, 1);
    EXPECT_EQ(effect.numParams, 114);
    EXPECT_EQ(effect.numInputs, 0);
    EXPECT_EQ(effect.numOutputs, 2);
    EXPECT_EQ(effect.flags & ~effFlagsHasEditor,
              effFlagsCanReplacing | effFlagsProgramChunks | effFlagsIsSynth);
    EXPECT_EQ(effect.uniqueID, 0x4E6F7652);
    EXPECT_EQ(effect.version, 1150);
    EXPECT_EQ(effect.ioRatio, 1.0f);
    EXPECT_EQ(effect.initialDelay, 0);
    EXPECT_EQ(effect.resvd2, 0);
    EXPECT_NE(effect.object, nullptr);
    EXPECT_NE(effect.process, nullptr);
    EXPECT_EQ(effect.processDoubleReplacing, nullptr);
    EXPECT_EQ((effect.flags & effFlagsHasEditor) != 0,
              instance.Dispatch(effEditGetRect, 0, 0, std::array<void*, 1>{}.data()) != 0);
}

TEST(ModuleIdentity, AnswersWhatHostsAsk) {
    VstInstance instance;
    EXPECT_EQ(instance.Text(effGetEffectName, 0, 32), "Norava");
    EXPECT_EQ(instance.Text(effGetVendorString, 0, 64), "Hollo-Vane");
    EXPECT_EQ(instance.Text(effGetProductString, 0, 64), "Norava 1.1.5");
    std::array<char, 64> text;
    for (int opcode : {effGetEffectName, effGetVendorString, effGetProductString})
        EXPECT_EQ(instance.Dispatch(opcode, 0, 0, text.data()), 1);
    EXPECT_EQ(instance.Dispatch(effGetVstVersion), 2400);
    EXPECT_EQ(instance.Dispatch(effGetVendorVersion), 1150);
    EXPECT_EQ(instance.Dispatch(effGetPlugCategory), kPlugCategSynth);
    EXPECT_EQ(instance.Dispatch(effIdentify), 0x4E764566);
    EXPECT_EQ(instance.Dispatch(effSetProcessPrecision, 0, 0), 1);
    EXPECT_EQ(instance.Dispatch(effSetProcessPrecision, 0, 1), 0);
    for (int i = 0; i < VstInstance::kParams; ++i)
        EXPECT_EQ(instance.Dispatch(effCanBeAutomated, i), 1);
    EXPECT_EQ(instance.Dispatch(effCanBeAutomated, -1), 0);
    EXPECT_EQ(instance.Dispatch(effCanBeAutomated, VstInstance::kParams), 0);

    const auto canDo = [&](const char* ability) {
        return instance.Dispatch(effCanDo, 0, 0, const_cast<char*>(ability));
    };
    for (const char* ability : {"receiveVstEvents", "receiveVstMidiEvent", "receiveVstTimeInfo"})
        EXPECT_EQ(canDo(ability), 1) << ability;
    for (const char* ability : {"sendVstMidiEvent", "bypass", "offline", "", "receiveVstEvent"})
        EXPECT_EQ(canDo(ability), -1) << ability;
}

TEST(ModuleIdentity, DescribesBothPins) {
    VstInstance instance;
    for (int pin : {0, 1}) {
        VstPinProperties properties;
        std::memset(&properties, 0xAA, sizeof(properties));
        EXPECT_EQ(instance.Dispatch(effGetOutputProperties, pin, 0, &properties), 1);
        EXPECT_STREQ(properties.label, "Master");
        EXPECT_EQ(properties.flags, kVstPinIsActive | kVstPinIsStereo);
        EXPECT_EQ(properties.future[47], 0);
    }
    VstPinProperties properties;
    for (int pin : {-1, 2, 1000})
        EXPECT_EQ(instance.Dispatch(effGetOutputProperties, pin, 0, &properties), 0);
}

TEST(ModuleParameters, HaveNamesUnitsAndTexts) {
    VstInstance instance;
    for (int i = 0; i < VstInstance::kParams; ++i) {
        const std::string expected{i < kNumHostParameters ? GetParameter(i).name : ""};
        EXPECT_EQ(instance.Text(effGetParamName, i, 32), expected);
        instance.Text(effGetParamLabel, i, 32);
        EXPECT_EQ(instance.Get(i), GetParameter(i).defaultValue) << i;
    }
    EXPECT_EQ(instance.Text(effGetParamName, -1, 32), "<out of range>");
    EXPECT_EQ(instance.Text(effGetParamName, 114, 32), "<out of range>");
    EXPECT_EQ(instance.Get(114), 0.0f);
    instance.Set(114, 0.5f);
    instance.Set(-1, 0.5f);
}

TEST(ModuleParameters, ShowAnyValueWithinTheHostsBuffer) {
    VstInstance instance;
    for (const float value : test::HostileFloats()) {
        for (int i = -1; i <= VstInstance::kParams; ++i) {
            instance.Set(i, value);
            instance.Text(effGetParamDisplay, i, 32);
            instance.Text(effGetParamLabel, i, 32);
        }
    }
}

TEST(ModuleProgram, HasANameThatFitsEveryHost) {
    VstInstance instance;
    char name[] = "A name of more than twenty-three characters \xc3\xa4";
    instance.Dispatch(effSetProgramName, 0, 0, name);
    EXPECT_EQ(instance.Text(effGetProgramName, 0, 24), std::string(name, 23));
    for (int index : {0, 5, -1})
        EXPECT_EQ(instance.Text(effGetProgramNameIndexed, index, 24), std::string(name, 23));
    char umlauts[] = "12345678901234567890ab\xc3\xa4";
    instance.Dispatch(effSetProgramName, 0, 0, umlauts);
    EXPECT_EQ(instance.Text(effGetProgramName, 0, 24), "12345678901234567890ab");

    instance.Dispatch(effSetProgram, 0, 0);
    for (int number : {1, -1, std::numeric_limits<int>::max()})
        instance.Dispatch(effSetProgram, 0, number);
    EXPECT_EQ(instance.Dispatch(effGetProgram), 0);
}

TEST(ModuleIdentity, AnswersNothingToUnknownQuestions) {
    VstInstance instance;
    instance.Start(44100.0f);
    const std::vector<char> before = instance.Chunk();
    std::vector<int> opcodes = {-1, -1000, 0x40000000, static_cast<int>(0xDEADBEEF), 1 << 16};
    for (int opcode = 80; opcode < 300; ++opcode)
        opcodes.push_back(opcode);
    // Known to the interface, not to us: deprecated, offline and shell calls, speakers, MIDI names.
    for (int opcode : {9,  16, 17, 18, 20, 21, 27, 28, 30, 31, 32, 33, 36, 37, 38, 39,
                       40, 41, 42, 44, 46, 50, 52, 53, 54, 55, 56, 57, 61, 62, 63, 64,
                       65, 66, 67, 68, 69, 70, 71, 72, 73, 74, 75, 76, 78, 79})
        opcodes.push_back(opcode);
    auto* const noPointer = reinterpret_cast<void*>(std::uintptr_t{0x10});
    for (int opcode : opcodes)
        EXPECT_EQ(instance.Dispatch(opcode, 3, -7, noPointer, 0.5f), 0) << opcode;
    EXPECT_EQ(instance.Chunk(), before);
}

TEST(ModuleIdentity, SurvivesMissingPointers) {
    VstInstance instance;
    for (int opcode = 2; opcode < 80; ++opcode)
        instance.Dispatch(opcode, 0, 0, nullptr, 0.0f);
    EXPECT_EQ(instance.effect->dispatcher(nullptr, effGetVstVersion, 0, 0, nullptr, 0.0f), 0);
    EXPECT_EQ(VstModule::GetEntry()(nullptr), nullptr);
    EXPECT_EQ(VstModule::GetEntry()([](AEffect*, i32, i32, iptr, void*, f32) { return iptr{0}; }),
              nullptr);
}

TEST(ModuleLife, IsClosedAtAnyTime) {
    { VstInstance opened; }
    {
        VstInstance resumed;
        resumed.Start(48000.0f);
        resumed.Note(60);
        resumed.Render(100);
        resumed.Note(61);  // waits for a block that never comes
    }
    {
        VstInstance odd;
        odd.Dispatch(effMainsChanged, 0, 0);
        odd.Dispatch(effMainsChanged, 0, 0);
        odd.Render(64);
        odd.Dispatch(effMainsChanged, 0, 1);
        odd.Dispatch(effMainsChanged, 0, 1);
        odd.Dispatch(effSetSampleRate, 0, 0, nullptr, 96000.0f);
        EXPECT_TRUE(IsFinite(odd.Render(64)));
    }
}

TEST(ModuleLife, IsMadeOnSeveralThreads) {
    const auto openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = openFiles();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 5; ++n) {
                VstInstance instance;
                instance.Start(48000.0f);
                instance.Note(60);
                EXPECT_TRUE(IsFinite(instance.Render(256)));
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(openFiles(), before);
}

}  // namespace
}  // namespace norava
