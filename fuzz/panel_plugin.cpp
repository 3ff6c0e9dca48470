#include "panel_plugin.h"

#include <array>
#include <chrono>

#include "editor/built_in_pictures.h"
#include "editor/norava_editor.h"
#include "parameters/parameter_index.h"
#include "plugin/synth_link.h"
#include "states.h"
#include "synth/norava_synth.h"
#include "target.h"

namespace norava::fuzz {

namespace {

constexpr std::array kPrograms = {"Bass/Deep.norava", "Bass/Round.norava", "Pads/Warm.norava",
                                  "Pads/Wide.norava", "Pads/No program.norava"};

// Tells these files from ones that were saved over them.
const std::filesystem::file_time_type kWritten{std::chrono::hours(1)};

}  // namespace

class PanelPlugin::View final : public OffscreenView {
  public:
    View(PanelPlugin& shared, PlatformEvents& listener, CSize size, int scale)
        : OffscreenView(listener, size, scale), plugin(shared) {
        plugin.view = this;
    }
    ~View() override {
        if (plugin.view == this) plugin.view = nullptr;
    }

  private:
    PanelPlugin& plugin;
};

class PanelPlugin::Editor final : public CNoravaEditor {
  public:
    explicit Editor(PanelPlugin& shared)
        : CNoravaEditor(SynthLink::To, GetBuiltInPictures()), plugin(shared) {
        SetViewFactory([this](PlatformEvents& listener, void*, CSize wanted, int scale) {
            return std::make_unique<View>(plugin, listener, wanted, scale);
        });
    }

    // Nothing is written outside the library: where the user would look for a place to save in, he
    // has found one already.
    bool AskForFile(const FileRequest& request,
                    std::function<void(const std::string& path)> chosen) override {
        if (!request.save) return CNoravaEditor::AskForFile(request, std::move(chosen));
        if (!IsOpen()) return false;
        chosen(plugin.LibraryPath("Found/Saved"));
        return true;
    }

  private:
    PanelPlugin& plugin;
};

PanelPlugin& PanelPlugin::Get() {
    static PanelPlugin plugin;
    return plugin;
}

PanelPlugin::PanelPlugin() {
    numParams = kNumParameters;
    numParamsAutomable = kNumHostParameters;
    SetUIScalingFactor(1);
    WriteLibrary();
    place.root = scratch.Path("root");
    library = PresetLibrary::Open(place);
    library->WaitUntilListed();
    library->WaitUntilRead();
    firstRenderer = CreateRenderer();
    firstEditor = CreateEditor();
    firstEditor->Connect(firstRenderer.get(), nullptr);
    firstEditor->CreateEditorControls();
    Require(firstEditor->CanOpenEditor(), "the panel has its pictures");
    SetUIScalingFactor(1);  // the first panel has asked the screen
}

PanelPlugin::~PanelPlugin() {
    firstEditor->Connect(nullptr, nullptr);
}

std::unique_ptr<CPluginRenderer> PanelPlugin::CreateRenderer() {
    return std::make_unique<CNoravaSynth>(place);
}

std::unique_ptr<CPluginEditorInterface> PanelPlugin::CreateEditor() {
    return std::make_unique<Editor>(*this);
}

void PanelPlugin::WriteLibrary() {
    for (std::size_t i = 0; i < kPrograms.size(); ++i) {
        StateBytes state = BaseState();
        state[0] = i + 1 == kPrograms.size() ? 'x' : state[0];
        const float value = 0.2f * static_cast<float>(i);
        for (const int index : {3, 30, 60, 90})
            std::memcpy(&state[4 + 4 * static_cast<std::size_t>(index)], &value, sizeof value);
        const std::string name = kPrograms[i];
        const std::string path = scratch.Write("root/" + name, {state.data(), state.size()});
        std::filesystem::last_write_time(path, kWritten);
    }
}

void PanelPlugin::Restore() {
    SetUIScalingFactor(1);
    namespace fs = std::filesystem;
    std::size_t files = 0;
    bool isNew = false;
    const fs::path root = scratch.Path("root");
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file()) continue;
        ++files;
        const std::string name = entry.path().lexically_relative(root).generic_string();
        isNew = isNew || std::ranges::find(kPrograms, name) == kPrograms.end() ||
                fs::last_write_time(entry) != kWritten;
    }
    if (!isNew && files == kPrograms.size()) return;
    fs::remove_all(root);
    WriteLibrary();
    library->Refresh("");
}

}  // namespace norava::fuzz
