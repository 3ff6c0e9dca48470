#include <gtest/gtest.h>

#include <cstring>
#include <string>
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
    EXPECT_EQ(effect.processDoubleReplacing, nullptr);
    void* rect = nullptr;
    EXPECT_EQ((effect.flags & effFlagsHasEditor) != 0,
              instance.Dispatch(effEditGetRect, 0, 0, static_cast<void*>(&rect)) != 0);
}

TEST(ModuleIdentity, AnswersWhatHostsAsk) {
    VstInstance instance;
    EXPECT_EQ(instance.Text(effGetEffectName, 0, 32), "Norava");
    EXPECT_EQ(instance.Text(effGetVendorString, 0, 64), "Hollo-Vane");
    EXPECT_EQ(instance.Text(effGetProductString, 0, 64), "Norava 1.1.5");
    EXPECT_EQ(instance.Dispatch(effGetVstVersion), 2400);
    EXPECT_EQ(instance.Dispatch(effGetVendorVersion), 1150);
    EXPECT_EQ(instance.Dispatch(effGetPlugCategory), kPlugCategSynth);
    EXPECT_EQ(instance.Dispatch(effIdentify), 0x4E764566);
    EXPECT_EQ(instance.Dispatch(effSetProcessPrecision, 0, 0), 1);
    EXPECT_EQ(instance.Dispatch(effSetProcessPrecision, 0, 1), 0);
    for (int i = -1; i <= VstInstance::kParams; ++i) {
        const bool exists = i >= 0 && i < VstInstance::kParams;
        const bool isNamed = exists && i < kNumHostParameters;
        EXPECT_EQ(instance.Dispatch(effCanBeAutomated, i), exists);
        EXPECT_EQ(instance.Text(effGetParamName, i, 32), isNamed  ? GetParameter(i).name
                                                         : exists ? ""
                                                                  : "<out of range>");
        EXPECT_EQ(instance.Get(i), exists ? GetParameter(i).defaultValue : 0.0f) << i;
    }

    const auto canDo = [&](std::string ability) {
        return instance.Dispatch(effCanDo, 0, 0, ability.data());
    };
    for (const char* ability : {"receiveVstEvents", "receiveVstMidiEvent", "receiveVstTimeInfo"})
        EXPECT_EQ(canDo(ability), 1) << ability;
    for (const char* ability : {"sendVstMidiEvent", "bypass", "", "receiveVstEvent"})
        EXPECT_EQ(canDo(ability), -1) << ability;

    for (int pin = -1; pin <= 2; ++pin) {
        VstPinProperties properties;
        std::memset(&properties, 0xAA, sizeof(properties));
        const bool exists = pin == 0 || pin == 1;
        EXPECT_EQ(instance.Dispatch(effGetOutputProperties, pin, 0, &properties), exists);
        if (!exists) continue;
        EXPECT_STREQ(properties.label, "Master");
        EXPECT_EQ(properties.flags, kVstPinIsActive | kVstPinIsStereo);
        EXPECT_EQ(properties.future[47], 0);
    }
}

TEST(ModuleIdentity, AnswersNothingToUnknownQuestionsAndMissingPointers) {
    VstInstance instance(44100.0f);
    const std::vector<char> before = instance.Chunk();
    // Known to the interface, not to us: deprecated, offline and shell calls, speakers, MIDI names.
    auto* const noPointer = reinterpret_cast<void*>(std::uintptr_t{0x10});
    for (int opcode : {-1, 9, 16, 18, 20, 27, 28, 30, 33, 36, 44, 46, 50, 52, 57, 61, 66, 79, 300})
        EXPECT_EQ(instance.Dispatch(opcode, 3, -7, noPointer, 0.5f), 0) << opcode;
    for (int opcode = 2; opcode < 80; ++opcode)
        instance.Dispatch(opcode);
    EXPECT_EQ(instance.Chunk(), before);
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
    instance.SetProgramName("x");
    const std::vector<char> before = instance.Chunk();
    for (const auto& [name, shown] : {std::pair{"12345678901234567890123456789", 23u},
                                      {"12345678901234567890ab\xc3\xa4", 22u}}) {
        instance.SetProgramName(name);
        EXPECT_EQ(instance.ProgramName(), std::string(name, shown));
        EXPECT_EQ(instance.Text(effGetProgramNameIndexed, 5, 24), std::string(name, shown));
    }
    instance.SetProgramName(std::string(300, 'n'));
    EXPECT_EQ(std::string(instance.Chunk().data() + 460), std::string(127, 'n'));
    instance.SetProgramName("x");
    EXPECT_EQ(instance.Chunk(), before) << "something is left of a longer name";
}

}  // namespace
}  // namespace norava
