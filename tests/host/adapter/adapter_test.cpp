#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/adapter/fake_plugin.h"
#include "host/vst/vst_interface.h"
#include "host/vst/vst_wrapper.h"

extern "C" norava::vst::AEffect* VSTPluginMain(norava::vst::HostCallback host);

namespace norava {
namespace {

using namespace vst;
using testing::ElementsAre;
using testing::IsEmpty;

struct FakeHost {
    iptr version = kVstVersion;
    std::vector<std::string> calls;
    VstTimeInfo tempoInfo{};
    VstTimeInfo positionInfo{};
    AEffect* effect = nullptr;
};
FakeHost* fakeHost = nullptr;

iptr HostAnswer(AEffect* effect, i32 opcode, i32 index, iptr value, void* ptr, f32 opt) {
    switch (opcode) {
        case audioMasterVersion:
            return fakeHost->version;
        case audioMasterGetVendorString:
            std::memcpy(ptr, "Vendor", sizeof("Vendor"));
            return 1;
        case audioMasterGetProductString:
            return 0;  // some hosts write nothing
        case audioMasterGetTime: {
            const bool tempo = value == kVstTempoValid;
            EXPECT_TRUE(tempo || value == kVstPpqPosValid);
            VstTimeInfo& info = tempo ? fakeHost->tempoInfo : fakeHost->positionInfo;
            return info.flags != 0 ? reinterpret_cast<iptr>(&info) : 0;
        }
        default:
            // Hosts call back from inside their answer.
            if (effect != nullptr) effect->getParameter(effect, 0);
            fakeHost->calls.push_back(std::to_string(opcode) + " " + std::to_string(index) + " " +
                                      std::to_string(static_cast<int>(100.0f * opt)));
            return 0;
    }
}

class AdapterTest : public testing::Test {
  protected:
    AdapterTest() { fakeHost = &host; }
    ~AdapterTest() override { Close(); }

    AEffect* Open() {
        effect = VSTPluginMain(HostAnswer);
        return effect;
    }
    void Close() {
        if (effect != nullptr) Dispatch(effClose);
        effect = nullptr;
    }
    iptr Dispatch(int opcode, int index = 0, iptr value = 0, void* ptr = nullptr,
                  float opt = 0.0f) {
        return effect->dispatcher(effect, opcode, index, value, ptr, opt);
    }
    std::vector<std::string> TakeLog() { return std::exchange(definition.log.entries, {}); }
    CPluginWrapper& Wrapper() { return *definition.editor->wrapper; }

