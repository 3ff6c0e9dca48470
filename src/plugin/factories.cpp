#include "framework/plugin_editor_interface.h"
#include "plugin/norava_def.h"
#include "presets/factory_bank.h"
#include "presets/preset_folders.h"
#include "synth/norava_synth.h"

// What the module makes for a host.

namespace norava {

std::unique_ptr<CPluginRenderer> CNoravaDef::CreateRenderer() {
    LibraryPlace programs;
    programs.root = GetPresetRoot();
    programs.bank = GetFactoryBank();
    return std::make_unique<CNoravaSynth>(programs);
}

std::unique_ptr<CPluginEditorInterface> CNoravaDef::CreateEditor() {
    return nullptr;
}

}  // namespace norava
