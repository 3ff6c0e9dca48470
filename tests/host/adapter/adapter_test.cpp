#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/plugin_editor_interface.h"
#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"
#include "framework/plugin_wrapper.h"
#include "host/vst/vst_interface.h"

extern "C" norava::vst::AEffect* VSTPluginMain(norava::vst::HostCallback host);

// What the instrument does not show of the adapter, from one that writes down what reaches it.

namespace norava {
namespace {

using namespace vst;
using testing::ElementsAre;
using testing::IsEmpty;

struct {
    std::vector<std::string> entries;
    bool throwing = false;  // every renderer operation throws

    void Add(const std::string& what, double number) {
        Add(what + ' ' + std::to_string(static_cast<int>(number)));
    }
    void Add(const std::string& entry) {
        if (throwing) throw std::runtime_error(entry);
        entries.push_back(entry);
    }
} log;

class FakeRenderer final : public CPluginRenderer {
  public:
    ~FakeRenderer() override { log.entries.emplace_back("renderer gone"); }

    void Reset(double hz) override {
        CPluginRenderer::Reset(hz);
        log.Add("reset", hz);
    }
    void ProcessAudioBuffers() override { log.Add("audio", outputBuffer.GetNumFrames()); }
    void SetSongTempo(double tempo) override { log.Add("tempo", tempo); }
    void SetSongBeatPos(double position) override { log.Add("position", position); }
    bool TransportChanged(bool playing) override {
        log.Add(playing ? "play" : "stop");
        return playing;
    }
    void SetParamValue(int index, float) override { log.Add("parameter", index); }
    float GetParamValue(int index) override {
        log.Add("asked", index);
        return 0.0f;
    }
};

class FakeEditor final : public CPluginEditorInterface {
  public:
    ~FakeEditor() override { log.entries.emplace_back("editor gone"); }

    void Connect(CPluginRenderer* newRenderer, CPluginWrapper* newWrapper) override {
        renderer = newRenderer;
        wrapper = newWrapper;
        log.Add(newWrapper != nullptr ? "connect" : "disconnect");
    }
    void CreateEditorControls() override { log.Add("controls"); }
    bool CanOpenEditor() override { return canOpen; }
    bool OpenEditor(void* parent) override {
        isOpen = parent != nullptr;
        log.Add("open");
        return isOpen;
    }
    void CloseEditor() override {
        isOpen = false;
        log.Add("close");
    }
    bool IsEditorOpen() const override { return isOpen; }
    EditorSize GetEditorSize() const override { return {855, 532}; }
    void IdleEditor() override { log.Add("idle"); }
    bool EditorKeyDown(const EditorKey& key) override {
        log.Add("key " + std::to_string(key.character), key.modifiers);
        return key.character != 0;
    }
    bool EditorKeyUp(const EditorKey&) override { return true; }
    void ValuesChanged() override {}
    void ProgramChanged() override {}
    void Redraw() override {}
    bool AskForFile(const FileRequest&, std::function<void(const std::string&)>) override {
        return false;
    }
    void ShowMessage(const std::string&, const std::string&) override {}
    void ShowBrowser() override {}
    void ShowAboutBox() override {}

    CPluginRenderer* renderer = nullptr;
    CPluginWrapper* wrapper = nullptr;
    bool canOpen = true;

  private:
    bool isOpen = false;
};

class FakeDefinition final : public CPluginInstance {
  public:
    FakeDefinition() { numParams = 1; }
    bool CheckWillOpen() override { return willOpen; }
    std::unique_ptr<CPluginRenderer> CreateRenderer() override {
        return hasRenderer ? std::make_unique<FakeRenderer>() : nullptr;
    }
    std::unique_ptr<CPluginEditorInterface> CreateEditor() override {
        auto made = hasEditor ? std::make_unique<FakeEditor>() : nullptr;
        editor = made.get();
        return made;
    }
    void MakeEffect() { isEffect = true; }

    FakeEditor* editor = nullptr;  // the one made last
    bool willOpen = true;
    bool hasRenderer = true;
    bool hasEditor = true;
};

class AdapterTest : public testing::Test {
  protected:
    AdapterTest() {
        host = this;
        log = {};
    }
    ~AdapterTest() override { Close(); }

