// Writes pictures of the panel as the manual shows it: the real editor in an off-screen window,
// playing a library of its own.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "editor/built_in_pictures.h"
#include "editor/norava_editor.h"
#include "editor/panel_layout.h"
#include "framework/block_runner.h"
#include "framework/plugin_instance.h"
#include "framework/plugin_wrapper.h"
#include "gui/control_menu.h"
#include "gui/platform/offscreen_view.h"
#include "parameters/parameter_index.h"
#include "plugin/synth_link.h"
#include "png_file/png_file.h"
#include "presets/factory_bank.h"
#include "synth/norava_synth.h"

namespace norava {
namespace {

// A folder that goes with the program. The pictures show its name, so that is always the same.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::error_code ignored;
        const auto name = std::filesystem::temp_directory_path() / "norava-pictures";
        if (std::filesystem::create_directory(name, ignored)) {
            path = name.string();
        } else {
            std::fprintf(stderr, "%s: cannot be made; does it exist?\n", name.c_str());
        }
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        if (!path.empty()) std::filesystem::remove_all(path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path;
};

class Panel : public CPluginWrapper {
  public:
    Panel(const std::string& root, int scale)
        : synth({.root = root, .bank = GetFactoryBank()}),
          editor(SynthLink::To, GetBuiltInPictures()) {
        synth.SetWrapper(this);
        synth.SetEditor(&editor);
        synth.Reset(48000.0);
        synth.AwaitReadiness();
        GetPluginInstance()->SetUIScalingFactor(scale);
        editor.Connect(&synth, this);
        editor.CreateControls();
        editor.SetViewFactory([this](PlatformEvents& events, void*, CSize size, int viewScale) {
            auto made = std::make_unique<OffscreenView>(events, size, viewScale);
            view = made.get();
            return made;
        });
        editor.SetZoom(scale);
        open = editor.CanOpenEditor() && editor.OpenEditor(this);
    }
    ~Panel() {
        editor.Close();
        synth.SetEditor(nullptr);
    }

    void Sound(int note, int frames) {
        const unsigned char bytes[] = {0x90, static_cast<unsigned char>(note), 110, 0};
        synth.CreateMIDIEvent(0, bytes, sizeof bytes);
        std::vector<float> left(static_cast<std::size_t>(frames));
        std::vector<float> right(left.size());
        float* const channels[] = {left.data(), right.data()};
        RunBlock(synth, {.outputs = channels, .frames = frames}, {});
    }

    CNoravaSynth synth;
    CNoravaEditor editor;
    OffscreenView* view = nullptr;
    bool open = false;
};

bool Write(Panel& panel, const std::string& path) {
    PngFile file(path);
    CGraphicBuffer& picture = *panel.editor.GetGraphicBuffer();
    picture.SetClipRect();
    picture.Present(&file, CRect({0, 0}, picture.GetSize()), {0, 0});
    if (!file.IsWritten()) std::fprintf(stderr, "%s: cannot be written\n", path.c_str());
    return file.IsWritten();
}

CPoint CentreOf(int control) {
    return FindPanelControl(control)->rect.GetCenter();
}

bool WriteAll(Panel& panel, const std::string& folder) {
    OffscreenView& view = *panel.view;
    constexpr int kFadeTicks = 6;

    for (const int note : {45, 57, 64})
        panel.Sound(note, 4800);
    view.Tick(1);
    bool good = Write(panel, folder + "/panel.png");

    view.MoveMouse(CentreOf(param::kHiCutCutoff));
    view.PressMouse();
    view.MoveMouse({CentreOf(param::kHiCutCutoff).x, 60});
    view.Tick(kFadeTicks);
    good = Write(panel, folder + "/bubble.png") && good;
    view.ReleaseMouse();
    view.Tick(kFadeTicks);

    view.Click(CentreOf(param::kMatrix + 3));
    view.MoveMouse({250, 360});
    view.Tick(kFadeTicks);
    good = Write(panel, folder + "/menu.png") && good;
    view.PressKey(kKeyEscape);
    view.Click(CentreOf(kOptionsMenu));
    view.Tick(kFadeTicks);
    good = Write(panel, folder + "/options.png") && good;
    view.PressKey(kKeyEscape);

    panel.editor.ShowBrowser();
    good = Write(panel, folder + "/browser.png") && good;
    for (const char c : std::string("bell"))
        view.PressKey(static_cast<unsigned char>(c));
    good = Write(panel, folder + "/search.png") && good;
    view.PressKey(kKeyEscape);
    view.PressKey(kKeyEscape);

    panel.editor.processProgramOption(2);
    good = Write(panel, folder + "/load.png") && good;
    view.PressKey(kKeyEscape);
    panel.editor.ShowAboutBox();
    return Write(panel, folder + "/about.png") && good;
}

}  // namespace
}  // namespace norava

int main(int count, char** arguments) {
    const long scale = count == 3 ? std::strtol(arguments[2], nullptr, 10) : 1;
    if (count < 2 || count > 3 || scale < 1 || scale > 3) {
        std::fprintf(stderr, "usage: norava-panel-pictures FOLDER [scale 1 to 3]\n");
        return 2;
    }
    const norava::TemporaryFolder library;
    if (library.path.empty()) return 1;
    norava::Panel panel(library.path + "/Norava", static_cast<int>(scale));
    if (!panel.open) {
        std::fprintf(stderr, "The panel does not open.\n");
        return 1;
    }
    return norava::WriteAll(panel, arguments[1]) ? 0 : 1;
}
