#include "framework/plugin_editor_interface.h"
#include "plugin/norava_def.h"
#include "synth/norava_synth.h"

// What programs without a window get: the same engine with its defaults, whatever programs the user
// keeps.

namespace norava {

std::unique_ptr<CPluginRenderer> CNoravaDef::CreateRenderer() {
    return std::make_unique<CNoravaSynth>();
}

std::unique_ptr<CPluginEditorInterface> CNoravaDef::CreateEditor() {
    return nullptr;
}

}  // namespace norava
