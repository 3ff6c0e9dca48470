#pragma once

#include <memory>

#include "framework/plugin_editor_interface.h"
#include "host/vst/vst_interface.h"

namespace norava {

// The panel as the interface sees it. User-interface thread.
class CVSTEditor {
  public:
    explicit CVSTEditor(std::unique_ptr<CPluginEditorInterface> editor);
    ~CVSTEditor();
    CVSTEditor(const CVSTEditor&) = delete;
    CVSTEditor& operator=(const CVSTEditor&) = delete;

    CPluginEditorInterface& GetPluginEditor() noexcept { return *pluginEditor; }

    // As the panel's size is now; hosts ask at any time, before a window exists too.
    bool getRect(vst::ERect** target) noexcept;
    bool open(void* parent);
    void close();
    void idle();
    bool onKeyDown(int character, int virtualKey, float modifiers);
    bool onKeyUp(int character, int virtualKey, float modifiers);

  private:
    vst::ERect rect{};
    const std::unique_ptr<CPluginEditorInterface> pluginEditor;
};

}  // namespace norava