    FakeHost host;
    FakeDefinition definition;
    AEffect* effect = nullptr;
};

TEST_F(AdapterTest, MakesAnInstanceStepByStep) {
    ASSERT_NE(Open(), nullptr);
    EXPECT_TRUE(definition.IsVST());
    std::array<char, 64> name;
    definition.GetHostVendorName(name);
    EXPECT_STREQ(name.data(), "Vendor");
    definition.GetHostName(name);
    EXPECT_STREQ(name.data(), "");
    EXPECT_THAT(TakeLog(), ElementsAre("connect", "controls", "reset 44100"));
    EXPECT_EQ(effect->flags,
              effFlagsHasEditor | effFlagsCanReplacing | effFlagsProgramChunks | effFlagsIsSynth);
    EXPECT_EQ(effect->uniqueID, 0x11223344);
    EXPECT_EQ(effect->version, 0);  // "<unknown>"
}

TEST_F(AdapterTest, RefusesOldHostsAndUnwillingDefinitions) {
    host.version = 0;
    EXPECT_EQ(Open(), nullptr);
    host.version = 2400;
    definition.willOpen = false;
    EXPECT_EQ(Open(), nullptr);
}

TEST_F(AdapterTest, ClosesThePanelBeforeTheRenderer) {
    Open();
    Dispatch(effEditOpen, 0, 0, this);
    TakeLog();
    Close();
    EXPECT_THAT(TakeLog(), ElementsAre("close", "disconnect", "editor gone", "renderer gone"));
}

TEST_F(AdapterTest, LivesWithoutRendererOrPanel) {
    definition.hasRenderer = false;
    ASSERT_NE(Open(), nullptr);
    EXPECT_EQ(effect->flags & effFlagsHasEditor, 0);
    std::array<float, 8> sound{};
    float* outputs[2] = {sound.data(), sound.data()};
    for (int opcode = 2; opcode < 80; ++opcode)
        Dispatch(opcode);
    effect->setParameter(effect, 0, 0.5f);
    EXPECT_EQ(effect->getParameter(effect, 0), 0.0f);
    effect->processReplacing(effect, nullptr, outputs, 8);
    effect->process(effect, nullptr, outputs, 8);
    void* chunk = nullptr;
    EXPECT_EQ(Dispatch(effGetChunk, 0, 0, &chunk), 0);
    char data[] = "state";
    EXPECT_EQ(Dispatch(effSetChunk, 0, 5, data), 0);
    VstEvents events{};
    EXPECT_EQ(Dispatch(effProcessEvents, 0, 0, &events), 1);
    char name[64] = "untouched";
    EXPECT_EQ(Dispatch(effGetProgramNameIndexed, 0, 0, name), 1);
    EXPECT_STREQ(name, "");
    Close();

    definition.hasRenderer = true;
    definition.hasEditor = false;
    Open();
    ERect* rect = nullptr;
    for (int opcode : {effEditGetRect, effEditOpen, effEditClose, effEditIdle, effEditKeyDown})
        EXPECT_EQ(Dispatch(opcode, 0, 0, &rect), 0);
    EXPECT_EQ(rect, nullptr);
}

// A host may call a record that it has closed already, or one that never was ours.
TEST_F(AdapterTest, AnswersNothingForARecordWithoutAnInstance) {
    Open();
    void* const object = std::exchange(effect->object, nullptr);
    std::array<float, 8> sound{};
    float* outputs[2] = {sound.data(), sound.data()};
    TakeLog();
    for (AEffect* record : {effect, static_cast<AEffect*>(nullptr)}) {
        EXPECT_EQ(effect->dispatcher(record, effGetVstVersion, 0, 0, nullptr, 0.0f), 0);
        effect->process(record, nullptr, outputs, 8);
        effect->processReplacing(record, nullptr, outputs, 8);
        effect->setParameter(record, 0, 0.5f);
        EXPECT_EQ(effect->getParameter(record, 0), 0.0f);
    }
    EXPECT_THAT(TakeLog(), IsEmpty());
    effect->object = object;
}

TEST_F(AdapterTest, ShowsThePanel) {
    Open();
    TakeLog();
    ERect* rect = nullptr;
    EXPECT_EQ(Dispatch(effEditGetRect, 0, 0, &rect), 1);
    ASSERT_NE(rect, nullptr);
    EXPECT_EQ(rect->top, 0);
    EXPECT_EQ(rect->left, 0);
    EXPECT_EQ(rect->bottom, 532);
    EXPECT_EQ(rect->right, 855);
    EXPECT_EQ(Dispatch(effEditGetRect), 0);
    Dispatch(effEditIdle);
    EXPECT_EQ(Dispatch(effEditKeyDown, 'a', 0), 0);
    Dispatch(effEditClose);
    EXPECT_THAT(TakeLog(), IsEmpty());  // nothing of it reaches a panel that is not open

    EXPECT_EQ(Dispatch(effEditOpen, 0, 0, nullptr), 0);
    TakeLog();
    EXPECT_EQ(Dispatch(effEditOpen, 0, 0, this), 1);
    EXPECT_EQ(Dispatch(effEditOpen, 0, 0, this), 1);  // again, into another window
    Dispatch(effEditIdle);
    EXPECT_EQ(Dispatch(effEditKeyDown, 'a', 0, nullptr, 9.0f), 1);
    for (const float none : {NAN, -1.0f, 16.0f})
        EXPECT_EQ(Dispatch(effEditKeyDown, 0, 6, nullptr, none), 0);
    EXPECT_EQ(Dispatch(effEditKeyUp, 'a', 0), 0);
    Dispatch(effEditClose);
    EXPECT_THAT(TakeLog(), ElementsAre("open", "close", "open", "idle", "key 97 0 9", "key 0 6 0",
                                       "key 0 6 0", "key 0 6 0", "close"));
    definition.editor->canOpen = false;
    EXPECT_EQ(Dispatch(effEditOpen, 0, 0, this), 0);
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(AdapterTest, ReportsEditsOfExistingParametersOnly) {
    Open();
    for (int index : {-1, 2, FakeDefinition::kParams}) {
        Wrapper().BeginAutomation(index);
        Wrapper().ParameterChanged(index, 0.5f);
        Wrapper().FinishAutomation(index);
    }
    EXPECT_THAT(host.calls, ElementsAre("43 2 0", "0 2 50", "44 2 0"));
    // Hooks of another format do nothing.
    Wrapper().TQ_RightClick(1);
    std::array<char, 8> name;
    EXPECT_FALSE(Wrapper().TQ_GetOutputName(0, name));
    EXPECT_EQ(Wrapper().TQ_GetNumOutputs(), 0);
    EXPECT_EQ(host.calls.size(), 3u);
}

TEST_F(AdapterTest, TellsThePanelOfAutomation) {
    Open();
    CPluginRenderer& renderer = *definition.editor->renderer;
    EXPECT_EQ(renderer.GetEditor(), definition.editor);
    effect->setParameter(effect, 3, 0.5f);
    EXPECT_TRUE(renderer.TakeParamNeedUpdate(3));
    EXPECT_FALSE(renderer.TakeParamNeedUpdate(3));
}

TEST_F(AdapterTest, HandsChunksOver) {
    Open();
    void* data = nullptr;
    ASSERT_EQ(Dispatch(effGetChunk, 0, 0, &data), 5);
    EXPECT_EQ(std::memcmp(data, "state", 5), 0);
    effect->setParameter(effect, 1, 0.25f);
    EXPECT_EQ(Dispatch(effSetChunk, 1, 5, data), 5);
    EXPECT_THAT(host.calls, ElementsAre("0 0 0", "0 1 25", "0 2 0", "0 3 0"));
    host.calls.clear();
    EXPECT_EQ(Dispatch(effSetChunk, 1, 4, data), 0);
    EXPECT_EQ(Dispatch(effSetChunk, 1, iptr{1} << 40, data), 0);
    EXPECT_THAT(host.calls, IsEmpty());
    // A host that asks on ever new threads: each reads what it was given.
    for (int i = 0; i < 80; ++i) {
        std::thread([&] {
            void* own = nullptr;
            ASSERT_EQ(Dispatch(effGetChunk, 0, 0, &own), 5);
            EXPECT_EQ(std::memcmp(own, "state", 5), 0);
        }).join();
    }
}

TEST_F(AdapterTest, ResetsOnSuspendResumeAndNewRates) {
    Open();
    TakeLog();
    Dispatch(effSetSampleRate, 0, 0, nullptr, 44100.0f);  // nothing new
    Dispatch(effSetSampleRate, 0, 0, nullptr, NAN);
    Dispatch(effMainsChanged, 0, 1);
    Dispatch(effSetSampleRate, 0, 0, nullptr, 96000.0f);
    Dispatch(effSetBlockSizeAndSampleRate, 0, 64, nullptr, 48000.0f);
    Dispatch(effSetSampleRate, 0, 0, nullptr, 10.0f);
    Dispatch(effSetSampleRate, 0, 0, nullptr, 20.0f);  // the same lowest rate
    Dispatch(effMainsChanged, 0, 0);
    EXPECT_THAT(TakeLog(),
                ElementsAre("reset 0", "reset 96000", "reset 48000", "reset 1000", "reset 0"));
}

TEST_F(AdapterTest, AsksForTheTimeOfEachBlock) {
    Open();
    TakeLog();
    host.tempoInfo.flags = kVstTempoValid | kVstTransportChanged | kVstTransportPlaying;
    host.tempoInfo.tempo = 99.0;
    host.tempoInfo.ppqPos = 7.0;  // not asked for here
    host.positionInfo.flags = kVstPpqPosValid;
    host.positionInfo.ppqPos = 4.0;
    std::array<float, 8> sound{};
    float* outputs[2] = {sound.data(), sound.data()};
    effect->processReplacing(effect, nullptr, outputs, 8);
    EXPECT_THAT(TakeLog(), ElementsAre("tempo 99", "position 4", "play", "audio 8"));
    host.tempoInfo.flags = kVstTransportChanged;
    host.positionInfo.flags = 0;
    effect->processReplacing(effect, nullptr, outputs, 8);
    EXPECT_THAT(TakeLog(), ElementsAre("stop", "audio 8"));
}

TEST_F(AdapterTest, CutsLongNames) {
    definition.SetNames(std::string(200, 'n'));
    Open();
    for (const auto& [opcode, length] : {std::pair{effGetEffectName, 31u},
                                         {effGetVendorString, 63u},
                                         {effGetProductString, 63u}}) {
        std::array<char, 256> text;
        text.fill('#');
        EXPECT_EQ(Dispatch(opcode, 0, 0, text.data()), 1);
        EXPECT_EQ(std::string(text.data()).size(), length);
        EXPECT_EQ(text[length + 1], '#');
    }
}

TEST_F(AdapterTest, DescribesAnEffect) {
    definition.MakeEffect();
    Open();
    EXPECT_EQ(effect->flags & effFlagsIsSynth, 0);
    EXPECT_EQ(effect->numInputs, 2);
    EXPECT_EQ(Dispatch(effGetPlugCategory), kPlugCategEffect);
}

TEST_F(AdapterTest, LetsNoExceptionOut) {
    Open();
    definition.log.throwing = true;
    char text[64] = "";
    std::array<float, 8> sound{};
    float* outputs[2] = {sound.data(), sound.data()};
    effect->setParameter(effect, 0, 0.5f);
    effect->processReplacing(effect, nullptr, outputs, 8);
    effect->process(effect, nullptr, outputs, 8);
    EXPECT_EQ(Dispatch(effGetParamDisplay, 0, 0, text), 0);
    EXPECT_EQ(Dispatch(effSetChunk, 0, 5, text), 0);
    EXPECT_EQ(Dispatch(effEditOpen, 0, 0, this), 0);
    Close();
    EXPECT_EQ(VSTPluginMain(HostAnswer), nullptr);  // its renderer cannot be reset
}

}  // namespace
}  // namespace norava
