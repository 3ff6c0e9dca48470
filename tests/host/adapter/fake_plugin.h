#pragma once

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "framework/plugin_editor_interface.h"
#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"
#include "framework/plugin_wrapper.h"

namespace norava {

// A plug-in that writes down, in one list, what reaches its renderer and its panel.
struct FakeLog {
    std::vector<std::string> entries;
    bool throwing = false;  // every renderer operation throws

    void Add(std::string entry) {
        if (throwing) throw std::runtime_error(entry);
        entries.push_back(std::move(entry));
    }
};

class FakeRenderer final : public CPluginRenderer {
  public:
    explicit FakeRenderer(FakeLog& fakeLog) : log(fakeLog) {}
    ~FakeRenderer() override { log.entries.emplace_back("renderer gone"); }

    void Reset(double hz) override {
        CPluginRenderer::Reset(hz);
        log.Add("reset " + std::to_string(static_cast<int>(hz)));
    }
    void ProcessAudioBuffers() override {
        log.Add("audio " + std::to_string(outputBuffer.GetNumFrames()));
    }
    void SetSongTempo(double tempo) override {
        log.Add("tempo " + std::to_string(static_cast<int>(tempo)));
    }
    void SetSongBeatPos(double position) override {
        log.Add("position " + std::to_string(static_cast<int>(position)));
    }
    bool TransportChanged(bool playing) override {
        log.Add(playing ? "play" : "stop");
        return playing;
    }
    void SetParamValue(int index, float value) override {
        CPluginRenderer::SetParamValue(index, value);
        log.Add("parameter " + std::to_string(index));
    }
    void GetParamDisplay(int index, std::span<char> text) override {
        log.Add("display");
        CPluginRenderer::GetParamDisplay(index, text);
    }
    int SaveState(char* buffer) override {
        if (buffer != nullptr) std::ranges::copy(std::string_view("state"), buffer);
        return 5;
    }
    bool LoadState(const char* data, int size) override {
        log.Add("load " + std::to_string(size));
        return size == 5 && std::memcmp(data, "state", 5) == 0;
    }

  private:
    FakeLog& log;
};

class FakeEditor final : public CPluginEditorInterface {
  public:
    explicit FakeEditor(FakeLog& fakeLog) : log(fakeLog) {}
    ~FakeEditor() override { log.entries.emplace_back("editor gone"); }

    void Connect(CPluginRenderer* newRenderer, CPluginWrapper* newWrapper) override {
        renderer = newRenderer;
        wrapper = newWrapper;
        log.Add(newRenderer != nullptr ? "connect" : "disconnect");
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
        log.Add("key " + std::to_string(key.character) + " " + std::to_string(key.virtualKey) +
                " " + std::to_string(key.modifiers));
        return key.virtualKey == 0;
    }
    bool EditorKeyUp(const EditorKey&) override { return false; }
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
    FakeLog& log;
    bool isOpen = false;
};

class FakeDefinition final : public CPluginInstance {
  public:
    static constexpr int kParams = 6;

    FakeDefinition() {
        numParams = kParams;
        numParamsAutomable = 4;
        uniqueID = 0x11223344;
    }
    bool CheckWillOpen() override { return willOpen; }
    std::unique_ptr<CPluginRenderer> CreateRenderer() override {
        if (!hasRenderer) return nullptr;
        return std::make_unique<FakeRenderer>(log);
    }
    std::unique_ptr<CPluginEditorInterface> CreateEditor() override {
        if (!hasEditor) return nullptr;
        auto made = std::make_unique<FakeEditor>(log);
        editor = made.get();
        return made;
    }
    void MakeEffect() {
        isEffect = true;
        numInputStereoChannels = 1;
    }
    void SetNames(const std::string& name) {
        CopyText(pluginName, name);
        CopyText(vendorName, name);
    }

    FakeLog log;
    FakeEditor* editor = nullptr;  // the one made last
    bool willOpen = true;
    bool hasRenderer = true;
    bool hasEditor = true;
};

}  // namespace norava