    AEffect* Open() {
        effect = VSTPluginMain(Answer);
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
    // Both processing calls, of a record that may be another's, and both for parameters.
    void CallAll(AEffect* record) {
        std::array<float, 8> sound{};
        std::array<float*, 2> channels = {sound.data(), sound.data()};
        effect->processReplacing(record, channels.data(), channels.data(), 8);
        effect->process(record, nullptr, channels.data(), 8);
        effect->setParameter(record, 0, 0.5f);
        EXPECT_EQ(effect->getParameter(record, 0), 0.0f);
    }
    std::vector<std::string> TakeLog() { return std::exchange(log.entries, {}); }

    static iptr Answer(AEffect*, i32 opcode, i32 index, iptr value, void* ptr, f32) {
        switch (opcode) {
            case audioMasterVersion:
                return host->version;
            case audioMasterGetVendorString:
                std::memcpy(ptr, "Vendor", sizeof("Vendor"));
                return 1;
            case audioMasterGetTime: {
                auto& info = value == kVstTempoValid ? host->tempoInfo : host->positionInfo;
                return info.flags != 0 ? reinterpret_cast<iptr>(&info) : 0;
            }
            case audioMasterCanDo:
                return host->canResize && std::string_view("sizeWindow") == static_cast<char*>(ptr);
            case audioMasterSizeWindow:
                return index == 1710 && value == 1064;
            case audioMasterUpdateDisplay:
            case audioMasterAutomate:
            case audioMasterBeginEdit:
            case audioMasterEndEdit:
                host->told.push_back(opcode);
                return 0;
            default:
                return 0;
        }
    }

    static inline AdapterTest* host = nullptr;
    iptr version = kVstVersion;
    VstTimeInfo tempoInfo{};
    VstTimeInfo positionInfo{};
    bool canResize = false;
    std::vector<i32> told;
    FakeDefinition definition;
    AEffect* effect = nullptr;
};

TEST_F(AdapterTest, OpensStepByStepAndClosesThePanelBeforeTheRenderer) {
    ASSERT_NE(Open(), nullptr);
    EXPECT_TRUE(definition.IsVST());
    std::array<char, 64> name;
    definition.GetHostVendorName(name);
    EXPECT_STREQ(name.data(), "Vendor");
    definition.GetHostName(name);
    EXPECT_STREQ(name.data(), "") << "some hosts write nothing";
    EXPECT_EQ(effect->version, 0);  // "<unknown>"
    Dispatch(effEditOpen, 0, 0, this);
    Close();
    EXPECT_THAT(TakeLog(), ElementsAre("connect", "controls", "reset 44100", "open", "close",
                                       "disconnect", "editor gone", "renderer gone"));
}

TEST_F(AdapterTest, RefusesOldHostsAndUnwillingDefinitions) {
    EXPECT_EQ(VSTPluginMain(nullptr), nullptr);
    version = 0;
    EXPECT_EQ(Open(), nullptr);
    version = 2400;
    definition.willOpen = false;
    EXPECT_EQ(Open(), nullptr);
}

TEST_F(AdapterTest, LivesWithoutRendererOrPanel) {
    definition.hasRenderer = false;
    definition.MakeEffect();
    ASSERT_NE(Open(), nullptr);
    EXPECT_EQ(effect->flags & (effFlagsHasEditor | effFlagsIsSynth), 0);
    EXPECT_EQ(Dispatch(effGetPlugCategory), kPlugCategEffect);
    for (int opcode = 2; opcode < 80; ++opcode) {
        for (const int value : {0, 5, -1}) {
            std::array<char, 256> something{};
            Dispatch(opcode, 0, value, something.data());
        }
    }
    CallAll(effect);
    void* chunk = nullptr;
    EXPECT_EQ(Dispatch(effGetChunk, 0, 0, static_cast<void*>(&chunk)), 0);
    Close();

    definition.hasRenderer = true;
    definition.hasEditor = false;
    Open();
    EXPECT_EQ(Dispatch(effGetChunk, 0, 0, static_cast<void*>(&chunk)), 0) << "it saves none";
    for (int opcode : {effEditGetRect, effEditOpen, effEditClose, effEditIdle, effEditKeyDown})
        EXPECT_EQ(Dispatch(opcode, 0, 0, static_cast<void*>(&chunk)), 0);
}

// A host may call a record that it has closed already, or one that never was ours.
TEST_F(AdapterTest, AnswersNothingForARecordWithoutAnInstance) {
    Open();
    void* const object = std::exchange(effect->object, nullptr);
    TakeLog();
    for (AEffect* record : {effect, static_cast<AEffect*>(nullptr)}) {
        EXPECT_EQ(effect->dispatcher(record, effGetVstVersion, 0, 0, nullptr, 0.0f), 0);
        CallAll(record);
    }
    EXPECT_THAT(TakeLog(), IsEmpty());
    effect->object = object;
}

TEST_F(AdapterTest, LetsNoExceptionOut) {
    Open();
    log.throwing = true;
    CallAll(effect);
    EXPECT_EQ(Dispatch(effEditOpen, 0, 0, this), 0);
    Close();
    EXPECT_EQ(Open(), nullptr);  // its renderer cannot be reset
}

TEST_F(AdapterTest, ShowsThePanel) {
    Open();
    TakeLog();
    void* rect = nullptr;
    ASSERT_EQ(Dispatch(effEditGetRect, 0, 0, static_cast<void*>(&rect)), 1);
    EXPECT_EQ(static_cast<ERect*>(rect)->bottom, 532);
    EXPECT_EQ(static_cast<ERect*>(rect)->right, 855);
    EXPECT_EQ(Dispatch(effEditGetRect), 0);
    for (const int opcode : {effEditIdle, effEditKeyDown, effEditKeyUp, effEditClose})
        EXPECT_EQ(Dispatch(opcode, 'a'), 0);
    EXPECT_THAT(TakeLog(), IsEmpty());  // nothing of it reaches a panel that is not open

    EXPECT_EQ(Dispatch(effEditOpen, 0, 0, nullptr), 0);
    EXPECT_EQ(Dispatch(effEditOpen, 0, 0, this), 1);
    EXPECT_EQ(Dispatch(effEditOpen, 0, 0, this), 1);  // again, into another window
    Dispatch(effEditIdle);
    EXPECT_EQ(Dispatch(effEditKeyDown, 'a', 0, nullptr, 9.0f), 1);
    for (const float none : {NAN, -1.0f, 16.0f})
        EXPECT_EQ(Dispatch(effEditKeyDown, 0, 6, nullptr, none), 0);
    EXPECT_EQ(Dispatch(effEditKeyUp, 'a'), 1);
    Dispatch(effEditClose);
    EXPECT_THAT(TakeLog(), ElementsAre("open", "open", "close", "open", "idle", "key 97 9",
                                       "key 0 0", "key 0 0", "key 0 0", "close"));
    const auto changes = definition.editor->renderer->GetAllChangedCount();
    char name[] = "The host's";
    Dispatch(effSetProgramName, 0, 0, name);
    EXPECT_GT(definition.editor->renderer->GetAllChangedCount(), changes) << "it shows the name";
    CPluginWrapper& wrapper = *definition.editor->wrapper;
    wrapper.ProgramChanged();
    for (const int none : {-1, 20000}) {
        wrapper.BeginAutomation(none);
        wrapper.ParameterChanged(none, 0.5f);
        wrapper.FinishAutomation(none);
    }
    EXPECT_THAT(told, ElementsAre(audioMasterUpdateDisplay)) << "not of what is no parameter";
    EXPECT_FALSE(wrapper.ResizeEditor(1710, 1064)) << "nobody was asked";
    canResize = true;
    EXPECT_TRUE(wrapper.ResizeEditor(1710, 1064));
    EXPECT_FALSE(wrapper.ResizeEditor(20000, 20000));
    definition.editor->canOpen = false;
    EXPECT_EQ(Dispatch(effEditOpen, 0, 0, this), 0);
}

TEST_F(AdapterTest, PassesOnRatesAndTheTimeOfEachBlock) {
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
    tempoInfo.flags = kVstTempoValid | kVstTransportChanged | kVstTransportPlaying;
    tempoInfo.tempo = 99.0;
    tempoInfo.ppqPos = 7.0;  // not asked for here
    positionInfo.flags = kVstPpqPosValid;
    positionInfo.ppqPos = 4.0;
    effect->processReplacing(effect, nullptr, nullptr, 8);
    EXPECT_THAT(TakeLog(), ElementsAre("tempo 99", "position 4", "play", "audio 8"));
    tempoInfo.flags = positionInfo.flags = kVstTransportChanged;
    effect->processReplacing(effect, nullptr, nullptr, 8);
    EXPECT_THAT(TakeLog(), ElementsAre("stop", "audio 8"));
}

}  // namespace
}  // namespace norava
