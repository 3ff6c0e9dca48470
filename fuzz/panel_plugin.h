#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "files/scratch_folder.h"
#include "framework/plugin_instance.h"
#include "gui/platform/offscreen_view.h"
#include "presets/preset_library.h"

namespace norava::fuzz {

// The plug-in as the targets' hosts get it: the instrument with a small library in a folder of this
// process alone, and a panel whose window is off-screen. What instances share stays between
// executions: the library, and the pictures.
class PanelPlugin final : public CPluginInstance {
  public:
    // Made at the first call; GetPluginInstance() returns it from then on.
    static PanelPlugin& Get();

    std::unique_ptr<CPluginRenderer> CreateRenderer() override;
    std::unique_ptr<CPluginEditorInterface> CreateEditor() override;

    // The window of the panel that was opened last; null when it is closed.
    OffscreenView* GetView() const { return view; }
    std::string LibraryPath(const std::string& name) const { return scratch.Path("root/" + name); }
    // Puts back the library that an execution has saved into, and the size of the panel. Between
    // instances.
    void Restore();

  private:
    class View;
    class Editor;
    PanelPlugin();
    ~PanelPlugin();
    void WriteLibrary();

    test::ScratchFolder scratch;
    LibraryPlace place;
    std::shared_ptr<PresetLibrary> library;
    std::unique_ptr<CPluginRenderer> firstRenderer;
    std::unique_ptr<CPluginEditorInterface> firstEditor;  // keeps the pictures loaded
    OffscreenView* view = nullptr;
};

}  // namespace norava::fuzz
